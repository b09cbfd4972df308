#pragma once

#include "agent/control/ControlClient.h"
#include "agent/output/AttributeJson.h"

namespace Agent {

/// A host's groups and a record's sources, by address.
std::vector<Kiv::Ptr<Igmp::IgmpV3GroupRecord>> groupsOf( Igmp::IgmpHost const& host );
std::vector<std::string> sourcesOf( Igmp::IgmpV3GroupRecord const& record );
/// With a comma and a blank between them.
std::string joined( std::vector<std::string> const& texts );

/// Everything that is known of a host: its attributes, its groups with their sources, and its status, which
/// is null where the host is not enabled.
nlohmann::ordered_json hostJson( ControlClient const& client, Igmp::IgmpHost const& host );
/// The same for a reader, several lines.
void printHost( ControlClient const& client, Igmp::IgmpHost const& host );

} // namespace Agent
