#pragma once

#include <source_location>
#include <string_view>

namespace Consumer {

/// Says where a check failed, and makes the program fail at its end.
void check( bool holds, std::source_location at = std::source_location::current() );
/// Both texts should be the same.
void checkText(
    std::string_view found, std::string_view expected,
    std::source_location at = std::source_location::current()
);

// One function per family of what the library exports.
void useModel();
void useEngine();
void useVlan();

} // namespace Consumer
