#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

#include "lab/Querier.h"

namespace Agent {

/// A group as the querier knows it: address, filter mode, sources that are forwarded and, in EXCLUDE mode,
/// sources that are not, the version that it is bound to, who reported it last and for how long it still
/// lasts.
nlohmann::ordered_json groupJson( Lab::QuerierGroup const& group );

/// All that the querier has learned and counted.
nlohmann::ordered_json querierJson( Lab::Querier const& querier );

/// The same for a person, a group a line; such as "239.1.1.1  EXCLUDE {}  version 2  last reported
/// by 10.0.0.11".
void printQuerier( std::ostream& out, Lab::Querier const& querier );

/// One line of printQuerier(), without its end.
std::string groupLine( Lab::QuerierGroup const& group );

} // namespace Agent
