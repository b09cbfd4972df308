#include "agent/checking/Check.h"

#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "agent/checking/ScenarioSummary.h"
#include "agent/output/Grouped.h"
#include "agent/scenario/CheckedScenario.h"
#include "agent/scenario/WorkProgress.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

std::string
hostsText( ScenarioSummary const& summary, Shard const& shard ) {
    std::string text = grouped( summary.hosts );
    if ( shard.shards != 1 ) {
        text += " of " + grouped( summary.allHosts ) + ", share " + std::to_string( shard.number ) + "/" +
                std::to_string( shard.shards );
    }
    char const* separator = " (";
    for ( std::size_t version = 0; version < summary.hostsOfVersion.size(); ++version ) {
        if ( U64 const hosts = summary.hostsOfVersion.at( version ); hosts != 0 ) {
            text += separator + grouped( hosts ) + " of version " + std::to_string( version );
            separator = ", ";
        }
    }
    return text + ( summary.hosts == 0 ? "" : ")" );
}

std::string
deviceText( DeviceSummary const& device ) {
    std::string text = counted( device.hosts, "host" );
    if ( std::string const vlans = device.vlanRanges(); !vlans.empty() ) {
        text += device.untagged == 0 ? "" : ", " + grouped( device.untagged ) + " of them untagged";
        text += ", VLAN " + vlans;
    }
    return text;
}

void
line( std::ostream& out, char const* name, std::string const& text ) {
    out << std::string( name ) + ":" + std::string( 15 - std::string_view( name ).size(), ' ' ) << text
        << '\n';
}

void
writeText( std::ostream& out, Scenario const& scenario, ScenarioSummary const& summary ) {
    line( out, "hosts", hostsText( summary, scenario.shard ) );
    line( out, "groups", grouped( summary.groups ) + ", in " + counted( summary.memberships, "membership" ) );
    for ( auto const& [device, hosts] : summary.devices ) {
        line(
            out, "device",
            device.name + ( device.ns.empty() ? "" : " in namespace " + device.ns ) + ": " +
                deviceText( hosts )
        );
    }
    if ( !scenario.events.empty() ) {
        line( out, "events", grouped( scenario.events.size() ) );
    }
    if ( !scenario.expectations.empty() ) {
        line( out, "expectations", grouped( scenario.expectations.size() ) );
    }
    if ( scenario.duration ) {
        line( out, "duration", Kiv::ValueTraits<double>::format( *scenario.duration ) + " s" );
    }
    line( out, "first reports", grouped( summary.firstReports ) + " when the hosts start" );
}

Json
jsonOf( Diagnostics const& diagnostics, std::vector<std::string> const& files ) {
    Json list = Json::array();
    for ( Diagnostic const& entry : diagnostics.ordered() ) {
        Json one{ { "file", files.at( entry.at.file ) } };
        if ( entry.at.line != 0 ) {
            one["line"] = entry.at.line;
            one["column"] = entry.at.column;
        }
        one["text"] = entry.text;
        if ( entry.endsProcess ) {
            one["endsProcess"] = true;
        }
        list.push_back( one );
    }
    return list;
}

Json
jsonOf( ScenarioSummary const& summary ) {
    Json versions = Json::object();
    for ( std::size_t version = 0; version < summary.hostsOfVersion.size(); ++version ) {
        versions[std::to_string( version )] = summary.hostsOfVersion.at( version );
    }
    Json devices = Json::array();
    for ( auto const& [device, hosts] : summary.devices ) {
        devices.push_back( { { "device", device.name },
                             { "namespace", device.ns },
                             { "hosts", hosts.hosts },
                             { "untagged", hosts.untagged },
                             { "vlans", hosts.vlanRanges() } } );
    }
    return { { "hosts", summary.hosts },
             { "allHosts", summary.allHosts },
             { "hostsOfVersion", versions },
             { "groups", summary.groups },
             { "memberships", summary.memberships },
             { "devices", devices },
             { "firstReports", summary.firstReports } };
}

void
writeJson( std::ostream& out, CheckedScenario const& checked ) {
    Scenario const& scenario = checked.scenario;
    Json json{ { "files", scenario.files },
               { "errors", jsonOf( checked.errors, scenario.files ) },
               { "warnings", jsonOf( checked.warnings, scenario.files ) } };
    if ( checked.errors.empty() ) {
        json["scenario"] = jsonOf( summaryOf( scenario ) );
        json["scenario"]["events"] = scenario.events.size();
        json["scenario"]["expectations"] = scenario.expectations.size();
        if ( scenario.duration ) {
            json["scenario"]["duration"] = *scenario.duration;
        }
    }
    out << json.dump( 2, ' ', false, Json::error_handler_t::replace ) << '\n';
}

void
tell( CheckedScenario const& checked ) {
    checked.print( std::cerr );
    if ( checked.errors.empty() ) {
        writeText( std::cout, checked.scenario, summaryOf( checked.scenario ) );
    }
}

CheckedScenario
checkedWithProgress( CheckOptions const& options ) {
    std::optional<WorkProgress> progress;
    if ( isatty( STDERR_FILENO ) == 1 ) {
        progress.emplace( std::cerr );
    }
    return checkedScenario( options.scenarioFiles, [&options]( Scenario& scenario ) {
        scenario.shard = options.shard.value_or( scenario.shard );
    } );
}

} // namespace

ExitStatus
check( CheckOptions const& options ) {
    CheckedScenario const checked = checkedWithProgress( options );
    if ( options.json ) {
        writeJson( std::cout, checked );
    } else {
        tell( checked );
    }
    bool const refused = !checked.errors.empty() || ( options.strict && !checked.warnings.empty() );
    return refused ? exitWrongUsage : exitDone;
}

} // namespace Agent
