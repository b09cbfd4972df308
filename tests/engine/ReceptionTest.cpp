/// What a host makes of the frames that it reads: which it takes, which it drops, with which trace, and that
/// a dropped frame leaves nothing else behind.

#include "platform/zornet/IgmpMessageType.h"
#include "tests/engine/EngineTest.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Igmp;
using Lab::Bytes;
using Support::Delivery;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::EthAddr;
using Zornet::IgmpMessageType;
using Zornet::IpAddr;
using Zornet::U16;
using Zornet::U8;

constexpr std::size_t ipAt = 14;
constexpr std::size_t igmpAt = ipAt + 24; ///< with Router Alert
constexpr int everyLevel = 9;

Bytes
frameOf( Bytes const& igmp, Lab::Manner const& manner = {} ) {
    return Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), igmp, manner );
}

/// 46 bytes, Router Alert included.
Bytes
queryFrame( Lab::Manner const& manner = {} ) {
    return frameOf( Lab::igmpMessage( IgmpMessageType::membershipQuery, 100, IpAddr() ), manner );
}

Bytes
v3QueryFrame() {
    return frameOf( Lab::v3QueryMessage( IpAddr(), {}, 100, false, 2, 125 ) );
}

/// A message of any type and of at least 4 bytes, zero but for type and checksum.
Bytes
message( unsigned type, std::size_t bytes ) {
    Bytes made( bytes );
    made[0] = static_cast<U8>( type );
    Lab::checksum( made );
    return made;
}

Bytes
with( Bytes frame, std::size_t at, unsigned value ) {
    frame[at] = static_cast<U8>( value );
    return frame;
}

Bytes
cut( Bytes frame, std::size_t bytes ) {
    frame.resize( bytes );
    return frame;
}

Bytes
padded( Bytes frame, std::size_t bytes ) {
    frame.resize( bytes, 0xee );
    return frame;
}

/// With the first byte of the IP header and the total length as given and the checksum right for them.
Bytes
withIp( Bytes frame, unsigned versionAndWords, unsigned totalLen ) {
    frame[ipAt] = static_cast<U8>( versionAndWords );
    frame[ipAt + 2] = static_cast<U8>( totalLen >> 8 );
    frame[ipAt + 3] = static_cast<U8>( totalLen );
    Lab::fixIpChecksum( frame, ( versionAndWords & 0xf ) * 4 );
    return frame;
}

Bytes
withProtocol( unsigned protocol ) {
    Bytes frame = with( queryFrame(), ipAt + 9, protocol );
    Lab::fixIpChecksum( frame, 24 );
    return frame;
}

/// A host that reads from an access object of the test's own, has joined G and owes nothing.
class ReceptionBase : public EngineTest {
  protected:
    explicit ReceptionBase( Delivery delivery ) : EngineTest( delivery ) {
        host().externalPamIs( true );
        settle();
        host().pamIs( pam );
        settle();
        joinAndRest();
        pam->sent.clear();
    }

    void arrive( Bytes const& frame ) {
        pam->feed( frame );
        settle();
    }
    void arrive( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
        pam->feed( pkt );
        settle();
    }
    /// Nothing remembered, nothing pending, nothing sent.
    void expectUntouched() {
        EXPECT_FALSE( Kiv::isFinite( sm().v1RouterPresentTimer()->timeMin() ) );
        EXPECT_FALSE( Kiv::isFinite( sm().v2RouterPresentTimer()->timeMin() ) );
        EXPECT_EQ( timer().responseDelayTimerState(), idle );
        EXPECT_TRUE( timer().lastReporter() );
        EXPECT_THAT( pam->sent, IsEmpty() );
        EXPECT_EQ( pam->waiting(), 0U );
    }

    Kiv::Ptr<FedPam> pam{ new FedPam };
};

class Reception : public ReceptionBase, public ::testing::WithParamInterface<Delivery> {
  protected:
    Reception() : ReceptionBase( GetParam() ) {}
};
INSTANTIATE_DELIVERY_TESTS( Reception );

// Frames that are dropped.

