#include "agent/Run.h"

#include <iomanip>
#include <iostream>
#include <system_error>

#include "agent/Emulation.h"
#include "agent/FileReplacement.h"
#include "agent/Privileges.h"
#include "agent/ScenarioLoader.h"
#include "agent/ScenarioReader.h"
#include "agent/SignalWatch.h"
#include "agent/StatusTotals.h"
#include "agent/StatusWriter.h"
#include "agent/Warnings.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

/// A checked scenario on its way from load to teardown.
class Runner {
  public:
    Runner( RunOptions const& options, Scenario const& scenario )
        : options_( options ),
          scenario_( scenario ),
          console_( std::cerr, options.traces ),
          signals_( { SIGINT, SIGTERM, SIGUSR1 }, [this]( int signal ) { handleSignal( signal ); } ) {}

    ExitStatus run();

  private:
    void handleSignal( int signal );
    bool writeStatus() const;
    void tellBegin() const;
    void tellEnd() const;

    RunOptions const& options_;
    Scenario const& scenario_;
    TraceConsole console_;
    SignalWatch signals_;
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Emulation emulation_{ wheel_ };
    Kiv::Seconds started_ = Kiv::now();
};

ExitStatus
Runner::run() {
    if ( options_.statusFile && *options_.statusFile != "-" ) {
        checkReplaceable( *options_.statusFile );
    }
    loadHosts( scenario_, emulation_.hostDir() );
    tellBegin();
    started_ = Kiv::now();
    startHosts( scenario_, emulation_.hostDir() );
    Kiv::defaultActivity()->activitySm().runFor( options_.duration.value_or( Kiv::never ) );
    bool const written = writeStatus();
    tellEnd();
    return written ? exitDone : exitFailed;
}

void
Runner::handleSignal( int signal ) {
    if ( signal == SIGUSR1 ) {
        writeStatus();
    } else {
        Kiv::defaultActivity()->activitySm().stop();
    }
}

bool
Runner::writeStatus() const {
    if ( !options_.statusFile ) {
        return true;
    }
    try {
        writeStatusTo( *options_.statusFile, scenario_, emulation_.statusDir() );
        return true;
    } catch ( std::system_error const& fault ) {
        std::cerr << "igmphost: error: the status is not written: " << fault.what() << std::endl;
        return false;
    }
}

void
Runner::tellBegin() const {
    std::cerr << "igmphost: " << scenario_.hostCount() << ( scenario_.hostCount() == 1 ? " host" : " hosts" );
    if ( options_.duration ) {
        std::cerr << " for " << *options_.duration << " s" << std::endl;
    } else {
        std::cerr << " until Ctrl-C" << std::endl;
    }
}

void
Runner::tellEnd() const {
    StatusTotals const totals( emulation_.statusDir() );
    std::cerr << "igmphost: ended after " << std::fixed << std::setprecision( 1 ) << Kiv::now() - started_
              << " s; sent " << totals.sent() << " messages, heard " << totals.queriesHeard << " queries"
              << std::endl;
}

} // namespace

ExitStatus
run( RunOptions const& options ) {
    Diagnostics errors;
    Scenario const scenario = readScenario( options.scenarioFiles, errors );
    if ( !errors.empty() ) {
        errors.print( std::cerr, scenario.files, "error" );
        return exitWrongUsage;
    }
    scenarioWarnings( scenario ).print( std::cerr, scenario.files, "warning" );
    if ( std::string const missing = missingPrivilege( scenario ); !missing.empty() ) {
        std::cerr << "igmphost: error: " << missing << std::endl;
        return exitFailed;
    }
    return Runner( options, scenario ).run();
}

} // namespace Agent
