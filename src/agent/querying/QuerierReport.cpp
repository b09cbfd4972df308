#include "agent/querying/QuerierReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "agent/output/Grouped.h"
#include "agent/querying/Membership.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

std::string
textOf( Zornet::IpAddr const& addr ) {
    return std::string( valueToStrep( addr ).view() );
}

Json
sourcesJson( Lab::SourceSet const& sources ) {
    Json list = Json::array();
    for ( Zornet::IpAddr const& source : sources ) {
        list.push_back( textOf( source ) );
    }
    return list;
}

Json
countersJson( Lab::QuerierCounters const& counters ) {
    return {
        { "generalQueriesSent", counters.generalQueriesSent },
        { "groupQueriesSent", counters.groupQueriesSent },
        { "groupSourceQueriesSent", counters.groupSourceQueriesSent },
        { "v1Reports", counters.v1Reports },
        { "v2Reports", counters.v2Reports },
        { "v2Leaves", counters.v2Leaves },
        { "v3Reports", counters.v3Reports },
        { "messagesNotUnderstood", counters.messagesNotUnderstood },
        { "malformed", counters.malformed() },
        { "misaddressed", counters.misaddressed },
        { "wrongTtls", counters.wrongTtls },
        { "withoutRouterAlert", counters.withoutRouterAlert },
    };
}

} // namespace

Json
groupJson( Lab::QuerierGroup const& group ) {
    bool const excludes = group.filterMode() == Lab::FilterMode::exclude;
    Json json{
        { "group", textOf( group.group() ) },
        { "filterMode", excludes ? "exclude" : "include" },
        { "sources", sourcesJson( group.requestedSources() ) },
    };
    if ( excludes ) {
        json["excludedSources"] = sourcesJson( group.excludedSources() );
    }
    json["igmpVersion"] = group.compatibilityVersion();
    json["lastReporter"] = textOf( group.lastReporter() );
    if ( excludes ) {
        json["remaining"] = group.groupTimerRemaining();
    }
    return json;
}

Json
querierJson( Lab::Querier const& querier ) {
    Json groups = Json::array();
    for ( Zornet::IpAddr const& group : querier.groups() ) {
        groups.push_back( groupJson( *querier.group( group ) ) );
    }
    return {
        { "querier", textOf( querier.querierAddr() ) },     { "isQuerier", querier.isQuerier() },
        { "igmpVersion", querier.config().version },        { "groups", std::move( groups ) },
        { "counters", countersJson( querier.counters() ) },
    };
}

std::string
groupLine( Lab::QuerierGroup const& group ) {
    bool const excludes = group.filterMode() == Lab::FilterMode::exclude;
    std::ostringstream line;
    line << group.group() << "  "
         << Want{ group.filterMode(), excludes ? group.excludedSources() : group.requestedSources() }
         << "  version " << +group.compatibilityVersion() << "  last reported by " << group.lastReporter();
    return line.str();
}

void
printQuerier( std::ostream& out, Lab::Querier const& querier ) {
    for ( Zornet::IpAddr const& group : querier.groups() ) {
        out << groupLine( *querier.group( group ) ) << '\n';
    }
    Lab::QuerierCounters const& counters = querier.counters();
    Kiv::U64 const asked =
        counters.generalQueriesSent + counters.groupQueriesSent + counters.groupSourceQueriesSent;
    out << counted( querier.groupCount(), "group" ) << "; asked " << counted( asked, "time" ) << ", heard "
        << counted( counters.v1Reports + counters.v2Reports + counters.v3Reports, "report" ) << " and "
        << counted( counters.v2Leaves, "leave" );
    if ( counters.malformed() != 0 ) {
        out << ", " << grouped( counters.malformed() ) << " malformed";
    }
    out << std::endl;
}

} // namespace Agent
