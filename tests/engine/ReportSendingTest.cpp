/// Version 1 and 2 reports and leaves, from the state of a host to the bytes on its wire.

#include "engine/ReportSending.h"

#include "tests/platform/zornet/Hex.h"
#include "tests/support/DeliveryTest.h"
#include "tests/support/FedPam.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Bridging::AllowedTrafficDirection;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

constexpr char const* G = "239.1.1.1";

class ReportSendingTest : public Support::DeliveryTest {
  protected:
    static std::string text( char const* digits ) { return Zornet::ungrouped( digits ); }
    /// The frames sent, as digits.
    std::vector<std::string> frames() {
        std::vector<std::string> all;
        for ( auto const& frame : sent() ) {
            all.push_back( Zornet::hex( frame.bytes ) );
        }
        return all;
    }
    std::string v2PktBytes() {
        Lab::Bytes bytes( sm().v2ReportPkt()->bytes() );
        sm().v2ReportPkt()->copyTo( bytes.data() );
        return Zornet::hex( bytes );
    }
    void leave( char const* group = G ) {
        host().v3groupDel( IpAddr( group ) );
        settle();
    }
    /// Puts a version in force without asking the engine for it.
    void forceVersion( IgmpVersion version ) {
        status().igmpVersionIs( version );
        settle();
        takeSent();
    }
    std::vector<U32> counters() {
        return { status().v1ReportsSent(), status().v2ReportsSent(), status().v2LeavesSent() };
    }
};
INSTANTIATE_DELIVERY_TESTS( ReportSendingTest );

TEST_P( ReportSendingTest, Version2ReportWithRouterAlert ) {
    enable();
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 0800 46000020000000000102 2ad5 "
                                     "0a000001ef010101 94040000 1600f9fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, Version2ReportWithoutRouterAlert ) {
    host().enableRouterAlertIs( false );
    enable();
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 0800 4500001c000000000102 bfdd "
                                     "0a000001ef010101 1600f9fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, TaggedVersion2ReportWithRouterAlert ) {
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    enable();
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 81000064 0800 46000020000000000102 2ad5 "
                                     "0a000001ef010101 94040000 1600f9fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, TaggedVersion2ReportWithoutRouterAlert ) {
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    host().enableRouterAlertIs( false );
    enable();
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 81000064 0800 4500001c000000000102 bfdd "
                                     "0a000001ef010101 1600f9fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, Version1ReportWithRouterAlert ) {
    enable( igmpVersion1 );
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 0800 46000020000000000102 2ad5 "
                                     "0a000001ef010101 94040000 1200fdfcef010101" ) )
    );
}

TEST_P( ReportSendingTest, Version1ReportWithoutRouterAlert ) {
    host().enableRouterAlertIs( false );
    enable( igmpVersion1 );
    exclude( G );
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e010101 020000000001 0800 4500001c000000000102 bfdd "
                                     "0a000001ef010101 1200fdfcef010101" ) )
    );
}

TEST_P( ReportSendingTest, LeaveWithRouterAlertGoesToAllRoutersAndNamesTheGroup ) {
    enable();
    exclude( G );
    sent().clear();
    leave();
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e000002 020000000001 0800 46000020000000000102 3ad5 "
                                     "0a000001e0000002 94040000 1700f8fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, LeaveWithoutRouterAlert ) {
    host().enableRouterAlertIs( false );
    enable();
    exclude( G );
    sent().clear();
    leave();
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e000002 020000000001 0800 4500001c000000000102 cfdd "
                                     "0a000001e0000002 1700f8fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, TaggedLeave ) {
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    enable();
    exclude( G );
    sent().clear();
    leave();
    EXPECT_THAT(
        frames(), ElementsAre( text( "01005e000002 020000000001 81000064 0800 46000020000000000102 3ad5 "
                                     "0a000001e0000002 94040000 1700f8fcef010101" ) )
    );
}

TEST_P( ReportSendingTest, TwoGroupsMayHaveOneMacAddress ) {
    enable();
    exclude( "239.129.1.1" );
    ASSERT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_EQ( frames()[0].substr( 0, 12 ), "01005e010101" );
    EXPECT_EQ( sent()[0].bytes, Lab::v2Report( IpAddr( "10.0.0.1" ), IpAddr( "239.129.1.1" ) ) );
}

TEST_P( ReportSendingTest, EachFrameIsRightWhateverWentBefore ) {
    enable();
    exclude( G );
    exclude( "224.1.2.3" );
    leave();
    exclude( "239.9.9.9" );
    IpAddr const src( "10.0.0.1" );
    ASSERT_THAT( sent(), SizeIs( 4 ) );
    EXPECT_EQ( sent()[0].bytes, Lab::v2Report( src, IpAddr( G ) ) );
    EXPECT_EQ( sent()[1].bytes, Lab::v2Report( src, IpAddr( "224.1.2.3" ) ) );
    EXPECT_EQ( sent()[2].bytes, Lab::v2Leave( src, IpAddr( G ) ) );
    EXPECT_EQ( sent()[3].bytes, Lab::v2Report( src, IpAddr( "239.9.9.9" ) ) );
}

