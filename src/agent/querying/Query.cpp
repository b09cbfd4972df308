#include "agent/querying/Query.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "agent/devices/DeviceFacts.h"
#include "agent/querying/DeviceQuerier.h"
#include "agent/querying/MembershipLog.h"
#include "agent/querying/QuerierReport.h"
#include "agent/run/EndSignals.h"
#include "agent/run/Privileges.h"
#include "lab/Timer.h"

namespace Agent {

namespace {

/// How long answers may take beyond the response time until they have arrived here.
constexpr Kiv::Seconds grace = 0.5;
/// How often a change is looked for.
constexpr Kiv::Seconds lookInterval = 0.1;

/// How long hosts take for an answer at most. A version 1 querier cannot tell them; they take 10 seconds.
Kiv::Seconds
answerTime( Lab::QuerierConfig const& config ) {
    constexpr Kiv::Seconds ofVersion1 = 10.0;
    return config.version == 1 ? ofVersion1 : config.queryResponseInterval;
}

Lab::QuerierConfig
configOf( QueryOptions const& options ) {
    Lab::QuerierConfig config = options.config;
    DeviceFacts const facts = deviceFacts( options.ns, options.device );
    config.ipAddr = options.ipAddr.value_or( facts.ipAddr.value_or( config.ipAddr ) );
    config.macAddr = options.macAddr.value_or( facts.macAddr );
    config.queryResponseInterval =
        options.responseTime.value_or( std::min( config.queryResponseInterval, config.queryInterval / 2 ) );
    if ( options.once ) {
        config.startupQueryCountSet = 1;
    }
    return config;
}

/// The option that sets what is at fault.
std::string
optionOf( Lab::QuerierConfig::Fault const& fault ) {
    static std::map<std::string_view, char const*> const options{
        { "ipAddr", "--address" },
        { "queryInterval", "--interval" },
        { "queryResponseInterval", "--response-time" },
        { "lastMemberQueryInterval", "--last-member" },
    };
    auto const option = options.find( fault.variable );
    return option == options.end() ? fault.variable : option->second;
}

void
print( Lab::Querier const& querier, bool json ) {
    if ( json ) {
        std::cout << querierJson( querier ).dump( 2 ) << std::endl;
    } else {
        printQuerier( std::cout, querier );
    }
}

ExitStatus
perform( QueryOptions const& options, Lab::QuerierConfig const& config ) {
    TraceConsole const console( std::cerr, options.traces );
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    EndSignals const signals( [&activity] { activity.stop(); } );
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    DeviceQuerier const querier( options.device.c_str(), options.ns, config, wheel );
    if ( options.once ) {
        activity.runFor( options.duration.value_or( answerTime( config ) + grace ) );
        print( querier.querier(), options.json );
        return exitDone;
    }
    std::cerr << "igmphost: " << config.ipAddr << " asks on " << options.device << " every "
              << config.queryInterval << " s" << ( options.duration ? "" : " until Ctrl-C" ) << std::endl;
    MembershipLog log( std::cout, querier.querier(), options.json );
    Kiv::Ptr<Lab::Timer> const timer( new Lab::Timer( wheel, [&] {
        log.look();
        timer->remainingIs( lookInterval );
    } ) );
    timer->remainingIs( lookInterval );
    activity.runFor( options.duration.value_or( Kiv::never ) );
    timer->stop();
    log.look();
    print( querier.querier(), options.json );
    return exitDone;
}

} // namespace

ExitStatus
query( QueryOptions const& options ) {
    if ( std::string const missing = missingPrivilege( !options.ns.empty() ); !missing.empty() ) {
        std::cerr << "igmphost: error: " << missing << std::endl;
        return exitFailed;
    }
    keepCapabilities( deviceCapabilities( !options.ns.empty() ) );
    Lab::QuerierConfig const config = configOf( options );
    std::vector<Lab::QuerierConfig::Fault> const faults = config.faults();
    for ( Lab::QuerierConfig::Fault const& fault : faults ) {
        std::cerr << "igmphost: error: " << optionOf( fault ) << ": " << fault.text << std::endl;
    }
    if ( !faults.empty() ) {
        return exitWrongUsage;
    }
    return perform( options, config );
}

} // namespace Agent
