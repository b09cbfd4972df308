#include <algorithm>
#include <set>

#include "agent/control/ctl/ChangeReport.h"
#include "agent/control/ctl/Consent.h"
#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/GenerationStep.h"
#include "agent/control/ctl/TakenAddresses.h"
#include "agent/hosts/Generations.h"
#include "agent/hosts/HostRegrets.h"
#include "agent/scenario/Suggestion.h"
#include "agent/scenario/ValueText.h"
#include "agent/scenario/reading/SettingReader.h"

namespace Agent {

using Igmp::IgmpHost;

namespace {

/// What a scenario can set of a host can be set of a running one.
Kiv::Attribute const&
settableRow( std::string const& name ) {
    std::vector<std::string_view> known;
    for ( Kiv::Attribute const* const candidate : settableHostAttributes() ) {
        if ( name == candidate->name ) {
            return *candidate;
        }
        known.emplace_back( candidate->name );
    }
    throw std::invalid_argument(
        "a host has no attribute '" + name + "' that can be set" + suggestion( name, known )
    );
}

Setting
settingOf( std::string const& word ) {
    std::size_t const equals = word.find( '=' );
    if ( equals == std::string::npos ) {
        throw std::invalid_argument( "expected ATTR=VALUE, found '" + word + "'" );
    }
    Kiv::Attribute const& row = settableRow( word.substr( 0, equals ) );
    try {
        return { &row, valueOf( *row.type, std::string_view( word ).substr( equals + 1 ) ), {} };
    } catch ( Kiv::RangeException const& fault ) {
        throw std::invalid_argument( std::string( row.name ) + ": " + fault.what() );
    }
}

Settings
settingsOf( std::vector<std::string> const& words ) {
    Settings settings( IgmpHost::attributes() );
    for ( std::string const& word : words ) {
        Setting const setting = settingOf( word );
        if ( settings.find( setting.attribute->id ) ) {
            throw std::invalid_argument( std::string( setting.attribute->name ) + " is given twice" );
        }
        settings.settingIs( setting );
    }
    return settings;
}

/// Of what single hosts cannot be warned.
std::vector<Diagnostic>
sharedRegrets( Hosts const& hosts, Settings const& changes ) {
    std::vector<Diagnostic> regrets;
    for ( Kiv::AttributeId const id : { IgmpHost::attrIpAddr, IgmpHost::attrMacAddr } ) {
        if ( Setting const* const setting = changes.find( id ); setting && hosts.size() > 1 ) {
            regrets.push_back( { {}, std::string( setting->attribute->name ) + ": all get the same address" }
            );
        }
    }
    return regrets;
}

Consent
judge( Igmp::IgmpHostDir const& dir, Hosts const& hosts, Settings const& changes ) {
    std::set<IgmpHost const*> changing;
    for ( auto const& host : hosts ) {
        changing.insert( host.get() );
    }
    TakenAddresses const taken( dir, changing );
    Consent consent;
    for ( auto const& host : hosts ) {
        std::string const name = host->name().charPtr();
        consent.add( name, newRegrets( hostSpecOf( *host ), hostSpecOf( *host, changes ) ) );
        consent.add( name, taken.regrets( *host, changes ) );
    }
    consent.add( told( hosts ), sharedRegrets( hosts, changes ) );
    return consent;
}

std::vector<std::string>
namesOf( std::vector<Kiv::Attribute const*> const& rows ) {
    std::vector<std::string> names;
    for ( Kiv::Attribute const* const row : rows ) {
        names.emplace_back( row->name );
    }
    return names;
}

} // namespace

void
ctlSet( CtlOptions const& options ) {
    Settings const changes = settingsOf( options.words );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    ChangeReport report{ "set", {}, selectedHosts( client, options.host ), {} };
    judge( client.hostDir(), report.hosts, changes ).demand( options.isForced );
    Kiv::U32 const step = generationStep();
    for ( auto const& host : report.hosts ) {
        report.raised = namesOf( setHost( *host, changes, step ) );
    }
    for ( Setting const& setting : changes.settings() ) {
        report.objects.push_back(
            std::string( setting.attribute->name ) + "=" + setting.attribute->type->format( setting.value )
        );
    }
    client.settle();
    print( report, options );
}

} // namespace Agent