struct BadFrame {
    char const* name;
    Bytes frame;
    std::string trace; ///< what follows the host's name, without a printed header; empty for silence

    friend void PrintTo( BadFrame const& bad, std::ostream* out ) { *out << bad.name; }
};

std::string const ethTrace = " dropping eth packet ";
std::string const notIgmp = " dropping ip packet (not igmp):";
std::string const badHeaderBytes = " dropping ip packet (bad header bytes):";
std::string const badIpChecksum = " dropping ip packet (bad checksum):";
std::string const badIgmpChecksum = " dropping igmp packet (bad checksum):";
std::string const unknownType = " dropping igmp packet by type ";

std::vector<BadFrame>
badEthernet() {
    auto const to = []( EthAddr const& dst ) { return queryFrame( { .ethDst = dst } ); };
    return {
        { "Empty", {}, "" },
        { "OneByte", { 1 }, "" },
        { "ThirteenBytes", cut( queryFrame(), 13 ), "" },
        { "FourteenBytesOfAnotherType", with( cut( queryFrame(), 14 ), 13, 6 ), ethTrace },
        { "FourteenBytes", cut( queryFrame(), 14 ), "" },
        { "UnicastDestination", to( EthAddr( "02:00:00:00:00:01" ) ), ethTrace },
        { "BroadcastDestination", to( EthAddr( "ff:ff:ff:ff:ff:ff" ) ), ethTrace },
        { "Ipv6MulticastDestination", to( EthAddr( "33:33:00:00:00:16" ) ), ethTrace },
        { "MulticastDestinationAboveTheIpRange", to( EthAddr( "01:00:5e:80:00:01" ) ), ethTrace },
        { "Tag", queryFrame( { .tag = 100 } ), ethTrace },
        { "PriorityTag", queryFrame( { .tag = 0 } ), ethTrace },
        { "LengthInPlaceOfType", with( with( queryFrame(), 12, 0 ), 13, 32 ), ethTrace },
        { "Ipv6", with( with( queryFrame(), 12, 0x86 ), 13, 0xdd ), ethTrace },
    };
}

std::vector<BadFrame>
badIp() {
    Bytes const query = queryFrame();
    return {
        { "NineteenIpBytes", cut( query, 33 ), "" },
        { "Udp", withProtocol( 17 ), notIgmp },
        { "OtherProtocolInACutHeader", cut( withProtocol( 103 ), 34 ), notIgmp },
        { "HeaderBeyondTheFrame", cut( query, 37 ), badHeaderBytes },
        { "SixtyByteHeaderBeyondTheFrame", with( query, ipAt, 0x4f ), badHeaderBytes },
        { "HeaderOfNoWords", with( query, ipAt, 0x40 ), badIpChecksum },
        { "HeaderOfFourWords", with( query, ipAt, 0x44 ), badIpChecksum },
        { "WrongIpChecksum", with( query, ipAt + 10, query[ipAt + 10] ^ 1U ), badIpChecksum },
        { "ChangedAddress", with( query, ipAt + 12, 11 ), badIpChecksum },
        { "HeaderOfFourWordsAndItsChecksum", withIp( query, 0x44, 32 ), badIgmpChecksum },
        { "TotalLengthBeyondTheFrame", withIp( query, 0x46, 33 ), "" },
        { "GreatestTotalLength", withIp( query, 0x46, 65535 ), "" },
        { "TotalLengthBelowTheHeader", withIp( query, 0x46, 23 ), "" },
        { "TotalLengthOfZero", withIp( query, 0x46, 0 ), "" },
        { "NoIgmpBytes", cut( withIp( query, 0x46, 24 ), igmpAt ), "" },
        { "ThreeIgmpBytes", cut( withIp( query, 0x46, 27 ), igmpAt + 3 ), "" },
        { "TotalLengthOfTheHeader", withIp( query, 0x46, 24 ), badIgmpChecksum },
    };
}

