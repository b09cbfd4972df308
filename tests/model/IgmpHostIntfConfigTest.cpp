#include "model/IgmpHostIntfConfig.h"

#include <gtest/gtest.h>

#include "model/IgmpHostDir.h"
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
    EXPECT_EQ(
        faultOf( std::string( head ) + "'vlanId': 7 " ), "premature end of value type IgmpHostIntfConfig"
    );
}

TEST( IgmpHostIntfConfigTest, UnknownKeyIsNamed ) {
    EXPECT_EQ(
        faultOf( std::string( head ) + "'mtu': 7})" ), "IgmpHostIntfConfig has no such attribute: mtu"
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
    EXPECT_EQ( faultOf( std::string( head ) + "'tagged': 1})" ), "tagged: expected \"false\" at column 48" );
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

TEST( IgmpHostIntfConfigTest, NullPointersToEntitiesHaveATextForm ) {
    Ptr<IgmpHost> host = igmpHostFactory( "h" );
    Kiv::strepToValue( "null", &host );
    EXPECT_FALSE( host );
}

} // namespace Igmp
