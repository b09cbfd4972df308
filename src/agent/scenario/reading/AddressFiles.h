#pragma once

#include <map>
#include <optional>
#include <string>

#include "agent/scenario/AddressList.h"

namespace Agent {

/// The most addresses that one entry of a scenario may name.
inline constexpr U32 mostAddresses = 1'000'000;

/// Files of addresses: a line holds one address or range, '#' begins a comment. Each is read once, however
/// many entries name it.
class AddressFiles {
  public:
    /// `files` are those of the scenario, which errors refer to.
    AddressFiles( std::vector<std::string>& files, Diagnostics& errors )
        : files_( files ), errors_( errors ) {}

    /// What is in the file at `path`, which the place `from` names. None where that is told as an error.
    std::optional<AddressList> addresses( std::string const& path, Position const& from );

  private:
    std::optional<AddressList> read( std::string const& path, Position const& from );
    std::vector<AddressBlock> blocksIn( std::string const& text, std::size_t file );

    std::vector<std::string>& files_;
    Diagnostics& errors_;
    std::map<std::string, std::optional<AddressList>> read_;
};

} // namespace Agent
