/// What a host costs by itself, with no device beneath: memory, a query handed to it, a change of its
/// configuration.

#include <malloc.h>

#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"

namespace {

using Bench::Hosts;

/// A simulated clock and a device that only counts, for the length of one measurement.
struct Rig {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope clockScope{ clock };
    Bench::CountingProvider provider;
    Zornet::DeviceProviderScope providerScope{ provider };

    static void runFor( Kiv::Seconds span ) { Kiv::defaultActivity()->activitySm().runFor( span ); }
};

double
heapBytes() {
    struct mallinfo2 const info = mallinfo2();
    return static_cast<double>( info.uordblks + info.hblkhd );
}

/// Heap that one more host (or whatever `larger` has more of than `smaller`) takes.
double
bytesPer( Hosts::Plan const& smaller, Hosts::Plan const& larger, std::size_t more ) {
    auto const bytesOf = []( Hosts::Plan const& plan ) {
        Rig bench;
        double const before = heapBytes();
        Hosts const hosts( plan );
        Rig::runFor( 60.0 );
        return heapBytes() - before;
    };
    double const least = bytesOf( smaller );
    return ( bytesOf( larger ) - least ) / static_cast<double>( more );
}

void
measureMemory( Bench::Figures& figures ) {
    using Igmp::igmpVersion2;
    using Igmp::igmpVersion3;
    std::size_t const more = 9'000;
    figures.add(
        "memory of an idle enabled host, heap", "bytes",
        { bytesPer( { 1'000, igmpVersion2, 0 }, { 10'000, igmpVersion2, 0 }, more ) }
    );
    figures.add(
        "memory of an enabled host with one group, version 2, heap", "bytes",
        { bytesPer( { 1'000, igmpVersion2, 1 }, { 10'000, igmpVersion2, 1 }, more ) }
    );
    figures.add(
        "memory of a further membership, version 2, heap", "bytes",
        { bytesPer( { 10, igmpVersion2, 100 }, { 10, igmpVersion2, 1'000 }, more ) }
    );
    figures.add(
        "memory of a further membership, version 3, one source, heap", "bytes",
        { bytesPer( { 10, igmpVersion3, 100, 1 }, { 10, igmpVersion3, 1'000, 1 }, more ) }
    );
    figures.add(
        "memory of a further membership, version 3, twenty sources, heap", "bytes",
        { bytesPer( { 10, igmpVersion3, 100, 20 }, { 10, igmpVersion3, 1'000, 20 }, more ) }
    );
}

void
measureQueries( Bench::Figures& figures, unsigned runs ) {
    auto const query = Bench::generalQuery( 100, false );
    for ( std::size_t const count : { 1'000U, 10'000U, 100'000U } ) {
        Rig bench;
        Hosts const hosts( { count } );
        Rig::runFor( 60.0 );
        std::vector<double> samples;
        for ( unsigned i = 0; i < runs; ++i ) {
            double const seconds =
                Bench::secondsOf( [&] { bench.provider.counting( "bench0" ).hear( query ); } );
            samples.push_back( seconds * 1e9 / static_cast<double>( count ) );
            Rig::runFor( 60.0 );
        }
        figures.add(
            "a query handed to " + std::to_string( count ) + " hosts, each arming a timer, per host", "ns",
            samples
        );
    }
}

void
measureAnswers( Bench::Figures& figures, unsigned runs, Igmp::IgmpVersion version, std::size_t groups ) {
    std::size_t const count = 10'000;
    auto const query = Bench::generalQuery( 100, version == Igmp::igmpVersion3 );
    Rig bench;
    Hosts const hosts( { count, version, groups } );
    Rig::runFor( 60.0 );
    Bench::CountingDevice& device = bench.provider.counting( "bench0" );
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
    for ( std::size_t const groups : { 10U, 10'000U } ) {
        Rig bench;
        Hosts hosts( { 1, version, groups } );
        Rig::runFor( 600.0 );
        std::vector<double> samples;
        for ( unsigned i = 0; i < runs; ++i ) {
            double const seconds = Bench::secondsOf( [&] {
                Hosts::join( hosts.host( 0 ), groups + 1, 0 );
                Rig::runFor( 20.0 );
                hosts.host( 0 ).v3groupDel( Hosts::group( groups + 1 ) );
                Rig::runFor( 20.0 );
            } );
            samples.push_back( seconds * 1e6 );
        }
        figures.add(
            "a join and a leave of one group, reports included, version " + std::to_string( version ) +
                ", among " + std::to_string( groups ),
            "us", samples
        );
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
        bench.provider.counting( "bench0" ).hear( query );
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
        Bench::CountingDevice& device = rig.provider.counting( "bench0" );
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
measure( Bench::Figures& figures, unsigned runs ) {
    measureMemory( figures );
    measureQueries( figures, runs );
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
