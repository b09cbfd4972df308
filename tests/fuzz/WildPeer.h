#pragma once

#include "model/IgmpHostDir.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Connection.h"
#include "platform/kiv/nboattrlog/Out.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/SocketPair.h"

namespace Fuzz {

using Kiv::Connection;
using Kiv::Ptr;
using Kiv::U8;
using Bytes = std::vector<U8>;

inline void
turns( unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        Kiv::defaultActivity()->activitySm().runOnce();
    }
}

/// Two hosts with a group of one source each: what is served, and what a mirror holds before it connects.
inline Ptr<Igmp::IgmpHostDir>
filledDir() {
    Ptr<Igmp::IgmpHostDir> const dir = Igmp::igmpHostDirFactory( "d" );
    for ( char const* name : { "a", "b" } ) {
        Ptr<Igmp::IgmpHost> const host = dir->igmpHostIs( name );
        host->deviceNameIs( "eth0" );
        auto const record = host->v3groupIs( Zornet::IpAddr( "239.1.1.1" ) );
        record->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.9.9.1" ), 1 );
        record->versionIs( 1 );
    }
    return dir;
}

/// The other end of a victim's stream, and what an input has it say there. The input's first byte says to
/// whom (bit 0: to a mirror) and how (bit 1: in frames that are in order behind a good greeting, so that only
/// their contents are wild). Then come pieces, each a byte for the length and what follows: a frame's
/// content, or bytes of the stream that arrive at once.
class WildPeer {
  public:
    static constexpr U8 toMirror = 1;
    static constexpr U8 inFrames = 2;

    WildPeer( Ptr<Igmp::IgmpHostDir> const& victims, U8 choice )
        : isToMirror_( ( choice & toMirror ) != 0 ),
          isInFrames_( ( choice & inFrames ) != 0 ),
          victim_( new Connection(
              sockets_.handOver( 0 ), isToMirror_ ? Connection::Role::client : Connection::Role::server,
              { { "d", victims, true } }, "wild"
          ) ) {}

    Connection const& victim() const { return *victim_; }
    void feed( Input& input );

  private:
    using MsgHeader = Kiv::NboAttrLog::MsgHeader;
    using Operation = Kiv::NboAttrLog::Operation;
    using Out = Kiv::NboAttrLog::Out;

    Bytes opening() const;
    void send( Bytes const& bytes );
    void sendFrame( Bytes const& content );

    bool const isToMirror_;
    bool const isInFrames_;
    Support::SocketPair sockets_;
    Ptr<Connection> const victim_;
    Kiv::U32 frames_ = 0;
};

/// The mount, or the root of the mirror.
inline Bytes
WildPeer::opening() const {
    Out out;
    MsgHeader header;
    header.operation = isToMirror_ ? Operation::orphan : Operation::mount;
    header.secondFlags = 1;
    Out::Record record( out, header );
    if ( isToMirror_ ) {
        out.nextEntityIdIs( { 0, 1 } );
    }
    out.nextStringIs( "d" );
    if ( isToMirror_ ) {
        out.nextStringIs( "Igmp::IgmpHostDir" );
    }
    record.finish();
    return { out.bytes().begin(), out.bytes().end() };
}

inline void
WildPeer::send( Bytes const& bytes ) {
    sockets_.put( 1, bytes );
    turns( 2 );
    sockets_.take( 1 );
}

inline void
WildPeer::sendFrame( Bytes const& content ) {
    Out out;
    out.nextU32Is( static_cast<Kiv::U32>( content.size() ) );
    out.nextU32Is( ++frames_ );
    out.nextU32Is( 0 );
    out.nextBytesIs( content );
    send( { out.bytes().begin(), out.bytes().end() } );
}

inline void
WildPeer::feed( Input& input ) {
    if ( isInFrames_ ) {
        send( { 'K', 'i', 'v', 'N', 'b', 'o', '\r', '\n', 0, 1, static_cast<U8>( !isToMirror_ ), 0 } );
        sendFrame( opening() );
    }
    while ( !input.atEnd() ) {
        Bytes const piece = input.bytes( input.byte() );
        isInFrames_ ? sendFrame( piece ) : send( piece );
    }
}

} // namespace Fuzz
