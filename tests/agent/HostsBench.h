#pragma once

#include "agent/run/Emulation.h"
#include "agent/run/RunPart.h"
#include "agent/scenario/ScenarioLoader.h"
#include "tests/agent/scenario/ScenarioTexts.h"
#include "tests/support/HostTest.h"

namespace Agent {

/// The hosts of a scenario on recording devices and the simulated clock. They send with the address that
/// their frames bear, so that each frame tells who sent it.
class HostsBench : public Support::SimulatedTest {
  protected:
    HostsBench() : provider_( start() ), scope_( provider_ ) {}

    /// Makes and starts the hosts of a scenario.
    void hostsAre( std::string const& text ) {
        scenario_ = scenarioOf( text );
        loadHosts( scenario_, emulation_.hostDir() );
        context_.started = Kiv::now();
        startHosts( scenario_, emulation_.hostDir() );
    }
    Igmp::IgmpHost& host( char const* name ) { return *emulation_.hostDir().igmpHost( name ); }
    Igmp::IgmpHostStatus& status( char const* name ) {
        return *emulation_.statusDir().igmpHostStatus( name );
    }
    Support::RecordingDevice& device() { return provider_.recording( "eth0" ); }
    /// What went out on "eth0" since the last call: "TIME ADDRESS MESSAGE", time in seconds since the start.
    std::vector<std::string> takeSent() {
        std::vector<std::string> lines;
        for ( Support::SentFrame const& frame : device().sent ) {
            std::ostringstream line;
            line << frame.elapsed << " 10.0.0." << int{ frame.bytes[29] } << ' '
                 << Support::describe( frame.bytes );
            lines.push_back( line.str() );
        }
        device().sent.clear();
        return lines;
    }

    Support::RecordingProvider provider_;
    Zornet::DeviceProviderScope const scope_;
    Scenario scenario_;
    RunOptions options_;
    Emulation emulation_{ wheel() };
    Traffic traffic_;
    StatusLedger ledger_{ emulation_ };
    Messages messages_{ LogFormat::text, false };
    RunContext context_{ options_, scenario_, wheel(), emulation_, traffic_, ledger_, messages_ };
};

} // namespace Agent
