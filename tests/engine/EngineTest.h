#pragma once

#include "tests/support/DeliveryTest.h"
#include "tests/support/NextDraw.h"
#include "tests/support/StatusChanges.h"
#include "tests/support/TraceCapture.h"

/// What the tests of the version 1 and 2 engine share: a host under a delivery, and the group G.
class EngineTest : public Support::DeliveryHostTest {
  protected:
    static constexpr char const* G = "239.1.1.1";
    static constexpr char const* unknownGroup = "239.9.9.9";
    static constexpr Igmp::TimerState idle = Igmp::timerDisabled;
    static constexpr Igmp::TimerState pending = Igmp::timerRunning;

    explicit EngineTest( Support::Delivery delivery = Support::Delivery::isInline )
        : DeliveryHostTest( delivery ) {}

    /// The group's timer machine, which must be there.
    Igmp::IgmpHostGroupTimerSm& timer( char const* group = G ) {
        return *sm().groupTimerSm( Zornet::IpAddr( group ) );
    }
    bool hasTimer( char const* group = G ) { return sm().groupTimerSm( Zornet::IpAddr( group ) ) != nullptr; }
    void removeGroup( char const* group = G ) {
        host().v3groupDel( Zornet::IpAddr( group ) );
        settle();
    }
    /// An enabled host that has joined G, has said so twice and owes nothing.
    void joinAndRest( Igmp::IgmpVersion version = Igmp::igmpVersion2 ) {
        enable( version );
        exclude( G );
        runFor( 20.0 );
        sent().clear();
    }
    Support::StatusChanges changes() { return Support::StatusChanges( status() ); }
};

/// The same where the delivery is the test's one parameter.
class EngineDeliveryTest : public EngineTest, public ::testing::WithParamInterface<Support::Delivery> {
  protected:
    EngineDeliveryTest() : EngineTest( GetParam() ) {}
};
