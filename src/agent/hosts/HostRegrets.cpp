#include "agent/hosts/HostRegrets.h"

#include <unordered_set>

#include "agent/scenario/warnings/GroupWarnings.h"
#include "agent/scenario/warnings/HostWarnings.h"

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;

namespace {

/// Adds what an object has for each attribute that is not among the settings yet.
void
addValues( Settings& settings, std::span<Kiv::Attribute const> table, Kiv::PtrInterface const& object ) {
    for ( Kiv::Attribute const& row : table ) {
        if ( row.isWritable() && !settings.find( row.id ) ) {
            settings.settingIs( { &row, row.read( object ), {} } );
        }
    }
}

AddressList
listOf( std::vector<Zornet::IpAddr> const& addrs ) {
    std::vector<AddressBlock> blocks;
    blocks.reserve( addrs.size() );
    for ( Zornet::IpAddr const& addr : addrs ) {
        blocks.push_back( { addr, 1, 1, {} } );
    }
    return AddressList( std::move( blocks ) );
}

GroupSpec
groupSpecOf( IgmpV3GroupRecord const& record ) {
    GroupSpec spec;
    spec.groups = listOf( { record.multicastAddr() } );
    addValues( spec.settings, IgmpV3GroupRecord::attributes(), record );
    std::vector<Zornet::IpAddr> sources;
    if ( record.source() ) {
        for ( auto const& source : record.source()->sourceIp() ) {
            sources.push_back( source.key );
        }
    }
    spec.sources = listOf( sources );
    return spec;
}

Diagnostics
regrets( HostState const& state ) {
    Diagnostics warnings;
    HostWarnings( state.host, state.groups, warnings ).check();
    GroupWarnings( state.host, state.groups, warnings ).check();
    return warnings;
}

Kiv::Seconds
requestedInterval( HostSpec const& host ) {
    return host.settings.value<Kiv::Seconds>( IgmpHost::attrUnsolicitedReportInterval );
}

/// What nothing but the change itself brings about. A host starts with the default where 0 is requested, but
/// takes a request that comes later as it stands.
void
addChangeRegrets( HostSpec const& before, HostSpec const& after, std::vector<Diagnostic>& regrets ) {
    if ( requestedInterval( before ) != 0.0 && requestedInterval( after ) == 0.0 ) {
        regrets.push_back(
            { after.settings.placeOf( IgmpHost::attrUnsolicitedReportInterval, after.at ),
              "unsolicitedReportInterval: 0 is no request for the default on a host that is enabled; reports "
              "are repeated at once until its version in force changes" }
        );
    }
}

} // namespace

HostSpec
hostSpecOf( IgmpHost const& host, Settings const& changes ) {
    HostSpec spec;
    spec.name = host.name().charPtr();
    spec.settings = changes;
    addValues( spec.settings, IgmpHost::attributes(), host );
    for ( IgmpV3GroupRecord const& record : host.v3group() ) {
        spec.groups.push_back( groupSpecOf( record ) );
    }
    return spec;
}

std::vector<Diagnostic>
newRegrets( HostState const& before, HostState const& after ) {
    Diagnostics const present = regrets( before );
    std::unordered_set<std::string> known;
    for ( Diagnostic const& regret : present.entries() ) {
        known.insert( regret.text );
    }
    Diagnostics const future = regrets( after );
    std::vector<Diagnostic> fresh;
    for ( Diagnostic const& regret : future.entries() ) {
        if ( !known.contains( regret.text ) ) {
            fresh.push_back( regret );
        }
    }
    addChangeRegrets( before.host, after.host, fresh );
    return fresh;
}

std::vector<Diagnostic>
newRegrets( HostSpec const& before, HostSpec const& after ) {
    return newRegrets(
        HostState{ before, GroupDigest( before.groups ) }, HostState{ after, GroupDigest( after.groups ) }
    );
}

} // namespace Agent
