#pragma once

#include <string>
#include <vector>

#include "agent/run/RunOptions.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// What this process may not do although the scenario needs it, with the capability that is missing and how
/// to come by it; empty where nothing is missing.
std::string missingPrivilege( Scenario const& scenario );
/// The same for work on one device, which is in another network namespace or is not.
std::string missingPrivilege( bool entersNamespace );

/// Whether this process has been given the rights of somebody else than who runs it, by a set-uid or set-gid
/// bit of its file: it takes paths and addresses from who runs it, and is not made to be trusted that far.
bool isSetUid();

/// Gives up every capability but those, for the calling thread and the threads that it starts from then on,
/// and for good: nothing that is executed gains any.
void keepCapabilities( std::vector<unsigned> const& kept );

/// What it takes to open devices at any time: those of other namespaces too, or not. Sockets with large
/// buffers take CAP_NET_ADMIN, and are content without.
std::vector<unsigned> deviceCapabilities( bool entersNamespace );
/// What a run takes from its first host on: devices, and the files that it writes at its end, which may be
/// another user's where root runs it.
std::vector<unsigned> runCapabilities( RunOptions const& options, Scenario const& scenario );

} // namespace Agent
