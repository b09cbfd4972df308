#include "platform/zornet/device/Device.h"
#include "tests/interop/DeviceFixture.h"
#include "tests/support/TraceCapture.h"

namespace Zornet {

namespace {

/// Links that come, go and fail beneath open access objects.
class DeviceLinkTest : public DeviceFixture {
  protected:
    void SetUp() override {
        DeviceFixture::SetUp();
        if ( !IsSkipped() ) {
            near_ = std::make_unique<Support::Namespace>( "near" );
            far_ = std::make_unique<Support::Namespace>( "far" );
        }
    }

    Support::Namespace& nearNs() { return *near_; }
    Support::Namespace& farNs() { return *far_; }
    void cableIs() { vethIs( *near_, "near0", *far_, "far0" ); }
    Station station( char const* device = "near0" ) { return { *near_, device, ethTypeIp }; }

    static bool running( Station const& station ) {
        return eventually( [&] { return station.pam->device()->running(); } );
    }
    static bool stopped( Station const& station ) {
        return eventually( [&] { return !station.pam->device()->running(); } );
    }
    /// True where frames go through both ways.
    bool works( Station const& station ) {
        FarEnd farEnd( *far_, "far0" );
        std::size_t const before = station.heard().size();
        farEnd.send( igmpFrame( 1 ) );
        station.send( igmpFrame( 2 ) );
        return eventually( [&] { return station.heard().size() > before && farEnd.heard().size() == 1; } );
    }

