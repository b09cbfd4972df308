#include "agent/timeline/EventCursor.h"

#include <gmock/gmock.h>

#include <set>

namespace Agent {

namespace {

/// An event about ten hosts of one entry.
Event
event() {
    Event e;
    e.selection = HostSelection( { { 0, 0, 10, 0 } } );
    e.steps = 1;
    return e;
}

std::vector<Kiv::Seconds>
times( Event const& e, U64 seed, std::size_t most, Shard const& shard = {} ) {
    std::vector<Kiv::Seconds> all;
    for ( EventCursor cursor( e, shard, seed ); all.size() < most && Kiv::isFinite( cursor.time() ); ) {
        all.push_back( cursor.time() );
        cursor.take();
    }
    return all;
}

TEST( EventCursorTest, JitterPutsEachStepOffByLessThanItself ) {
    Event e = event();
    e.selection = HostSelection( { { 0, 0, 1, 0 } } );
    e.time = 100.0;
    e.spans = { 10.0 };
    e.jitter = 4.0;
    e.steps = 1000;
    std::vector<Kiv::Seconds> const all = times( e, 1, 2000 );
    ASSERT_EQ( all.size(), 1000U );
    std::set<Kiv::Seconds> distinct;
    for ( std::size_t step = 0; step < all.size(); ++step ) {
        Kiv::Seconds const late = all[step] - ( 100.0 + 10.0 * static_cast<double>( step ) );
        EXPECT_GE( late, 0.0 );
        EXPECT_LT( late, 4.0 );
        distinct.insert( late );
    }
    EXPECT_LT( *distinct.begin(), 0.1 );
    EXPECT_GT( *distinct.rbegin(), 3.9 );
}

TEST( EventCursorTest, SeedDecidesTheJitter ) {
    Event e = event();
    e.jitter = 4.0;
    EXPECT_EQ( times( e, 7, 1 ), times( e, 7, 1 ) );
    EXPECT_NE( times( e, 7, 1 ), times( e, 8, 1 ) );
}

TEST( EventCursorTest, SharesOfAScenarioKeepTimeTogether ) {
    Event e = event();
    e.rate = 2.0;
    e.jitter = 1.0;
    e.spans = { 100.0 };
    e.steps = 3;
    std::vector<Kiv::Seconds> const whole = times( e, 3, 100 );
    std::multiset<Kiv::Seconds> shares;
    for ( U32 number = 1; number <= 3; ++number ) {
        std::vector<Kiv::Seconds> const share = times( e, 3, 100, { number, 3 } );
        EXPECT_EQ( share.size(), number == 1 ? 12U : 9U );
        shares.insert( share.begin(), share.end() );
    }
    EXPECT_EQ( shares, std::multiset<Kiv::Seconds>( whole.begin(), whole.end() ) );
}

TEST( EventCursorTest, ShareTakesItsOwnHosts ) {
    Event const e = event();
    std::vector<U32> hosts;
    for ( EventCursor cursor( e, { 2, 4 }, 0 ); Kiv::isFinite( cursor.time() ); ) {
        hosts.push_back( cursor.take().host.index );
    }
    EXPECT_THAT( hosts, ::testing::ElementsAre( 1, 5, 9 ) );
}

/// Of each host its number, once for each group.
std::multiset<U64>
hostsOf( Event const& e, Shard const& shard ) {
    std::multiset<U64> hosts;
    for ( EventCursor cursor( e, shard, 0 ); Kiv::isFinite( cursor.time() ); ) {
        hosts.insert( cursor.take().host.number );
    }
    return hosts;
}

TEST( EventCursorTest, SharesOfScatteredHostsAreTheWhole ) {
    Event e = event();
    e.action = EventAction::join;
    e.selection = HostSelection( { { 0, 1, 2, 1 }, { 0, 6, 5, 6 }, { 1, 0, 1, 20 }, { 2, 0, 7, 23 } } );
    e.groups.resize( 1 );
    e.groups[0].groups = AddressList( { { Zornet::IpAddr( "239.1.1.1" ), 2, 1, {} } } );
    std::multiset<U64> shares;
    for ( U32 number = 1; number <= 4; ++number ) {
        shares.merge( hostsOf( e, { number, 4 } ) );
    }
    EXPECT_EQ( shares.size(), 30U );
    EXPECT_EQ( shares, hostsOf( e, {} ) );
}

/// A walk over the hosts would take hours.
TEST( EventCursorTest, ShareFindsItsHostAmongAGreatMany ) {
    Event e = event();
    e.selection = HostSelection( { { 0, 0, 4'000'000'000, 0 } } );
    e.spans = { 1.0 };
    e.steps = 1000;
    EXPECT_EQ( hostsOf( e, { 4'000'000'000, 4'000'000'000 } ).count( 3'999'999'999 ), 1000U );
}

TEST( EventCursorTest, ShareWithoutAHostHasNothingToDo ) {
    Event e = event();
    e.selection = HostSelection( { { 0, 0, 1, 0 } } );
    e.steps.reset();
    e.spans = { 1.0 };
    EXPECT_FALSE( Kiv::isFinite( EventCursor( e, { 2, 2 }, 0 ).time() ) );
}

TEST( EventCursorTest, EndIsThatOfTheLastUnit ) {
    Event e = event();
    e.time = 5.0;
    e.spans = { 2.0, 3.0 };
    e.steps = 4;
    e.rate = 10.0;
    EXPECT_EQ( e.endTime(), 5.0 + 2.0 + 3.0 + 2.0 + 1.0 );
    e.steps.reset();
    EXPECT_FALSE( Kiv::isFinite( e.endTime() ) );
}

} // namespace

} // namespace Agent
