#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <new>
#include <sstream>

#include "platform/zornet/Checksum.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV12Hdr.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"
#include "platform/zornet/IpMcastMacAddr.h"
#include "tests/platform/zornet/Hex.h"

namespace Zornet {

/// Writes headers one after the other into a run of bytes that are not zero before.
class HeadersTest : public ::testing::Test {
  protected:
    HeadersTest() { bytes_.fill( 0xa5 ); }

    template <class Header>
    Header* next() {
        U8* const at = bytes_.data() + used_;
        used_ += sizeof( Header );
        return reinterpret_cast<Header*>( at );
    }
    std::string written() const { return hex( { bytes_.data(), used_ } ); }

    /// The bytes of `digits`, to be read as a header.
    template <class Header>
    Header const* parse( std::string_view digits ) {
        auto const message = fromHex( digits );
        std::copy( message.begin(), message.end(), bytes_.begin() );
        used_ = message.size();
        return reinterpret_cast<Header const*>( bytes_.data() );
    }

    template <class Header>
    static std::string printed( Header const& header ) {
        std::ostringstream out;
        out << header;
        return out.str();
    }

  private:
    std::array<U8, 128> bytes_;
    std::size_t used_ = 0;
};

TEST_F( HeadersTest, EthHdrStandsInFieldOrder ) {
    auto* const eth = next<EthHdr>();
    eth->dstIs( EthAddr( "01:00:5e:01:01:01" ) );
    eth->srcIs( EthAddr( "02:00:00:00:00:01" ) );
    eth->typeOrLenIs( ethTypeIp );
    EXPECT_EQ( written(), "01005e0101010200000000010800" );
    EXPECT_EQ( eth->dst(), EthAddr( "01:00:5e:01:01:01" ) );
    EXPECT_EQ( eth->src(), EthAddr( "02:00:00:00:00:01" ) );
    EXPECT_EQ( eth->typeOrLen(), 0x0800 );
}

TEST_F( HeadersTest, Eth8021QHdrFollowsTheTagType ) {
    auto* const tag = next<Eth8021QHdr>();
    tag->tagControlIs( 100 );
    tag->typeOrLenIs( ethTypeIp );
    EXPECT_EQ( written(), "00640800" );
    EXPECT_EQ( tag->tagControl().vlanId(), 100 );
    EXPECT_EQ( tag->typeOrLen(), 0x0800 );
}

TEST_F( HeadersTest, IpHdrIsConstructedAsZeroes ) {
    std::ignore = new ( next<IpHdr>() ) IpHdr;
    EXPECT_EQ( written(), std::string( 40, '0' ) );
}

TEST_F( HeadersTest, IpHdrKeepsVersionAndLengthApart ) {
    IpHdr ip;
    ip.versionIs( 6 );
    ip.headerBytesIs( 60 );
    EXPECT_EQ( ip.version(), IpVersion( 6 ) );
    ip.versionIs( 0xf4 );
    EXPECT_EQ( ip.headerBytes(), 60U );
    EXPECT_EQ( ip.version(), IpVersion( 4 ) );
}

TEST_F( HeadersTest, IpHdrReadsEveryField ) {
    auto const* const ip = parse<IpHdr>( "46c00020 12344000 0102 2ad5 0a000001 ef010101 94040000" );
    EXPECT_EQ( ip->version(), IpVersion( 4 ) );
    EXPECT_EQ( ip->headerBytes(), 24U );
    EXPECT_EQ( ip->totalLen(), IpTotalLen( 32 ) );
    EXPECT_EQ( ip->ttl(), IpTtl( 1 ) );
    EXPECT_EQ( ip->protocol(), ipProtoIgmp );
    EXPECT_EQ( ip->checksum(), IpChecksum( 0x2ad5 ) );
    EXPECT_EQ( ip->src(), IpAddr( "10.0.0.1" ) );
    EXPECT_EQ( ip->dst(), IpAddr( "239.1.1.1" ) );
}

TEST_F( HeadersTest, IpHdrPayloadIsWhatTheHeaderLeaves ) {
    IpHdr ip;
    ip.headerBytesIs( 24 );
    ip.totalLenIs( 32 );
    EXPECT_EQ( ip.payloadLen(), 8U );
}

TEST_F( HeadersTest, IpHdrPayloadOfAShortTotalLengthIsHuge ) {
    IpHdr ip;
    ip.headerBytesIs( 24 );
    ip.totalLenIs( 23 );
    EXPECT_EQ( ip.payloadLen(), 0xffffffffU );
}

TEST_F( HeadersTest, IpChecksumOverARightStoredOneIsZero ) {
    auto const* const ip = parse<IpHdr>( "46000020 00000000 0102 2ad5 0a000001 ef010101 94040000" );
    EXPECT_EQ( ip->computedChecksum(), IpChecksum( 0 ) );
}

TEST_F( HeadersTest, IpChecksumOverAZeroFieldIsTheOneToStore ) {
    auto const* const ip = parse<IpHdr>( "46000020 00000000 0102 0000 0a000001 ef010101 94040000" );
    EXPECT_EQ( ip->computedChecksum(), IpChecksum( 0x2ad5 ) );
}

TEST_F( HeadersTest, IpChecksumCoversTheOptions ) {
    auto const* const ip = parse<IpHdr>( "46000020 00000000 0102 2ad5 0a000001 ef010101 94040001" );
    EXPECT_NE( ip->computedChecksum(), IpChecksum( 0 ) );
}

TEST_F( HeadersTest, RouterAlertIsWrittenByItsConstructor ) {
    std::ignore = new ( next<IpHdrRouterAlertOption>() ) IpHdrRouterAlertOption;
    EXPECT_EQ( written(), "94040000" );
}

TEST_F( HeadersTest, IgmpCommonHdrHasTwoViewsOfItsType ) {
    auto* const igmp = next<IgmpCommonHdr>();
    igmp->mTypeIs( 0x99 );
    igmp->unusedIs( 7 );
    igmp->checksumIs( 0x1234 );
    EXPECT_EQ( written(), "99071234" );
    EXPECT_EQ( igmp->messageType(), IgmpMessageType{ 0x99 } );
    igmp->messageTypeIs( IgmpMessageType::v2LeaveGroup );
    EXPECT_EQ( igmp->mType(), MessageType( 0x17 ) );
    EXPECT_EQ( igmp->unused(), 7 );
    EXPECT_EQ( igmp->checksum(), IpChecksum( 0x1234 ) );
}

TEST_F( HeadersTest, IgmpChecksumTakesTheGivenLength ) {
    auto const* const igmp = parse<IgmpCommonHdr>( "1164ee9b 00000000 ffff" );
    EXPECT_EQ( igmp->computedChecksum( 8 ), IpChecksum( 0 ) );
    EXPECT_NE( igmp->computedChecksum( 9 ), IpChecksum( 0 ) );
}

TEST_F( HeadersTest, V12ResponseTimeIsInTenths ) {
    auto const* const query = parse<IgmpV12Hdr>( "1164ee9b ef010101" );
    EXPECT_EQ( query->maxResponseCode(), 100 );
    EXPECT_DOUBLE_EQ( query->maxResponseSeconds(), 10.0 );
    EXPECT_EQ( query->groupAddress(), IpAddr( "239.1.1.1" ) );
}

TEST_F( HeadersTest, V12ResponseTimeIsNeverDecodedAsAFloat ) {
    EXPECT_DOUBLE_EQ( parse<IgmpV12Hdr>( "11ff0000 00000000" )->maxResponseSeconds(), 25.5 );
}

TEST_F( HeadersTest, V3QueryTimesAreDecoded ) {
    auto const* const query = parse<IgmpV3QueryHdr>( "11900000 00000000 029f 0000" );
    EXPECT_DOUBLE_EQ( query->maxResponseSeconds(), 25.6 );
    EXPECT_DOUBLE_EQ( query->queryIntervalSeconds(), 496.0 );
}

TEST_F( HeadersTest, V3QueryReadsItsSources ) {
    auto const* const query = parse<IgmpV3QueryHdr>( "1164dcff e8010101 0a7d0002 0a090901 0a090907" );
    EXPECT_EQ( query->groupAddress(), IpAddr( "232.1.1.1" ) );
    EXPECT_TRUE( query->suppressRouterProcessing() );
    EXPECT_EQ( query->querierRobustness(), 2 );
    ASSERT_EQ( query->numSources(), 2 );
    EXPECT_EQ( query->source( 0 ), IpAddr( "10.9.9.1" ) );
    EXPECT_EQ( query->source( 1 ), IpAddr( "10.9.9.7" ) );
    EXPECT_EQ( query->messageBytes(), 20U );
}

TEST_F( HeadersTest, V3QueryOfTwelveBytesIsAWellFormedGeneralQuery ) {
    std::string const digits = "1164ec1e00000000027d0000";
    auto const* const query = parse<IgmpV3QueryHdr>( digits );
    EXPECT_EQ( query->messageBytes(), 12U );
    EXPECT_EQ( query->computedChecksum( 12 ), IpChecksum( 0 ) );
    EXPECT_TRUE( query->groupAddress().isZero() );
    EXPECT_FALSE( query->suppressRouterProcessing() );
}

TEST_F( HeadersTest, V3QueryIsBuiltByItsSetters ) {
    auto* const query = next<IgmpV3QueryHdr>();
    *query = {};
    query->messageTypeIs( IgmpMessageType::membershipQuery );
    query->maxResponseCodeIs( 100 );
    query->groupAddressIs( IpAddr( "232.1.1.1" ) );
    query->querierRobustnessIs( 2 );
    query->queryIntervalCodeIs( 125 );
    query->numSourcesIs( 1 );
    next<IpAddr>();
    query->sourceIs( 0, IpAddr( "10.9.9.2" ) );
    query->checksumIs( 0 );
    query->checksumIs( query->computedChecksum( 16 ) );
    EXPECT_EQ( written(), "1164f00fe8010101027d00010a090902" );
}

TEST_F( HeadersTest, V3QueryKeepsItsFlagAndRobustnessApart ) {
    IgmpV3QueryHdr query;
    query.querierRobustnessIs( 7 );
    query.suppressRouterProcessingIs( true );
    EXPECT_EQ( query.querierRobustness(), 7 );
    query.querierRobustnessIs( 0xf2 );
    EXPECT_TRUE( query.suppressRouterProcessing() );
    EXPECT_EQ( query.querierRobustness(), 2 );
    query.suppressRouterProcessingIs( false );
    EXPECT_FALSE( query.suppressRouterProcessing() );
}

TEST_F( HeadersTest, V2QueriesAreBuiltByTheirSetters ) {
    auto* const query = next<IgmpV12Hdr>();
    *query = {};
    query->messageTypeIs( IgmpMessageType::membershipQuery );
    query->maxResponseCodeIs( 100 );
    query->checksumIs( query->computedChecksum( 8 ) );
    EXPECT_EQ( written(), "1164ee9b00000000" );
}

TEST_F( HeadersTest, GroupRecordCountsSourcesAndAuxiliaryWords ) {
    auto const* const record = parse<IgmpReportGroupRecordHeader>( "05010002 e8010101 0a090901 0a090902" );
    EXPECT_EQ( record->recordType(), IgmpV3GroupRecordType::ALLOW_NEW_SOURCES );
    EXPECT_EQ( record->auxDataLen(), 1 );
    EXPECT_EQ( record->mcastAddr(), IpAddr( "232.1.1.1" ) );
    EXPECT_EQ( record->numSources(), 2 );
    EXPECT_EQ( record->source( 1 ), IpAddr( "10.9.9.2" ) );
    EXPECT_EQ( record->recordBytes(), 20U );
}

TEST_F( HeadersTest, HeadersPrintReadably ) {
    EXPECT_EQ(
        printed( *parse<IpHdr>( "46000020 00000000 0102 2ad5 0a000001 ef010101" ) ),
        "IPv4 10.0.0.1 > 239.1.1.1 protocol 2 ttl 1 header bytes 24 total length 32 checksum 0x2ad5"
    );
    EXPECT_EQ( printed( *parse<IgmpCommonHdr>( "1164ee9b" ) ), "membershipQuery code 100 checksum 0xee9b" );
    EXPECT_EQ(
        printed( *parse<IgmpV12Hdr>( "1600f9fcef010101" ) ),
        "v2MembershipReport code 0 checksum 0xf9fc group 239.1.1.1"
    );
    EXPECT_EQ(
        printed( *parse<IgmpV3QueryHdr>( "1164f00fe8010101027d00010a090902" ) ),
        "membershipQuery code 100 checksum 0xf00f group 232.1.1.1 robustness 2 interval 125 sources 1"
    );
    EXPECT_EQ(
        printed( *parse<IgmpV3ReportHdr>( "2200d5e000000002" ) ),
        "v3MembershipReport code 0 checksum 0xd5e0 group records 2"
    );
    EXPECT_EQ(
        printed( *parse<IgmpReportGroupRecordHeader>( "04000000ef010101" ) ),
        "CHANGE_TO_EXCLUDE_MODE 239.1.1.1 sources 0"
    );
}

} // namespace Zornet
