#include "agent/run/Run.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <memory>

#include "agent/control/ControlPart.h"
#include "agent/expecting/Expectations.h"
#include "agent/metrics/MetricsServer.h"
#include "agent/output/Grouped.h"
#include "agent/output/StatusFile.h"
#include "agent/output/StatusLines.h"
#include "agent/querying/ScenarioQuerier.h"
#include "agent/run/Leaving.h"
#include "agent/run/MissingDevices.h"
#include "agent/run/OutputPlaces.h"
#include "agent/run/Privileges.h"
#include "agent/run/PromptEnd.h"
#include "agent/run/SignalWatch.h"
#include "agent/run/Simulation.h"
#include "agent/run/StartUp.h"
#include "agent/scenario/CheckedScenario.h"
#include "agent/screen/Screen.h"
#include "agent/timeline/Timeline.h"
#include "agent/traffic/CaptureFile.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

using RunParts = std::vector<std::unique_ptr<RunPart>>;

/// Whether the standard output is a terminal that nothing else is meant for.
bool
wantsScreen( RunOptions const& options ) {
    return !options.quiet && !options.statusInterval && options.logFormat == LogFormat::text &&
           !takesStandardOutput( options ) && Screen::isPossible();
}

/// What the options ask for, in the order in which it is told of anything.
RunParts
makeRunParts( RunContext& context ) {
    RunParts parts;
    if ( context.options.controlPath ) {
        parts.push_back( std::make_unique<ControlPart>( context ) );
    }
    if ( context.scenario.querier && !context.options.simulate ) {
        parts.push_back( std::make_unique<ScenarioQuerier>( context ) );
    }
    if ( !context.scenario.events.empty() ) {
        parts.push_back( std::make_unique<Timeline>( context ) );
    }
    if ( !context.scenario.expectations.empty() || context.options.junitFile ) {
        parts.push_back( std::make_unique<Expectations>( context ) );
    }
    if ( context.options.captureFile ) {
        parts.push_back( std::make_unique<CaptureFile>( context ) );
    }
    if ( context.options.statusFile ) {
        parts.push_back( std::make_unique<StatusFile>( context ) );
    }
    if ( context.options.metrics ) {
        parts.push_back( std::make_unique<MetricsServer>( context ) );
    }
    if ( wantsScreen( context.options ) ) {
        parts.push_back( std::make_unique<Screen>( context ) );
    } else if ( context.options.statusInterval || !context.options.quiet ) {
        parts.push_back( std::make_unique<StatusLines>( context ) );
    }
    return parts;
}

/// What ends a run. Of a terminal that closes, nohup keeps a run from knowing, and so it stays.
std::vector<int>
endingSignals() {
    std::vector<int> signals{ SIGINT, SIGTERM };
    struct sigaction hangUp {};
    sigaction( SIGHUP, nullptr, &hangUp );
    if ( hangUp.sa_handler != SIG_IGN ) {
        signals.push_back( SIGHUP );
    }
    return signals;
}

/// What ends a run in order, and what asks for the status.
std::vector<int>
watchedSignals() {
    std::vector<int> signals = endingSignals();
    signals.push_back( SIGUSR1 );
    return signals;
}

/// A checked scenario on its way from load to teardown.
class Runner {
  public:
    Runner( RunOptions const& options, Scenario const& scenario, Messages& messages )
        : console_( std::cerr, options.traces ),
          signals_( watchedSignals(), [this]( int signal ) { handleSignal( signal ); } ),
          simulation_( options.simulate ? std::make_unique<Simulation>( scenario ) : nullptr ),
          wheel_( simulation_ ? simulation_->wheel() : Kiv::Ptr( new Lumo::TimerWheel ) ),
          context_{ options, scenario, wheel_, emulation_, traffic_, ledger_, messages } {
        if ( simulation_ ) {
            context_.queriers = simulation_->queriers();
            context_.farEnds = simulation_->farEnds();
        }
    }
    ~Runner() {
        while ( !parts_.empty() ) {
            parts_.pop_back();
        }
    }
    Runner( Runner const& ) = delete;
    Runner& operator=( Runner const& ) = delete;

    ExitStatus run();

  private:
    std::optional<NextEvent> nextEvent() const;
    void handleSignal( int signal );
    void leave();
    void tellBegin() const;
    void tellEnd();

    TraceConsole console_;
    SignalWatch signals_;
    PromptEnd promptEnd_{ endingSignals() };
    Traffic traffic_; // before the simulation, whose queriers ask as soon as they are there
    std::unique_ptr<Simulation> const simulation_;
    Kiv::Ptr<Lumo::TimerWheel> const wheel_;
    Emulation emulation_{ wheel_ };
    StatusLedger ledger_{ emulation_ };
    RunContext context_;
    RunParts parts_ = makeRunParts( context_ );
    StartUp startUp_{ context_.scenario, emulation_,
                      [this]( StartUpProgress const& progress ) {
                          for ( auto const& part : parts_ ) {
                              part->handleProgress( progress );
                          }
                      },
                      [this] { signals_.look(); } };
};

/// The earliest that any part plans.
std::optional<NextEvent>
Runner::nextEvent() const {
    std::optional<NextEvent> first;
    for ( auto const& part : parts_ ) {
        std::optional<NextEvent> const next = part->nextEvent();
        if ( next && ( !first || next->time < first->time ) ) {
            first = next;
        }
    }
    return first;
}

