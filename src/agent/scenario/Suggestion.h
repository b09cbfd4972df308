#pragma once

#include <span>
#include <string>
#include <string_view>

namespace Agent {

/// The known word that `word` is most likely a misspelling of; empty where none is near.
std::string_view nearest( std::string_view word, std::span<std::string_view const> known );

/// How to go on after an unknown word: "; did you mean 'X'?" or "; expected one of A, B, C".
std::string suggestion( std::string_view word, std::span<std::string_view const> known );

} // namespace Agent
