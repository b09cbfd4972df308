#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

constexpr char hosts[] = "hosts: [ { name: rx, count: 3, ipAddr: 255.255.255.252 } ]\nevents:\n";

Event
eventOf( std::string const& entry ) {
    return scenarioOf( hosts + ( "  - " + entry + "\n" ) ).events.at( 0 );
}

std::string
eventErrors( std::string const& entry ) {
    return errorsOf( hosts + ( "  - " + entry + "\n" ) );
}

TEST( EventReader, EventWithoutHostsIsForAll ) {
    Event const event = eventOf( "{ at: 1.5, enable: true }" );
    EXPECT_EQ( event.time, 1.5 );
    EXPECT_EQ( event.selection.count(), 3U );
    EXPECT_EQ( event.steps, U64{ 1 } );
}

TEST( EventReader, FlagNeedsNoValue ) {
    EXPECT_EQ( eventOf( "{ at: 1, disable: }" ).action, EventAction::disable );
}

TEST( EventReader, RatesHaveUnits ) {
    EXPECT_EQ( eventOf( "{ at: 1, enable: true, rate: 500/s }" ).rate, 500.0 );
    EXPECT_EQ( eventOf( "{ at: 1, enable: true, rate: 0.5 }" ).rate, 0.5 );
    EXPECT_EQ( eventOf( "{ at: 1, enable: true, rate: 30/min }" ).rate, 0.5 );
    EXPECT_EQ( eventOf( "{ at: 1, enable: true, rate: 7200/h }" ).rate, 2.0 );
}

TEST( EventReader, RatesOfOtherFormsAreRefused ) {
    std::string const told = "rate: expected a rate above 0, such as 500/s, 30/min or 10/h, found ";
    EXPECT_EQ( eventErrors( "{ at: 1, enable: true, rate: 5/d }" ), ":3:34: error: " + told + "'5/d'\n" );
    EXPECT_EQ( eventErrors( "{ at: 1, enable: true, rate: 0 }" ), ":3:34: error: " + told + "'0'\n" );
    EXPECT_EQ( eventErrors( "{ at: 1, enable: true, rate: -1/s }" ), ":3:34: error: " + told + "'-1/s'\n" );
    EXPECT_EQ( eventErrors( "{ at: 1, enable: true, rate: fast }" ), ":3:34: error: " + told + "'fast'\n" );
}

TEST( EventReader, EveryErrorIsTold ) {
    EXPECT_EQ(
        eventErrors( "{ at: -1, evry: 5, every: 0, times: 0, jitter: x, enable: no }" ),
        ":3:11: error: at: expected a number of seconds, 0 or above, found '-1'\n"
        ":3:15: error: unknown key 'evry' in an event; did you mean 'every'?\n"
        ":3:31: error: every: expected a number of seconds above 0, found '0'\n"
        ":3:41: error: times: expected a whole number from 1 to 4294967295, found '0'\n"
        ":3:52: error: jitter: expected a number of seconds, 0 or above, found 'x'\n"
        ":3:63: error: enable: expected true or nothing, for hosts says which, found 'no'\n"
    );
}

TEST( EventReader, WhatDoesNotGoTogetherIsToldBesideOtherErrors ) {
    EXPECT_EQ(
        eventErrors( "{ at: -1, times: 2, enable: true }" ),
        ":3:11: error: at: expected a number of seconds, 0 or above, found '-1'\n"
        ":3:22: error: times: expected every, zap or flap beside it, found none\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: soon, every: 2, jitter: 2.5, rate: 0, hosts: rx }" ),
        ":3:5: error: missing action in an event; expected one of set, join, leave, change, enable, disable, "
        "add, delete, zap, flap\n"
        ":3:11: error: at: expected a number of seconds, 0 or above, found 'soon'\n"
        ":3:35: error: jitter: expected at most the 2 s to the next step, found '2.5'\n"
        ":3:46: error: rate: expected a rate above 0, such as 500/s, 30/min or 10/h, found '0'\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, every: 2, flap: { down: 1, upp: 1 }, hosts: tx }" ),
        ":3:21: error: every: does not go with flap, which has its own\n"
        ":3:30: error: missing key 'up' in a flap\n"
        ":3:41: error: unknown key 'upp' in a flap; did you mean 'up'?\n"
        ":3:58: error: hosts: expected the name of a host, found 'tx'; did you mean 'rx'?\n"
    );
}

