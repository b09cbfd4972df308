/// Tagged hosts: on a device of their own, and on one that the hosts of an interface share. The hosts of one
/// interface share a multiplexer and a count of its users, whatever happens to any of them.

#include <algorithm>
#include <random>

#include "tests/platform/zornet/AssertionText.h"
#include "tests/support/DeliveryTest.h"
#include "tests/support/FedPam.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::assertionText;
using Zornet::EthDevPam;
using Zornet::IntfId;
using Zornet::IpAddr;
using Zornet::VlanPamMultiplexer;
using Zornet::VlanTaggingPam;

constexpr char const* G = "239.1.1.1";

/// A test with shared devices. A multiplexer that had a channel outlives its directory entry, on purpose, so
/// the test remembers each one and takes its channels out in the end.
class SharedDevices : public Support::DeliveryHostTest {
  protected:
    explicit SharedDevices( Delivery delivery ) : DeliveryHostTest( delivery ) {}
    ~SharedDevices() override {
        deferredDeliveryIs( false );
        dir->igmpHostDelAll();
        dirSm = nullptr;
        for ( auto const& multiplexer : remembered_ ) {
            multiplexer->vlanPamDelAll();
        }
    }

    void stepDone() override {
        settle();
        for ( char const* const intf : { "trunk", "other", "third", "fourth" } ) {
            auto const multiplexer = dirSm ? mux( intf ) : nullptr;
            if ( multiplexer && std::ranges::find( remembered_, multiplexer ) == remembered_.end() ) {
                remembered_.push_back( multiplexer );
            }
        }
    }
    Ptr<VlanPamMultiplexer> mux( char const* intf = "trunk" ) {
        return dirSm->multiplexerDir( IntfId( intf ) );
    }
    U16 users( char const* intf = "trunk" ) { return dirSm->multiplexerRefCount( IntfId( intf ) ); }

    /// Makes the host a tagged one on "eth1", shares the interface, and enables it.
    IgmpHost& share( IgmpHost& host, U16 vlanId, char const* intf = "trunk" ) {
        tag( host, vlanId );
        host.useMuxIs( true );
        host.intfIdIs( IntfId( intf ) );
        host.deviceNameIs( "eth1" );
        enabledIs( host, true );
        return host;
    }
    static void tag( IgmpHost& host, U16 vlanId ) {
        host.taggedIs( true );
        host.vlanIdIs( vlanId );
    }
    void enabledIs( IgmpHost& host, bool value ) {
        host.enabledIs( value );
        stepDone();
    }
    void rebind( IgmpHost& host ) {
        host.intfConfigVersionIs( host.intfConfigVersion() + 1 );
        stepDone();
    }
    /// The device hears another host's report, tagged.
    void hearTagged( char const* deviceName, U16 tagControl ) {
        Lab::Manner const manner{ .tag = tagControl };
        device( deviceName ).hear( Lab::igmpFrame( IpAddr( "10.0.0.7" ), IpAddr( G ), report(), manner ) );
        stepDone();
    }
    void hearUntagged( char const* deviceName ) {
        device( deviceName ).hear( Lab::igmpFrame( IpAddr( "10.0.0.7" ), IpAddr( G ), report() ) );
        stepDone();
    }
    static Lab::Bytes report() {
        return Lab::igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, IpAddr( G ) );
    }
    U32 heard( char const* name = "host" ) { return status( name ).v12ReportReceived(); }

  private:
    std::vector<Ptr<VlanPamMultiplexer>> remembered_;
};

class VlanBindingTest : public SharedDevices, public ::testing::WithParamInterface<Delivery> {
  protected:
    VlanBindingTest() : SharedDevices( GetParam() ) {}

    VlanTaggingPam* taggingPam() { return dynamic_cast<VlanTaggingPam*>( sm().rxPam() ); }
    /// "host" in VLAN 100 and "b" in VLAN 200 on one interface.
    void twoSharing() {
        share( host(), 100 );
        share( addHost( "b", "10.0.0.2" ), 200 );
    }
};
INSTANTIATE_DELIVERY_TESTS( VlanBindingTest );

