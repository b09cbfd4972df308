#include "agent/querying/MembershipLog.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/output/WallTime.h"
#include "agent/querying/QuerierReport.h"

namespace Agent {

using Zornet::IpAddr;

void
MembershipLog::look() {
    lookAtQuerier();
    Membership const now = learnedMembership( querier_ );
    for ( auto const& [group, want] : known_ ) {
        if ( !now.contains( group ) ) {
            tell( '-', "ended", group );
        }
    }
    for ( auto const& [group, want] : now ) {
        auto const before = known_.find( group );
        if ( before == known_.end() ) {
            tell( '+', "learned", group );
        } else if ( before->second != want ) {
            tell( '~', "changed", group );
        }
    }
    known_ = now;
}

void
MembershipLog::lookAtQuerier() {
    if ( querier_.querierAddr() == querierAddr_ ) {
        return;
    }
    querierAddr_ = querier_.querierAddr();
    if ( json_ ) {
        nlohmann::ordered_json const line{ { "time", Kiv::now() },
                                           { "event", "querier" },
                                           { "querier", valueToStrep( querierAddr_ ).charPtr() },
                                           { "isQuerier", querier_.isQuerier() } };
        out_ << line.dump() << std::endl;
    } else {
        out_ << wallTime( Kiv::now() ) << " ! " << querierAddr_ << " is the querier" << std::endl;
    }
}

void
MembershipLog::tell( char mark, char const* event, IpAddr const& group ) {
    Lab::QuerierGroup const* const state = querier_.group( group );
    if ( json_ ) {
        nlohmann::ordered_json line{ { "time", Kiv::now() }, { "event", event } };
        line.update(
            state ? groupJson( *state )
                  : nlohmann::ordered_json{ { "group", valueToStrep( group ).charPtr() } }
        );
        out_ << line.dump() << std::endl;
    } else {
        out_ << wallTime( Kiv::now() ) << ' ' << mark << ' ';
        if ( state ) {
            out_ << groupLine( *state ) << std::endl;
        } else {
            out_ << group << std::endl;
        }
    }
}

} // namespace Agent
