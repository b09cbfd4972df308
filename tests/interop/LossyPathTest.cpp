/// A path between hosts and querier that loses, delays, doubles and reorders what the hosts send.

#include "lab/Querier.h"
#include "lab/Wire.h"
#include "tests/interop/FaultTest.h"

namespace Interop {

namespace {

/// Hands on what one access object hears to another.
class Splice : public Zornet::Pam::Notifiee {
  public:
    Splice( Ptr<EthDevPam> const& from, Ptr<EthDevPam> const& to ) : Notifiee( from ), to_( to ) {
        isRegisteredNotifieeIs( true );
    }
    void onReadableCount() override {
        if ( auto const pkt = notifier()->rxPkt() ) {
            to_->txPktIs( pkt );
        }
    }

  private:
    Ptr<EthDevPam> const to_;
};

/// Forwards IGMP between the devices "mid0" and "mid1" of a namespace, over a segment of a wire in memory for
/// each direction.
class Forwarder {
  public:
    Forwarder( Zornet::NamespaceName const& ns, Ptr<Lumo::TimerWheel> const& wheel ) : wire_( wheel ) {
        auto const left = port( "mid0", ns );
        auto const right = port( "mid1", ns );
        splice( left, right, "up" );
        splice( right, left, "down" );
    }

    /// Towards the querier.
    Lab::WireSegment& up() { return wire_.segment( "up" ); }

  private:
    static Ptr<EthDevPam> port( std::string const& device, Zornet::NamespaceName const& ns ) {
        Ptr<EthDevPam> const pam = Zornet::EthDevPamIs( device.c_str() );
        pam->nsIs( ns );
        pam->deviceOpenIs( true );
        return pam;
    }
    Ptr<EthDevPam> wirePort( std::string const& device, std::string const& segment ) {
        Zornet::DeviceProviderScope const scope( wire_ );
        wire_.attach( {}, device.c_str(), segment );
        return port( device, {} );
    }
    void splice( Ptr<EthDevPam> const& from, Ptr<EthDevPam> const& to, std::string const& segment ) {
        Ptr<EthDevPam> const in = wirePort( segment + "-in", segment );
        splices_.emplace_back( new Splice( from, in ) );
        splices_.emplace_back( new Splice( wirePort( segment + "-out", segment ), to ) );
    }

    Lab::Wire wire_;
    std::vector<Ptr<Splice>> splices_;
};

class LossyPath : public FaultTest, public ::testing::WithParamInterface<Igmp::IgmpVersion> {
  protected:
    static constexpr unsigned count = 20;

    void SetUp() override {
        FaultTest::SetUp();
        if ( !IsSkipped() && !HasFatalFailure() ) {
            forwarder_ = std::make_unique<Forwarder>( mid_.ns(), wheel() );
            querierIs();
            hostsAre( count, GetParam() );
        }
    }
    void cableIs() override {
        mid_.add();
        vethIs( near_, "near0", mid_, "mid0" );
        vethIs( mid_, "mid1", far_, "far0" );
    }
    Lab::WireSegment& up() { return forwarder_->up(); }
    Lab::Querier& querier() { return *querier_; }
    static IpAddr own( std::size_t i ) {
        return IpAddr::fromHost( 0xef020000U + static_cast<Zornet::U32>( i ) );
    }
    /// Each host joins a group of its own. Returns every group that there is then.
    std::set<IpAddr> joinOwn() {
        std::set<IpAddr> groups{ group };
        for ( std::size_t i = 0; i < hosts(); ++i ) {
            join( i, own( i ) );
            groups.insert( own( i ) );
        }
        return groups;
    }
    void impair() {
        Lab::Impairment impairment;
        impairment.loss = 0.3;
        impairment.duplication = 0.1;
        impairment.reordering = 0.1;
        impairment.delay = 0.02;
        impairment.jitter = 0.03;
        impairment.reorderingDelay = 0.05;
        up().impairmentIs( impairment );
    }
    bool learned( std::set<IpAddr> const& groups ) {
        return eventually( [&] { return learnedNow() == groups; } );
    }
    std::set<IpAddr> learnedNow() {
        auto const groups = querier().groups();
        return { groups.begin(), groups.end() };
    }

  private:
    /// Asks often, and bears the loss of so many answers in a row that it never happens.
    void querierIs() {
        auto const pam = Zornet::EthDevPamIs( "far0" );
        pam->nsIs( far_.ns() );
        pam->deviceOpenIs( true );
        Lab::QuerierConfig config;
        config.version = GetParam() == Igmp::igmpVersion3 ? 3 : 2;
        config.robustness = 20;
        config.lastMemberQueryCountSet = 1;
        config.queryInterval = 1.2;
        config.startupQueryIntervalSet = config.queryInterval;
        config.queryResponseInterval = responseTime;
        querier_ = std::make_unique<Lab::Querier>( config, pam, wheel() );
        querier_->enabledIs( true );
    }

    Support::Namespace mid_{ "fault-mid", false };
    std::unique_ptr<Forwarder> forwarder_;
    std::unique_ptr<Lab::Querier> querier_;
};

INSTANTIATE_TEST_SUITE_P(
    Faults, LossyPath, ::testing::Values( Igmp::igmpVersion2, Igmp::igmpVersion3 ),
    []( auto const& instance ) { return "Version" + std::to_string( instance.param ); }
);

using LossyPathOfVersion3 = LossyPath;
INSTANTIATE_TEST_SUITE_P(
    Faults, LossyPathOfVersion3, ::testing::Values( Igmp::igmpVersion3 ),
    []( auto const& ) { return "Lossy"; }
);

TEST_P( LossyPath, QuerierLearnsAndKeepsEveryMembership ) {
    impair();
    std::set<IpAddr> const groups = joinOwn();
    ASSERT_TRUE( learned( groups ) );
    for ( Seconds const end = Kiv::now() + faultTime(); Kiv::now() < end; live( 0.05 ) ) {
        ASSERT_EQ( learnedNow(), groups );
    }
    querier().enabledIs( false );
    Lab::WireSegment::Counters const& path = up().counters();
    EXPECT_TRUE( eventually( [&] { return !isAnswering() && path.sent == reportsSent(); } ) );
    EXPECT_TRUE( eventually( [&] {
        hear();
        return heard_.size() == path.sent + path.duplicated - path.lost;
    } ) );
    EXPECT_GT( path.lost, path.sent / 10 );
    EXPECT_GT( path.duplicated, 0U );
    EXPECT_GT( path.heldBack, 0U );
    EXPECT_EQ( framesLost( 0 ), 0U );
}

/// A version 2 host says it once that it leaves, and what is lost of that runs out with the membership; a
/// version 3 host says it as often as its robustness has it.
TEST_P( LossyPathOfVersion3, QuerierForgetsWhatHostsLeave ) {
    ASSERT_TRUE( learned( joinOwn() ) );
    impair();
    for ( std::size_t i = 0; i < hosts(); ++i ) {
        host( i ).robustnessIs( 20 );
        host( i ).v3groupDel( own( i ) );
    }
    Seconds const began = Kiv::now();
    EXPECT_TRUE( learned( { group } ) );
    EXPECT_LT( Kiv::now() - began, querier().config().groupMembershipInterval() );
}

} // namespace

} // namespace Interop