TEST_P( VlanBindingTest, TaggedHostReadsItsOwnDeviceThroughATaggingPam ) {
    tag( host(), 100 );
    enable();
    ASSERT_NE( taggingPam(), nullptr );
    EXPECT_EQ( taggingPam()->name(), Kiv::Name( "eth0" ) );
    EXPECT_EQ( taggingPam()->vlanId(), 100 );
    EXPECT_EQ( taggingPam()->innerPam().get(), sm().txPam().get() );
    EXPECT_EQ( sm().txPam()->ethProtocol(), 3 );
    EXPECT_EQ( sm().txPam()->captureMode(), 1U );
    EXPECT_TRUE( sm().txPam()->deviceOpen() );
    EXPECT_FALSE( sm().useMux() );
    EXPECT_EQ( dirSm->multiplexerDirs() + dirSm->multiplexerRefCounts(), 0U );
}

TEST_P( VlanBindingTest, TaggedHostHearsItsOwnVlanOnly ) {
    tag( host(), 100 );
    enable();
    hearTagged( "eth0", 101 );
    hearUntagged( "eth0" );
    EXPECT_EQ( heard(), 0U );
    hearTagged( "eth0", 100 );
    EXPECT_EQ( heard(), 1U );
    hearTagged( "eth0", 0xe064 ); // of a high priority
    EXPECT_EQ( heard(), 2U );
}

TEST_P( VlanBindingTest, TaggedHostSendsOneTagThroughItsDevice ) {
    tag( host(), 100 );
    enable();
    exclude( G );
    ASSERT_THAT( sent(), SizeIs( 1 ) );
    Lab::Bytes const& frame = sent()[0].bytes;
    EXPECT_EQ( frame.size(), 50U );
    EXPECT_THAT(
        std::vector<int>( frame.begin() + 12, frame.begin() + 18 ), ElementsAre( 0x81, 0, 0, 100, 8, 0 )
    );
}

TEST_P( VlanBindingTest, TaggedHostOfVlanZeroHearsUntaggedAndPriorityFrames ) {
    tag( host(), 0 );
    enable();
    hearUntagged( "eth0" );
    hearTagged( "eth0", 0xe000 );
    hearTagged( "eth0", 1 );
    EXPECT_EQ( heard(), 2U );
}

TEST_P( VlanBindingTest, VlanAboveTheTagsRangeIsSentCutAndHeardNever ) {
    tag( host(), 4196 );
    enable();
    exclude( G );
    EXPECT_EQ( sent()[0].bytes[14], 0 );
    EXPECT_EQ( sent()[0].bytes[15], 100 );
    hearTagged( "eth0", 100 );
    EXPECT_EQ( heard(), 0U );
}

TEST_P( VlanBindingTest, VlansOutOfRangeAreBoundAllTheSame ) {
    for ( U16 const vlanId : { U16{ 0 }, U16{ 4095 }, U16{ 65535 } } ) {
        share( host(), vlanId );
        EXPECT_EQ( mux()->vlanPam( vlanId ).get(), sm().rxPam() ) << vlanId;
        enabledIs( host(), false );
    }
}

TEST_P( VlanBindingTest, RebindingReplacesTheTaggingPamAndFreesTheOldOne ) {
    U32 const others = VlanTaggingPam::live();
    tag( host(), 100 );
    enable();
    Ptr<EthDevPam> const oldDevice = sm().txPam();
    host().vlanIdIs( 200 );
    rebind( host() );
    EXPECT_EQ( taggingPam()->vlanId(), 200 );
    EXPECT_EQ( VlanTaggingPam::live(), others + 1 );
    EXPECT_FALSE( oldDevice->deviceOpen() );
    EXPECT_FALSE( oldDevice->hasNotifiees() );
    enabledIs( host(), false );
    EXPECT_EQ( VlanTaggingPam::live(), others );
}

