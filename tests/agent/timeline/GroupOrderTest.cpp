#include "agent/timeline/GroupOrder.h"

#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// An event that joins those groups.
Event
joinOf( std::string const& groups ) {
    return scenarioOf( "hosts: [ { name: a } ]\nevents: [ { at: 1, join: [ " + groups + " ] } ]" )
        .events.at( 0 );
}

TEST( GroupOrder, CountsOverAllEntries ) {
    Event const event = joinOf( "239.1.1.1, 239.2.0.0/30, { multicastAddr: 239.3.0.0, count: 2, step: 5 }" );
    GroupOrder const order( event.groups );
    EXPECT_EQ( order.count(), 7U );
    std::vector<std::string> const groups{ "239.1.1.1", "239.2.0.0", "239.2.0.1", "239.2.0.2",
                                           "239.2.0.3", "239.3.0.0", "239.3.0.5" };
    for ( std::size_t i = 0; i < groups.size(); ++i ) {
        EXPECT_EQ( order.group( i ).group, Zornet::IpAddr( groups[i] ) ) << i;
    }
    EXPECT_EQ( order.group( 4 ).spec, &event.groups[1] );
}

TEST( GroupOrder, OfNoGroupsIsEmpty ) {
    Event const event;
    EXPECT_EQ( GroupOrder( event.groups ).count(), 0U );
}

} // namespace

} // namespace Agent