  private:
    std::unique_ptr<Support::Namespace> near_;
    std::unique_ptr<Support::Namespace> far_;
};

} // namespace

TEST_F( DeviceLinkTest, MissingDeviceIsToldOnceAndCounted ) {
    Support::TraceCapture const trace( "Device", 1 );
    Station const first = station();
    Station const second = station();
    EXPECT_EQ(
        trace.texts(), std::vector<std::string>{ "near0 in " + nearNs().name() + ": no such device" }
    );
    EXPECT_EQ( second.pam->txErrors(), 1U );
    EXPECT_EQ( second.pam->rxErrors(), 1U );
    first.send( igmpFrame( 1 ) );
    EXPECT_EQ( first.pam->txDrops(), 1U );
}

TEST_F( DeviceLinkTest, DeviceIsTakenUpWhenItAppears ) {
    Station const late = station();
    EXPECT_FALSE( late.pam->device()->running() );
    cableIs();
    ASSERT_TRUE( running( late ) );
    EXPECT_TRUE( works( late ) );
}

TEST_F( DeviceLinkTest, DeviceThatIsDownIsTakenUpWhenItComesUp ) {
    cableIs();
    nearNs().ip( "link set near0 down" );
    Support::TraceCapture const trace( "Device", 1 );
    Station const late = station();
    EXPECT_TRUE( trace.contains( "device is down" ) );
    nearNs().ip( "link set near0 up" );
    ASSERT_TRUE( running( late ) );
    EXPECT_TRUE( works( late ) );
}

TEST_F( DeviceLinkTest, OneProblemIsToldOnce ) {
    cableIs();
    Support::TraceCapture const trace( "Device", 1 );
    Station const host = station();
    nearNs().ip( "link set near0 down" );
    ASSERT_TRUE( stopped( host ) );
    nearNs().ip( "link set near0 mtu 1400" );
    Kiv::defaultActivity()->activitySm().runOnce();
    nearNs().ip( "link del near0" );
    ASSERT_TRUE( eventually( [&] { return trace.contains( "no such device" ); } ) );
    EXPECT_EQ( trace.texts().size(), 2U ); // down, and gone
}

TEST_F( DeviceLinkTest, DeviceSurvivesBeingTakenDownAndUp ) {
    cableIs();
    Station const host = station();
    ASSERT_TRUE( works( host ) );
    nearNs().ip( "link set near0 down" );
    ASSERT_TRUE( stopped( host ) );
    EXPECT_EQ( host.pam->rxErrors(), 1U );
    EXPECT_EQ( host.pam->txErrors(), 1U );
    nearNs().ip( "link set near0 up" );
    ASSERT_TRUE( running( host ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, DeviceSurvivesGoingDownAndUpUnnoticed ) {
    cableIs();
    Station const host = station();
    nearNs().ip( "link set near0 down" );
    nearNs().ip( "link set near0 up" );
    EXPECT_TRUE( works( host ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, DeviceIsTakenUpAgainWhenItIsMadeAgain ) {
    cableIs();
    Station const host = station();
    Support::TraceCapture const trace( "Device", 1 );
    nearNs().ip( "link del near0" );
    ASSERT_TRUE( stopped( host ) );
    EXPECT_TRUE( trace.contains( ": no such device" ) );
    cableIs();
    ASSERT_TRUE( running( host ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, DeviceMadeAgainUnnoticedIsTheNewOne ) {
    cableIs();
    Station const host = station();
    nearNs().ip( "link del near0" );
    cableIs();
    ASSERT_TRUE( eventually( [&] { return host.pam->rxErrors() != 0 && host.pam->device()->running(); } ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, RenamedDeviceBelongsToItsNewName ) {
    cableIs();
    Station const before = station( "near0" );
    Station const after = station( "other0" );
    nearNs().ip( "link set near0 name other0" );
    ASSERT_TRUE( stopped( before ) );
    ASSERT_TRUE( running( after ) );
    EXPECT_TRUE( works( after ) );
    EXPECT_TRUE( before.heard().empty() );
}

TEST_F( DeviceLinkTest, WhatOtherLinksDoChangesNothing ) {
    cableIs();
    Station const host = station();
    nearNs().ip( "link add dummy0 type veth peer name dummy1" );
    nearNs().ip( "link del dummy0" );
    EXPECT_TRUE( works( host ) );
    EXPECT_EQ( host.pam->rxErrors(), 0U );
}

TEST_F( DeviceLinkTest, NameThatNoDeviceCanHaveIsMissing ) {
    Support::TraceCapture const trace( "Device", 1 );
    Station const endless = station( "a-name-beyond-fifteen" );
    EXPECT_TRUE( trace.contains( "no such device" ) );
}

TEST_F( DeviceLinkTest, MissingNamespaceIsToldAndTakenUpWhenItIsMade ) {
    Support::Namespace later( "later", false );
    Support::TraceCapture const trace( "Device", 1 );
    Station const host( later, "near0", ethTypeIp );
    EXPECT_TRUE( trace.contains( "cannot watch its namespace: No such file or directory" ) );
    later.add();
    vethIs( later, "near0", farNs(), "far0" );
    ASSERT_TRUE( running( host ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, DeletedNamespaceIsLetGo ) {
    cableIs();
    Station const host = station();
    ASSERT_TRUE( works( host ) );
    nearNs().del();
    ASSERT_TRUE( stopped( host ) );
    // With nobody left in it the namespace goes, and the cable with it.
    EXPECT_TRUE( eventually( [&] { return farNs().ip( "link" ).find( "far0" ) == std::string::npos; } ) );
}

TEST_F( DeviceLinkTest, NamespaceMadeAgainIsTheNewOne ) {
    cableIs();
    Station const host = station();
    nearNs().del();
    ASSERT_TRUE( stopped( host ) );
    ASSERT_TRUE( eventually( [&] { return farNs().ip( "link" ).find( "far0" ) == std::string::npos; } ) );
    nearNs().add();
    cableIs();
    ASSERT_TRUE( running( host ) );
    EXPECT_TRUE( works( host ) );
}

TEST_F( DeviceLinkTest, OpeningLeavesTheThreadInItsOwnNamespace ) {
    auto const links = [] { return Support::outputOf( "ip -o link" ); };
    std::string const before = links();
    cableIs();
    Station const host = station();
    EXPECT_EQ( links(), before );
}

TEST_F( DeviceLinkTest, DeviceOfTheProcessesOwnNamespaceNeedsNoName ) {
    Kiv::Ptr<EthDevPam> const pam = EthDevPamIs( "lo" );
    NamespaceEntry const entry( nearNs().ns() );
    nearNs().ip( "link set lo up" );
    pam->deviceOpenIs( true );
    EXPECT_TRUE( pam->device()->running() );
}

} // namespace Zornet
