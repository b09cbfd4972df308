#pragma once

#include "tests/engine/EngineTest.h"
#include "tests/platform/zornet/AssertionText.h"

/// The sources of a list and their numbers.
using SourceNumbers = std::map<std::string, unsigned>;
SourceNumbers numbersOf( Igmp::IgmpV3HostGroupSourceList const& list );

/// The records of a version 3 report as describe() has them. Records and the sources of each are sorted,
/// since their order on the wire is that of the containers.
std::string sortedRecords( Support::Bytes const& frame );

std::string textOf( Zornet::IpAddr const& addr );

/// What the tests of the version 3 engine share: a host under either delivery, the group G, the group S of
/// sources a, b and c, and short names for the machines.
class V3Test : public EngineTest, public ::testing::WithParamInterface<Support::Delivery> {
  protected:
    static constexpr char const* S = "232.1.1.1";
    static constexpr char const* a = "10.9.9.1";
    static constexpr char const* b = "10.9.9.2";
    static constexpr char const* c = "10.9.9.3";
    /// The clock's tick, a few times: a turn at one instant may move it on.
    static constexpr Support::Seconds tolerance = 1e-5;
    /// What a report holds beside its records, untagged and with Router Alert.
    static constexpr Igmp::U32 headerBytes = 46;

    /// How many reports were counted as state changes and as current states.
    using Reports = std::pair<Igmp::U32, Igmp::U32>;

    V3Test() : EngineTest( GetParam() ) {}

    Igmp::IgmpV3HostAggregatedSenderSm& sender() { return *sm().aggregatedSenderSm(); }
    Igmp::IgmpV3HostGeneralQueryTimerSm& general() { return *sm().igmpV3HostGeneralQueryTimerSm(); }
    Igmp::IgmpV3HostGroupQueryTimerSm& queryTimer( char const* group = G ) {
        return *sm().v3GroupQueryTimerSm( Zornet::IpAddr( group ) );
    }
    Igmp::IgmpV3HostGroupSm& groupSm( char const* group = G ) {
        return *sender().v3GroupSm( Zornet::IpAddr( group ) );
    }
    bool hasCallback( char const* group = G ) {
        return sm().v3GroupCallbackSm( Zornet::IpAddr( group ) ) != nullptr;
    }
    bool hasQueryTimer( char const* group = G ) {
        return sm().v3GroupQueryTimerSm( Zornet::IpAddr( group ) ) != nullptr;
    }
    bool hasGroupSm( char const* group = G ) {
        return sender().v3GroupSm( Zornet::IpAddr( group ) ) != nullptr;
    }
    Igmp::IgmpV3GroupRecord& record( char const* group = G ) {
        return *host().v3group( Zornet::IpAddr( group ) );
    }

    /// Adds or removes sources and raises the record's version.
    void addSources( char const* group, std::vector<char const*> const& sources );
    void removeSources( char const* group, std::vector<char const*> const& sources );
    void raiseAndSettle( char const* group = G ) {
        raise( record( group ) );
        settle();
    }
    /// Configures exclude groups without sources in one go.
    void excludeAll( std::vector<std::string> const& groups );
    /// `count` groups from 239.1.1.1 up, in the order in which every walk meets them.
    static std::vector<std::string> groupsInOrder( unsigned count );

    /// An enabled version 3 host with the groups that are configured, all said and nothing owed.
    void enableAndRest() {
        enable( Igmp::igmpVersion3 );
        rest();
    }
    void rest() {
        runFor( 20.0 );
        sent().clear();
    }
    Reports reports() { return { status().v3StateChangeReportSent(), status().v3CurrentStateReportSent() }; }
    /// sortedRecords() of every frame sent so far, and forgets them.
    std::vector<std::string> takeRecords();
    std::vector<std::size_t> lengths();
    void setRobustness( Igmp::U32 value ) {
        host().robustnessIs( value );
        settle();
    }
    void setPeriodic( Support::Seconds interval ) {
        host().unsolicitedReportIntervalIs( interval );
        settle();
        host().enablePeriodicReportIs( true );
        settle();
    }
    void block( bool value = true ) {
        host().blockedIs( value );
        settle();
    }
    void makeIngress() {
        host().directionIs( Bridging::AllowedTrafficDirection::ingress );
        settle();
    }
    /// Takes the host's way to the wire.
    void unbind() {
        host().intfConfigVersionIs( 0 );
        settle();
    }
};
