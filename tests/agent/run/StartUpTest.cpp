#include "agent/run/StartUp.h"

#include <sys/eventfd.h>

#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/device/FileDescriptor.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// Hosts on no device, and somebody who has something to ask of the loop.
class StartUpTest : public ::testing::Test, private Kiv::IoHandler {
  protected:
    StartUpTest() { activity().ioHandlerIs( asked_.get(), EPOLLIN, this ); }
    ~StartUpTest() override { activity().ioHandlerDel( asked_.get() ); }

    static Kiv::ActivitySm& activity() { return Kiv::defaultActivity()->activitySm(); }
    std::size_t enabled() const {
        std::size_t count = 0;
        for ( Igmp::IgmpHost const& host : emulation_.hostDir().igmpHost() ) {
            count += host.enabled() ? 1 : 0;
        }
        return count;
    }

    Scenario const scenario_ = scenarioOf( "hosts: [ { name: rx, count: 1000 } ]" );
    Emulation emulation_{ Kiv::Ptr<Lumo::TimerWheel const>( new Lumo::TimerWheel ) };
    StartUp startUp_{ scenario_, emulation_, []( StartUpProgress const& ) {} };
    int heard_ = 0;
    bool isToEnd_ = false;

  private:
    void handleIo( Kiv::U32 ) override {
        ++heard_;
        if ( isToEnd_ ) {
            startUp_.stop();
        }
    }

    Zornet::FileDescriptor const asked_{ eventfd( 1, EFD_CLOEXEC ) };
};

TEST_F( StartUpTest, WhoeverAsksIsHeardMeanwhile ) {
    startUp_.load();
    EXPECT_GT( heard_, 1 );
    EXPECT_EQ( emulation_.hostDir().igmpHosts(), 1000U );
    heard_ = 0;
    startUp_.start();
    EXPECT_GT( heard_, 1 );
    EXPECT_EQ( enabled(), 1000U );
}

TEST_F( StartUpTest, WhoeverAsksIsHeardWithinAHostOfManyGroups ) {
    Scenario const scenario = scenarioOf( "hosts: [ { name: rx, groups: 239.0.0.0/18 } ]" );
    StartUp startUp( scenario, emulation_, []( StartUpProgress const& ) {} );
    startUp.load();
    EXPECT_EQ( heard_, 16 );
    startUp.start();
    EXPECT_EQ( heard_, 32 );
    EXPECT_EQ( emulation_.hostDir().igmpHost( "rx" )->v3groups(), 16384U );
}

TEST_F( StartUpTest, EndsWithTheHostsThatAreThere ) {
    startUp_.load();
    isToEnd_ = true;
    startUp_.start();
    EXPECT_TRUE( startUp_.isStopped() );
    EXPECT_GT( enabled(), 0U );
    EXPECT_LT( enabled(), 1000U );
}

TEST_F( StartUpTest, StartsNothingOnceItHasEnded ) {
    isToEnd_ = true;
    startUp_.load();
    EXPECT_LT( emulation_.hostDir().igmpHosts(), 1000U );
    startUp_.start();
    EXPECT_EQ( enabled(), 0U );
}

TEST_F( StartUpTest, TakesNoTurnInSimulatedTime ) {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope const scope( clock );
    startUp_.load();
    startUp_.start();
    EXPECT_EQ( heard_, 0 );
    EXPECT_EQ( enabled(), 1000U );
}

TEST_F( StartUpTest, LooksAtSignalsInSimulatedTime ) {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope const scope( clock );
    int looks = 0;
    StartUp startUp(
        scenario_, emulation_, []( StartUpProgress const& ) {}, [&] { looks += 1; }
    );
    startUp.load();
    EXPECT_EQ( looks, 10 );
    startUp.start();
    EXPECT_EQ( looks, 20 );
    EXPECT_EQ( Kiv::now(), Kiv::SimulatedClock().now() );
}

} // namespace

} // namespace Agent