TEST_P( VlanBindingTest, EndOfAMachineFreesItsTaggingPam ) {
    U32 const others = VlanTaggingPam::live();
    tag( host(), 100 );
    enable();
    dirSm->igmpHostSmDel( "host" );
    EXPECT_EQ( VlanTaggingPam::live(), others );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_P( VlanBindingTest, PamFromOutsideFreesTheTaggingPam ) {
    U32 const others = VlanTaggingPam::live();
    tag( host(), 100 );
    enable();
    host().externalPamIs( true );
    stepDone();
    EXPECT_EQ( VlanTaggingPam::live(), others );
    EXPECT_EQ( sm().rxPam(), nullptr );
}

TEST_P( VlanBindingTest, TaggedHostWithAPamFromOutsideSendsTagsAndReadsNone ) {
    Ptr<FedPam> const fed( new FedPam );
    tag( host(), 100 );
    host().externalPamIs( true );
    settle();
    host().pamIs( fed );
    settle();
    enable();
    exclude( G );
    ASSERT_THAT( fed->sent, SizeIs( 1 ) );
    EXPECT_EQ( fed->sent[0].size(), 50U );
    EXPECT_EQ( sm().rxPam(), fed.get() );
    fed->feed( Lab::igmpFrame( IpAddr( "10.0.0.7" ), IpAddr( G ), report(), { .tag = U16{ 100 } } ) );
    settle();
    EXPECT_EQ( heard(), 0U );
    fed->feed( Lab::igmpFrame( IpAddr( "10.0.0.7" ), IpAddr( G ), report() ) );
    settle();
    EXPECT_EQ( heard(), 1U );
}

TEST_P( VlanBindingTest, FirstSharingHostOpensTheDeviceForEveryFrame ) {
    host().nsIs( Zornet::NamespaceName( "blue" ) );
    share( host(), 100 );
    EXPECT_EQ( users(), 1U );
    ASSERT_NE( mux(), nullptr );
    EXPECT_EQ( mux()->intf(), IntfId( "trunk" ) );
    EXPECT_EQ( mux()->innerEthDevPam(), sm().txPam() );
    EXPECT_EQ( mux()->innerPam().get(), sm().txPam().get() );
    EXPECT_EQ( sm().txPam()->name(), Kiv::Name( "eth1" ) );
    EXPECT_EQ( sm().txPam()->ethProtocol(), 3 );
    EXPECT_EQ( sm().txPam()->captureMode(), 1U );
    EXPECT_EQ( provider.recording( "eth1", "blue" ).ports(), 1U );
    EXPECT_TRUE( sm().useMux() );
    EXPECT_EQ( sm().useMuxIntfId(), IntfId( "trunk" ) );
}

TEST_P( VlanBindingTest, SharingHostReadsThroughTheChannelOfItsVlan ) {
    share( host(), 100 );
    auto* const channel = dynamic_cast<Zornet::VlanPam*>( sm().rxPam() );
    ASSERT_NE( channel, nullptr );
    EXPECT_EQ( channel->name(), Kiv::Name( "100" ) );
    EXPECT_EQ( channel->vlanId(), 100 );
    EXPECT_EQ( channel->multiplexer().get(), mux().get() );
    EXPECT_EQ( mux()->vlanPam( 100 ).get(), channel );
}

TEST_P( VlanBindingTest, TwoHostsOfOneInterfaceShareDeviceAndMultiplexer ) {
    twoSharing();
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
    EXPECT_EQ( device( "eth1" ).openings, 1U );
    EXPECT_EQ( dirSm->multiplexerDirs(), 1U );
    EXPECT_EQ( users(), 2U );
    EXPECT_EQ( mux()->vlanPams(), 2U );
    EXPECT_EQ( sm().txPam(), sm( "b" ).txPam() );
    EXPECT_NE( sm().rxPam(), sm( "b" ).rxPam() );
}

TEST_P( VlanBindingTest, SharingHostsHearTheirVlansAndSendTheirTags ) {
    twoSharing();
    hearTagged( "eth1", 200 );
    EXPECT_EQ( heard( "host" ), 0U );
    EXPECT_EQ( heard( "b" ), 1U );
    hearTagged( "eth1", 100 );
    EXPECT_EQ( heard( "host" ), 1U );
    exclude( G );
    ASSERT_THAT( device( "eth1" ).sent, SizeIs( 1 ) );
    EXPECT_EQ( device( "eth1" ).sent[0].bytes[15], 100 );
}

TEST_P( VlanBindingTest, FirstOfTwoToLeaveLeavesTheDeviceOpen ) {
    twoSharing();
    enabledIs( host(), false );
    EXPECT_EQ( users(), 1U );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
    EXPECT_FALSE( sm().useMux() );
    EXPECT_EQ( sm().txPam(), nullptr );
    hearTagged( "eth1", 200 );
    EXPECT_EQ( heard( "b" ), 1U );
}

TEST_P( VlanBindingTest, LastToLeaveClosesTheDeviceAndTakesBothEntriesOut ) {
    twoSharing();
    Ptr<EthDevPam> const shared = sm().txPam();
    enabledIs( host(), false );
    enabledIs( host( "b" ), false );
    EXPECT_FALSE( shared->deviceOpen() );
    EXPECT_EQ( device( "eth1" ).ports(), 0U );
    EXPECT_EQ( dirSm->multiplexerDirs(), 0U );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 0U );
}

