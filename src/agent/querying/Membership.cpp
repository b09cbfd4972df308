#include "agent/querying/Membership.h"

#include <ostream>
#include <sstream>

namespace Agent {

using Igmp::IgmpV3GroupRecord;
using Lab::FilterMode;
using Lab::SourceSet;
using Zornet::IpAddr;

namespace {

SourceSet
sourcesOf( IgmpV3GroupRecord const& record ) {
    std::vector<IpAddr> sources;
    if ( record.source() ) {
        for ( auto const& source : record.source()->sourceIp() ) {
            sources.push_back( source.key );
        }
    }
    return SourceSet( sources );
}

Want
wantOf( IgmpV3GroupRecord const& record, Igmp::IgmpVersion version ) {
    if ( version != Igmp::igmpVersion3 ) {
        return { FilterMode::exclude, {} };
    }
    bool const includes = record.filterMode() == IgmpV3GroupRecord::include;
    return { includes ? FilterMode::include : FilterMode::exclude, sourcesOf( record ) };
}

std::string
textOf( Membership const& membership, IpAddr const& group ) {
    auto const at = membership.find( group );
    if ( at == membership.end() ) {
        return "nothing";
    }
    std::ostringstream text;
    text << at->second;
    return text.str();
}

bool
agree( Membership const& a, Membership const& b, IpAddr const& group ) {
    auto const inA = a.find( group );
    auto const inB = b.find( group );
    return inA != a.end() && inB != b.end() && inA->second == inB->second;
}

} // namespace

Want
operator+( Want const& a, Want const& b ) {
    if ( a.mode == FilterMode::include && b.mode == FilterMode::include ) {
        return { FilterMode::include, a.sources + b.sources };
    }
    if ( a.mode == FilterMode::exclude && b.mode == FilterMode::exclude ) {
        return { FilterMode::exclude, a.sources * b.sources };
    }
    Want const& included = a.mode == FilterMode::include ? a : b;
    Want const& excluded = a.mode == FilterMode::include ? b : a;
    return { FilterMode::exclude, excluded.sources - included.sources };
}

std::ostream&
operator<<( std::ostream& out, Want const& want ) {
    return out << ( want.mode == FilterMode::include ? "INCLUDE " : "EXCLUDE " ) << want.sources;
}

void
addWanted( Igmp::IgmpHost const& host, Membership& membership ) {
    for ( IgmpV3GroupRecord& record : host.v3group() ) {
        if ( !Igmp::groupIsJoined( &record ) ) {
            continue;
        }
        Want const want = wantOf( record, host.igmpVersion() );
        auto const [at, isNew] = membership.emplace( record.multicastAddr(), want );
        if ( !isNew ) {
            at->second = at->second + want;
        }
    }
}

Membership
learnedMembership( Lab::Querier const& querier ) {
    Membership membership;
    for ( IpAddr const& group : querier.groups() ) {
        Lab::QuerierGroup const& state = *querier.group( group );
        bool const includes = state.filterMode() == FilterMode::include;
        membership[group] = { state.filterMode(),
                              includes ? state.requestedSources() : state.excludedSources() };
    }
    return membership;
}

std::vector<std::string>
differences( Membership const& configured, Membership const& learned ) {
    Membership both = configured;
    both.insert( learned.begin(), learned.end() );
    std::vector<std::string> texts;
    for ( auto const& [group, want] : both ) {
        if ( !agree( configured, learned, group ) ) {
            std::ostringstream text;
            text << group << ": configured is " << textOf( configured, group ) << ", learned is "
                 << textOf( learned, group );
            texts.push_back( text.str() );
        }
    }
    return texts;
}

} // namespace Agent
