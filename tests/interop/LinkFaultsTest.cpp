/// Links that fail beneath hosts which are answering.

#include "tests/interop/FaultTest.h"

namespace Interop {

namespace {

/// What can happen to a link, and what mends it. The far end is heard anew after that.
struct Trouble {
    char const* name;
    std::function<void( Support::Namespace& ns )> begin;
    std::function<void( Support::Namespace& ns )> end;
    bool takesCable;
};

std::vector<Trouble>
troubles() {
    return {
        { "LinkDown", []( auto& ns ) { ns.ip( "link set near0 down" ); },
          []( auto& ns ) { ns.ip( "link set near0 up" ); }, false },
        { "DeviceDeleted", []( auto& ns ) { ns.ip( "link del near0" ); }, []( auto& ) {}, true },
        { "NamespaceDeleted", []( auto& ns ) { ns.del(); }, []( auto& ns ) { ns.add(); }, true },
    };
}

class LinkFaults : public FaultTest,
                   public ::testing::WithParamInterface<std::tuple<Trouble, Igmp::IgmpVersion>> {
  protected:
    static constexpr unsigned count = 50;

    /// Strikes when some hosts have answered and others have not.
    void strike() {
        Trouble const& trouble = std::get<Trouble>( GetParam() );
        U64 const before = reportsSent();
        ASSERT_TRUE( ask() );
        ASSERT_TRUE( eventually( [&] { return reportsSent() > before + count / 4; } ) );
        trouble.begin( near_ );
        ASSERT_TRUE( eventually( [&] { return !running() && !isAnswering(); } ) );
        EXPECT_EQ( reportsSent(), before + count );
        hear();
        trouble.end( near_ );
        if ( trouble.takesCable ) {
            ASSERT_TRUE( eventually( [&] { return far_.ip( "link" ).find( "far0" ) == std::string::npos; } )
            );
            cableIs();
            listen();
        }
        ASSERT_TRUE( eventually( [&] { return running(); } ) );
    }
};

INSTANTIATE_TEST_SUITE_P(
    Faults, LinkFaults,
    ::testing::Combine(
        ::testing::ValuesIn( troubles() ),
        ::testing::Values( Igmp::igmpVersion1, Igmp::igmpVersion2, Igmp::igmpVersion3 )
    ),
    []( auto const& instance ) {
        return std::get<Trouble>( instance.param ).name + std::string( "Version" ) +
               std::to_string( std::get<Igmp::IgmpVersion>( instance.param ) );
    }
);

TEST_P( LinkFaults, CountWhatTheyLoseAndAreOverWhenTheLinkIsBack ) {
    hostsAre( count, std::get<Igmp::IgmpVersion>( GetParam() ) );
    U64 stops = 0;
    for ( Seconds const end = Kiv::now() + faultTime(); Kiv::now() < end; ++stops ) {
        ASSERT_NO_FATAL_FAILURE( strike() );
        ASSERT_NO_FATAL_FAILURE( expectAnswersInTime() );
    }
    EXPECT_GT( framesLost( stops ), 0U );
    expectNothingLostUncounted( stops );
}

/// Takes the far end's link away and gives it back, ten times a second.
Support::Child
flapping( Support::Namespace const& ns, Seconds span ) {
    return Support::Child( [&ns, span]( std::ostream& ) {
        auto const times = std::to_string( static_cast<int>( 10.0 * span ) );
        ns.run(
            "sh -c 'for i in $(seq " + times +
            "); do ip link set far0 down; sleep 0.05; ip link set far0 up; sleep 0.05; done'"
        );
    } );
}

class CarrierFaults : public FaultTest, public ::testing::WithParamInterface<Igmp::IgmpVersion> {};

INSTANTIATE_TEST_SUITE_P(
    Version, CarrierFaults, ::testing::Values( Igmp::igmpVersion2, Igmp::igmpVersion3 ),
    []( auto const& instance ) { return std::to_string( instance.param ); }
);

TEST_P( CarrierFaults, TenTimesASecondLoseNothingUncountedAndLeaveNoTrace ) {
    hostsAre( 50, GetParam() );
    U64 const before = reportsSent();
    Support::Child flaps = flapping( far_, faultTime() );
    for ( Seconds const end = Kiv::now() + faultTime(); Kiv::now() < end; live( 0.02 ) ) {
        ask();
        hear();
    }
    flaps.output();
    ASSERT_TRUE( eventually( [&] { return !isAnswering(); } ) );
    EXPECT_GT( reportsSent(), before );
    expectAnswersInTime();
    expectNothingLostUncounted( 0, [this] { return linkCounter( near_, "near0", "tx", "dropped" ); } );
}

} // namespace

} // namespace Interop