TEST_P( VlanBindingTest, ReleaseOfTheLastUserIsTraced ) {
    twoSharing();
    TraceCapture trace( "IgmpHost", 9 );
    enabledIs( host(), false );
    EXPECT_FALSE( trace.contains( "multiplexer" ) );
    trace.clear();
    enabledIs( host( "b" ), false );
    auto const at = std::ranges::find( trace.texts(), " host bmultiplexer trunk is 0." );
    ASSERT_NE( at, trace.texts().end() );
    EXPECT_EQ( trace.levels()[static_cast<std::size_t>( at - trace.texts().begin() )], 7 );
}

TEST_P( VlanBindingTest, ChannelOfAHostThatLeftStaysWithoutAReader ) {
    twoSharing();
    Zornet::Pam const* const channel = sm().rxPam();
    enabledIs( host(), false );
    EXPECT_EQ( mux()->vlanPams(), 2U );
    EXPECT_EQ( mux()->vlanPam( 100 ).get(), channel );
    EXPECT_FALSE( channel->hasNotifiees() );
}

TEST_P( VlanBindingTest, LaterHostRidesOnTheDeviceOfTheFirst ) {
    twoSharing();
    IgmpHost& third = addHost( "c", "10.0.0.3" );
    third.nsIs( Zornet::NamespaceName( "blue" ) );
    share( third, 300 );
    third.deviceNameIs( "eth7" );
    rebind( third );
    EXPECT_EQ( users(), 3U );
    EXPECT_EQ( device( "eth7" ).openings, 0U );
    EXPECT_EQ( provider.recording( "eth7", "blue" ).openings, 0U );
    EXPECT_EQ( sm( "c" ).txPam(), sm().txPam() );
    hearTagged( "eth1", 300 );
    EXPECT_EQ( heard( "c" ), 1U );
}

TEST_P( VlanBindingTest, OfTwoHostsInOneVlanOnlyTheLaterHears ) {
    share( host(), 100 );
    share( addHost( "b", "10.0.0.2" ), 100 );
    EXPECT_EQ( users(), 2U );
    EXPECT_EQ( mux()->vlanPams(), 1U );
    hearTagged( "eth1", 100 );
    EXPECT_EQ( heard( "host" ), 0U );
    EXPECT_EQ( heard( "b" ), 1U );
}

TEST_P( VlanBindingTest, HostsOfTwoInterfacesShareNothing ) {
    share( host(), 100, "trunk" );
    share( addHost( "b", "10.0.0.2" ), 100, "other" );
    EXPECT_EQ( users( "trunk" ), 1U );
    EXPECT_EQ( users( "other" ), 1U );
    EXPECT_NE( mux( "trunk" ), mux( "other" ) );
    EXPECT_EQ( device( "eth1" ).ports(), 2U );
}

TEST_P( VlanBindingTest, OtherInterfaceCountsFromTheNextMoveOn ) {
    twoSharing();
    host().intfIdIs( IntfId( "other" ) );
    stepDone();
    EXPECT_EQ( users( "trunk" ), 2U );
    EXPECT_EQ( users( "other" ), 0U );
    rebind( host() );
    EXPECT_EQ( users( "trunk" ), 1U );
    EXPECT_EQ( users( "other" ), 1U );
    EXPECT_EQ( sm().useMuxIntfId(), IntfId( "other" ) );
}

TEST_P( VlanBindingTest, DisablingReleasesTheReferenceThatWasTaken ) {
    share( host(), 100 );
    host().intfIdIs( IntfId( "other" ) );
    host().useMuxIs( false );
    host().taggedIs( false );
    enabledIs( host(), false );
    EXPECT_EQ( dirSm->multiplexerDirs() + dirSm->multiplexerRefCounts(), 0U );
    EXPECT_EQ( device( "eth1" ).ports(), 0U );
}

