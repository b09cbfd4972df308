/// What a host and what a membership cost in memory: resident, as a slope over many of them, each load in a
/// process of its own; and on the heap. The rival is what the kernel's own hosts take of the kernel's memory.

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "bench/rivals/KernelHosts.h"
#include "bench/support/Figures.h"
#include "bench/support/Rig.h"

namespace {

using Bench::Hosts;
using Bench::Rig;
using Igmp::igmpVersion2;
using Igmp::igmpVersion3;

constexpr Kiv::Seconds settled = 700.0; // every repeat of a join has been sent

double
residentBytes() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream( "/proc/self/statm" ) >> all >> resident;
    return static_cast<double>( resident ) * static_cast<double>( sysconf( _SC_PAGESIZE ) );
}

double
heapBytes() {
    struct mallinfo2 const info = mallinfo2();
    return static_cast<double>( info.uordblks + info.hblkhd );
}

/// Memory by one of these measures that a plan takes, found in a process of its own.
double
bytesOf( Hosts::Plan const& plan, double ( *measure )() ) {
    int ends[2];
    if ( pipe( ends ) != 0 ) {
        throw std::runtime_error( "no pipe" );
    }
    pid_t const child = fork();
    if ( child == 0 ) {
        Rig const rig;
        double const before = measure();
        Hosts const hosts( plan );
        Rig::runFor( settled );
        double const bytes = measure() - before;
        bool const told = write( ends[1], &bytes, sizeof bytes ) == sizeof bytes;
        _exit( told ? 0 : 1 );
    }
    double bytes = 0.0;
    bool const heard = read( ends[0], &bytes, sizeof bytes ) == sizeof bytes;
    waitpid( child, nullptr, 0 );
    close( ends[0] );
    close( ends[1] );
    if ( !heard ) {
        throw std::runtime_error( "the measured process failed" );
    }
    return bytes;
}

/// What one more host (or whatever `larger` has `more` of than `smaller`) takes.
std::vector<double>
slope(
    Hosts::Plan const& smaller, Hosts::Plan const& larger, std::size_t more, double ( *measure )(),
    unsigned runs
) {
    std::vector<double> samples;
    for ( unsigned i = 0; i < runs; ++i ) {
        double const least = bytesOf( smaller, measure );
        samples.push_back( ( bytesOf( larger, measure ) - least ) / static_cast<double>( more ) );
    }
    return samples;
}

/// What the kernel holds for itself: its own objects, those of each processor, and page tables.
double
kernelBytes() {
    std::ifstream info( "/proc/meminfo" );
    double sum = 0.0;
    std::string name;
    double kib = 0.0;
    std::string unit;
    while ( info >> name >> kib ) {
        std::getline( info, unit );
        if ( name == "Slab:" || name == "Percpu:" || name == "PageTables:" ) {
            sum += kib * 1024.0;
        }
    }
    return sum;
}

/// The first hosts fill the room that is free in pages the kernel has already, so they do not count.
std::vector<double>
kernelHostBytes( unsigned runs ) {
    constexpr std::size_t uncounted = 200;
    constexpr std::size_t count = 1'000;
    std::vector<double> samples;
    for ( unsigned i = 0; i < runs; ++i ) {
        Bench::VethPair const link;
        Bench::KernelHosts first( link, uncounted );
        first.join();
        double const before = kernelBytes();
        Bench::KernelHosts hosts( link, count, uncounted );
        hosts.join();
        samples.push_back( ( kernelBytes() - before ) / count );
    }
    return samples;
}

void
measureResident( Bench::Figures& figures, Bench::Effort const& effort ) {
    std::size_t const most = effort.quick ? 30'000 : 100'000;
    auto const host = slope(
        { 10'000, igmpVersion2, 1 }, { most, igmpVersion2, 1 }, most - 10'000, residentBytes, effort.runs
    );
    auto const kernel = kernelHostBytes( effort.runs );
    figures.add(
        "an enabled version 2 host with one group, resident, 10000 to " + std::to_string( most ), "bytes",
        host, Bench::atMost( 8192 )
    );
    figures.add( "a macvlan host of the kernel with one group, kernel memory", "bytes", kernel );
    figures.add(
        "an enabled host beside the kernel's", "times", Bench::ratios( host, kernel ), Bench::atMost( 0.2 )
    );
    figures.add(
        "a further version 3 membership with one source, resident", "bytes",
        slope(
            { 10, igmpVersion3, 1'000, 1 }, { 10, igmpVersion3, 10'000, 1 }, 90'000, residentBytes,
            effort.runs
        ),
        Bench::atMost( 2048 )
    );
}

void
measureHeap( Bench::Figures& figures ) {
    auto const add = [&]( char const* name, Hosts::Plan const& smaller, Hosts::Plan const& larger,
                          std::size_t more ) {
        figures.add( name, "bytes", slope( smaller, larger, more, heapBytes, 1 ) );
    };
    add( "an idle enabled host, heap", { 1'000, igmpVersion2, 0 }, { 10'000, igmpVersion2, 0 }, 9'000 );
    add( "an enabled version 2 host with one group, heap", { 1'000, igmpVersion2, 1 },
         { 10'000, igmpVersion2, 1 }, 9'000 );
    add( "a further membership, version 2, heap", { 10, igmpVersion2, 100 }, { 10, igmpVersion2, 1'000 },
         9'000 );
    add( "a further membership, version 3, one source, heap", { 10, igmpVersion3, 100, 1 },
         { 10, igmpVersion3, 1'000, 1 }, 9'000 );
    add( "a further membership, version 3, twenty sources, heap", { 10, igmpVersion3, 100, 20 },
         { 10, igmpVersion3, 1'000, 20 }, 9'000 );
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    measureResident( figures, effort );
    measureHeap( figures );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Memory", measure );
}
