#pragma once

#include <iosfwd>

#include "agent/querying/Membership.h"

namespace Agent {

/// Tells what a querier learns and forgets, a line for each group that has changed since the last look: "+"
/// for a new group, "~" for one of which something else is wanted now, "-" for one that has ended. As JSON a
/// line is an object with `time`, `event` ("learned", "changed", "ended") and what groupJson() has.
class MembershipLog {
  public:
    MembershipLog( std::ostream& out, Lab::Querier const& querier, bool json )
        : out_( out ), querier_( querier ), json_( json ), querierAddr_( querier.querierAddr() ) {}

    void look();

  private:
    void lookAtQuerier();
    void tell( char mark, char const* event, Zornet::IpAddr const& group );

    std::ostream& out_;
    Lab::Querier const& querier_;
    bool const json_;
    Zornet::IpAddr querierAddr_;
    Membership known_;
};

} // namespace Agent