TEST_P( VlanBindingTest, HostDeletedWhileEnabledLowersTheCount ) {
    twoSharing();
    dir->igmpHostDel( "b" );
    stepDone();
    EXPECT_EQ( users(), 1U );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
}

TEST_P( VlanBindingTest, DeletedLastUserTakesBothEntriesOut ) {
    twoSharing();
    dir->igmpHostDel( "b" );
    stepDone();
    dir->igmpHostDel( "host" );
    stepDone();
    EXPECT_EQ( dirSm->multiplexerDirs() + dirSm->multiplexerRefCounts(), 0U );
    EXPECT_EQ( device( "eth1" ).ports(), 0U );
}

TEST_P( VlanBindingTest, RebindingOfTheLastUserMakesANewMultiplexer ) {
    share( host(), 100 );
    Ptr<VlanPamMultiplexer> const first = mux();
    rebind( host() );
    EXPECT_NE( mux(), first );
    EXPECT_EQ( users(), 1U );
    EXPECT_EQ( device( "eth1" ).openings, 2U );
    EXPECT_EQ( device( "eth1" ).closings, 1U );
}

TEST_P( VlanBindingTest, RebindingOfOneOfSeveralKeepsTheMultiplexer ) {
    twoSharing();
    Ptr<VlanPamMultiplexer> const first = mux();
    Zornet::Pam const* const channel = sm().rxPam();
    rebind( host() );
    EXPECT_EQ( mux(), first );
    EXPECT_NE( sm().rxPam(), channel );
    EXPECT_EQ( mux()->vlanPam( 100 ).get(), sm().rxPam() );
    EXPECT_EQ( users(), 2U );
    EXPECT_EQ( device( "eth1" ).openings, 1U );
}

TEST_P( VlanBindingTest, PamFromOutsideKeepsTheReferenceOnTheSharedDevice ) {
    twoSharing();
    host().externalPamIs( true );
    stepDone();
    EXPECT_EQ( users(), 2U );
    EXPECT_TRUE( sm().useMux() );
    EXPECT_EQ( sm().useMuxIntfId(), IntfId( "trunk" ) );
}

TEST_P( VlanBindingTest, HostWithAPamFromOutsideTakesItsReferenceAlongWhenItIsDisabledAndDeleted ) {
    twoSharing();
    host().externalPamIs( true );
    stepDone();
    host().pamIs( new FedPam );
    stepDone();
    enabledIs( host(), false );
    EXPECT_EQ( users(), 2U );
    dir->igmpHostDel( "host" );
    stepDone();
    EXPECT_EQ( users(), 2U );
    enabledIs( host( "b" ), false );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
    mux()->innerEthDevPam()->deviceOpenIs( false );
}

TEST_P( VlanBindingTest, LeavingThePamFromOutsideReleasesTheOldReferenceAndLeavesThePamOpen ) {
    twoSharing();
    Ptr<FedPam> const fed( new FedPam );
    fed->deviceOpenIs( true );
    host().externalPamIs( true );
    stepDone();
    host().pamIs( fed );
    stepDone();
    host().useMuxIs( false );
    host().externalPamIs( false );
    stepDone();
    EXPECT_EQ( users(), 1U );
    EXPECT_TRUE( fed->deviceOpen() );
    EXPECT_FALSE( sm().useMux() );
    EXPECT_NE( dynamic_cast<VlanTaggingPam*>( sm().rxPam() ), nullptr );
}

TEST_P( VlanBindingTest, ReferenceIsTakenTwiceByAHostThatWasGivenNoPamInBetween ) {
    share( host(), 100 );
    host().externalPamIs( true );
    stepDone();
    host().externalPamIs( false );
    stepDone();
    EXPECT_EQ( users(), 2U );
    enabledIs( host(), false );
    EXPECT_EQ( users(), 1U );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
    mux()->innerEthDevPam()->deviceOpenIs( false );
}

TEST_P( VlanBindingTest, EndOfTheRootLowersNoCountAndDropsTheMultiplexers ) {
    twoSharing();
    TraceCapture const trace( "IgmpHost", 9 );
    Ptr<EthDevPam> const shared = sm().txPam();
    dirSm = nullptr;
    EXPECT_THAT( trace.texts(), IsEmpty() );
    shared->deviceOpenIs( false );
}

