/// What a mirror of many hosts costs: time to a full mirror, attributes per second, and, beside them in the
/// same run, the same hosts made directly and the same bytes copied through the same kind of socket; and what
/// it costs where machines run on the mirror, beside the agent's own way to such hosts, from a scenario.
/// Times are of the processor: both sides run in this process.

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "agent/run/StartUp.h"
#include "agent/scenario/ScenarioReader.h"
#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"
#include "model/IgmpHostDir.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Connection.h"

namespace {

using Igmp::IgmpHostDir;
using Kiv::Connection;
using Kiv::Ptr;
using Kiv::U32;
using Kiv::U64;
using Zornet::IpAddr;

constexpr U32 groupsOfTree = 10;

/// Trees of hosts that no machine sees.
void
makeHosts( IgmpHostDir& dir, unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        Ptr<Igmp::IgmpHost> const host = dir.igmpHostIs( Kiv::Name( "host-" + std::to_string( i ) ) );
        host->ipAddrIs( IpAddr::fromHost( 0x0a000001U + i ) );
        host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:01" ) );
        host->deviceNameIs( "eth0" );
        for ( U32 group = 0; group < groupsOfTree; ++group ) {
            Ptr<Igmp::IgmpV3GroupRecord> const record =
                host->v3groupIs( IpAddr::fromHost( 0xef010101U + group ) );
            record->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
            record->versionIs( 1 );
        }
        host->configVersionIs( 1 );
        host->intfConfigVersionIs( 1 );
    }
}

struct Sockets {
    Sockets() {
        if ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends ) != 0 ) {
            throw std::runtime_error( "socketpair" );
        }
    }
    int ends[2];
};

/// A served directory and its mirror on one loop.
struct Mirror {
    explicit Mirror(
        Ptr<IgmpHostDir> const& served, Ptr<IgmpHostDir> const& into = Igmp::igmpHostDirFactory( "mirror" )
    )
        : dir( into ),
          server( new Connection( sockets.ends[0], Connection::Role::server, { { "d", served, true } }, "c" )
          ),
          client( new Connection( sockets.ends[1], Connection::Role::client, { { "d", dir, false } }, "s" )
          ) {}

    Sockets sockets;
    Ptr<IgmpHostDir> dir;
    Ptr<Connection> server;
    Ptr<Connection> client;
};

Kiv::ActivitySm&
loop() {
    return Kiv::defaultActivity()->activitySm();
}

/// Seconds for as many bytes between two sockets, both served by one thread.
double
copySeconds( U64 bytes ) {
    Sockets const sockets;
    std::vector<char> buffer( 64 * 1024 );
    double const seconds = Bench::processorSecondsOf( [&] {
        for ( U64 sent = 0, got = 0; got < bytes; ) {
            ssize_t const out =
                sent < bytes ? send( sockets.ends[0], buffer.data(), buffer.size(), MSG_DONTWAIT ) : 0;
            sent += out > 0 ? static_cast<U64>( out ) : 0;
            ssize_t const in = recv( sockets.ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT );
            got += in > 0 ? static_cast<U64>( in ) : 0;
        }
    } );
    close( sockets.ends[0] );
    close( sockets.ends[1] );
    return seconds;
}

void
measureMirror( Bench::Figures& figures, unsigned runs, unsigned count ) {
    std::vector<double> direct, full, rate, copy, bytes, ratio;
    for ( unsigned run = 0; run < runs; ++run ) {
        Ptr<IgmpHostDir> const served = Igmp::igmpHostDirFactory( "served" );
        direct.push_back( Bench::processorSecondsOf( [&] { makeHosts( *served, count ); } ) );
        Mirror mirror( served );
        full.push_back( Bench::processorSecondsOf( [&] {
            loop().runUntil( [&] { return mirror.client->isSynchronised(); }, 600.0 );
        } ) );
        if ( mirror.dir->igmpHosts() != count ) {
            throw std::runtime_error( "the mirror is not full" );
        }
        Connection::Counters const counters = mirror.client->counters();
        rate.push_back( static_cast<double>( counters.messagesReceived ) / full.back() / 1e3 );
        bytes.push_back( static_cast<double>( counters.bytesReceived ) / 1e6 );
        copy.push_back( copySeconds( counters.bytesReceived ) * 1e3 );
        ratio.push_back( full.back() / direct.back() );
    }
    std::string const what =
        std::to_string( count ) + " hosts of " + std::to_string( groupsOfTree ) + " groups";
    auto const inMs = []( std::vector<double> seconds ) {
        for ( double& one : seconds ) {
            one *= 1e3;
        }
        return seconds;
    };
    figures.add( what + ", made directly", "ms", inMs( direct ) );
    figures.add( what + ", time to a full mirror, both sides", "ms", inMs( full ) );
    figures.add( what + ", the same by the time of making them", "times", ratio );
    figures.add( what + ", messages replicated", "thousand/s", rate );
    figures.add( what + ", bytes of the stream", "MB", bytes );
    figures.add( what + ", a plain copy of as many bytes", "ms", copy );
}

