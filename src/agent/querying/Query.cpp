#include "agent/querying/Query.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>

#include "agent/devices/DeviceFacts.h"
#include "agent/querying/DeviceQuerier.h"
#include "agent/querying/MembershipLog.h"
#include "agent/querying/QuerierReport.h"
#include "agent/run/Privileges.h"
#include "agent/run/SignalWatch.h"
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

/// The text of an exception without the class before the name of the variable.
std::string_view
withoutClass( std::string_view text ) {
    std::size_t const colons = text.find( "::" );
    return colons == std::string_view::npos ? text : text.substr( colons + 2 );
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
    SignalWatch const signals( { SIGINT, SIGTERM }, [&activity]( int ) { activity.stop(); } );
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
    try {
        config.check();
    } catch ( Kiv::RangeException const& fault ) {
        std::cerr << "igmphost: error: " << withoutClass( fault.what() ) << std::endl;
        return exitWrongUsage;
    }
    return perform( options, config );
}

} // namespace Agent