TEST_P( VlanBindingTest, MissingMultiplexerAtTheReleaseEndsTheProcess ) {
    share( host(), 100 );
    dirSm->multiplexerDirDel( IntfId( "trunk" ) );
    EXPECT_DEATH( enabledIs( host(), false ), assertionText( "null Ptr" ) );
    dirSm->multiplexerRefCountIs( IntfId( "trunk" ), 2 );
    sm().txPam()->deviceOpenIs( false );
}

TEST_P( VlanBindingTest, InterfaceThatChangesWhileItsDeviceOpensEndsTheProcess ) {
    device( "eth1" ).onOpening = [&] { host().intfIdIs( IntfId( "other" ) ); };
    EXPECT_DEATH( share( host(), 100 ), assertionText( "mux" ) );
}

// The two collections by themselves.

TEST_P( VlanBindingTest, MultiplexerIsMadeOnceForEachInterface ) {
    Ptr<VlanPamMultiplexer> const made = dirSm->multiplexerDirIs( nullptr, IntfId( "trunk" ) );
    EXPECT_EQ( made->intf(), IntfId( "trunk" ) );
    EXPECT_EQ( made->innerPam(), nullptr );
    EXPECT_EQ( dirSm->multiplexerDirIs( nullptr, IntfId( "trunk" ) ), made );
    EXPECT_NE( dirSm->multiplexerDirIs( nullptr, IntfId( "other" ) ), made );
    EXPECT_EQ( mux(), made );
    EXPECT_EQ( dirSm->multiplexerDirs(), 2U );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 0U );
}

TEST_P( VlanBindingTest, RemovedMultiplexerIsHandedBack ) {
    Ptr<VlanPamMultiplexer> const made = dirSm->multiplexerDirIs( nullptr, IntfId( "trunk" ) );
    EXPECT_EQ( dirSm->multiplexerDirDel( IntfId( "other" ) ), nullptr );
    EXPECT_EQ( dirSm->multiplexerDirDel( IntfId( "trunk" ) ), made );
    EXPECT_EQ( mux(), nullptr );
    dirSm->multiplexerDirIs( nullptr, IntfId( "trunk" ) );
    dirSm->multiplexerDirDelAll();
    EXPECT_EQ( dirSm->multiplexerDirs(), 0U );
}

TEST_P( VlanBindingTest, MemberKeepsTheMultiplexerOfItsInterface ) {
    Ptr<IgmpHostDirSm::KivMultiplexerDir> const member( new IgmpHostDirSm::KivMultiplexerDir( IntfId( "trunk"
    ) ) );
    Ptr<VlanPamMultiplexer> const made = member->multiplexerDirIs( nullptr, IntfId( "trunk" ) );
    EXPECT_EQ( member->multiplexerDirIs( nullptr, IntfId( "trunk" ) ), made );
    EXPECT_NE( member->multiplexerDirIs( nullptr, IntfId( "other" ) ), made );
}

TEST_P( VlanBindingTest, CountsAreStoredRaisedAndLowered ) {
    IntfId const trunk( "trunk" );
    dirSm->multiplexerRefCountIs( trunk, 5 );
    EXPECT_EQ( dirSm->multiplexerRefCountInc( trunk, 3 ), 8 );
    EXPECT_EQ( dirSm->multiplexerRefCountDec( trunk, 7 ), 1 );
    EXPECT_EQ( users(), 1 );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 1U );
    EXPECT_EQ( mux(), nullptr );
}

TEST_P( VlanBindingTest, AbsentCountIsMadeWithZeroAndWraps ) {
    EXPECT_EQ( dirSm->multiplexerRefCountInc( IntfId( "trunk" ), 2 ), 2 );
    EXPECT_EQ( dirSm->multiplexerRefCountDec( IntfId( "other" ), 1 ), 65535 );
    EXPECT_EQ( users( "other" ), 65535 );
    EXPECT_EQ( dirSm->multiplexerRefCountInc( IntfId( "other" ), 1 ), 0 );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 2U );
}