TEST_P( ReportSendingTest, SecondByteIsZeroWhateverStoodThere ) {
    enable();
    ( sm().v2ReportPkt()->front() )[sm().offsetIgmpReportHeader() + 1] = 0x77;
    exclude( G );
    EXPECT_EQ( sent()[0].bytes, Lab::v2Report( IpAddr( "10.0.0.1" ), IpAddr( G ) ) );
}

TEST_P( ReportSendingTest, FieldsThatAreNotPatchedComeFromTheTemplate ) {
    enable();
    ( sm().v2ReportPkt()->front() )[sm().offsetIpHeader() + 1] = 0xc0; // type of service
    exclude( G );
    EXPECT_EQ( sent()[0].bytes[15], 0xc0 );
    leave();
    EXPECT_EQ( sent()[1].bytes[15], 0xc0 );
}

TEST_P( ReportSendingTest, TemplateHoldsTheLastGroup ) {
    enable();
    exclude( G );
    EXPECT_EQ( v2PktBytes(), frames()[0] );
    leave();
    EXPECT_EQ( v2PktBytes(), frames()[1] );
}

TEST_P( ReportSendingTest, Version3TemplateIsNotTouched ) {
    enable();
    Lab::Bytes before( sm().v3ReportPkt()->bytes() );
    sm().v3ReportPkt()->copyTo( before.data() );
    exclude( G );
    leave();
    Lab::Bytes after( sm().v3ReportPkt()->bytes() );
    sm().v3ReportPkt()->copyTo( after.data() );
    EXPECT_EQ( after, before );
}

TEST_P( ReportSendingTest, LengthFollowsTheConfigurationAndTheHeaderTheTemplate ) {
    enable();
    host().enableRouterAlertIs( false ); // not built into the templates yet
    exclude( G );
    ASSERT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_EQ( sent()[0].bytes.size(), 46U );
    EXPECT_EQ( frames()[0].substr( 28, 8 ), "4600001c" );
}

TEST_P( ReportSendingTest, ReportsAndLeavesAreCountedByKind ) {
    enable();
    exclude( G );
    EXPECT_THAT( counters(), ElementsAre( 0, 1, 0 ) );
    leave();
    EXPECT_THAT( counters(), ElementsAre( 0, 1, 1 ) );
    forceVersion( igmpVersion1 );
    exclude( G );
    EXPECT_THAT( counters(), ElementsAre( 1, 1, 1 ) );
}

TEST_P( ReportSendingTest, HostOfVersion1SendsVersion1WithNothingHeard ) {
    enable( igmpVersion1 );
    exclude( G );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
    EXPECT_THAT( counters(), ElementsAre( 1, 0, 0 ) );
}

TEST_P( ReportSendingTest, HostOfVersion1SendsVersion1WhateverIsInForce ) {
    enable( igmpVersion1 );
    forceVersion( igmpVersion2 );
    sendV12Report( &sm(), IpAddr( G ) );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
}

TEST_P( ReportSendingTest, HostOfVersion3SendsTheVersionInForce ) {
    enable( igmpVersion3 );
    forceVersion( igmpVersion1 );
    sendV12Report( &sm(), IpAddr( G ) );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
    forceVersion( igmpVersion2 );
    sendV12Report( &sm(), IpAddr( G ) );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_THAT( counters(), ElementsAre( 1, 1, 0 ) );
}

