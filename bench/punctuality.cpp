/// How late the answers to a query leave a real device: by the stamp of the far end's kernel, beside the
/// deadline that each host drew, and beside the end of the response time for the kernel's own hosts.

#include <algorithm>
#include <stdexcept>

#include "bench/rivals/KernelHosts.h"
#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"
#include "tests/support/PacketEnd.h"

namespace {

using Bench::Hosts;
using Kiv::Seconds;
using Support::Arrival;

constexpr std::size_t ourHosts = 10'000;
constexpr std::size_t kernelHosts = 1'000;
constexpr Seconds responseTime = 1.0;
constexpr Bench::U8 responseCode = 10; // tenths of a second

struct Punctuality {
    std::vector<double> lateness; ///< of each answer, ascending, ms
    double afterEnd;              ///< from the end of the response time to the last answer, ms
    std::size_t lost;             ///< hosts of which no answer came

    double percentile( double part ) const {
        return lateness[static_cast<std::size_t>( part * static_cast<double>( lateness.size() - 1 ) )];
    }
};

double
afterEnd( std::vector<Arrival> const& answers, double asked ) {
    return answers.empty() ? 0.0 : ( answers.back().time - asked - responseTime ) * 1e3;
}

/// Times on the wall clock, by host.
std::vector<double>
deadlines( Hosts& hosts ) {
    double const wallMinusOurs = Support::wallClock() - Kiv::now();
    std::vector<double> times;
    for ( std::size_t i = 0; i < ourHosts; ++i ) {
        auto const timer = hosts.machine( i ).groupTimerSm( Hosts::group( 0 ) );
        times.push_back( Kiv::now() + timer->responseDelayRemaining() + wallMinusOurs );
    }
    return times;
}

Punctuality
judge( std::vector<Arrival> const& answers, std::vector<double> const& due, double asked ) {
    Punctuality result{ {}, afterEnd( answers, asked ), due.size() - Support::senders( answers ) };
    for ( Arrival const& answer : answers ) {
        std::size_t const host = answer.source().hostOrder() - Hosts::address( 0 ).hostOrder();
        result.lateness.push_back( ( answer.time - due.at( host ) ) * 1e3 );
    }
    if ( result.lateness.empty() ) {
        throw std::runtime_error( "no answer arrived" );
    }
    std::sort( result.lateness.begin(), result.lateness.end() );
    return result;
}

std::vector<Punctuality>
ours( unsigned runs ) {
    Bench::VethPair const link;
    Support::PacketEnd far( link.farNs, Bench::VethPair::farDevice );
    Hosts::Plan plan{ ourHosts };
    plan.device = Bench::VethPair::nearDevice;
    plan.ns = link.nearNs.name().c_str();
    plan.unsolicitedReportInterval = 1.0;
    Hosts hosts( plan );
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    activity.runFor( 2.0 ); // the repeats of the joins
    std::vector<Punctuality> results;
    for ( unsigned i = 0; i < runs; ++i ) {
        far.takeAll();
        auto const heard = [&hosts, before = hosts.status( ourHosts - 1 ).v2GeneralQueryReceived()] {
            return hosts.status( ourHosts - 1 ).v2GeneralQueryReceived() != before;
        };
        double const asked = Support::wallClock();
        far.send( Bench::generalQuery( responseCode, false ) );
        activity.runUntil( heard, 1.0 );
        std::vector<double> const due = deadlines( hosts );
        activity.runFor( 2.0 );
        results.push_back( judge( far.takeAll(), due, asked ) );
    }
    return results;
}

/// From the end of the response time to the last answer, ms.
std::vector<double>
kernels( unsigned runs ) {
    Bench::VethPair const link;
    Support::PacketEnd far( link.farNs, Bench::VethPair::farDevice );
    Bench::KernelHosts hosts( link, kernelHosts );
    hosts.join();
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    activity.runFor( 3.0 ); // the repeats of the joins
    std::vector<double> results;
    for ( unsigned i = 0; i < runs; ++i ) {
        far.takeAll();
        double const asked = Support::wallClock();
        far.send( Bench::generalQuery( responseCode, false ) );
        activity.runFor( 2.0 );
        results.push_back( afterEnd( far.takeAll(), asked ) );
    }
    return results;
}

template <class Get>
std::vector<double>
each( std::vector<Punctuality> const& results, Get const& get ) {
    std::vector<double> values;
    for ( Punctuality const& result : results ) {
        values.push_back( get( result ) );
    }
    return values;
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    auto const results = ours( effort.runs );
    auto const addPercentile = [&]( char const* name, double part, std::optional<Bench::Wanted> wanted ) {
        auto const get = [part]( Punctuality const& result ) { return result.percentile( part ); };
        figures.add(
            std::string( "an answer after its deadline, " ) + name, "ms", each( results, get ), wanted
        );
    };
    addPercentile( "median", 0.5, {} );
    addPercentile( "99th percentile", 0.99, {} );
    addPercentile( "99.9th percentile", 0.999, Bench::atMost( 1.0 ) );
    figures.add(
        "10000 hosts: last answer after the end of the response time", "ms",
        each( results, []( Punctuality const& result ) { return result.afterEnd; } ), Bench::atMost( 1.0 )
    );
    figures.add(
        "10000 hosts: answers lost", "",
        each( results, []( Punctuality const& result ) { return static_cast<double>( result.lost ); } ),
        Bench::atMost( 0.0 )
    );
    figures.add(
        "1000 macvlan hosts: last answer after the end of the response time", "ms", kernels( effort.runs )
    );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Punctuality on a veth device", measure );
}
