#pragma once

#include "agent/scenario/HostSelection.h"
#include "agent/scenario/reading/YamlReader.h"

namespace Agent {

/// The schema of what readHostNames() takes.
inline constexpr char hostNamesSchema[] =
    R"({"anyOf":[{"type":["string","integer"],"minLength":1},{"type":"array","items":{"type":["string","integer"],"minLength":1},"minItems":1}]})";

/// Reads the names or patterns of hosts: a text or a list of such. An empty list is an error, for no name at
/// all stands for every host.
std::vector<HostName> readHostNames( YamlReader& yaml, YamlField const& field );

} // namespace Agent
