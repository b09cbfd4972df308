/// Bytes of a hostile peer to a served directory, and to a mirror. Whatever they are, the stream ends at
/// worst; an honest mirror of the same directory, on a stream of its own, must follow it to the end.
///
/// The first byte says to whom the bytes go (bit 0: to a mirror) and how (bit 1: in frames that are in order
/// behind a good greeting, so that only their contents are wild). Frames are made of a byte for the length
/// and what follows; without them, the bytes go as they are, some at a time.

#include <sys/socket.h>
#include <unistd.h>

#include "model/IgmpHostDir.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Connection.h"
#include "platform/kiv/nboattrlog/Out.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/SocketPair.h"

namespace {

using Fuzz::Input;
using Fuzz::require;
using Igmp::IgmpHostDir;
using Kiv::Connection;
using Kiv::Ptr;
using Kiv::U32;
using Kiv::U8;
using Kiv::NboAttrLog::MsgHeader;
using Kiv::NboAttrLog::Operation;
using Kiv::NboAttrLog::Out;
using Bytes = std::vector<U8>;

void
turns( unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        Kiv::defaultActivity()->activitySm().runOnce();
    }
}

Ptr<IgmpHostDir>
filled() {
    Ptr<IgmpHostDir> const dir = Igmp::igmpHostDirFactory( "d" );
    for ( char const* name : { "a", "b" } ) {
        Ptr<Igmp::IgmpHost> const host = dir->igmpHostIs( name );
        host->deviceNameIs( "eth0" );
        auto const record = host->v3groupIs( Zornet::IpAddr( "239.1.1.1" ) );
        record->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.9.9.1" ), 1 );
        record->versionIs( 1 );
    }
    return dir;
}

Bytes
greeting( bool isClient ) {
    return { 'K', 'i', 'v', 'N', 'b', 'o', '\r', '\n', 0, 1, static_cast<U8>( isClient ), 0 };
}

Bytes
opening( bool toMirror ) {
    Out out;
    MsgHeader header;
    header.operation = toMirror ? Operation::orphan : Operation::mount;
    header.secondFlags = 1;
    Out::Record record( out, header );
    if ( toMirror ) {
        out.nextEntityIdIs( { 0, 1 } );
    }
    out.nextStringIs( "d" );
    if ( toMirror ) {
        out.nextStringIs( "Igmp::IgmpHostDir" );
    }
    record.finish();
    return { out.bytes().begin(), out.bytes().end() };
}

class Peer {
  public:
    explicit Peer( Support::SocketPair& sockets ) : sockets_( sockets ) {}

    void send( Bytes const& bytes ) {
        sockets_.put( 1, bytes );
        turns( 2 );
        sockets_.take( 1 );
    }
    void sendFrame( Bytes const& content ) {
        Out out;
        out.nextU32Is( static_cast<U32>( content.size() ) );
        out.nextU32Is( ++frames_ );
        out.nextU32Is( 0 );
        out.nextBytesIs( content );
        send( { out.bytes().begin(), out.bytes().end() } );
    }

  private:
    Support::SocketPair& sockets_;
    U32 frames_ = 0;
};

void
feed( Peer peer, Input& input, bool toMirror, bool inFrames ) {
    if ( !inFrames ) {
        while ( !input.atEnd() ) {
            peer.send( input.bytes( 64 ) );
        }
        return;
    }
    peer.send( greeting( !toMirror ) );
    peer.sendFrame( opening( toMirror ) );
    while ( !input.atEnd() ) {
        peer.sendFrame( input.bytes( input.byte() ) );
    }
}

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
LLVMFuzzerTestOneInput( U8 const* data, std::size_t size ) {
    Input input( { data, size } );
    U8 const choice = input.byte();
    bool const toMirror = ( choice & 1 ) != 0;
    Ptr<IgmpHostDir> const dir = filled();
    Ptr<IgmpHostDir> const honest = Igmp::igmpHostDirFactory( "honest" );
    Support::SocketPair good;
    Ptr<Connection> const server(
        new Connection( good.handOver( 0 ), Connection::Role::server, { { "d", dir, false } }, "honest" )
    );
    Ptr<Connection> const client(
        new Connection( good.handOver( 1 ), Connection::Role::client, { { "d", honest, false } }, "server" )
    );
    turns( 4 );
    Support::SocketPair bad;
    Ptr<Connection> const victim( new Connection(
        bad.handOver( 0 ), toMirror ? Connection::Role::client : Connection::Role::server,
        { { "d", dir, true } }, "wild"
    ) );
    feed( Peer( bad ), input, toMirror, ( choice & 2 ) != 0 );
    requireFollows( *dir, *honest, *server );
    return 0;
}
