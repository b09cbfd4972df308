/// Ten thousand hosts with one group each, from a scenario: from the start of the command until the last join
/// is out, beside as many hosts of the kernel.

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <thread>

#include "bench/rivals/KernelHosts.h"
#include "bench/support/Figures.h"
#include "bench/support/Program.h"
#include "tests/support/PacketEnd.h"

namespace {

constexpr std::size_t ourHosts = 10'000;
constexpr std::size_t kernelHosts = 1'000;

/// Waits until so many different hosts have been heard and returns when the last was.
double
timeOfLast( Support::PacketEnd& far, std::size_t hosts ) {
    std::set<Zornet::IpAddr> heard;
    for ( double const deadline = Support::wallClock() + 60.0; Support::wallClock() < deadline; ) {
        for ( Support::Arrival const& arrival : far.takeAll() ) {
            heard.insert( arrival.source() );
            if ( heard.size() == hosts ) {
                return arrival.time;
            }
        }
        std::this_thread::sleep_for( std::chrono::milliseconds( 1 ) );
    }
    throw std::runtime_error( "only " + std::to_string( heard.size() ) + " hosts have joined" );
}

std::string
scenarioFor( Bench::VethPair const& link ) {
    std::string const path =
        std::filesystem::temp_directory_path() / ( "bench-start-" + std::to_string( getpid() ) + ".yaml" );
    std::ofstream( path ) << "hosts:\n  - name: rx\n    count: " << ourHosts
                          << "\n    ipAddr: 10.0.0.1\n    macAddr: 02:00:00:00:00:01\n    deviceName: "
                          << Bench::VethPair::nearDevice << "\n    ns: " << link.nearNs.name()
                          << "\n    igmpVersion: 2\n    groups:\n"
                             "      - { multicastAddr: 239.1.0.0, filterMode: exclude }\n";
    return path;
}

double
secondsOfOurs() {
    Bench::VethPair const link;
    Support::PacketEnd far( link.farNs, Bench::VethPair::farDevice );
    std::string const program = Bench::programBeside( "igmphost" );
    if ( !std::filesystem::exists( program ) ) {
        throw std::runtime_error( program + " is not built" );
    }
    std::string const scenario = scenarioFor( link );
    double const start = Support::wallClock();
    pid_t const child = fork();
    if ( child == 0 ) {
        int const nowhere = open( "/dev/null", O_WRONLY );
        dup2( nowhere, STDOUT_FILENO );
        dup2( nowhere, STDERR_FILENO );
        execl( program.c_str(), "igmphost", "run", scenario.c_str(), nullptr );
        _exit( 127 );
    }
    double const seconds = timeOfLast( far, ourHosts ) - start;
    kill( child, SIGTERM );
    waitpid( child, nullptr, 0 );
    std::filesystem::remove( scenario );
    return seconds;
}

double
secondsOfKernel() {
    Bench::VethPair const link;
    Support::PacketEnd far( link.farNs, Bench::VethPair::farDevice );
    double const start = Support::wallClock();
    Bench::KernelHosts hosts( link, kernelHosts );
    hosts.join();
    return ( timeOfLast( far, kernelHosts ) - start ) * ourHosts / kernelHosts;
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    std::vector<double> ours, theirs;
    for ( unsigned i = 0; i < effort.runs; ++i ) {
        ours.push_back( secondsOfOurs() );
        theirs.push_back( secondsOfKernel() );
    }
    figures.add( "10000 hosts from a scenario, until the last join is out", "s", ours );
    figures.add( "10000 macvlan hosts (1000, scaled), until the last join is out", "s", theirs );
    figures.add(
        "the kernel's hosts beside ours", "times", Bench::ratios( theirs, ours ), Bench::atLeast( 20.0 )
    );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "From a scenario to the last join", measure );
}