std::vector<BadFrame>
badIgmp() {
    Bytes const query = queryFrame();
    Bytes const v3Query = Lab::v3QueryMessage( IpAddr(), {}, 100, false, 2, 125 );
    return {
        { "WrongIgmpChecksum", with( query, igmpAt + 2, query[igmpAt + 2] ^ 1U ), badIgmpChecksum },
        { "ChangedGroup", with( query, igmpAt + 4, 239 ), badIgmpChecksum },
        { "ChecksumOfMoreThanThePayload", withIp( frameOf( v3Query ), 0x46, 32 ), badIgmpChecksum },
        { "SecondFragment", withIp( with( padded( query, igmpAt ), ipAt + 7, 3 ), 0x45, 24 ),
          badIgmpChecksum },
        { "QueryOfFourBytes", frameOf( message( 0x11, 4 ) ), "" },
        { "QueryOfSevenBytes", frameOf( message( 0x11, 7 ) ), "" },
        { "Version1ReportOfSevenBytes", frameOf( message( 0x12, 7 ) ), "" },
        { "Version2ReportOfFourBytes", frameOf( message( 0x16, 4 ) ), "" },
        { "Version2ReportOfSevenBytes", frameOf( message( 0x16, 7 ) ), "" },
        { "LeaveOfSevenBytes", frameOf( message( 0x17, 7 ) ), "" },
        { "Leave", frameOf( message( 0x17, 8 ) ), "" },
        { "Type0", frameOf( message( 0x00, 8 ) ), unknownType },
        { "Type10", frameOf( message( 0x10, 8 ) ), unknownType },
        { "Dvmrp", frameOf( message( 0x13, 8 ) ), unknownType },
        { "Pim1", frameOf( message( 0x14, 8 ) ), unknownType },
        { "Type15", frameOf( message( 0x15, 8 ) ), unknownType },
        { "Type18", frameOf( message( 0x18, 8 ) ), unknownType },
        { "RouterAdvertisement", frameOf( message( 0x30, 4 ) ), unknownType },
        { "TypeFf", frameOf( message( 0xff, 100 ) ), unknownType },
        { "UnknownTypeWithAWrongChecksum", with( frameOf( message( 0x13, 8 ) ), igmpAt + 5, 1 ),
          badIgmpChecksum },
    };
}

using BadFrameParam = std::tuple<Delivery, BadFrame>;

std::string
badFrameName( ::testing::TestParamInfo<BadFrameParam> const& info ) {
    return std::get<1>( info.param ).name + Support::deliveryName( std::get<0>( info.param ) );
}

class BadFrames : public ReceptionBase, public ::testing::WithParamInterface<BadFrameParam> {
  protected:
    BadFrames() : ReceptionBase( std::get<0>( GetParam() ) ) {}
};

