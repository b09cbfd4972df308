#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "platform/zornet/Checksum.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV12Hdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"
#include "platform/zornet/IpMcastMacAddr.h"
#include "platform/zornet/PktManager.h"
#include "tests/platform/zornet/Hex.h"

namespace Zornet {

/// Builds whole frames of the host 10.0.0.1, 02:00:00:00:00:01 through a packet's window, over bytes that are
/// not zero before.
class FramesTest : public ::testing::Test {
  protected:
    struct Form {
        bool tagged = false;
        bool routerAlert = true;
    };

    FramesTest() {
        pkt_->newSharedHeadData( 1514 );
        std::fill_n( pkt_->front(), pkt_->bytes(), U8{ 0xa5 } );
    }

    void buildV12( Form form, IgmpMessageType type, IpAddr const& group, IpAddr const& dst ) {
        ethernet( form, dst );
        ip( form, dst, 8 );
        auto* const igmp = take<IgmpV12Hdr>();
        igmp->messageTypeIs( type );
        igmp->unusedIs( 0 );
        igmp->groupAddressIs( group );
        igmp->checksumIs( 0 );
        igmp->checksumIs( igmp->computedChecksum( 8 ) );
    }

    struct Record {
        IgmpV3GroupRecordType type;
        IpAddr group;
        std::vector<IpAddr> sources = {};
    };
    void buildV3( Form form, std::vector<Record> const& records ) {
        ethernet( form, IpAddr( "224.0.0.22" ) );
        U32 igmpBytes = 8;
        for ( Record const& record : records ) {
            igmpBytes += 8 + 4 * static_cast<U32>( record.sources.size() );
        }
        ip( form, IpAddr( "224.0.0.22" ), igmpBytes );
        auto* const report = take<IgmpV3ReportHdr>();
        report->messageTypeIs( IgmpMessageType::v3MembershipReport );
        report->unusedIs( 0 );
        report->reservedIs( 0 );
        report->numGroupRecordsIs( static_cast<U16>( records.size() ) );
        for ( Record const& record : records ) {
            append( record );
        }
        report->checksumIs( 0 );
        report->checksumIs(
            ipChecksumCalc( reinterpret_cast<char const*>( report ), static_cast<U16>( igmpBytes ), 0 )
        );
    }

    /// The frame up to the window's start.
    std::string frame() {
        pkt_->delSharedTailData( pkt_->offsetBytes() );
        return hex( { pkt_->front(), pkt_->bytes() } );
    }

  private:
    template <class Header>
    Header* take() {
        auto* const header = pkt_->offsetHeader<Header>();
        pkt_->beginOffsetInc( sizeof( Header ) );
        return header;
    }
    void ethernet( Form form, IpAddr const& dst ) {
        auto* const eth = take<EthHdr>();
        eth->dstIs( ipMcastMacAddr( dst ) );
        eth->srcIs( EthAddr( "02:00:00:00:00:01" ) );
        eth->typeOrLenIs( form.tagged ? ethType8021Q : ethTypeIp );
        if ( form.tagged ) {
            auto* const tag = take<Eth8021QHdr>();
            tag->tagControlIs( 100 );
            tag->typeOrLenIs( ethTypeIp );
        }
    }
    void ip( Form form, IpAddr const& dst, U32 payload ) {
        auto* const hdr = new ( take<IpHdr>() ) IpHdr;
        if ( form.routerAlert ) {
            std::ignore = new ( take<IpHdrRouterAlertOption>() ) IpHdrRouterAlertOption;
        }
        hdr->versionIs( 4 );
        hdr->headerBytesIs( form.routerAlert ? 24 : 20 );
        hdr->totalLenIs( static_cast<U16>( hdr->headerBytes() + payload ) );
        hdr->ttlIs( 1 );
        hdr->protocolIs( ipProtoIgmp );
        hdr->srcIs( IpAddr( "10.0.0.1" ) );
        hdr->dstIs( dst );
        hdr->checksumIs( hdr->computedChecksum() );
    }
    void append( Record const& from ) {
        auto* const record = take<IgmpReportGroupRecordHeader>();
        record->recordTypeIs( from.type );
        record->auxDataLenIs( 0 );
        record->mcastAddrIs( from.group );
        record->numSourcesIs( static_cast<U16>( from.sources.size() ) );
        for ( U16 i = 0; i < from.sources.size(); ++i ) {
            take<IpAddr>();
            record->sourceIs( i, from.sources[i] );
        }
    }

