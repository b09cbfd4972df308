#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// A record's header and one source: less room than that behind the headers ends the process.
inline constexpr U32 leastRoom = 12;
inline constexpr U32 greatestMtu = 65535;

/// Bytes of a version 3 report of the host before its first record.
U32 headerBytes( HostSpec const& spec );

/// Bytes of a record with that many sources.
U64 recordBytes( U64 sources );

} // namespace Agent
