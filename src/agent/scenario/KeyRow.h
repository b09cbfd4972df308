#pragma once

#include <string_view>

namespace Agent {

/// A key that a map of a scenario has beside the attributes of a class: for its reader, and for whatever
/// explains it to users.
struct KeyRow {
    std::string_view name;
    char const* help;   ///< one line: meaning, unit, range
    char const* schema; ///< of the value, as the text of a JSON Schema
    bool isRequired = false;
};

} // namespace Agent
