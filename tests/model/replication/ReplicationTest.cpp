#include "tests/model/replication/ReplicationTest.h"

#include <map>

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

ReplicationTest::Link::Link(
    Model const& served, Model const& mirror, bool isWritable, Ptr<Kiv::ActivityConfig> const& clientActivity
)
    : server( new Connection(
          sockets.handOver( 0 ), Connection::Role::server, served.mounts( isWritable ), "client"
      ) ),
      client( new Connection(
          sockets.handOver( 1 ), Connection::Role::client, mirror.mounts( false ), "server", clientActivity
      ) ) {
    server->onEndIs( [this]( Kiv::String8 const& reason ) { serverEnd = reason.view(); } );
    client->onEndIs( [this]( Kiv::String8 const& reason ) { clientEnd = reason.view(); } );
}

void
ReplicationTest::Link::cut() {
    server = nullptr;
    client = nullptr;
}

void
ReplicationTest::fill( Kiv::Entity& entity ) {
    static std::map<std::string, char const*> const texts = {
        { "Zornet::IpAddr", "10.1.2.3" },
        { "Zornet::EthAddr", "02:00:00:00:00:09" },
        { "Igmp::IgmpVersion", "igmpVersion3" },
        { "Bridging::AllowedTrafficDirection", "egress" },
        { "Zornet::IgmpV3GroupRecordType", "exclude" },
        { "double", "12.5" },
        { "Kiv::String", "eth7" },
        { "Zornet::IntfId", "trunk" },
        { "Zornet::NamespaceName", "blue" },
    };
    for ( PlanRow const& row : Plan::of( *entity.fwkType() ).rows() ) {
        if ( row.form == RowForm::scalar ) {
            Kiv::Attribute const& at = *row.attribute;
            auto const known = texts.find( at.type->name );
            bool const isTrue = Kiv::attributeText( at, entity ) == "true";
            std::string const text = known != texts.end() ? known->second
                                     : at.type->form == Kiv::ValueForm::boolean
                                         ? ( isTrue ? "false" : "true" )
                                         : std::to_string( 1 + at.id % 200 );
            Kiv::attributeTextIs( at, entity, text );
            EXPECT_NE( Kiv::attributeText( at, entity ), at.defaultText ) << at.name;
        }
    }
}

void
ReplicationTest::turns( unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        activity().runOnce();
    }
}

void
ReplicationTest::clientTurns( Ptr<Kiv::ActivityConfig> const& client, unsigned count ) {
    for ( unsigned i = 0; i < count; ++i ) {
        client->activitySm().runOnce();
        turns( 1 );
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
