#include "agent/command/Model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "platform/kiv/Type.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;

class Model : public ::testing::Test {
  protected:
    Model() {
        std::ostringstream out;
        writeModel( out );
        text_ = out.str();
    }
    /// The lines of one type, each with single blanks.
    std::string section( std::string const& type ) const {
        std::size_t const at = text_.find( "## " + type + "\n" );
        std::string const section = text_.substr( at, text_.find( "\n## ", at ) - at );
        return std::regex_replace( section, std::regex( " +" ), " " );
    }

    std::string text_;
};

} // namespace

TEST_F( Model, NamesEveryTypeOnceInTheOrderOfDeclaration ) {
    std::size_t last = 0;
    for ( Kiv::Type const* type : Kiv::Type::types() ) {
        std::size_t const at = text_.find( "## " + std::string( type->name() ) + "\n" );
        ASSERT_NE( at, std::string::npos ) << type->name();
        EXPECT_GT( at, last ) << type->name();
        last = at;
    }
}

TEST_F( Model, NamesEveryAttributeOfEveryType ) {
    for ( Kiv::Type const* type : Kiv::Type::types() ) {
        for ( Kiv::Attribute const& row : type->attributes() ) {
            EXPECT_THAT(
                section( type->name() ),
                HasSubstr( "| " + std::to_string( row.id ) + " | " + row.name + " |" )
            );
        }
    }
}

TEST_F( Model, SaysWhatATypeIsAndWhatItIsMadeFrom ) {
    EXPECT_THAT(
        section( "Igmp::IgmpV3GroupRecord" ),
        HasSubstr( "Entity, derived from Kiv::Entity. Made from name (Kiv::Name), multicastAddr "
                   "(Zornet::IpAddr).\n" )
    );
    EXPECT_THAT( section( "Igmp::TimerState" ), HasSubstr( "\nEnumeration.\n" ) );
    EXPECT_THAT( section( "Igmp::IgmpHostIntfConfig" ), HasSubstr( "\nValue. Made from intfId" ) );
    EXPECT_THAT( section( "Igmp::IgmpHostSm" ), HasSubstr( "\nObject, derived from Kiv::PtrInterface." ) );
}

TEST_F( Model, GivesKindTypeDefaultAndFlags ) {
    std::string const host = section( "Igmp::IgmpHost" );
    EXPECT_THAT( host, HasSubstr( "| 278 | mtu | scalar | U32 | | 1514 | 0x220143 0x1000400 |" ) );
    EXPECT_THAT( host, HasSubstr( "| 264 | deviceName | scalar | Kiv::String | | (empty) |" ) );
    EXPECT_THAT(
        host, HasSubstr( "| 277 | v3group | objects by key | Igmp::IgmpV3GroupRecord | Zornet::IpAddr | | "
                         "0x9a20143 0x11000400 |" )
    );
    EXPECT_THAT( host, HasSubstr( "| 0 | fwkKey | key | Kiv::Name | | | 0x200001 0x400 |" ) );
    EXPECT_THAT( host, HasSubstr( "| 154 | kivHasAttrLogInterface | constant | bool |" ) );
}

TEST_F( Model, ListsAttributesByNumber ) {
    std::string const record = section( "Igmp::IgmpV3GroupRecord" );
    EXPECT_LT( record.find( "| 0 | fwkKey" ), record.find( "| 154 |" ) );
    EXPECT_LT( record.find( "| 154 |" ), record.find( "| 258 |" ) );
}

TEST_F( Model, ListsEnumeratorsByNumber ) {
    EXPECT_THAT(
        section( "Igmp::IgmpVersion" ),
        HasSubstr( "| 3 | igmpVersion3 | enumerator | Igmp::IgmpVersion | | | 0x20001 0x40200400 |" )
    );
}

TEST_F( Model, SecondTextIsTheSame ) {
    std::ostringstream again;
    writeModel( again );
    EXPECT_EQ( again.str(), text_ );
}

} // namespace Agent
