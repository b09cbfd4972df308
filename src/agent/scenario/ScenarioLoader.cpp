#include "agent/scenario/ScenarioLoader.h"

#include <set>

#include "agent/hosts/Generations.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;

void
sourcesAre( AddressList const& wanted, IgmpV3GroupRecord& record ) {
    if ( record.source() ) {
        std::set<Zornet::IpAddr> kept;
        wanted.forEach( [&]( Zornet::IpAddr const& source ) { kept.insert( source ); } );
        for ( auto source = record.source()->sourceIp().begin(); source; ++source ) {
            if ( !kept.contains( source->key ) ) {
                record.source()->sourceIpDel( source );
            }
        }
    }
    wanted.forEach( [&]( Zornet::IpAddr const& source ) { record.sourceIs()->sourceIpIs( source, 1 ); } );
}

U32
generation( HostSpec const& spec, Kiv::AttributeId counter, U32 present, U32 step ) {
    return spec.settings.find( counter ) ? spec.settings.value<U32>( counter )
                                         : nextGeneration( present, step );
}

/// A version 2 host takes up the interval only where it is changed while it is enabled. On the way there it
/// must not be 0, with which reports follow each other without a pause.
void
repeatInterval( HostSpec const& spec, IgmpHost& host ) {
    if ( spec.settings.find( IgmpHost::attrUnsolicitedReportInterval ) ) {
        Kiv::Seconds const interval = host.unsolicitedReportInterval();
        host.unsolicitedReportIntervalIs( interval == 1.0 ? 2.0 : 1.0 );
        host.unsolicitedReportIntervalIs( interval );
    }
}

/// Calls `f` with each host that is there from the start, until it is to end.
template <class F>
void
forEachStarted( Scenario const& scenario, GoOn const& goOn, F f ) {
    bool goesOn = true;
    GoOn const ask = [&]( DonePart part ) {
        goesOn = !goOn || goOn( part );
        return goesOn;
    };
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        if ( goesOn && !spec.later ) {
            f( spec, index, ask );
            goesOn = goesOn && ask( DonePart::host );
        }
    } );
}

/// Calls `f` with each group that the entry describes, until it is to end. Whoever is heard meanwhile may
/// delete the host, which has no parent then.
template <class F>
void
forEachGroup( HostSpec const& spec, IgmpHost const& host, GoOn const& goOn, F f ) {
    bool goesOn = true;
    for ( GroupSpec const& group : spec.groups ) {
        group.groups.forEach( [&]( Zornet::IpAddr const& addr ) {
            if ( goesOn ) {
                f( group, addr );
                goesOn = !goOn || ( goOn( DonePart::group ) && host.parent() );
            }
        } );
    }
}

} // namespace

Kiv::Ptr<IgmpV3GroupRecord>
groupRecordIs( GroupSpec const& spec, Zornet::IpAddr const& group, IgmpHost& host ) {
    Kiv::Ptr<IgmpV3GroupRecord> record = host.v3groupIs( group );
    for ( Setting const& setting : spec.settings.settings() ) {
        setting.attribute->write( *record, setting.value );
    }
    sourcesAre( spec.sources, *record );
    return record;
}

void
loadHost( HostSpec const& spec, U32 index, IgmpHost& host, GoOn const& goOn ) {
    Settings const settings = spec.settingsOf( index );
    for ( Setting const& setting : settings.settings() ) {
        if ( !setting.attribute->announces ) {
            setting.attribute->write( host, setting.value );
        }
    }
    forEachGroup( spec, host, goOn, [&]( GroupSpec const& group, Zornet::IpAddr const& addr ) {
        groupRecordIs( group, addr, host );
    } );
}

void
startHost( HostSpec const& spec, IgmpHost& host, U32 step, GoOn const& goOn ) {
    host.configVersionIs( generation( spec, IgmpHost::attrConfigVersion, host.configVersion(), step ) );
    host.intfConfigVersionIs(
        generation( spec, IgmpHost::attrIntfConfigVersion, host.intfConfigVersion(), step )
    );
    bool const disabled =
        spec.settings.find( IgmpHost::attrEnabled ) && !spec.settings.value<bool>( IgmpHost::attrEnabled );
    host.enabledIs( !disabled );
    repeatInterval( spec, host );
    forEachGroup( spec, host, goOn, [&]( GroupSpec const&, Zornet::IpAddr const& addr ) {
        if ( auto const record = host.v3group( addr ) ) { // a template may have deleted it
            record->versionIs( nextGeneration( record->version(), step ) );
        }
    } );
}

void
loadHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir, GoOn const& goOn ) {
    forEachStarted( scenario, goOn, [&]( HostSpec const& spec, U32 index, GoOn const& ask ) {
        Kiv::Ptr<IgmpHost> const host = dir.igmpHostIs( spec.hostName( index ) );
        loadHost( spec, index, *host, ask );
    } );
}

void
startHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir, GoOn const& goOn ) {
    forEachStarted( scenario, goOn, [&]( HostSpec const& spec, U32 index, GoOn const& ask ) {
        if ( auto const host = dir.igmpHost( spec.hostName( index ) ) ) {
            startHost( spec, *host, 1, ask );
        }
    } );
}

} // namespace Agent
