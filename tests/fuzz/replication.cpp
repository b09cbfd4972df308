/// Bytes of a hostile peer, a WildPeer, to a served directory, and to a mirror. Whatever they are, the stream
/// ends at worst; an honest mirror of the same directory, on a stream of its own, must follow it to the end.

#include "tests/fuzz/WildPeer.h"

namespace {

using Fuzz::Input;
using Fuzz::require;
using Fuzz::turns;
using Igmp::IgmpHostDir;
using Kiv::Connection;
using Kiv::Ptr;

void
requireFollows( IgmpHostDir& served, IgmpHostDir& mirror, Connection const& server ) {
    for ( unsigned i = 0; i < 1'000 && !server.isSettled(); ++i ) {
        turns( 1 );
    }
    require( server.isOpen() && server.isSettled(), "an honest stream goes on" );
    require( served.igmpHosts() == mirror.igmpHosts(), "an honest mirror follows" );
    for ( Igmp::IgmpHost& host : served.igmpHost() ) {
        Ptr<Igmp::IgmpHost> const same = mirror.igmpHost( host.name() );
        require( same && same->mtu() == host.mtu(), "a host is mirrored" );
        require( same->v3groups() == host.v3groups(), "its groups are mirrored" );
    }
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( Kiv::U8 const* data, std::size_t size ) {
    Input input( { data, size } );
    Kiv::U8 const choice = input.byte();
    Ptr<IgmpHostDir> const dir = Fuzz::filledDir();
    Ptr<IgmpHostDir> const honest = Igmp::igmpHostDirFactory( "honest" );
    Support::SocketPair good;
    Ptr<Connection> const server(
        new Connection( good.handOver( 0 ), Connection::Role::server, { { "d", dir, false } }, "honest" )
    );
    Ptr<Connection> const client(
        new Connection( good.handOver( 1 ), Connection::Role::client, { { "d", honest, false } }, "server" )
    );
    turns( 4 );
    Fuzz::WildPeer( dir, choice ).feed( input );
    requireFollows( *dir, *honest, *server );
    return 0;
}