/// What runs in an agent, over a device that only counts.
struct RunningAgent {
    Bench::CountingProvider provider;
    Zornet::DeviceProviderScope scope{ provider };
    Ptr<Lumo::TimerWheel> wheel = new Lumo::TimerWheel;
    Agent::Emulation emulation{ wheel };
};

/// Hosts with one group each.
Agent::Scenario
scenarioOf( unsigned count ) {
    std::string const text =
        "hosts:\n  - name: host\n    count: " + std::to_string( count ) +
        "\n    ipAddr: 10.0.0.1\n    macAddr: 02:00:00:00:00:01\n    deviceName: eth0\n    groups:\n"
        "      - { multicastAddr: 239.1.1.1, filterMode: exclude }\n";
    Agent::Diagnostics errors;
    Agent::Scenario scenario = Agent::readScenarioText( "bench.yaml", text, errors );
    if ( !errors.empty() ) {
        throw std::runtime_error( errors.entries().front().text );
    }
    return scenario;
}

void
checkAllEnabled( Agent::Emulation const& emulation, unsigned count ) {
    if ( emulation.statusDir().igmpHostStatuss() != count ) {
        throw std::runtime_error( "not every host is enabled" );
    }
}

/// Processor time of an agent to read a scenario of so many hosts and to bring them up.
double
secondsFromScenario( unsigned count ) {
    RunningAgent agent;
    double const seconds = Bench::processorSecondsOf( [&] {
        Agent::Scenario const scenario = scenarioOf( count );
        Agent::StartUp startUp( scenario, agent.emulation, []( Agent::StartUpProgress const& ) {} );
        startUp.load();
        startUp.start();
    } );
    checkAllEnabled( agent.emulation, count );
    return seconds;
}

/// Processor time, both sides, to replicate the same hosts into an agent until the last is enabled.
double
secondsToReplicate( unsigned count ) {
    Ptr<IgmpHostDir> const source = Igmp::igmpHostDirFactory( "source" );
    Agent::Scenario const scenario = scenarioOf( count );
    Agent::loadHosts( scenario, *source );
    Agent::startHosts( scenario, *source );
    RunningAgent agent;
    Mirror mirror( source, &agent.emulation.hostDir() );
    double const seconds = Bench::processorSecondsOf( [&] {
        loop().runUntil( [&] { return mirror.client->isSynchronised(); }, 600.0 );
    } );
    checkAllEnabled( agent.emulation, count );
    return seconds;
}

void
measureAgent( Bench::Figures& figures, unsigned runs, unsigned count ) {
    std::vector<double> loaded, replicated;
    for ( unsigned run = 0; run < runs; ++run ) {
        loaded.push_back( secondsFromScenario( count ) );
        replicated.push_back( secondsToReplicate( count ) );
    }
    std::string const what = std::to_string( count ) + " hosts of one group, ";
    figures.add( what + "from a scenario, until all are enabled", "s", loaded );
    figures.add( what + "replicated, both sides, until all are enabled", "s", replicated );
    figures.add(
        what + "replicated, by the time from a scenario", "times", Bench::ratios( replicated, loaded ),
        Bench::atMost( 3.0 )
    );
}

void
measureChanges( Bench::Figures& figures, unsigned runs, unsigned count ) {
    Ptr<IgmpHostDir> const served = Igmp::igmpHostDirFactory( "served" );
    makeHosts( *served, count );
    Mirror mirror( served );
    loop().runUntil( [&] { return mirror.client->isSynchronised(); }, 600.0 );
    std::vector<double> ns;
    for ( unsigned run = 0; run < runs; ++run ) {
        double const seconds = Bench::processorSecondsOf( [&] {
            for ( Igmp::IgmpHost& host : served->igmpHost() ) {
                host.mtuIs( 1000 + run );
            }
            loop().runUntil( [&] { return mirror.server->isSettled(); }, 600.0 );
        } );
        ns.push_back( seconds * 1e9 / count );
    }
    figures.add(
        "one change of each of " + std::to_string( count ) + " hosts, until applied, per change", "ns", ns
    );
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    measureMirror( figures, effort.runs, 10'000 );
    if ( !effort.quick ) {
        measureMirror( figures, 3, 100'000 );
    }
    measureAgent( figures, effort.runs, effort.quick ? 10'000 : 100'000 );
    measureChanges( figures, effort.runs, 10'000 );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Replication", measure );
}