ExitStatus
Runner::run() {
    keepCapabilities( runCapabilities( context_.options, context_.scenario ) );
    context_.nextEvent = [this] { return nextEvent(); };
    context_.isToEnd = [this] {
        signals_.look();
        return startUp_.isStopped();
    };
    startUp_.load();
    for ( auto const& part : parts_ ) {
        part->handleLoaded();
    }
    tellBegin();
    context_.started = Kiv::now();
    startUp_.start();
    for ( auto const& part : parts_ ) {
        part->handleStarted();
    }
    if ( !startUp_.isStopped() ) {
        Kiv::defaultActivity()->activitySm().runFor( context_.scenario.duration.value_or( Kiv::never ) );
    }
    // A second Ctrl-C is not to cost what is written from here on, unless nobody reads it.
    promptEnd_.allowedIs( PromptEnd::Allowed::whereItWaits );
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
        promptEnd_.allowedIs( PromptEnd::Allowed::whereItWaits );
        for ( auto const& part : parts_ ) {
            part->handleStatusWanted();
        }
        promptEnd_.allowedIs( PromptEnd::Allowed::always );
    } else {
        startUp_.stop();
        Kiv::defaultActivity()->activitySm().stop();
    }
}

void
Runner::leave() {
    std::cerr << "igmphost: leaving every group; Ctrl-C ends at once" << std::endl;
    promptEnd_.allowedIs( PromptEnd::Allowed::always );
    if ( !Leaving( emulation_, wheel_ ).run() ) {
        std::cerr << "igmphost: ended before every leave was told" << std::endl;
    }
    promptEnd_.allowedIs( PromptEnd::Allowed::whereItWaits );
}

void
Runner::tellBegin() const {
    std::cerr << "igmphost: " << counted( context_.scenario.hostCount(), "host" );
    if ( context_.scenario.duration ) {
        std::cerr << " for " << *context_.scenario.duration << " s" << std::endl;
    } else if ( Expectations::decideTheEnd( context_.scenario ) ) {
        std::cerr << " until the last expectation is decided" << std::endl;
    } else {
        std::cerr << " until Ctrl-C" << std::endl;
    }
}

void
Runner::tellEnd() {
    ledger_.balance();
    StatusLedger::Account const total = ledger_.total();
    U64 const made = total.messagesSent();
    U64 const lost = std::min( context_.hostsTraffic().sendLosses, made );
    std::cerr << "igmphost: ended after " << std::fixed << std::setprecision( 1 )
              << Kiv::now() - context_.started << " s; sent " << counted( made - lost, "message" );
    if ( lost != 0 ) {
        std::cerr << ", lost " << grouped( lost );
    }
    std::cerr << ", heard " << counted( total.queriesHeard(), "query", "queries" ) << std::endl;
}

/// What the command line says goes before what the files say.
void
applyOptions( RunOptions const& options, Scenario& scenario ) {
    scenario.duration = options.duration ? options.duration : scenario.duration;
    scenario.shard = options.shard.value_or( scenario.shard );
    scenario.seed = options.seed ? options.seed : scenario.seed;
}

/// Every share would ask from the same address, so on real devices the first one alone has the querier, and
/// looks at what is expected of it.
void
leaveQuerierToFirstShare( Scenario& scenario ) {
    if ( scenario.shard.number == 1 ) {
        return;
    }
    scenario.querier.reset();
    for ( Expectation& expectation : scenario.expectations ) {
        std::erase_if( expectation.memberships, []( MembershipCondition const& condition ) {
            return !condition.bridge;
        } );
    }
}

/// Tells what is missing; true where nothing is.
bool
checkDevices( Scenario const& scenario ) {
    std::vector<std::string> const missing = missingDevices( scenario );
    for ( std::string const& one : missing ) {
        std::cerr << "igmphost: error: there is no " << one << "; --wait-for-device waits for it"
                  << std::endl;
    }
    return missing.empty();
}

/// Whether a simulation can be what the scenario needs; where it cannot, that has been told.
bool
checkSimulation( Scenario const& scenario ) {
    if ( !scenario.duration && !Expectations::decideTheEnd( scenario ) ) {
        std::cerr << "igmphost: error: --simulate: expected a duration, found none" << std::endl;
        return false;
    }
    Diagnostics errors;
    for ( Expectation const& expectation : scenario.expectations ) {
        for ( MembershipCondition const& condition : expectation.memberships ) {
            if ( condition.bridge ) {
                errors.add(
                    condition.at, "bridge: there is none in a simulation; querier tells of its other side"
                );
            }
        }
    }
    errors.print( std::cerr, scenario.files, "error" );
    return errors.empty();
}

} // namespace

ExitStatus
run( RunOptions const& options ) {
    Messages messages( options.logFormat, options.quiet );
    if ( std::string const clash = outputClash( options ); !clash.empty() ) {
        std::cerr << "igmphost: error: " << clash << std::endl;
        return exitWrongUsage;
    }
    auto const adjust = [&options]( Scenario& scenario ) { applyOptions( options, scenario ); };
    CheckedScenario checked;
    adjust( checked.scenario ); // without files the hosts come through the control socket
    if ( !options.scenarioFiles.empty() ) {
        checked = checkedScenario( options.scenarioFiles, adjust );
    }
    checked.print( std::cerr );
    if ( !checked.errors.empty() ) {
        return exitWrongUsage;
    }
    if ( !options.simulate ) {
        leaveQuerierToFirstShare( checked.scenario );
    }
    Scenario const& scenario = checked.scenario;
    if ( options.simulate && !checkSimulation( scenario ) ) {
        return exitWrongUsage;
    }
    if ( std::string const missing = missingPrivilege( scenario ); !options.simulate && !missing.empty() ) {
        std::cerr << "igmphost: error: " << missing << std::endl;
        return exitFailed;
    }
    if ( !options.simulate && !options.waitForDevice && !checkDevices( scenario ) ) {
        return exitFailed;
    }
    std::signal( SIGPIPE, SIG_IGN ); // a reader who goes away is a fault of the output, and not the end
    return Runner( options, scenario, messages ).run();
}

} // namespace Agent
