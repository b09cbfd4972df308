/// Ten thousand hosts on one real device answer a query at once, and join at once, beside a bare batched
/// sender of the very same frames.

#include <stdexcept>

#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"
#include "bench/support/VethPair.h"
#include "tests/support/PacketEnd.h"

namespace {

using Bench::Hosts;
using Support::Arrival;
using Support::Bytes;

constexpr std::size_t hostCount = 10'000;

/// A link with one bare socket at either end, and hosts on the near device.
struct Setting {
    explicit Setting( Hosts::Plan plan ) {
        plan.hosts = hostCount;
        plan.device = Bench::VethPair::nearDevice;
        plan.ns = link.nearNs.name().c_str();
        plan.answersAtOnce = true;
        plan.unsolicitedReportInterval = 1.0;
        hosts.emplace( plan );
        activity.runFor( 2.0 ); // the repeats of the joins
        far.takeAll();
    }

    Bench::VethPair const link;
    Support::PacketEnd far{ link.farNs, Bench::VethPair::farDevice };
    Support::PacketEnd bare{ link.nearNs, Bench::VethPair::nearDevice };
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    std::optional<Hosts> hosts;
};

std::vector<Arrival>
oneOfEach( std::vector<Arrival> arrivals, char const* who ) {
    std::size_t const senders = Support::senders( arrivals );
    if ( arrivals.size() != hostCount || senders != hostCount ) {
        throw std::runtime_error(
            std::string( who ) + ": " + std::to_string( arrivals.size() ) + " frames of " +
            std::to_string( senders ) + " hosts arrived"
        );
    }
    return arrivals;
}

double
rate( std::vector<Arrival> const& arrivals, double start ) {
    return static_cast<double>( arrivals.size() - 1 ) / ( arrivals.back().time - start );
}

std::vector<Bytes>
framesOf( std::vector<Arrival> const& arrivals ) {
    std::vector<Bytes> frames;
    for ( Arrival const& arrival : arrivals ) {
        frames.push_back( arrival.frame );
    }
    return frames;
}

/// The bare sender's rate with the frames of these arrivals, from its start or from its first frame.
double
bareRate( Setting& setting, std::vector<Arrival> const& arrivals, bool fromStart ) {
    std::vector<Bytes> const frames = framesOf( arrivals );
    double const start = Support::wallClock();
    setting.bare.sendAll( frames );
    auto const theirs = oneOfEach( setting.far.takeAll(), "the bare sender" );
    return rate( theirs, fromStart ? start : theirs.front().time );
}

void
addRates(
    Bench::Figures& figures, std::string const& what, std::vector<double> const& ours,
    std::vector<double> const& theirs, double wanted
) {
    figures.add( what + ", frames per second", "1/s", ours );
    figures.add( what + ", bare sendmmsg of 64 of the same frames", "1/s", theirs );
    figures.add(
        what + ", beside bare sender", "times", Bench::ratios( ours, theirs ), Bench::atLeast( wanted )
    );
}

void
measureAnswers(
    Bench::Figures& figures, unsigned runs, Igmp::IgmpVersion version, std::size_t groups, double wanted
) {
    Setting setting( { hostCount, version, groups } );
    bool const asV3 = version == Igmp::igmpVersion3;
    std::vector<Bytes> const query{ Bench::generalQuery( asV3 ? 5 : 0, asV3 ) };
    std::vector<double> ours, theirs;
    for ( unsigned i = 0; i < runs; ++i ) {
        setting.far.sendAll( query );
        setting.activity.runFor( 1.0 );
        auto const answers = oneOfEach( setting.far.takeAll(), "the hosts" );
        ours.push_back( rate( answers, answers.front().time ) );
        theirs.push_back( bareRate( setting, answers, false ) );
    }
    addRates(
        figures,
        "10000 version " + std::to_string( version ) + " hosts with " + std::to_string( groups ) +
            ( groups == 1 ? " group" : " groups" ) + " answer at once",
        ours, theirs, wanted
    );
}

/// Every host joins a group; the time to configure it counts. Leaving at once spares the wait for repeats.
void
measureJoins( Bench::Figures& figures, unsigned runs ) {
    Setting setting( { hostCount, Igmp::igmpVersion2, 0 } );
    std::vector<double> ours, theirs;
    for ( unsigned i = 0; i < runs; ++i ) {
        double const start = Support::wallClock();
        for ( std::size_t host = 0; host < hostCount; ++host ) {
            Hosts::join( setting.hosts->host( host ), i, 0 );
        }
        setting.activity.runOnce();
        auto const joins = oneOfEach( setting.far.takeAll(), "the hosts" );
        ours.push_back( rate( joins, start ) );
        theirs.push_back( bareRate( setting, joins, true ) );
        for ( std::size_t host = 0; host < hostCount; ++host ) {
            setting.hosts->host( host ).v3groupDel( Hosts::group( i ) );
        }
        setting.activity.runOnce();
        setting.far.takeAll();
    }
    addRates( figures, "10000 version 2 hosts configured to join at once", ours, theirs, 0.40 );
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    measureAnswers( figures, effort.runs, Igmp::igmpVersion2, 1, 0.85 );
    measureAnswers( figures, effort.runs, Igmp::igmpVersion3, 10, 0.70 );
    measureJoins( figures, effort.runs );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Ten thousand hosts on one veth device", measure );
}