TEST( EventReader, WhatMayBeMisspeltIsNotMissed ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, evry: 5, times: 3, enable: true }" ),
        ":3:14: error: unknown key 'evry' in an event; did you mean 'every'?\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, every: 0, jitter: 3, enable: true }" ),
        ":3:21: error: every: expected a number of seconds above 0, found '0'\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, jitter: 3, zap: { dwel: 5, groups: 239.1.1.1 } }" ),
        ":3:30: error: missing key 'dwell' in a zap\n"
        ":3:32: error: unknown key 'dwel' in a zap; did you mean 'dwell'?\n"
    );
}

TEST( EventReader, SecondActionIsReadToo ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, enable: true, join: 239.1.1.300 }" ),
        ":3:34: error: join: expected one action in an event, found enable too\n"
        ":3:34: error: join: expected an IPv4 address such as 239.1.1.1, or a range such as 239.1.1.0/24 or "
        "239.1.1.1-239.1.1.50, found '239.1.1.300'\n"
    );
}

TEST( EventReader, GroupsOfASecondActionRepeatNone ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, join: 239.1.1.1, leave: 239.1.1.1 }" ),
        ":3:38: error: leave: expected one action in an event, found join too\n"
    );
}

TEST( EventReader, ErrorOfAnEventHidesNoneOfItsHosts ) {
    EXPECT_EQ(
        eventErrors( "{ at: soon, hosts: [ rx-1, tx ], joyn: 239.1.1.1 }" ),
        ":3:11: error: at: expected a number of seconds, 0 or above, found 'soon'\n"
        ":3:32: error: hosts: expected the name of a host, found 'tx'; did you mean 'rx'?\n"
        ":3:38: error: unknown key 'joyn' in an event; did you mean 'join'?\n"
    );
}

TEST( EventReader, ErrorOfAnEventMakesNoErrorOfAnother ) {
    EXPECT_EQ(
        eventErrors( "{ at: soon, add: { name: late } }\n  - { at: 5, hosts: late, disable: no }" ),
        ":3:11: error: at: expected a number of seconds, 0 or above, found 'soon'\n"
        ":4:36: error: disable: expected true or nothing, for hosts says which, found 'no'\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 5, add: { name: late } }\n  - { at: -1, hosts: late, disable: true }" ),
        ":4:11: error: at: expected a number of seconds, 0 or above, found '-1'\n"
    );
}

TEST( EventReader, EventHasATimeAndOneAction ) {
    EXPECT_EQ(
        eventErrors( "{ hosts: rx-1, enable: true }" ), ":3:5: error: missing key 'at' in an event\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1 }" ),
        ":3:5: error: missing action in an event; expected one of set, join, leave, "
        "change, enable, disable, add, delete, zap, flap\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, enable: true, disable: true }" ),
        ":3:37: error: disable: expected one action in an event, found enable too\n"
    );
}

TEST( EventReader, RepetitionMustMakeSense ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, times: 2, enable: true }" ),
        ":3:21: error: times: expected every, zap or flap beside it, found none\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, every: 2, flap: { down: 1, up: 1 } }" ),
        ":3:21: error: every: does not go with flap, which has its own\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, every: 2, jitter: 2.5, enable: true }" ),
        ":3:32: error: jitter: expected at most the 2 s to the next step, found '2.5'\n"
    );
}

TEST( EventReader, SettingsAreThoseOfHosts ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, set: { robustnes: 3, mtu: many } }" ),
        ":3:21: error: unknown key 'robustnes' in what a host is set to; did you mean 'robustness'?\n"
        ":3:40: error: mtu: expected a whole number from 0 to 4294967295, found 'many'\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, set: {} }" ),
        ":3:19: error: set: expected an attribute of a host, found none\n"
    );
}

