#pragma once

#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "agent/querying/Membership.h"
#include "agent/run/Emulation.h"
#include "agent/scenario/ScenarioLoader.h"
#include "agent/scenario/ScenarioReader.h"
#include "lab/Wire.h"
#include "tests/support/SimulatedTest.h"

namespace Agent {

using Kiv::Seconds;
using ::testing::IsEmpty;
using Zornet::IpAddr;

/// Whole hosts on one segment of a wire in memory, "lan", with the reference querier on the device "router".
class ScenarioTest : public Support::SimulatedTest {
  protected:
    /// The querier's variables by default, on which tests that lose frames count.
    static constexpr Seconds queryInterval = 125.0;
    static constexpr Seconds startupQueryInterval = queryInterval / 4;
    static constexpr Seconds membershipInterval = 260.0;
    static constexpr Seconds hour = 3600.0;

    explicit ScenarioTest( Seconds start = 1000.0 );

    /// Puts a querier of that version onto the wire.
    void querierIs( Zornet::U8 version );
    Lab::Querier& querier() { return *querier_; }
    /// Makes and starts the hosts of a scenario.
    void hostsAre( std::string const& text );
    Igmp::IgmpHost& host( std::string const& name ) { return *emulation_.hostDir().igmpHost( name ); }
    Igmp::IgmpHostStatus& status( std::string const& name ) {
        return *emulation_.statusDir().igmpHostStatus( name );
    }
    Lab::WireSegment& lan() { return wire_.segment( "lan" ); }

    /// Joins or changes a group of a host, as a user would: the record, then its version.
    void join(
        std::string const& name, char const* group, Igmp::IgmpV3GroupRecord::FilterMode mode,
        std::vector<char const*> const& sources = {}
    );
    void leave( std::string const& name, char const* group ) { host( name ).v3groupDel( IpAddr( group ) ); }

    /// Where the querier's table and the configuration of all hosts differ.
    std::vector<std::string> faults() const;
    /// From now on frames are lost at random, in every other round of queries and its answers, so that never
    /// two rounds in a row fail. The first round is whole.
    void loseFramesInEveryOtherRound( double probability );

  private:
    struct Lan : Lab::Wire {
        explicit Lan( Kiv::Ptr<Lumo::TimerWheel const> const& wheel ) : Wire( wheel ) {
            defaultSegmentIs( "lan" );
        }
    };

    Lan wire_{ wheel() };
    Zornet::DeviceProviderScope const scope_{ wire_ };
    std::unique_ptr<Lab::Querier> querier_;
    Emulation emulation_{ wheel() };
    std::mt19937 random_{ 1 };
};

} // namespace Agent
