/// Instruction counts of the operations on which the cost of everything else stands, for callgrind, and the
/// memory of hosts. Run by itself it counts no instructions: scripts/bench --budgets runs it under valgrind
/// and holds what it counts against bench/budgets.json.

#include <malloc.h>
#include <valgrind/callgrind.h>

#include <iostream>

#include "bench/support/Rig.h"

namespace {

using Bench::Hosts;
using Bench::Rig;

constexpr std::size_t hostCount = 500;
constexpr Kiv::Seconds settled = 700.0; // every repeat of a join has been sent

/// Counts what `work` does and tells how often it did one `operation`: callgrind's dump carries both.
template <class Work>
void
count( char const* operation, std::size_t times, Work const& work ) {
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    work();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT( operation );
    CALLGRIND_STOP_INSTRUMENTATION;
    std::cout << operation << '\t' << times << "\ttimes\n";
}

/// A query, and then the answers, of many hosts. The first round warms what is allocated once.
void
countAnswers( char const* query, char const* answer, Hosts::Plan plan ) {
    plan.hosts = hostCount;
    Rig rig;
    Hosts const hosts( plan );
    Rig::runFor( settled );
    auto const frame = Bench::generalQuery( 100, plan.version == Igmp::igmpVersion3 );
    rig.device().hear( frame );
    Rig::runFor( settled );
    auto const hear = [&] { rig.device().hear( frame ); };
    if ( query ) {
        count( query, hostCount, hear );
    } else {
        hear();
    }
    std::size_t const before = rig.device().sent;
    count( answer, hostCount, [] { Rig::runFor( settled ); } );
    if ( rig.device().sent - before != hostCount ) {
        throw std::runtime_error( std::string( answer ) + ": not every host has answered once" );
    }
}

/// `change` on each of many hosts, with all the reports that it causes.
template <class Change>
void
countChange( char const* operation, Hosts& hosts, Change const& change ) {
    count( operation, hostCount, [&] {
        for ( std::size_t i = 0; i < hostCount; ++i ) {
            change( hosts.host( i ) );
        }
        Rig::runFor( settled );
    } );
}

void
leave( Igmp::IgmpHost& host ) {
    host.v3groupDel( Hosts::group( 1 ) );
}

void
countMembership() {
    Rig const rig;
    Hosts hosts( { hostCount } );
    Rig::runFor( settled );
    auto const join = []( Igmp::IgmpHost& host ) { Hosts::join( host, 1, 0 ); };
    countChange( "version 2 join, with its repeat", hosts, join );
    countChange( "version 2 leave", hosts, leave );
}

void
countStateChanges() {
    Rig const rig;
    Hosts hosts( { hostCount, Igmp::igmpVersion3, 1, 1 } );
    Rig::runFor( settled );
    auto const addSource = []( Igmp::IgmpHost& host ) {
        auto const record = host.v3group( Hosts::group( 0 ) );
        record->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.99.0.1" ), 1 );
        record->versionIs( record->version() + 1 );
    };
    auto const join = []( Igmp::IgmpHost& host ) { Hosts::join( host, 1, 0 ); };
    countChange( "version 3 source change, with its repeat", hosts, addSource );
    countChange( "version 3 join, with its repeat", hosts, join );
    countChange( "version 3 leave, with its repeat", hosts, leave );
}

class CountingTimer : public Lumo::TimerWheel::NotifieeConst {
  public:
    explicit CountingTimer( Kiv::Ptr<Lumo::TimerWheel const> const& wheel ) : NotifieeConst( wheel ) {
        isRegisteredNotifieeIs( true );
    }
};

void
countTimers() {
    constexpr std::size_t timers = 10'000;
    Rig const rig;
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    std::vector<Kiv::Ptr<CountingTimer>> all;
    for ( std::size_t i = 0; i < timers; ++i ) {
        all.emplace_back( new CountingTimer( wheel ) );
    }
    count( "timer armed and fired", timers, [&] {
        for ( std::size_t i = 0; i < timers; ++i ) {
            all[i]->timeMinIs( Kiv::now() + 1e-3 * static_cast<double>( i * 7919 % timers ) );
        }
        Rig::runFor( 100.0 );
    } );
}

void
countVlans() {
    constexpr std::size_t frames = 1'000;
    Rig rig;
    Hosts::Plan plan{ hostCount };
    plan.ownVlans = true;
    Hosts const hosts( plan );
    Rig::runFor( settled );
    auto const countHearing = [&]( char const* operation, Zornet::U16 vlanId ) {
        auto const frame = Bench::tagged( Bench::generalQuery( 100, false ), vlanId );
        auto const hear = [&] {
            for ( std::size_t i = 0; i < frames; ++i ) {
                rig.device().hear( frame );
            }
        };
        hear();
        count( operation, frames, hear );
    };
    countHearing( "frame demultiplexed by VLAN", 4000 ); // that of nobody
    countHearing( "frame delivered by VLAN", hostCount );
}

/// Bytes of the heap, as malloc gives them, for hosts that are up and have sent all repeats of their joins.
std::size_t
heapBytesOf( Hosts::Plan const& plan ) {
    auto const inUse = [] {
        struct mallinfo2 const info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    Rig const rig;
    std::size_t const before = inUse();
    Hosts const hosts( plan );
    Rig::runFor( settled );
    return inUse() - before;
}

/// What each of the `more` takes that `larger` has beyond `smaller`.
void
tellBytes( char const* thing, Hosts::Plan const& smaller, Hosts::Plan const& larger, std::size_t more ) {
    std::size_t const bytes = heapBytesOf( larger ) - heapBytesOf( smaller );
    std::cout << thing << '\t' << static_cast<double>( bytes ) / static_cast<double>( more ) << "\tbytes\n";
}

void
tellMemory() {
    using Igmp::igmpVersion2;
    using Igmp::igmpVersion3;
    tellBytes(
        "bytes of a version 2 host with one group", { hostCount, igmpVersion2 },
        { 3 * hostCount, igmpVersion2 }, 2 * hostCount
    );
    tellBytes(
        "bytes of a version 3 membership with one source", { 10, igmpVersion3, 100, 1 },
        { 10, igmpVersion3, 300, 1 }, 2'000
    );
}

void
countAll() {
    countAnswers( "version 2 query heard by a host", "version 2 answer", {} );
    countAnswers(
        "version 3 query heard by a host", "version 3 answer of 10 groups", { 1, Igmp::igmpVersion3, 10 }
    );
    countAnswers( nullptr, "version 3 answer of 20 sources", { 1, Igmp::igmpVersion3, 1, 20 } );
    countMembership();
    countStateChanges();
    countTimers();
    countVlans();
    tellMemory();
}

/// A query alone, at so many hosts, for valgrind's own sum.
void
countQuery( std::size_t hosts ) {
    Rig rig;
    Hosts const all( { hosts } );
    Rig::runFor( settled );
    auto const frame = Bench::generalQuery( 100, false );
    rig.device().hear( frame );
    Rig::runFor( settled );
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_TOGGLE_COLLECT;
    rig.device().hear( frame );
    CALLGRIND_TOGGLE_COLLECT;
}

} // namespace

/// Usage: bench_budgets [HOSTS]
int
main( int argc, char** argv ) {
    try {
        if ( argc > 1 ) {
            countQuery( std::stoul( argv[1] ) );
        } else {
            countAll();
        }
    } catch ( std::exception const& error ) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