TEST_P( BadFrames, LeaveNothingButTheirTrace ) {
    BadFrame const& bad = std::get<1>( GetParam() );
    auto const before = changes();
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( bad.frame );
    if ( bad.trace.empty() ) {
        EXPECT_THAT( trace.texts(), IsEmpty() );
    } else {
        ASSERT_THAT( trace.texts(), SizeIs( 1 ) );
        bool const endsThere = bad.trace == ethTrace;
        std::string const text = "IgmpHost host" + bad.trace;
        EXPECT_EQ( trace.texts()[0].substr( 0, text.size() ), text );
        EXPECT_EQ( trace.texts()[0].size() == text.size(), endsThere );
        EXPECT_THAT( trace.levels(), ElementsAre( 3 ) );
    }
    EXPECT_THAT( before.list(), IsEmpty() );
    expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(
    Ethernet, BadFrames,
    ::testing::Combine( Support::eitherDelivery(), ::testing::ValuesIn( badEthernet() ) ), badFrameName
);
INSTANTIATE_TEST_SUITE_P(
    Ip, BadFrames, ::testing::Combine( Support::eitherDelivery(), ::testing::ValuesIn( badIp() ) ),
    badFrameName
);
INSTANTIATE_TEST_SUITE_P(
    Igmp, BadFrames, ::testing::Combine( Support::eitherDelivery(), ::testing::ValuesIn( badIgmp() ) ),
    badFrameName
);

/// The trace of a good frame with Router Alert that was cut to so many bytes.
std::string
traceOfCutFrame( std::size_t bytes ) {
    bool const headerCut = bytes >= ipAt + 20 && bytes < igmpAt;
    return headerCut ? "IgmpHost host" + badHeaderBytes : "";
}

TEST_P( Reception, FrameCutAtAnyLengthIsDropped ) {
    Bytes const reports[] = { Lab::v1Report( IpAddr( "10.0.0.9" ), IpAddr( G ) ),
                              Lab::v2Report( IpAddr( "10.0.0.9" ), IpAddr( G ) ),
                              Lab::v2Leave( IpAddr( "10.0.0.9" ), IpAddr( G ) ) };
    std::vector<Bytes> frames{ queryFrame(), v3QueryFrame() };
    frames.insert( frames.end(), std::begin( reports ), std::end( reports ) );
    auto const before = changes();
    for ( Bytes const& whole : frames ) {
        for ( std::size_t bytes = 0; bytes < whole.size(); ++bytes ) {
            TraceCapture const trace( "IgmpHost", everyLevel );
            arrive( cut( whole, bytes ) );
            std::string const expected = traceOfCutFrame( bytes );
            ASSERT_EQ( trace.texts().empty(), expected.empty() ) << bytes;
            ASSERT_TRUE( expected.empty() || trace.contains( expected ) ) << bytes;
        }
    }
    EXPECT_THAT( before.list(), IsEmpty() );
    expectUntouched();
}

TEST_P( Reception, FrameWithoutARegionInUseIsDroppedSilently ) {
    auto const pkt = Support::tightPkt( queryFrame() );
    pkt->ioVecDelAll();
    auto const before = changes();
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( pkt );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_THAT( before.list(), IsEmpty() );
}

// Frames in two regions.

/// The frame with its first `headBytes` bytes in a region of their own, which must outlive the packet.
Kiv::Ptr<Zornet::Pkt>
inTwoRegions( Bytes const& frame, std::size_t headBytes, Bytes& head ) {
    auto const at = frame.begin() + static_cast<std::ptrdiff_t>( headBytes );
    head.assign( frame.begin(), at );
    head.shrink_to_fit();
    auto const pkt = Support::tightPkt( Bytes( at, frame.end() ) );
    pkt->headIoVecIs( { head.data(), static_cast<Zornet::U32>( head.size() ) } );
    return pkt;
}

TEST_P( Reception, QueryIsTakenWhereverItsTwoRegionsMeet ) {
    Bytes const query = queryFrame();
    Bytes head;
    for ( std::size_t headBytes = 0; headBytes <= query.size(); ++headBytes ) {
        auto const count = status().v2GeneralQueryReceived();
        arrive( inTwoRegions( query, headBytes, head ) );
        EXPECT_EQ( status().v2GeneralQueryReceived(), count + 1 ) << headBytes;
    }
}

TEST_P( Reception, CutFrameInTwoRegionsIsDropped ) {
    Bytes const query = queryFrame();
    Bytes head;
    auto const before = changes();
    for ( std::size_t bytes = 0; bytes < query.size(); ++bytes ) {
        for ( std::size_t headBytes = 0; headBytes <= bytes; ++headBytes ) {
            arrive( inTwoRegions( cut( query, bytes ), headBytes, head ) );
        }
    }
    EXPECT_THAT( before.list(), IsEmpty() );
    expectUntouched();
}

// Frames that are taken.

TEST_P( Reception, HeaderWithRouterAlertIsTaken ) {
    arrive( queryFrame( { .routerAlert = true } ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, HeaderWithoutOptionsIsTaken ) {
    arrive( queryFrame( { .routerAlert = false } ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, HeaderOfSixtyBytesIsTaken ) {
    Bytes frame = queryFrame();
    frame.insert( frame.begin() + igmpAt, 36, 0 );
    arrive( withIp( frame, 0x4f, 68 ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, VersionTtlAndFragmentFieldsAreNotLookedAt ) {
    Bytes frame = with( with( queryFrame(), ipAt + 8, 64 ), ipAt + 6, 0x20 );
    arrive( withIp( frame, 0x66, 32 ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, AnyIpMulticastAddressIsTaken ) {
    arrive( queryFrame( { .ethDst = EthAddr( "01:00:5e:7f:ff:ff" ) } ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, QueryGoesOnWithItsLength ) {
    TraceCapture const trace( "IgmpHost", 4 );
    arrive( queryFrame() );
    EXPECT_TRUE( trace.contains( "IgmpHost host received query: " ) );
    EXPECT_TRUE( trace.contains( " size: 8 maxResp: 100" ) );
    arrive( v3QueryFrame() );
    EXPECT_TRUE( trace.contains( " size: 12 maxResp: 100" ) );
}

TEST_P( Reception, PaddingDoesNotCount ) {
    TraceCapture const trace( "IgmpHost", 4 );
    arrive( padded( queryFrame( { .routerAlert = false } ), 60 ) );
    EXPECT_TRUE( trace.contains( " size: 8 maxResp: 100" ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, PaddingMayReplaceWhatAQueryLacks ) {
    TraceCapture const trace( "IgmpHost", 4 );
    Bytes frame = frameOf( message( 0x11, 4 ) );
    frame.resize( 60, 0 );
    arrive( frame );
    EXPECT_TRUE( trace.contains( " size: 4 maxResp: 0" ) );
    EXPECT_EQ( status().igmpVersion(), igmpVersion1 );
}

TEST_P( Reception, FrameAboveTheMtuIsTaken ) {
    arrive( padded( queryFrame(), 70'000 ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
    arrive( frameOf( message( 0x11, 65'511 ) ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 2U );
}

TEST_P( Reception, ReportsOfVersion1And2AreCountedAndSuppress ) {
    for ( IgmpMessageType const type :
          { IgmpMessageType::v1MembershipReport, IgmpMessageType::v2MembershipReport } ) {
        timer().doSetTimer( 5.0 );
        timer().lastReporterIs( true );
        auto const count = status().v12ReportReceived();
        arrive( frameOf( Lab::igmpMessage( type, 0, IpAddr( G ) ) ) );
        EXPECT_EQ( status().v12ReportReceived(), count + 1 );
        EXPECT_EQ( timer().responseDelayTimerState(), idle );
        EXPECT_FALSE( timer().lastReporter() );
    }
}

TEST_P( Reception, LeaveOfAnotherHostChangesNothing ) {
    auto const before = changes();
    timer().doSetTimer( 5.0 );
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( Lab::v2Leave( IpAddr( "10.0.0.9" ), IpAddr( G ) ) );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_THAT( before.list(), IsEmpty() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_TRUE( timer().lastReporter() );
}

TEST_P( Reception, Version3ReportIsCountedAndNothingElse ) {
    timer().doSetTimer( 5.0 );
    auto const before = changes();
    arrive( Lab::v3Report( IpAddr( "10.0.0.9" ), { { Lab::Record::MODE_IS_EXCLUDE, IpAddr( G ) } } ) );
    EXPECT_THAT( before.list(), ElementsAre( "v3ReportReceived=1" ) );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_TRUE( timer().lastReporter() );
}

TEST_P( Reception, Version3ReportOfAnyLengthIsCounted ) {
    Zornet::U32 expected = 0;
    for ( std::size_t const bytes : { 4U, 5U, 7U, 8U, 15U, 16U, 1000U } ) {
        arrive( frameOf( message( 0x22, bytes ) ) );
        EXPECT_EQ( status().v3ReportReceived(), ++expected ) << bytes;
    }
}

TEST_P( Reception, PacketIsLetGoOfAfterwards ) {
    auto const pkt = Support::tightPkt( queryFrame() );
    arrive( pkt );
    EXPECT_EQ( pkt->references(), 1U );
}

// What stands before the reading.

TEST_P( Reception, BlockedHostLeavesThePacketWhereItIs ) {
    host().blockedIs( true );
    settle();
    auto const before = changes();
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( queryFrame() );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host blocked. dropping packet " ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 3 ) );
    EXPECT_EQ( pam->waiting(), 1U );
    EXPECT_THAT( before.list(), IsEmpty() );
}

TEST_P( Reception, UnblockingDoesNotRead ) {
    host().blockedIs( true );
    settle();
    arrive( queryFrame() );
    host().blockedIs( false );
    settle();
    EXPECT_EQ( pam->waiting(), 1U );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 0U );
}

TEST_P( Reception, EgressOnlyHostLeavesThePacketWhereItIs ) {
    host().directionIs( Bridging::AllowedTrafficDirection::egress );
    settle();
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( queryFrame() );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host direction is egress " ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 3 ) );
    EXPECT_EQ( pam->waiting(), 1U );
}

TEST_P( Reception, BlockingIsAskedBeforeTheDirection ) {
    host().blockedIs( true );
    host().directionIs( Bridging::AllowedTrafficDirection::egress );
    settle();
    TraceCapture const trace( "IgmpHost", everyLevel );
    arrive( queryFrame() );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host blocked. dropping packet " ) );
}

TEST_P( Reception, PacketLeftUnreadIsReadByTheNextSignal ) {
    host().blockedIs( true );
    settle();
    arrive( queryFrame() );
    host().blockedIs( false );
    settle();
    arrive( Lab::v3Report( IpAddr( "10.0.0.9" ), {} ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
    EXPECT_EQ( status().v3ReportReceived(), 0U );
    EXPECT_EQ( pam->waiting(), 1U );
}

TEST_P( Reception, OneSignalReadsOnePacket ) {
    pam->place( Support::tightPkt( queryFrame() ) );
    arrive( queryFrame() );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
    EXPECT_EQ( pam->waiting(), 1U );
}

TEST_P( Reception, FirstBindingReadsNothing ) {
    Kiv::Ptr<FedPam> const waiting( new FedPam );
    waiting->place( Support::tightPkt( queryFrame() ) );
    host().pamIs( nullptr );
    settle();
    host().pamIs( waiting );
    settle();
    EXPECT_EQ( waiting->waiting(), 1U );
}

TEST_P( Reception, BacklogOfAFirstBindingIsReadOneSignalLateForGood ) {
    Kiv::Ptr<FedPam> const waiting( new FedPam );
    waiting->place( Support::tightPkt( queryFrame() ) );
    host().pamIs( nullptr );
    settle();
    host().pamIs( waiting );
    settle();
    for ( Zornet::U32 signals = 1; signals <= 3; ++signals ) {
        waiting->feed( Lab::v3Report( IpAddr( "10.0.0.9" ), {} ) );
        settle();
        EXPECT_EQ( waiting->waiting(), 1U );
        EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
        EXPECT_EQ( status().v3ReportReceived(), signals - 1 );
    }
}

TEST_P( Reception, MovingToAnotherAccessObjectReadsOnePacket ) {
    Kiv::Ptr<FedPam> const other( new FedPam );
    other->place( Support::tightPkt( queryFrame() ) );
    other->place( Support::tightPkt( queryFrame() ) );
    host().pamIs( other );
    settle();
    EXPECT_EQ( other->waiting(), 1U );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Reception, DisabledHostThrowsAwayOnePacketForEachSignal ) {
    host().enabledIs( false );
    settle();
    pam->place( Support::tightPkt( queryFrame() ) );
    TraceCapture const trace( "IgmpHost", 3 );
    arrive( queryFrame() );
    EXPECT_EQ( pam->waiting(), 1U );
    arrive( queryFrame() );
    EXPECT_EQ( pam->waiting(), 1U );
    EXPECT_THAT(
        trace.texts(),
        ElementsAre( "IgmpHost host disabled. dropping packet ", "IgmpHost host disabled. dropping packet " )
    );
    EXPECT_THAT( trace.levels(), Each( 3 ) );
}

TEST_P( Reception, DisabledHostThatIsBlockedLeavesThePacket ) {
    host().enabledIs( false );
    host().blockedIs( true );
    settle();
    arrive( queryFrame() );
    EXPECT_EQ( pam->waiting(), 1U );
}

TEST_P( Reception, DisabledHostWithADeviceOfItsOwnHearsNothing ) {
    Support::IgmpHost& second = addHost( "second", "10.0.0.2", "eth1" );
    second.enabledIs( true );
    settle();
    second.enabledIs( false );
    settle();
    TraceCapture const trace( "IgmpHost", everyLevel );
    device( "eth1" ).hear( queryFrame() );
    settle();
    EXPECT_EQ( sm( "second" ).rxPam(), nullptr );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( Reception, NothingToReadIsNoMatter ) {
    auto const before = changes();
    TraceCapture const trace( "IgmpHost", everyLevel );
    pam->readableCountInc( 1 );
    settle();
    host().pamIs( nullptr );
    settle();
    sm().handlePamReadable();
    EXPECT_THAT( trace.texts(), Each( HasSubstr( "External Pam is NULL" ) ) );
    EXPECT_THAT( before.list(), IsEmpty() );
}

TEST_P( Reception, BlockedVlanHostKeepsOnlyTheNewestFrame ) {
    Support::IgmpHost& second = addHost( "second", "10.0.0.2", "eth1" );
    second.taggedIs( true );
    second.useMuxIs( true );
    second.vlanIdIs( 100 );
    second.intfConfigVersionIs( 2 );
    settle();
    second.enabledIs( true );
    second.blockedIs( true );
    settle();
    device( "eth1" ).hear( queryFrame( { .tag = 100 } ) );
    settle();
    device( "eth1" ).hear( queryFrame( { .tag = 100 } ) );
    settle();
    second.blockedIs( false );
    settle();
    EXPECT_EQ( status( "second" ).v2GeneralQueryReceived(), 0U );
    device( "eth1" ).hear( queryFrame( { .tag = 100 } ) );
    settle();
    EXPECT_EQ( status( "second" ).v2GeneralQueryReceived(), 1U );
    EXPECT_EQ( sm( "second" ).rxPam()->rxPkt(), nullptr );
    dirSm->multiplexerDir( {} )->vlanPamDelAll(); // it and its channel hold each other
}

// What the switches leave running.

TEST_P( Reception, BlockedHostsTimersRunOnAndSendNothing ) {
    arrive( queryFrame() );
    host().blockedIs( true );
    settle();
    auto const count = status().v2ReportsSent();
    runFor( 20.0 );
    EXPECT_EQ( status().v2ReportsSent(), count + 1 );
    EXPECT_THAT( pam->sent, IsEmpty() );
}

TEST_P( Reception, EgressOnlyHostSends ) {
    arrive( queryFrame() );
    host().directionIs( Bridging::AllowedTrafficDirection::egress );
    settle();
    runFor( 20.0 );
    EXPECT_THAT( pam->sent, SizeIs( 1 ) );
}

TEST_P( Reception, IngressOnlyHostHearsAndSendsNothing ) {
    host().directionIs( Bridging::AllowedTrafficDirection::ingress );
    settle();
    arrive( queryFrame() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    runFor( 20.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_THAT( pam->sent, IsEmpty() );
}

// What depends on the delivery.

class SignalPerFrame : public ReceptionBase {
  protected:
    SignalPerFrame() : ReceptionBase( Delivery::isInline ) {}
};

TEST_F( SignalPerFrame, BurstIsReadInStep ) {
    for ( int i = 0; i < 100; ++i ) {
        pam->feed( queryFrame() );
        EXPECT_EQ( pam->waiting(), 0U );
    }
    EXPECT_EQ( status().v2GeneralQueryReceived(), 100U );
}

class DeferredReception : public ReceptionBase {
  protected:
    DeferredReception() : ReceptionBase( Delivery::isDeferred ) {}
};

TEST_F( DeferredReception, FrameThatIsToldBeforeTheEnablingIsDropped ) {
    host().enabledIs( false );
    settle();
    TraceCapture const trace( "IgmpHost", 3 );
    pam->feed( queryFrame() );
    host().enabledIs( true );
    settle();
    EXPECT_TRUE( trace.contains( "IgmpHost host disabled. dropping packet " ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 0U );
}

TEST_F( DeferredReception, SignalsOfOneTurnAreToldAsOne ) {
    pam->feed( queryFrame() );
    pam->feed( queryFrame() );
    settle();
    EXPECT_EQ( pam->waiting(), 1U );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

} // namespace
