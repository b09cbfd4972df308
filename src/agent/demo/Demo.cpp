#include "agent/demo/Demo.h"

#include <unistd.h>

#include <iostream>
#include <memory>

#include "agent/demo/DemoReport.h"
#include "agent/demo/VlanTrunk.h"
#include "agent/output/Progress.h"
#include "agent/run/Emulation.h"
#include "agent/scenario/ScenarioLoader.h"
#include "lab/Wire.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

constexpr char segment[] = "lan";
constexpr U16 untagged = 0;

/// Hosts and queriers on one segment in memory.
class Bench {
  public:
    explicit Bench( DemoOptions const& options );

    void run();
    DemoReport report() const;

  private:
    Kiv::Ptr<Zornet::EthDevPam> routerPam();
    void querierIs( U16 vlanId, Kiv::Ptr<Zornet::Pam> const& pam );
    Membership configured( U16 vlanId ) const;

    DemoOptions const& options_;
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Lab::Wire wire_{ wheel_ };
    Zornet::DeviceProviderScope const scope_{ wire_ };
    std::unique_ptr<VlanTrunk> trunk_;
    std::map<U16, std::unique_ptr<Lab::Querier>> queriers_; ///< by VLAN
    Emulation emulation_{ wheel_ };
};

Bench::Bench( DemoOptions const& options ) : options_( options ) {
    wire_.defaultSegmentIs( segment );
    if ( options.vlans == 0 ) {
        querierIs( untagged, routerPam() );
    } else {
        trunk_ = std::make_unique<VlanTrunk>( routerPam() );
    }
    for ( U32 vlan = 1; vlan <= options.vlans; ++vlan ) {
        auto const vlanId = static_cast<U16>( vlan );
        querierIs( vlanId, trunk_->pam( Bridging::VlanId( vlanId ) ) );
    }
    Scenario const scenario = demoScenario( options );
    loadHosts( scenario, emulation_.hostDir() );
    startHosts( scenario, emulation_.hostDir() );
}

Kiv::Ptr<Zornet::EthDevPam>
Bench::routerPam() {
    Kiv::Ptr<Zornet::EthDevPam> pam = Zornet::EthDevPamIs( "router" );
    pam->deviceOpenIs( true );
    return pam;
}

void
Bench::querierIs( U16 vlanId, Kiv::Ptr<Zornet::Pam> const& pam ) {
    Lab::QuerierConfig config;
    config.version = static_cast<Zornet::U8>( options_.igmpVersion );
    config.ipAddr = Zornet::IpAddr( "10.255.255.254" );
    if ( vlanId != untagged ) {
        config.vlanId = Bridging::VlanId( vlanId );
    }
    auto querier = std::make_unique<Lab::Querier>( config, pam, wheel_ );
    querier->enabledIs( true );
    queriers_[vlanId] = std::move( querier );
}

void
Bench::run() {
    constexpr int steps = 100;
    Progress progress(
        std::cerr, isatty( STDERR_FILENO ) == 1, options_.duration, options_.realtime ? "" : " simulated"
    );
    Kiv::Seconds const start = Kiv::now();
    for ( int step = 1; step <= steps; ++step ) {
        Kiv::Seconds const passed = options_.duration * step / steps;
        Kiv::defaultActivity()->activitySm().runUntilTime( start + passed );
        progress.passedIs( passed );
    }
}

DemoReport
Bench::report() const {
    StatusLedger ledger( emulation_ );
    ledger.balance();
    DemoReport report( ledger.total() );
    for ( auto const& [vlanId, querier] : queriers_ ) {
        std::string const link = vlanId == untagged ? "" : "VLAN " + std::to_string( vlanId ) + ": ";
        report.querierIs( *querier, configured( vlanId ), link );
    }
    return report;
}

Membership
Bench::configured( U16 vlanId ) const {
    Membership membership;
    for ( Igmp::IgmpHost const& host : emulation_.hostDir().igmpHost() ) {
        if ( host.vlanId() == vlanId ) {
            addWanted( host, membership );
        }
    }
    return membership;
}

} // namespace

ExitStatus
demo( DemoOptions const& options ) {
    TraceConsole const console( std::cerr, options.traces );
    Kiv::SimulatedClock simulated;
    std::optional<Kiv::ClockScope> clockScope;
    if ( !options.realtime ) {
        clockScope.emplace( simulated );
    }
    Bench bench( options );
    bench.run();
    DemoReport const report = bench.report();
    report.print( std::cout );
    return report.exitStatus();
}

} // namespace Agent
