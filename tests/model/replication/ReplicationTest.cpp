#include "tests/model/replication/ReplicationTest.h"

namespace Igmp {

namespace {

using Kiv::NboAttrLog::Plan;
using Kiv::NboAttrLog::PlanRow;
using Kiv::NboAttrLog::RowForm;

std::string
membersText( Kiv::Attribute const& row, Kiv::Entity const& entity ) {
    std::string text;
    for ( auto at = row.collection->begin( entity ); at->isAtMember(); at->next() ) {
        text += "[" + row.keyType->format( at->key() ) + "]=";
        text += row.collection->valueType
                    ? row.collection->valueType->format( row.collection->value( *at->member() ) )
                    : contents( static_cast<Kiv::Entity&>( *at->member() ) );
    }
    return text;
}

std::string
rowText( PlanRow const& row, Kiv::Entity const& entity ) {
    Kiv::Attribute const& at = *row.attribute;
    switch ( row.form ) {
    case RowForm::none: return "";
    case RowForm::scalar: return Kiv::attributeText( at, entity );
    case RowForm::values:
    case RowForm::members: return membersText( at, entity );
    case RowForm::child: break;
    }
    Ptr<Kiv::PtrInterface> const child = at.pointer->read( entity );
    return child ? contents( static_cast<Kiv::Entity&>( *child ) ) : "none";
}

} // namespace

std::string
contents( Kiv::Entity const& entity ) {
    std::string text = "{";
    for ( PlanRow const& row : Plan::of( *entity.fwkType() ).rows() ) {
        if ( row.form != RowForm::none ) {
            text += std::string( row.attribute->name ) + "=" + rowText( row, entity ) + ";\n";
        }
    }
    return text + "}";
}

ReplicationTest::Link::Link( Model const& served, Model const& mirror, bool isWritable )
    : server( new Connection(
          sockets.handOver( 0 ), Connection::Role::server, served.mounts( isWritable ), "client"
      ) ),
      client(
          new Connection( sockets.handOver( 1 ), Connection::Role::client, mirror.mounts( false ), "server" )
      ) {
    server->onEndIs( [this]( Kiv::String8 const& reason ) { serverEnd = reason.view(); } );
    client->onEndIs( [this]( Kiv::String8 const& reason ) { clientEnd = reason.view(); } );
}

void
ReplicationTest::Link::cut() {
    server = nullptr;
    client = nullptr;
}

void
ReplicationTest::turns( unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        activity().runOnce();
    }
}

void
ReplicationTest::exchange( Link& link ) {
    auto const isDone = [&link] {
        bool const isSettled = link.server->isSettled() && link.client->isSettled();
        return ( isSettled && link.client->isSynchronised() ) || !link.serverEnd.empty() ||
               !link.clientEnd.empty();
    };
    for ( unsigned i = 0; i < 10'000 && !isDone(); ++i ) {
        turns( 1 );
    }
    turns( 3 );
}

} // namespace Igmp
