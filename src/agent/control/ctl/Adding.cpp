#include <sstream>

#include "agent/control/ctl/ChangeReport.h"
#include "agent/control/ctl/Consent.h"
#include "agent/control/ctl/Ctl.h"
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

/// The hosts to add, checked as those of a scenario are.
Scenario
scenarioOf( CtlOptions const& options ) {
    Diagnostics errors;
    std::string const text = textOf( { { "hosts", Json::array( { hostEntry( options ) } ) } } );
    Scenario scenario = readScenarioText( "", text, errors );
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

} // namespace

void
ctlAdd( CtlOptions const& options ) {
    Scenario const scenario = scenarioOf( options );
    Consent consent;
    consent.add( options.host, scenarioWarnings( scenario ).entries() );
    consent.demand( options.isForced );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    if ( !options.isUpdate ) {
        checkAbsent( scenario, client.hostDir() );
    }
    loadHosts( scenario, client.hostDir() );
    startHosts( scenario, client.hostDir() );
    ChangeReport report{
        "added", {}, {}, { "configVersion", "intfConfigVersion", "version of each record" }
    };
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        report.hosts.push_back( client.hostDir().igmpHost( spec.hostName( index ) ) );
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
