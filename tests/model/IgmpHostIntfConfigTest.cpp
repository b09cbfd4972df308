#include "model/IgmpHostIntfConfig.h"

#include <gtest/gtest.h>

#include "tests/platform/zornet/RangeMessage.h"

namespace Igmp {

namespace {

using Config = IgmpHostIntfConfig;
using Zornet::IntfId;

constexpr char head[] = "Value('Igmp::IgmpHostIntfConfig', ** {";

Config
parsed( std::string const& text ) {
    Config config;
    Kiv::strepToValue( Kiv::String8( text ), &config );
    return config;
}

/// The value whose fields are `fields`.
Config
withFields( std::string const& fields ) {
    return parsed( head + fields + "})" );
}

std::string
faultOf( std::string const& text ) {
    return Zornet::rangeMessage( [&] { parsed( text ); } );
}

Config const full( IntfId( "trunk" ), "et'1", 100, true, true );

} // namespace

TEST( IgmpHostIntfConfigTest, FieldsHaveTheirDefaults ) {
    Config const config;
    EXPECT_EQ( config.intfId(), IntfId() );
    EXPECT_TRUE( config.deviceName().empty() );
    EXPECT_EQ( config.vlanId(), 0 );
    EXPECT_FALSE( config.tagged() );
    EXPECT_FALSE( config.useMux() );
}

TEST( IgmpHostIntfConfigTest, FieldsAreNumberedFromTwoInOrder ) {
    std::vector<std::string> names;
    for ( Kiv::Attribute const& row : Config::attributes() ) {
        EXPECT_EQ( row.id, 2 + static_cast<AttributeId>( names.size() ) );
        names.emplace_back( row.name );
    }
    EXPECT_EQ( names, ( std::vector<std::string>{ "intfId", "deviceName", "vlanId", "tagged", "useMux" } ) );
}

TEST( IgmpHostIntfConfigTest, TextNamesEveryFieldInOrder ) {
    EXPECT_STREQ(
        valueToStrep( full ).charPtr(),
        "Value('Igmp::IgmpHostIntfConfig', ** {'intfId': 'trunk', 'deviceName': 'et\\'1', 'vlanId': 100, "
        "'tagged': true, 'useMux': true})"
    );
}

TEST( IgmpHostIntfConfigTest, TextOfADefaultValueNamesEveryFieldToo ) {
    EXPECT_STREQ(
        valueToStrep( Config() ).charPtr(),
        "Value('Igmp::IgmpHostIntfConfig', ** {'intfId': '', 'deviceName': '', 'vlanId': 0, 'tagged': false, "
        "'useMux': false})"
    );
}

TEST( IgmpHostIntfConfigTest, VlanIdIsWrittenWithoutASign ) {
    EXPECT_NE(
        std::string( valueToStrep( Config( {}, {}, 65535 ) ).view() ).find( "'vlanId': 65535," ),
        std::string::npos
    );
}

TEST( IgmpHostIntfConfigTest, TextOfADefaultValueParsesBackToAnEqualValue ) {
    EXPECT_EQ( parsed( valueToStrep( Config() ).charPtr() ), Config() );
}

TEST( IgmpHostIntfConfigTest, TextOfAFullValueParsesBackToAnEqualValue ) {
    EXPECT_EQ( parsed( valueToStrep( full ).charPtr() ), full );
}

TEST( IgmpHostIntfConfigTest, NoKeysGiveTheDefaultValue ) {
    EXPECT_EQ( withFields( "" ), Config() );
    EXPECT_EQ( withFields( "  " ), Config() );
}

TEST( IgmpHostIntfConfigTest, VlanIdIsCutToSixteenBits ) {
    EXPECT_EQ( withFields( "'vlanId': 65537" ).vlanId(), 1 );
    EXPECT_EQ( withFields( "'vlanId': -1" ).vlanId(), 65535 );
}

TEST( IgmpHostIntfConfigTest, KeysInAnotherOrderGiveTheSameValue ) {
    EXPECT_EQ(
        withFields( "'useMux': true, 'tagged': true, 'vlanId': 100, 'deviceName': 'et\\'1', 'intfId': 'trunk'"
        ),
        full
    );
}

TEST( IgmpHostIntfConfigTest, KeyLeftOutKeepsItsDefault ) {
    EXPECT_EQ( withFields( "'vlanId': 7" ), Config( IntfId(), "", 7 ) );
}

TEST( IgmpHostIntfConfigTest, KeyGivenTwiceTakesItsLastValue ) {
    EXPECT_EQ( withFields( "'vlanId': 7, 'vlanId': 8" ).vlanId(), 8 );
}

TEST( IgmpHostIntfConfigTest, BlanksBetweenThePartsAreFree ) {
    EXPECT_EQ(
        parsed( "Value('Igmp::IgmpHostIntfConfig',**{'vlanId':7,'tagged':true})" ),
        parsed( " Value ( 'Igmp::IgmpHostIntfConfig' , ** { 'vlanId' : 7 , 'tagged' : true } )" )
    );
}

TEST( IgmpHostIntfConfigTest, EndRightAfterTheOpeningBraceIsPremature ) {
    EXPECT_EQ( faultOf( head ), "premature end of value type IgmpHostIntfConfig" );
}

TEST( IgmpHostIntfConfigTest, EndAfterAFieldIsPremature ) {
    for ( char const* const end : { "", " ", "'vlanId': 7", "'vlanId': 7 " } ) {
        EXPECT_EQ( faultOf( std::string( head ) + end ), "premature end of value type IgmpHostIntfConfig" )
            << end;
    }
}

TEST( IgmpHostIntfConfigTest, EndAfterACommaLacksAKey ) {
    EXPECT_EQ( faultOf( std::string( head ) + "'vlanId': 7," ), "expected \" '\" at column 50" );
}

/// Each part of the form is required; what is raised is the text of the pattern that did not match.
TEST( IgmpHostIntfConfigTest, PartThatIsMissingIsNamed ) {
    std::pair<char const*, char const*> const faults[] = {
        { "", "expected \" Value\" at column 0" },
        { "value", "expected \" Value\" at column 0" },
        { "Value'", "expected \" (\" at column 5" },
        { "Value('Igmp::IgmpHost', ** {})", "expected \" 'Igmp::IgmpHostIntfConfig'\" at column 21" },
        { "Value(Igmp::IgmpHostIntfConfig, ** {})", "expected \" 'Igmp::IgmpHostIntfConfig'\" at column 6" },
        { "Value('Igmp::IgmpHostIntfConfig' ** {})", "expected \" ,\" at column 33" },
        { "Value('Igmp::IgmpHostIntfConfig', {})", "expected \" **\" at column 34" },
        { "Value('Igmp::IgmpHostIntfConfig', * * {})", "expected \" **\" at column 35" },
        { "Value('Igmp::IgmpHostIntfConfig', **)", "expected \" {\" at column 36" },
        { "Value('Igmp::IgmpHostIntfConfig', ** {'vlanId' 7})", "expected \" : \" at column 47" },
        { "Value('Igmp::IgmpHostIntfConfig', ** {vlanId: 7})", "expected \" '\" at column 38" },
        { "Value('Igmp::IgmpHostIntfConfig', ** {}", "expected \") \" at column 39" },
        { "Value('Igmp::IgmpHostIntfConfig', ** {}}", "expected \") \" at column 39" },
    };
    for ( auto const& [text, fault] : faults ) {
        EXPECT_EQ( faultOf( text ), fault ) << text;
    }
}

TEST( IgmpHostIntfConfigTest, UnknownKeyIsNamed ) {
    EXPECT_EQ(
        faultOf( std::string( head ) + "'mtu': 7})" ), "IgmpHostIntfConfig has no such attribute: mtu"
    );
}

TEST( IgmpHostIntfConfigTest, KeyIsJudgedBehindItsColon ) {
    EXPECT_EQ( faultOf( std::string( head ) + "'mtu'})" ), "expected \" : \" at column 43" );
    EXPECT_EQ( faultOf( std::string( head ) + "'mtu': ?" ), "IgmpHostIntfConfig has no such attribute: mtu" );
    EXPECT_EQ(
        faultOf( std::string( head ) + "'VlanId': 7})" ), "IgmpHostIntfConfig has no such attribute: VlanId"
    );
}

TEST( IgmpHostIntfConfigTest, TrailingCommaIsRefused ) {
    EXPECT_EQ( faultOf( std::string( head ) + "'vlanId': 7,})" ), "expected \" '\" at column 50" );
}

TEST( IgmpHostIntfConfigTest, MissingCommaIsRefused ) {
    EXPECT_EQ(
        faultOf( std::string( head ) + "'vlanId': 7 'tagged': true})" ), "expected \", \" at column 50"
    );
}

TEST( IgmpHostIntfConfigTest, BadValueIsNamedWithItsField ) {
    std::pair<char const*, char const*> const faults[] = {
        { "'intfId': 7", "intfId: expected \" '\" at column 48" },
        { "'deviceName': et1", "deviceName: expected \" '\" at column 52" },
        { "'vlanId': '7'", "vlanId: expected a whole number at column 48" },
        { "'vlanId': 9223372036854775808", "vlanId: expected a whole number at column 48" },
        { "'tagged': 1", "tagged: expected \"false\" at column 48" },
        { "'useMux': True", "useMux: expected \"false\" at column 48" },
    };
    for ( auto const& [field, fault] : faults ) {
        EXPECT_EQ( faultOf( std::string( head ) + field + "})" ), fault ) << field;
    }
}

TEST( IgmpHostIntfConfigTest, BadValueIsRefusedThoughTheKeyComesAgain ) {
    EXPECT_EQ(
        faultOf( std::string( head ) + "'tagged': 1, 'tagged': true})" ),
        "tagged: expected \"false\" at column 48"
    );
}

TEST( IgmpHostIntfConfigTest, NothingOfABadTextIsKept ) {
    Config config = full;
    for ( std::string const rest : { "'vlanId': 7", "'vlanId': 7, 'mtu': 1})", "'vlanId': 7})x" } ) {
        EXPECT_THROW( Kiv::strepToValue( Kiv::String8( head + rest ), &config ), Kiv::RangeException );
        EXPECT_EQ( config, full ) << rest;
    }
}

TEST( IgmpHostIntfConfigTest, TextAfterTheClosingParenthesisIsJunk ) {
    EXPECT_EQ(
        faultOf( std::string( head ) + "})x" ),
        "junk at column 40 deserializing " + std::string( head ) + "})x"
    );
}

TEST( IgmpHostIntfConfigTest, BlanksAfterTheClosingParenthesisBelongToTheValue ) {
    EXPECT_EQ( parsed( std::string( head ) + "} )  \n" ), Config() );
}

TEST( IgmpHostIntfConfigTest, ParserStopsBehindTheValue ) {
    Kiv::String8 const text( std::string( head ) + "'vlanId': 7}) , next" );
    Kiv::String8::IteratorConst at = text.begin();
    EXPECT_EQ( Config( at, text.end() ).vlanId(), 7 );
    EXPECT_EQ( *at, ',' );
}

TEST( IgmpHostIntfConfigTest, EveryFieldCountsInTheComparison ) {
    EXPECT_NE( full, Config( IntfId( "port" ), "et'1", 100, true, true ) );
    EXPECT_NE( full, Config( IntfId( "trunk" ), "et2", 100, true, true ) );
    EXPECT_NE( full, Config( IntfId( "trunk" ), "et'1", 101, true, true ) );
    EXPECT_NE( full, Config( IntfId( "trunk" ), "et'1", 100, false, true ) );
    EXPECT_NE( full, Config( IntfId( "trunk" ), "et'1", 100, true, false ) );
}

TEST( IgmpHostIntfConfigTest, InterfaceIdsHaveATextFormOfTheirOwn ) {
    IntfId intf;
    Kiv::strepToValue( valueToStrep( IntfId( "port '7'" ) ), &intf );
    EXPECT_EQ( intf, IntfId( "port '7'" ) );
}

} // namespace Igmp
