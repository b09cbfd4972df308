/// What a host costs by itself, with no device beneath: a query handed to it, a report, a change of its
/// configuration.

#include <stdexcept>

#include "bench/support/Figures.h"
#include "bench/support/Program.h"
#include "bench/support/Rig.h"
#include "bench/support/VethPair.h"
#include "tests/support/PacketEnd.h"

namespace {

using Bench::Hosts;
using Bench::Rig;

/// What the kernel takes to send one report: a call of `sendto` for each.
double
secondsOfSendto( Support::PacketEnd& socket ) {
    constexpr unsigned calls = 20'000;
    Support::Bytes const report = Lab::v2Report( Hosts::address( 0 ), Hosts::group( 0 ) );
    return Bench::secondsOf( [&] {
               for ( unsigned i = 0; i < calls; ++i ) {
                   socket.send( report );
               }
           } ) /
           calls;
}

/// Hands a query to each of `count` hosts, which all arm a timer; adds the cost per host to `seconds`, and
/// what part of a `sendto` in the same moment that is to `ofSendto`.
void
takeQueries(
    Bench::Effort const& effort, std::size_t count, std::vector<double>& seconds,
    std::vector<double>& ofSendto
) {
    Bench::VethPair const link;
    Support::PacketEnd socket( link.nearNs, Bench::VethPair::nearDevice );
    auto const query = Bench::generalQuery( 100, false );
    Rig rig;
    Hosts const hosts( { count } );
    Rig::runFor( 60.0 );
    for ( unsigned i = 0; i < effort.runs; ++i ) {
        double const all = Bench::secondsOf( [&] { rig.device().hear( query ); } );
        seconds.push_back( all / static_cast<double>( count ) );
        ofSendto.push_back( seconds.back() / secondsOfSendto( socket ) );
        Rig::runFor( 60.0 );
    }
}

/// What valgrind counts of that for one host.
double
instructionsPerHost( std::size_t count ) {
    std::string const output = Support::outputOf(
        "valgrind --tool=callgrind --instr-atstart=no --collect-atstart=no --callgrind-out-file=/dev/null " +
        Bench::programBeside( "bench_budgets" ) + " " + std::to_string( count )
    );
    std::string const label = "Collected : ";
    std::size_t const at = output.find( label );
    if ( at == std::string::npos ) {
        throw std::runtime_error( "valgrind: " + output );
    }
    return std::stod( output.substr( at + label.size() ) ) / static_cast<double>( count );
}

void
measureQueries( Bench::Figures& figures, Bench::Effort const& effort ) {
    std::size_t const most = effort.quick ? 50'000 : 100'000;
    std::vector<double> least;
    for ( std::size_t const count : { std::size_t{ 1'000 }, std::size_t{ 10'000 }, most } ) {
        std::string const what = "a query handed to " + std::to_string( count ) + " hosts, per host";
        std::vector<double> seconds, ofSendto, nanoseconds;
        takeQueries( effort, count, seconds, ofSendto );
        for ( double const sample : seconds ) {
            nanoseconds.push_back( sample * 1e9 );
        }
        figures.add( what, "ns", nanoseconds );
        if ( count == 1'000 ) {
            least = seconds;
            continue;
        }
        double const wanted = count == 10'000 ? 1.0 : 2.0;
        figures.add( what + ", beside one sendto", "times", ofSendto, Bench::atMost( wanted ) );
        if ( count == most ) {
            figures.add(
                what + ", beside 1000 hosts", "times", Bench::ratios( seconds, least ), Bench::atMost( 4.0 )
            );
        }
    }
    figures.add(
        "a query handed to " + std::to_string( most ) + " hosts, instructions per host beside 1000 hosts",
        "times", { instructionsPerHost( most ) / instructionsPerHost( 1'000 ) }, Bench::atMost( 1.05 )
    );
}

void
measureAnswers( Bench::Figures& figures, unsigned runs, Igmp::IgmpVersion version, std::size_t groups ) {
    std::size_t const count = 10'000;
    auto const query = Bench::generalQuery( 100, version == Igmp::igmpVersion3 );
    Rig bench;
    Hosts const hosts( { count, version, groups } );
    Rig::runFor( 60.0 );
    Bench::CountingDevice& device = bench.device();
    std::vector<double> samples;
    for ( unsigned i = 0; i < runs; ++i ) {
        device.hear( query );
        std::size_t const before = device.sent;
        double const seconds = Bench::secondsOf( [] { Rig::runFor( 60.0 ); } );
        samples.push_back( seconds * 1e9 / static_cast<double>( device.sent - before ) );
    }
    std::string const what = "a report of version " + std::to_string( version ) + " with " +
                             std::to_string( groups ) + ( groups == 1 ? " group" : " groups" ) +
                             ", engine time from expiry to device";
    figures.add( what, "ns", samples );
}

/// One group of a host joins and leaves again, with all the reports that this causes.
void
measureChanges( Bench::Figures& figures, unsigned runs, Igmp::IgmpVersion version ) {
    std::vector<double> few;
    for ( std::size_t const groups : { 10U, 10'000U } ) {
        Rig const rig;
        Hosts hosts( { 1, version, groups } );
        Rig::runFor( 600.0 );
        std::vector<double> samples;
        for ( unsigned i = 0; i < 4 * runs; ++i ) {
            double const seconds = Bench::secondsOf( [&] {
                Hosts::join( hosts.host( 0 ), groups + 1, 0 );
                Rig::runFor( 20.0 );
                hosts.host( 0 ).v3groupDel( Hosts::group( groups + 1 ) );
                Rig::runFor( 20.0 );
            } );
            samples.push_back( seconds * 1e6 );
        }
        std::string const what = "a join and a leave of one group, reports included, version " +
                                 std::to_string( version ) + ", among " + std::to_string( groups );
        figures.add( what, "us", samples );
        if ( few.empty() ) {
            few = samples;
        } else {
            figures.add( what + ", beside 10", "times", Bench::ratios( samples, few ) );
        }
    }
}

void
measureLongAnswer( Bench::Figures& figures, unsigned runs ) {
    Rig bench;
    Hosts const hosts( { 1, Igmp::igmpVersion3, 10'000 } );
    Rig::runFor( 600.0 );
    auto const query = Bench::generalQuery( 100, true );
    std::vector<double> samples;
    for ( unsigned i = 0; i < runs; ++i ) {
        bench.device().hear( query );
        samples.push_back( Bench::secondsOf( [] { Rig::runFor( 60.0 ); } ) * 1e6 );
    }
    figures.add( "the whole answer to a version 3 general query of a host of 10000 groups", "us", samples );
}

/// A query of one VLAN on a device that many VLANs share: those that do not want it must not cost anything.
void
measureVlans( Bench::Figures& figures, unsigned runs ) {
    std::size_t const frames = 10'000;
    for ( std::size_t const channels : { 1U, 100U, 4'000U } ) {
        Rig rig;
        Hosts::Plan plan{ channels };
        plan.ownVlans = true;
        Hosts const hosts( plan );
        Rig::runFor( 60.0 );
        auto const query = Bench::tagged( Bench::generalQuery( 100, false ), 1 );
        Bench::CountingDevice& device = rig.device();
        std::vector<double> samples;
        for ( unsigned i = 0; i < runs; ++i ) {
            double const seconds = Bench::secondsOf( [&] {
                for ( std::size_t frame = 0; frame < frames; ++frame ) {
                    device.hear( query );
                }
            } );
            samples.push_back( seconds * 1e9 / frames );
            Rig::runFor( 60.0 );
        }
        figures.add(
            "a query frame of one VLAN on a device with " + std::to_string( channels ) + " VLAN channels",
            "ns", samples
        );
    }
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    unsigned const runs = effort.runs;
    measureQueries( figures, effort );
    measureAnswers( figures, runs, Igmp::igmpVersion2, 1 );
    measureAnswers( figures, runs, Igmp::igmpVersion3, 10 );
    measureChanges( figures, runs, Igmp::igmpVersion2 );
    measureChanges( figures, runs, Igmp::igmpVersion3 );
    measureLongAnswer( figures, runs );
    measureVlans( figures, runs );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "The engine by itself", measure );
}
