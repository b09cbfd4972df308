#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <sstream>

#include "RangeMessage.h"
#include "platform/zornet/Eth8021QTagControl.h"
#include "platform/zornet/FieldValue.h"
#include "platform/zornet/IgmpMessageType.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

template <class T>
std::string
printed( T const& value ) {
    std::ostringstream out;
    out << value;
    return out.str();
}

using FieldValuesTest = ::testing::Test;

TEST_F( FieldValuesTest, NetU16StandsInNetworkOrder ) {
    NetU16 field;
    field.valueIs( 0x1234 );
    EXPECT_EQ( field.value(), 0x1234 );
    EXPECT_THAT( ( std::bit_cast<std::array<U8, 2>>( field ) ), ::testing::ElementsAre( 0x12, 0x34 ) );
}

TEST_F( FieldValuesTest, NetU8KeepsEveryValue ) {
    EXPECT_EQ( NetU8( 255 ).value(), 255 );
    EXPECT_NE( NetU8( 1 ), NetU8( 2 ) );
}

TEST_F( FieldValuesTest, NumbersPrintInDecimal ) {
    EXPECT_EQ( printed( IpTtl( 64 ) ), "64" );
    EXPECT_EQ( valueToStrep( IpTotalLen( 1500 ) ), Kiv::String8( "1500" ) );
    EXPECT_EQ( printed( NetU8( 65 ) ), "65" );
    EXPECT_EQ( valueToStrep( NetU16( 515 ) ), Kiv::String8( "515" ) );
}

TEST_F( FieldValuesTest, ChecksumsCompareByValue ) {
    EXPECT_NE( IpChecksum( 0xffff ), IpChecksum( 0 ) );
    EXPECT_EQ( IpChecksum( 0x2ad5 ), IpChecksum( 0x2ad5 ) );
}

TEST_F( FieldValuesTest, ChecksumsPrintTheirBits ) {
    EXPECT_EQ( printed( IpChecksum( 0xd5 ) ), "0x00d5" );
    EXPECT_EQ( valueToStrep( IpChecksum( 0x2ad5 ) ), Kiv::String8( "0x2ad5" ) );
}

TEST_F( FieldValuesTest, TagControlTakesTwelveBitsOfTheVlan ) {
    Eth8021QTagControl tag;
    tag.vlanIdIs( 4196 );
    EXPECT_EQ( tag.value(), 100 );
}

TEST_F( FieldValuesTest, TagControlKeepsItsTopBits ) {
    Eth8021QTagControl tag( 0xf123 );
    tag.vlanIdIs( 0x456 );
    EXPECT_EQ( tag.value(), 0xf456 );
    EXPECT_EQ( tag.vlanId(), 0x456 );
}

TEST_F( FieldValuesTest, TagControlPrintsItsBits ) {
    EXPECT_EQ( printed( Eth8021QTagControl( 0x2064 ) ), "0x2064" );
}

TEST_F( FieldValuesTest, MessageTypesHaveTheirWireValues ) {
    EXPECT_EQ( IgmpMessageType::membershipQuery, IgmpMessageType{ 0x11 } );
    EXPECT_EQ( IgmpMessageType::v1MembershipReport, IgmpMessageType{ 0x12 } );
    EXPECT_EQ( IgmpMessageType::v2MembershipReport, IgmpMessageType{ 0x16 } );
    EXPECT_EQ( IgmpMessageType::v2LeaveGroup, IgmpMessageType{ 0x17 } );
    EXPECT_EQ( IgmpMessageType::v3MembershipReport, IgmpMessageType{ 0x22 } );
}

TEST_F( FieldValuesTest, MessageTypesPrintTheirNames ) {
    EXPECT_EQ( printed( IgmpMessageType::v2LeaveGroup ), "v2LeaveGroup" );
    EXPECT_EQ( valueToStrep( IgmpMessageType::v2LeaveGroup ), Kiv::String8( "'v2LeaveGroup'" ) );
    EXPECT_EQ( printed( IgmpMessageType{ 0x99 } ), "IgmpMessageType(153)" );
}

using IgmpV3GroupRecordTypeTest = ::testing::Test;

TEST_F( IgmpV3GroupRecordTypeTest, HasTheValuesOfTheProtocol ) {
    using enum IgmpV3GroupRecordType;
    for ( U8 value = 1;
          IgmpV3GroupRecordType type : { MODE_IS_INCLUDE, MODE_IS_EXCLUDE, CHANGE_TO_INCLUDE_MODE,
                                         CHANGE_TO_EXCLUDE_MODE, ALLOW_NEW_SOURCES, BLOCK_OLD_SOURCES } ) {
        EXPECT_EQ( type, IgmpV3GroupRecordType{ value++ } );
    }
}

TEST_F( IgmpV3GroupRecordTypeTest, EveryByteSurvivesItsText ) {
    using Traits = Kiv::ValueTraits<IgmpV3GroupRecordType>;
    for ( U32 value = 0; value < 256; ++value ) {
        auto const type = static_cast<IgmpV3GroupRecordType>( value );
        EXPECT_EQ( Traits::parse( Traits::format( type ) ), type );
    }
}

TEST_F( IgmpV3GroupRecordTypeTest, PrintsNameOrNumber ) {
    EXPECT_EQ( printed( IgmpV3GroupRecordType::MODE_IS_EXCLUDE ), "MODE_IS_EXCLUDE" );
    EXPECT_EQ( valueToStrep( IgmpV3GroupRecordType{ 1 } ), Kiv::String8( "'MODE_IS_INCLUDE'" ) );
    EXPECT_EQ( printed( IgmpV3GroupRecordType{ 7 } ), "IgmpV3GroupRecordType(7)" );
}

TEST_F( IgmpV3GroupRecordTypeTest, RefusalNamesTheKnownOnes ) {
    EXPECT_EQ(
        rangeMessage( [] { igmpV3GroupRecordType( "INCLUDE" ); } ),
        "expected IgmpV3GroupRecordType, one of include, exclude, MODE_IS_INCLUDE, MODE_IS_EXCLUDE, "
        "CHANGE_TO_INCLUDE_MODE, CHANGE_TO_EXCLUDE_MODE, ALLOW_NEW_SOURCES, BLOCK_OLD_SOURCES, found "
        "'INCLUDE'"
    );
    EXPECT_THROW( igmpV3GroupRecordType( "IgmpV3GroupRecordType(256)" ), Kiv::RangeException );
    EXPECT_THROW( igmpV3GroupRecordType( "IgmpV3GroupRecordType(" ), Kiv::RangeException );
}

} // namespace Zornet
