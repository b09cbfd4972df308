#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/IgmpHostDir.h"

namespace Agent {

/// What makes a text a pattern of the shell rather than a name: each of these characters.
inline constexpr char patternCharacters[] = "*?[\\";
bool isPattern( std::string_view text );
/// Whether `name` fits the pattern; a pattern without such characters fits the name that it is.
bool fits( std::string const& name, std::string const& pattern );

/// True where `a` comes before `b` to a reader: numbers within names count as numbers, so rx-2 before rx-10.
bool comesBefore( std::string const& a, std::string const& b );

/// The host of that name, or else those that fit the pattern, in a reader's order.
std::vector<Kiv::Ptr<Igmp::IgmpHost>> hostsOf( Igmp::IgmpHostDir const& dir, std::string const& pattern );

} // namespace Agent
