#include "agent/control/ControlServer.h"

#include "agent/control/ControlTrace.h"
#include "agent/control/SocketPath.h"

namespace Agent {

ControlServer::ControlServer( std::string const& path, std::vector<Kiv::Connection::Mount> const& mounts )
    : mounts_( mounts ),
      listener_( path, [this]( Zornet::FileDescriptor peer ) { take( std::move( peer ) ); } ) {}

ControlServer::~ControlServer() {
    endAll( "the agent has ended" );
}

void
ControlServer::endAll( std::string const& reason ) {
    for ( auto const& [number, connection] : peers_ ) {
        connection->onEndIs( nullptr );
        connection->end( reason );
    }
    peers_.clear();
}

void
ControlServer::take( Zornet::FileDescriptor descriptor ) {
    ucred const peer = peerOf( descriptor );
    std::string const name = "process " + std::to_string( peer.pid ) + " of " + userText( peer.uid );
    bool const isAllowed = mayControl( peer.uid, geteuid() );
    bool const hasRoom = peers_.size() < mostPeers;
    Kiv::Ptr<Kiv::Connection> const connection( new Kiv::Connection(
        descriptor.release(), Kiv::Connection::Role::server,
        isAllowed && hasRoom ? mounts_ : std::vector<Kiv::Connection::Mount>(), name
    ) );
    if ( !isAllowed ) {
        refuse(
            *connection,
            "this agent runs as " + userText( geteuid() ) + " and obeys no " + userText( peer.uid )
        );
        return;
    }
    if ( !hasRoom ) {
        refuse( *connection, "the agent has " + std::to_string( mostPeers ) + " peers already" );
        return;
    }
    Number const number = ++lastNumber_;
    peers_.emplace( number, connection );
    KIV_TRACE( controlTrace, controlEvent ) << name << " is connected";
    connection->onEndIs( [this, number, name]( Kiv::String8 const& reason ) {
        KIV_TRACE( controlTrace, controlEvent ) << name << " is gone: " << reason;
        peers_.erase( number );
    } );
}

void
ControlServer::refuse( Kiv::Connection& connection, std::string const& reason ) {
    KIV_TRACE( controlTrace, controlTrouble ) << connection.peerName() << " is refused: " << reason;
    connection.end( reason );
}

} // namespace Agent
