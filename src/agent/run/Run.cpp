#include "agent/run/Run.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <memory>

#include "agent/output/StatusFile.h"
#include "agent/output/StatusTotals.h"
#include "agent/run/Leaving.h"
#include "agent/run/Privileges.h"
#include "agent/run/SignalWatch.h"
#include "agent/scenario/ScenarioLoader.h"
#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/Warnings.h"
#include "agent/timeline/Timeline.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

using RunParts = std::vector<std::unique_ptr<RunPart>>;

/// What the options ask for, in the order in which it is told of anything.
RunParts
makeRunParts( RunContext const& context ) {
    RunParts parts;
    if ( !context.scenario.events.empty() ) {
        parts.push_back( std::make_unique<Timeline>( context ) );
    }
    if ( context.options.statusFile ) {
        parts.push_back( std::make_unique<StatusFile>( context ) );
    }
    return parts;
}

/// A checked scenario on its way from load to teardown.
class Runner {
  public:
    Runner( RunOptions const& options, Scenario const& scenario )
        : console_( std::cerr, options.traces ),
          signals_( { SIGINT, SIGTERM, SIGUSR1 }, [this]( int signal ) { handleSignal( signal ); } ),
          context_{ options, scenario, wheel_, emulation_ } {}
    ~Runner() {
        while ( !parts_.empty() ) {
            parts_.pop_back();
        }
    }
    Runner( Runner const& ) = delete;
    Runner& operator=( Runner const& ) = delete;

    ExitStatus run();

  private:
    void handleSignal( int signal );
    void leave();
    void tellBegin() const;
    void tellEnd() const;

    TraceConsole console_;
    SignalWatch signals_;
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Emulation emulation_{ wheel_ };
    RunContext context_;
    RunParts parts_ = makeRunParts( context_ );
};

ExitStatus
Runner::run() {
    loadHosts( context_.scenario, emulation_.hostDir() );
    for ( auto const& part : parts_ ) {
        part->handleLoaded();
    }
    tellBegin();
    context_.started = Kiv::now();
    startHosts( context_.scenario, emulation_.hostDir() );
    for ( auto const& part : parts_ ) {
        part->handleStarted();
    }
    Kiv::defaultActivity()->activitySm().runFor( context_.scenario.duration.value_or( Kiv::never ) );
    for ( auto const& part : parts_ ) {
        part->handleTimeOver();
    }
    if ( context_.options.leaveOnExit ) {
        leave();
    }
    ExitStatus status = exitDone;
    for ( auto const& part : parts_ ) {
        status = std::max( status, part->handleEnded() );
    }
    tellEnd();
    return status;
}

void
Runner::handleSignal( int signal ) {
    if ( signal == SIGUSR1 ) {
        for ( auto const& part : parts_ ) {
            part->handleStatusWanted();
        }
    } else {
        Kiv::defaultActivity()->activitySm().stop();
    }
}

void
Runner::leave() {
    std::cerr << "igmphost: leaving every group; Ctrl-C ends at once" << std::endl;
    if ( !Leaving( emulation_, wheel_ ).run() ) {
        std::cerr << "igmphost: ended before every leave was told" << std::endl;
    }
}

void
Runner::tellBegin() const {
    U64 const hosts = context_.scenario.hostCount();
    std::cerr << "igmphost: " << hosts << ( hosts == 1 ? " host" : " hosts" );
    if ( context_.scenario.duration ) {
        std::cerr << " for " << *context_.scenario.duration << " s" << std::endl;
    } else {
        std::cerr << " until Ctrl-C" << std::endl;
    }
}

void
Runner::tellEnd() const {
    StatusTotals const totals( emulation_.statusDir() );
    std::cerr << "igmphost: ended after " << std::fixed << std::setprecision( 1 )
              << Kiv::now() - context_.started << " s; sent " << totals.sent() << " messages, heard "
              << totals.queriesHeard << " queries" << std::endl;
}

/// What the command line says goes before what the files say.
void
applyOptions( RunOptions const& options, Scenario& scenario ) {
    scenario.duration = options.duration ? options.duration : scenario.duration;
    scenario.shard = options.shard.value_or( scenario.shard );
    scenario.seed = options.seed ? options.seed : scenario.seed;
}

} // namespace

ExitStatus
run( RunOptions const& options ) {
    Diagnostics errors;
    Scenario scenario = readScenario( options.scenarioFiles, errors );
    if ( !errors.empty() ) {
        errors.print( std::cerr, scenario.files, "error" );
        return exitWrongUsage;
    }
    applyOptions( options, scenario );
    scenarioWarnings( scenario ).print( std::cerr, scenario.files, "warning" );
    if ( std::string const missing = missingPrivilege( scenario ); !missing.empty() ) {
        std::cerr << "igmphost: error: " << missing << std::endl;
        return exitFailed;
    }
    return Runner( options, scenario ).run();
}

} // namespace Agent