TEST_P( VlanBindingTest, CountIsRemoved ) {
    dirSm->multiplexerRefCountIs( IntfId( "trunk" ), 5 );
    dirSm->multiplexerRefCountDel( IntfId( "other" ) );
    EXPECT_EQ( users(), 5 );
    dirSm->multiplexerRefCountDel( IntfId( "trunk" ) );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 0U );
}

/// A hundred hosts on four interfaces whose settings move at random for hours.
class SharedAtRandom : public SharedDevices, public ::testing::WithParamInterface<Delivery> {
  protected:
    static constexpr int hosts = 100;

    SharedAtRandom() : SharedDevices( GetParam() ) {
        dir->igmpHostDel( "host" );
        settle();
        for ( int i = 0; i < hosts; ++i ) {
            add( i );
        }
    }

    static std::string nameOf( int i ) { return "h" + std::to_string( i ); }
    void add( int i ) {
        IgmpHost& host = addHost( nameOf( i ).c_str(), "10.0.0.1" );
        tag( host, static_cast<U16>( 1 + i ) );
        host.useMuxIs( true );
        moveTo( host, i % 4 );
    }
    static void moveTo( IgmpHost& host, int which ) {
        static constexpr char const* intfs[] = { "trunk", "other", "third", "fourth" };
        host.intfIdIs( IntfId( intfs[which] ) );
        host.deviceNameIs( intfs[which] );
    }
    int random( int below ) { return static_cast<int>( generator_() % static_cast<unsigned>( below ) ); }

    void step() {
        int const i = random( hosts );
        Ptr<IgmpHost> const host = dir->igmpHost( nameOf( i ) );
        switch ( random( 10 ) ) {
        case 0:
        case 1: moveTo( *host, random( 4 ) ); break;
        case 2: moveTo( *host, random( 4 ) ); [[fallthrough]];
        case 3: host->intfConfigVersionIs( static_cast<U32>( random( 8 ) ) ); break;
        case 4: host->intfConfigVersionIs( host->intfConfigVersion() + 1 ); break;
        case 5: host->vlanIdIs( static_cast<U16>( 1 + random( hosts ) ) ); break;
        case 6:
            dir->igmpHostDel( nameOf( i ) );
            settle();
            add( i );
            break;
        default: host->enabledIs( !host->enabled() );
        }
        stepDone();
        runFor( random( 20 ) );
    }
    /// Counts, directory and devices against the machines.
    void expectAgreement() {
        std::map<std::string, U16> holders;
        for ( IgmpHostSm const& machine : dirSm->igmpHostSm() ) {
            EXPECT_EQ( machine.useMux(), machine.txPam() != nullptr );
            if ( machine.useMux() ) {
                ++holders[machine.useMuxIntfId().name().charPtr()];
            }
        }
        ASSERT_EQ( dirSm->multiplexerDirs(), holders.size() );
        ASSERT_EQ( dirSm->multiplexerRefCounts(), holders.size() );
        for ( char const* const intf : { "trunk", "other", "third", "fourth" } ) {
            ASSERT_EQ( users( intf ), holders[intf] ) << intf;
            ASSERT_EQ( mux( intf ) != nullptr, holders[intf] != 0 ) << intf;
            ASSERT_EQ( device( intf ).ports(), holders[intf] != 0 ? 1U : 0U ) << intf;
        }
        for ( IgmpHostSm const& machine : dirSm->igmpHostSm() ) {
            if ( machine.useMux() ) {
                ASSERT_EQ(
                    machine.txPam(), dirSm->multiplexerDir( machine.useMuxIntfId() )->innerEthDevPam()
                );
            }
        }
    }

  private:
    std::mt19937 generator_{ 20260 };
};
INSTANTIATE_DELIVERY_TESTS( SharedAtRandom );

TEST_P( SharedAtRandom, CountsDirectoryAndDevicesAgreeAfterEveryStep ) {
    for ( int i = 0; i < 1500 && !HasFatalFailure(); ++i ) {
        step();
        expectAgreement();
    }
    EXPECT_GT( elapsed(), 3 * 3600.0 );
    for ( IgmpHost& host : dir->igmpHost() ) {
        enabledIs( host, false );
    }
    EXPECT_EQ( dirSm->multiplexerDirs() + dirSm->multiplexerRefCounts(), 0U );
}

} // namespace