TEST( EventReader, AddressesMustNotStepOutOfTheirType ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, set: { ipAddr: 255.255.255.254 } }" ),
        ":3:29: error: ipAddr: 3 hosts from 255.255.255.254 on run past 255.255.255.255\n"
    );
}

TEST( EventReader, ZapAndFlapHaveKeysOfTheirOwn ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, zap: { dwel: 3, groups: 239.1.1.1 } }" ),
        ":3:19: error: missing key 'dwell' in a zap\n"
        ":3:21: error: unknown key 'dwel' in a zap; did you mean 'dwell'?\n"
    );
    EXPECT_EQ( eventErrors( "{ at: 1, flap: { down: 3 } }" ), ":3:20: error: missing key 'up' in a flap\n" );
}

TEST( EventReader, HostsMustExist ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, hosts: [ rx-1, rx-4 ], enable: true }" ),
        ":3:29: error: hosts: expected the name of a host, found 'rx-4'; expected one of rx\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 1, hosts: [], enable: true }" ),
        ":3:21: error: hosts: expected the name of a host or a pattern, found an empty list\n"
    );
}

TEST( EventReader, HostsWithoutANameAreNotProposed ) {
    EXPECT_EQ(
        errorsOf( "hosts: [ { name: rx }, { count: 2 } ]\nevents: [ { at: 1, hosts: television, enable: } ]"
        ),
        ":1:24: error: missing key 'name' in a host\n"
        ":2:27: error: hosts: expected the name of a host, found 'television'; expected one of rx\n"
    );
    EXPECT_EQ(
        errorsOf(
            "hosts: [ { name: rx, count: 2 }, { name: rx } ]\nevents: [ { at: 1, hosts: tx-1, enable: } ]"
        ),
        ":2:27: error: hosts: expected the name of a host, found 'tx-1'; expected one of rx\n"
    );
}

TEST( EventReader, HostsThatAreAddedMustBeThereInTime ) {
    std::string const add = "{ at: 5, add: { name: late } }\n";
    EXPECT_EQ( eventErrors( add + "  - { at: 5, hosts: late, disable: true }" ), "" );
    EXPECT_EQ(
        eventErrors( add + "  - { at: 4, hosts: late, disable: true }" ),
        ":4:21: error: hosts: expected hosts that are there at 4 s, found 'late', which is added at 5 s\n"
    );
    EXPECT_EQ( eventErrors( add + "  - { at: 4, disable: true }" ), "" );
}

TEST( EventReader, LeaveSaysWhat ) {
    EXPECT_EQ(
        eventErrors( "{ at: 1, leave: }" ), ":3:14: error: leave: expected all, or groups, found nothing\n"
    );
}

TEST( EventReader, AddedHostsAreCheckedLikeTheOthers ) {
    EXPECT_EQ(
        eventErrors( "{ at: 5, add: { name: rx-2, mtuu: 3 } }" ),
        ":3:27: error: host 'rx-2' is there already, in line 1\n"
        ":3:33: error: unknown key 'mtuu' in a host; did you mean 'mtu'?\n"
    );
    EXPECT_EQ(
        eventErrors( "{ at: 5, hosts: rx, add: { name: late } }" ),
        ":3:21: error: hosts: does not go with add of hosts that are described there\n"
    );
}

TEST( EventReader, GroupsAreReadAsHostsHaveThem ) {
    Event const event = eventOf( "{ at: 1, join: [ 239.1.1.1, { multicastAddr: 239.2.0.0/30 } ] }" );
    EXPECT_EQ( event.groupsPerHost(), 5U );
    EXPECT_EQ( event.groups.at( 1 ).groups.addr( 3 ), Zornet::IpAddr( "239.2.0.3" ) );
    EXPECT_EQ(
        eventErrors( "{ at: 1, join: 239.1.1.300 }" ),
        ":3:20: error: join: expected an IPv4 address such as 239.1.1.1, or a range such as 239.1.1.0/24 or "
        "239.1.1.1-239.1.1.50, found '239.1.1.300'\n"
    );
}

} // namespace

} // namespace Agent
