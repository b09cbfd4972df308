#include "agent/control/ctl/HostWatch.h"

#include "agent/hosts/HostPattern.h"

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpHostStatus;
using Igmp::IgmpV3GroupRecord;
using Igmp::IgmpV3HostGroupSourceList;
using Kiv::AttributeId;
using Kiv::GenericIfAdapter;
using Kiv::GenericValue;
using Zornet::IpAddr;

namespace {

std::string
textOf( IpAddr const& addr ) {
    return Kiv::ValueTraits<IpAddr>::format( addr );
}

} // namespace

HostWatch::HostWatch( ControlClient const& client, std::string const& pattern, Told told )
    : client_( client ), pattern_( pattern ), told_( std::move( told ) ) {
    for ( IgmpHost& host : client.hostDir().igmpHost() ) {
        if ( isWatched( host.name() ) ) {
            watchHost( host );
        }
    }
    for ( IgmpHostStatus& status : client.statusDir().igmpHostStatus() ) {
        if ( isWatched( status.name() ) ) {
            watchStatus( status );
        }
    }
    directories_ = {
        new GenericIfAdapter(
            Kiv::Ptr<Kiv::Entity const>( &client.hostDir() ),
            [this]( AttributeId, GenericValue const& key ) { handleHost( key.as<Kiv::Name>() ); }
        ),
        new GenericIfAdapter(
            Kiv::Ptr<Kiv::Entity const>( &client.statusDir() ),
            [this]( AttributeId, GenericValue const& key ) { handleStatus( key.as<Kiv::Name>() ); }
        ),
    };
}

bool
HostWatch::isWatched( Kiv::Name const& host ) const {
    return pattern_.empty() || fits( host.charPtr(), pattern_ );
}

void
HostWatch::watchHost( IgmpHost& host ) {
    std::string const name = host.name().charPtr();
    for ( IgmpV3GroupRecord& record : host.v3group() ) {
        watchGroup( name, record );
    }
    hosts_[name] = new GenericIfAdapter(
        Kiv::Ptr<Kiv::Entity const>( &host ),
        [this, name, &host]( AttributeId id, GenericValue const& key ) {
            if ( id == IgmpHost::attrV3group ) {
                handleGroup( host, key.as<IpAddr>() );
            } else {
                tellValue( { .host = name }, host, id );
            }
        }
    );
}

void
HostWatch::watchGroup( std::string const& host, IgmpV3GroupRecord& record ) {
    watchSources( host, record );
    groups_[host][record.multicastAddr()].record = new GenericIfAdapter(
        Kiv::Ptr<Kiv::Entity const>( &record ),
        [this, host, &record]( AttributeId id, GenericValue const& ) {
            if ( id == IgmpV3GroupRecord::attrSource ) {
                watchSources( host, record );
            } else {
                tellValue( { .host = host, .group = textOf( record.multicastAddr() ) }, record, id );
            }
        }
    );
}

void
HostWatch::watchSources( std::string const& host, IgmpV3GroupRecord& record ) {
    Reactor& reactor = groups_[host][record.multicastAddr()].sources;
    Kiv::Ptr<IgmpV3HostGroupSourceList> const list = record.source();
    if ( !list ) {
        reactor = nullptr;
        return;
    }
    std::string const group = textOf( record.multicastAddr() );
    IgmpV3HostGroupSourceList const& sources = *list;
    reactor = new GenericIfAdapter(
        Kiv::Ptr<Kiv::Entity const>( list.get() ),
        [this, host, group, &sources]( AttributeId, GenericValue const& key ) {
            HostChange change{ .host = host, .group = group, .attribute = "source" };
            change.value = textOf( key.as<IpAddr>() );
            tellEvent( change, sources.hasSourceIp( key.as<IpAddr>() ) );
        }
    );
}

void
HostWatch::watchStatus( IgmpHostStatus& status ) {
    std::string const name = status.name().charPtr();
    statuses_[name] = new GenericIfAdapter(
        Kiv::Ptr<Kiv::Entity const>( &status ),
        [this, name, &status]( AttributeId id, GenericValue const& ) {
            tellValue( { .host = name, .isOfStatus = true }, status, id );
        }
    );
}

void
HostWatch::handleHost( Kiv::Name const& name ) {
    if ( !isWatched( name ) ) {
        return;
    }
    std::string const host = name.charPtr();
    Kiv::Ptr<IgmpHost> const present = client_.hostDir().igmpHost( name );
    groups_.erase( host );
    hosts_.erase( host );
    tellEvent( { .host = host }, static_cast<bool>( present ) );
    if ( present ) {
        watchHost( *present );
    }
}

void
HostWatch::handleGroup( IgmpHost& host, IpAddr const& group ) {
    std::string const name = host.name().charPtr();
    Kiv::Ptr<IgmpV3GroupRecord> const record = host.v3group( group );
    groups_[name].erase( group );
    tellEvent( { .host = name, .group = textOf( group ) }, static_cast<bool>( record ) );
    if ( record ) {
        watchGroup( name, *record );
    }
}

void
HostWatch::handleStatus( Kiv::Name const& name ) {
    if ( !isWatched( name ) ) {
        return;
    }
    std::string const host = name.charPtr();
    Kiv::Ptr<IgmpHostStatus> const status = client_.statusDir().igmpHostStatus( name );
    statuses_.erase( host );
    tellEvent( { .host = host, .isOfStatus = true }, static_cast<bool>( status ) );
    if ( status ) {
        watchStatus( *status );
    }
}

void
HostWatch::tellValue( HostChange change, Kiv::Entity const& entity, AttributeId id ) const {
    Kiv::Attribute const* const row = entity.fwkType()->row( id );
    if ( row && row->type && row->read ) {
        change.attribute = row->name;
        change.value = jsonValue( *row, entity );
        told_( change );
    }
}

void
HostWatch::tellEvent( HostChange change, bool isThere ) const {
    change.event = isThere ? "added" : "deleted";
    told_( change );
}

} // namespace Agent