TEST_P( ReportSendingTest, VersionInForceThatIsUnknownSendsVersion2 ) {
    enable();
    forceVersion( igmpVersionUnknown );
    sendV12Report( &sm(), IpAddr( G ) );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( ReportSendingTest, HostInVersion3NeitherSendsNorCounts ) {
    enable( igmpVersion3 );
    std::string const before = v2PktBytes();
    sendV12Report( &sm(), IpAddr( G ) );
    sendV2Leave( &sm(), IpAddr( G ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_THAT( counters(), ElementsAre( 0, 0, 0 ) );
    EXPECT_EQ( v2PktBytes(), before );
}

TEST_P( ReportSendingTest, LeaveDoesNotAskForVersion1 ) {
    enable( igmpVersion1 );
    sendV2Leave( &sm(), IpAddr( G ) );
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
    EXPECT_THAT( counters(), ElementsAre( 0, 0, 1 ) );
}

TEST_P( ReportSendingTest, Version1QuerierIsWhatTheStatusSays ) {
    enable();
    EXPECT_FALSE( v1QuerierSeenRecently( &sm() ) );
    sm().v1RouterPresentTimer()->timeMinIs( Kiv::now() + 100.0 );
    EXPECT_FALSE( v1QuerierSeenRecently( &sm() ) );
    forceVersion( igmpVersion1 );
    EXPECT_TRUE( v1QuerierSeenRecently( &sm() ) );
    forceVersion( igmpVersion3 );
    EXPECT_FALSE( v1QuerierSeenRecently( &sm() ) );
}

TEST_P( ReportSendingTest, BlockedHostCountsAndIsSilent ) {
    enable();
    host().blockedIs( true );
    std::string const before = v2PktBytes();
    exclude( G );
    leave();
    EXPECT_THAT( counters(), ElementsAre( 0, 1, 1 ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( v2PktBytes(), before );
}

TEST_P( ReportSendingTest, IngressOnlyHostCountsAndIsSilent ) {
    enable();
    host().directionIs( AllowedTrafficDirection::ingress );
    std::string const before = v2PktBytes();
    exclude( G );
    leave();
    EXPECT_THAT( counters(), ElementsAre( 0, 1, 1 ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( v2PktBytes(), before );
}

TEST_P( ReportSendingTest, EgressOnlyHostSends ) {
    enable();
    host().directionIs( AllowedTrafficDirection::egress );
    exclude( G );
    EXPECT_THAT( sent(), SizeIs( 1 ) );
}

TEST_P( ReportSendingTest, HostWithoutAWireCounts ) {
    host().deviceNameIs( "" );
    enable();
    std::string const before = v2PktBytes();
    exclude( G );
    leave();
    EXPECT_THAT( counters(), ElementsAre( 0, 1, 1 ) );
    EXPECT_EQ( v2PktBytes(), before );
}

TEST_P( ReportSendingTest, HostThatMaySendAgainSendsWhatComesNextOnly ) {
    enable();
    host().blockedIs( true );
    exclude( G );
    host().blockedIs( false );
    settle();
    EXPECT_THAT( takeSent(), IsEmpty() );
    exclude( "239.1.1.2" );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.2" ) );
}

TEST_P( ReportSendingTest, DropsAreTracedInTheOrderOfTheTests ) {
    host().deviceNameIs( "" );
    enable();
    host().blockedIs( true );
    host().directionIs( AllowedTrafficDirection::ingress );
    TraceCapture trace( "IgmpHost", 9 );
    sendV12Report( &sm(), IpAddr( G ) );
    host().blockedIs( false );
    sendV12Report( &sm(), IpAddr( G ) );
    host().directionIs( AllowedTrafficDirection::both );
    sendV12Report( &sm(), IpAddr( G ) );
    EXPECT_THAT(
        trace.texts(), ElementsAre(
                           "IgmpHost host blocked. dropping packet ", "IgmpHost host direction is ingress ",
                           "IgmpHost host no pam to send report"
                       )
    );
}

TEST_P( ReportSendingTest, SendingIsTracedWithTheHeader ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    sendV12Report( &sm(), IpAddr( G ) );
    ASSERT_THAT( trace.texts(), SizeIs( 1 ) );
    EXPECT_TRUE( trace.texts()[0].starts_with( "IgmpHost host sending " ) );
    EXPECT_TRUE( trace.texts()[0].ends_with( "group 239.1.1.1" ) );
    EXPECT_NE( trace.texts()[0].find( "0xf9fc" ), std::string::npos );
}

/// A host whose channel looks at it while it is handed a frame.
class ReportHandOver : public Support::DeliveryTest {
  protected:
    ReportHandOver() {
        host().externalPamIs( true );
        settle();
        host().pamIs( fed );
        settle();
        enable();
    }

    Ptr<FedPam> const fed{ new FedPam };
};
INSTANTIATE_DELIVERY_TESTS( ReportHandOver );

TEST_P( ReportHandOver, ReportIsCountedAfterwards ) {
    std::vector<U32> seen;
    fed->onSend = [&] { seen.push_back( status().v2ReportsSent() ); };
    exclude( G );
    EXPECT_THAT( seen, ElementsAre( 0 ) );
    EXPECT_EQ( status().v2ReportsSent(), 1U );
}

TEST_P( ReportHandOver, LeaveIsCountedBefore ) {
    exclude( G );
    std::vector<U32> seen;
    fed->onSend = [&] { seen.push_back( status().v2LeavesSent() ); };
    host().v3groupDel( IpAddr( G ) );
    settle();
    EXPECT_THAT( seen, ElementsAre( 1 ) );
}

TEST_P( ReportHandOver, WindowStandsAtTheIgmpHeaderAndTheFrameIsWhole ) {
    U16 window = 0;
    fed->onSend = [&] { window = sm().v2ReportPkt()->beginOffset(); };
    exclude( G );
    EXPECT_EQ( window, sm().offsetIgmpReportHeader() );
    EXPECT_THAT( fed->sent, ElementsAre( Lab::v2Report( IpAddr( "10.0.0.1" ), IpAddr( G ) ) ) );
}

TEST_P( ReportHandOver, ChannelIsGivenTheTemplateItself ) {
    Ptr<Zornet::Pkt> const held = sm().v2ReportPkt();
    U32 references = 0;
    fed->onSend = [&] { references = held->references(); };
    U32 const atRest = held->references();
    exclude( G );
    EXPECT_GT( references, atRest );
    EXPECT_EQ( held->references(), atRest );
}

} // namespace