    Kiv::Ptr<Pkt> pkt_ = globalPktManager()->newPkt();
};

TEST_F( FramesTest, V2ReportWithRouterAlert ) {
    IpAddr const group( "239.1.1.1" );
    buildV12( {}, IgmpMessageType::v2MembershipReport, group, group );
    EXPECT_EQ(
        frame(), ungrouped( "01005e010101 020000000001 0800 46000020000000000102 2ad5 0a000001ef010101"
                            "94040000 1600f9fcef010101" )
    );
}

TEST_F( FramesTest, V2ReportWithoutRouterAlert ) {
    IpAddr const group( "239.1.1.1" );
    buildV12( { .routerAlert = false }, IgmpMessageType::v2MembershipReport, group, group );
    EXPECT_EQ(
        frame(), ungrouped( "01005e010101 020000000001 0800 4500001c000000000102 bfdd 0a000001ef010101"
                            "1600f9fcef010101" )
    );
}

TEST_F( FramesTest, V2ReportInAVlan ) {
    IpAddr const group( "239.1.1.1" );
    buildV12( { .tagged = true }, IgmpMessageType::v2MembershipReport, group, group );
    EXPECT_EQ(
        frame(), ungrouped( "01005e010101 020000000001 81000064 0800 46000020000000000102 2ad5"
                            "0a000001ef010101 94040000 1600f9fcef010101" )
    );
}

TEST_F( FramesTest, V1ReportDiffersInItsTypeOnly ) {
    IpAddr const group( "239.1.1.1" );
    buildV12( {}, IgmpMessageType::v1MembershipReport, group, group );
    EXPECT_EQ(
        frame(), ungrouped( "01005e010101 020000000001 0800 46000020000000000102 2ad5 0a000001ef010101"
                            "94040000 1200fdfcef010101" )
    );
}

TEST_F( FramesTest, LeaveGoesToAllRouters ) {
    buildV12( {}, IgmpMessageType::v2LeaveGroup, IpAddr( "239.1.1.1" ), IpAddr( "224.0.0.2" ) );
    EXPECT_EQ(
        frame(), ungrouped( "01005e000002 020000000001 0800 46000020000000000102 3ad5 0a000001e0000002"
                            "94040000 1700f8fcef010101" )
    );
}

TEST_F( FramesTest, LeaveWithoutRouterAlert ) {
    Form const form{ .routerAlert = false };
    buildV12( form, IgmpMessageType::v2LeaveGroup, IpAddr( "239.1.1.1" ), IpAddr( "224.0.0.2" ) );
    EXPECT_EQ(
        frame(), ungrouped( "01005e000002 020000000001 0800 4500001c000000000102 cfdd 0a000001e0000002"
                            "1700f8fcef010101" )
    );
}

TEST_F( FramesTest, V3ReportWithTwoRecords ) {
    buildV3(
        {}, { { IgmpV3GroupRecordType::CHANGE_TO_EXCLUDE_MODE, IpAddr( "239.1.1.1" ) },
              { IgmpV3GroupRecordType::ALLOW_NEW_SOURCES,
                IpAddr( "232.1.1.1" ),
                { IpAddr( "10.9.9.1" ), IpAddr( "10.9.9.2" ) } } }
    );
    EXPECT_EQ(
        frame(), ungrouped( "01005e000016 020000000001 0800 46000038000000000102 3aa9 0a000001e0000016"
                            "94040000 2200d5e000000002 04000000ef010101 05000002e80101010a0909010a090902" )
    );
}

TEST_F( FramesTest, V3ReportWithOneRecord ) {
    buildV3( {}, { { IgmpV3GroupRecordType::CHANGE_TO_INCLUDE_MODE, IpAddr( "239.1.1.1" ) } } );
    EXPECT_EQ(
        frame(), ungrouped( "01005e000016 020000000001 0800 46000028000000000102 3ab9 0a000001e0000016"
                            "94040000 2200eafb00000001 03000000ef010101" )
    );
}

} // namespace Zornet
