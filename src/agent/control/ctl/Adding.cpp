#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "agent/control/ctl/ChangeReport.h"
#include "agent/control/ctl/Consent.h"
#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/GenerationStep.h"
#include "agent/control/ctl/TakenAddresses.h"
#include "agent/hosts/HostRegrets.h"
#include "agent/output/AttributeJson.h"
#include "agent/scenario/ScenarioLoader.h"
#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/Warnings.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

/// One entry of a scenario's hosts, as the arguments describe it.
Json
hostEntry( CtlOptions const& options ) {
    Json host = { { "name", options.host }, { "count", options.count } };
    for ( std::string const& word : options.words ) {
        std::size_t const equals = word.find( '=' );
        if ( equals == std::string::npos ) {
            throw std::invalid_argument( "expected ATTR=VALUE, found '" + word + "'" );
        }
        std::string const name = word.substr( 0, equals );
        if ( host.contains( name ) ) {
            throw std::invalid_argument( name + " is given twice" );
        }
        host[name] = word.substr( equals + 1 );
    }
    for ( std::string const& group : options.groups ) {
        Json entry = { { "multicastAddr", group },
                       { "filterMode", options.included ? "include" : "exclude" } };
        if ( auto const& sources = options.included ? options.included : options.excluded ) {
            entry["sources"] = *sources;
        }
        host["groups"].push_back( entry );
    }
    return host;
}

/// A word as a scenario has it, where no number stands in quotes: in quotes only where it has to be.
std::string
wordText( std::string const& word ) {
    auto const isLetterOrDigit = []( char c ) {
        return std::isalnum( static_cast<unsigned char>( c ) ) != 0;
    };
    bool const isPlain = !word.empty() && ( isLetterOrDigit( word[0] ) || word[0] == '.' ) &&
                         std::all_of( word.begin(), word.end(), [&]( char c ) {
                             return isLetterOrDigit( c ) || c == '.' || c == '+' || c == '-';
                         } );
    return isPlain && !YAML::IsNullString( word ) ? word : textOf( word );
}

std::string
entryText( Json const& host ) {
    std::string text;
    for ( auto const& [key, value] : host.items() ) {
        text += ( text.empty() ? "" : ", " ) + textOf( key ) + ": " +
                ( value.is_string() ? wordText( value ) : textOf( value ) );
    }
    return "{" + text + "}";
}

/// The hosts to add, checked as those of a scenario are.
Scenario
scenarioOf( CtlOptions const& options ) {
    Diagnostics errors;
    Scenario scenario =
        readScenarioText( "", "hosts: [ " + entryText( hostEntry( options ) ) + " ]", errors );
    std::string told;
    for ( Diagnostic const& error : errors.entries() ) {
        told += ( told.empty() ? "" : "\nigmphost: error: " ) + error.text;
    }
    if ( !told.empty() ) {
        throw std::invalid_argument( told );
    }
    return scenario;
}

void
checkAbsent( Scenario const& scenario, Igmp::IgmpHostDir const& dir ) {
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        if ( std::string const name = spec.hostName( index ); dir.igmpHost( name ) ) {
            throw std::runtime_error( "host '" + name + "' is there already; --update sets it anew" );
        }
    } );
}

/// What there is to say of new hosts is what a scenario of them would be warned of; a host that is there is
/// judged with all that stays of it.
void
demandConsent( CtlOptions const& options, Scenario const& scenario, Igmp::IgmpHostDir const& dir ) {
    Consent consent;
    bool hasNew = false;
    std::set<Igmp::IgmpHost const*> updated;
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        updated.insert( dir.igmpHost( spec.hostName( index ) ).get() );
    } );
    TakenAddresses const taken( dir, updated );
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        std::string const name = spec.hostName( index );
        Settings const settings = spec.settingsOf( index );
        Kiv::Ptr<Igmp::IgmpHost> const present = dir.igmpHost( name );
        if ( !present ) {
            hasNew = true;
            consent.add( name, taken.regrets( settings ) );
            return;
        }
        consent.add( name, taken.regrets( *present, settings ) );
        HostSpec after = hostSpecOf( *present, settings );
        after.groups.insert( after.groups.end(), spec.groups.begin(), spec.groups.end() );
        consent.add( name, newRegrets( hostSpecOf( *present ), after ) );
    } );
    if ( hasNew ) {
        consent.add( options.host, scenarioWarnings( scenario ).entries() );
    }
    consent.demand( options.isForced );
}

/// The counters that move at the start: those of the host that are not set, and those of its groups.
std::vector<std::string>
raisedFor( HostSpec const& spec ) {
    std::vector<std::string> names;
    for ( Kiv::Attribute const& row : Igmp::IgmpHost::attributes() ) {
        bool const isCounter = row.announces && row.type->form == Kiv::ValueForm::unsignedInteger;
        if ( isCounter && !spec.settings.find( row.id ) ) {
            names.emplace_back( row.name );
        }
    }
    if ( !spec.groups.empty() ) {
        names.emplace_back( "version of each record" );
    }
    return names;
}

} // namespace

void
ctlAdd( CtlOptions const& options ) {
    Scenario const scenario = scenarioOf( options );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    if ( !options.isUpdate ) {
        checkAbsent( scenario, client.hostDir() );
    }
    demandConsent( options, scenario, client.hostDir() );
    loadHosts( scenario, client.hostDir() );
    ChangeReport report{ "added", {}, {}, raisedFor( scenario.hosts.front() ) };
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        auto const host = client.hostDir().igmpHost( spec.hostName( index ) );
        startHost( spec, *host, generationStep() );
        report.hosts.push_back( host );
    } );
    client.settle();
    print( report, options );
}

void
ctlDelete( CtlOptions const& options ) {
    ControlClient client( options.path, options.patience );
    client.synchronise();
    ChangeReport report{ "deleted", {}, {}, {} };
    for ( std::string const& pattern : options.words ) {
        Hosts const hosts = selectedHosts( client, pattern );
        report.hosts.insert( report.hosts.end(), hosts.begin(), hosts.end() );
    }
    for ( auto const& host : report.hosts ) {
        client.hostDir().igmpHostDel( host->name() );
    }
    client.settle();
    print( report, options );
}

} // namespace Agent
