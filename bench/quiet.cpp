/// What hosts cost while they have nothing to do: idle, and under a flood of the data that they have asked
/// for, which the kernel is to keep from the process.

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"
#include "bench/support/SharedCounter.h"
#include "bench/support/VethPair.h"
#include "tests/support/PacketEnd.h"

namespace {

using Bench::Hosts;

constexpr double floodRate = 500'000; // frames per second
constexpr Kiv::Seconds span = 3.0;

/// Processor time of this process, user and system, in seconds, and how often it has slept.
struct Usage {
    double seconds;
    long sleeps;
};

Usage
usage() {
    rusage used{};
    getrusage( RUSAGE_SELF, &used );
    auto const seconds = []( timeval const& time ) {
        return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_usec ) * 1e-6;
    };
    return { seconds( used.ru_utime ) + seconds( used.ru_stime ), used.ru_nvcsw };
}

Usage
usageOver( Kiv::Seconds time ) {
    Usage const before = usage();
    Kiv::defaultActivity()->activitySm().runFor( time );
    Usage const after = usage();
    return { after.seconds - before.seconds, after.sleeps - before.sleeps };
}

/// Sends data to a group that every host has joined, at the rate asked for until it is killed, and tells how
/// many frames it has sent.
[[noreturn]] void
flood( Bench::VethPair const& link, std::size_t volatile& sent ) {
    Support::PacketEnd socket( link.farNs, Bench::VethPair::farDevice );
    std::vector<Support::Bytes> const batch(
        64, Lab::dataFrame( Zornet::IpAddr( "10.255.255.254" ), Hosts::group( 0 ) )
    );
    auto const start = std::chrono::steady_clock::now();
    for ( std::size_t total = 0;; ) {
        double const past = std::chrono::duration<double>( std::chrono::steady_clock::now() - start ).count();
        if ( static_cast<double>( total ) > past * floodRate ) {
            std::this_thread::sleep_for( std::chrono::microseconds( 50 ) );
            continue;
        }
        socket.sendAll( batch );
        total += batch.size();
        sent = total;
    }
}

void
measureFlood( Bench::Figures& figures, unsigned runs ) {
    Bench::VethPair const link;
    Hosts::Plan plan{ 1'000 };
    plan.device = Bench::VethPair::nearDevice;
    plan.ns = link.nearNs.name().c_str();
    plan.unsolicitedReportInterval = 1.0;
    Hosts const hosts( plan );
    Kiv::defaultActivity()->activitySm().runFor( 2.0 ); // the repeats of the joins
    Bench::SharedCounter sent;
    std::vector<double> more, rates;
    for ( unsigned i = 0; i < runs; ++i ) {
        double const calm = usageOver( span ).seconds;
        pid_t const child = fork();
        if ( child == 0 ) {
            flood( link, sent.value() );
        }
        Kiv::defaultActivity()->activitySm().runFor( 0.2 );
        std::size_t const before = sent.value();
        double const flooded = usageOver( span ).seconds;
        rates.push_back( static_cast<double>( sent.value() - before ) / span );
        kill( child, SIGKILL );
        waitpid( child, nullptr, 0 );
        more.push_back( ( flooded - calm ) / span * 100.0 );
    }
    figures.add( "data frames per second on joined groups", "1/s", rates );
    figures.add(
        "processor time that they cost the process, of one processor", "%", more, Bench::atMost( 2.0 )
    );
}

void
measureIdle( Bench::Figures& figures, Bench::Effort const& effort ) {
    std::size_t const count = effort.quick ? 20'000 : 100'000;
    Bench::VethPair const link;
    Hosts::Plan plan{ count };
    plan.device = Bench::VethPair::nearDevice;
    plan.ns = link.nearNs.name().c_str();
    plan.unsolicitedReportInterval = 1.0;
    Hosts const hosts( plan );
    Kiv::defaultActivity()->activitySm().runFor( 2.0 ); // the repeats of the joins
    std::vector<double> wakes, milliseconds;
    for ( unsigned i = 0; i < effort.runs; ++i ) {
        Usage const used = usageOver( span );
        wakes.push_back( static_cast<double>( used.sleeps - 1 ) ); // the end of the span wakes once
        milliseconds.push_back( used.seconds * 1e3 );
    }
    std::string const what = std::to_string( count ) + " idle hosts over 3 s";
    figures.add( what + ", wake-ups that no deadline asks for", "", wakes, Bench::atMost( 0.0 ) );
    figures.add( what + ", processor time", "ms", milliseconds );
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    measureFlood( figures, effort.runs );
    measureIdle( figures, effort );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Hosts that have nothing to do", measure );
}
