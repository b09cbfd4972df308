#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/command/ExitStatus.h"
#include "platform/kiv/Types.h"

namespace Agent {

/// What `igmphost ctl` is told to do; each verb takes of it what is its own.
struct CtlOptions {
    std::string path;             ///< of the control socket
    Kiv::Seconds patience = 30.0; ///< how long the agent may say nothing while something is waited for
    bool isJson = false;
    bool isForced = false;                            ///< sets also what may end the agent's process
    std::string host;                                 ///< a name or a pattern; empty for all hosts
    std::vector<std::string> words;                   ///< attributes, ATTR=VALUE, hosts or groups
    std::optional<std::vector<std::string>> included; ///< sources
    std::optional<std::vector<std::string>> excluded;
    Kiv::U32 count = 1;              ///< of hosts to add
    std::vector<std::string> groups; ///< that added hosts join
    bool isUpdate = false;           ///< added hosts may be there already
    std::optional<Kiv::U64> changes; ///< after which a watch ends
    std::optional<Kiv::Seconds> duration;
};

// The verbs. Each connects, waits for the mirror to stand, and returns when the agent has applied what was
// changed. It raises std::invalid_argument for wrong usage, before anything has begun, and
// std::runtime_error where it fails.

/// A line for each host.
void ctlHosts( CtlOptions const& options );
/// Everything that is known of hosts.
void ctlShow( CtlOptions const& options );
/// Single attributes of hosts or of their status.
void ctlGet( CtlOptions const& options );
/// Sets attributes and raises the generation counters that these need.
void ctlSet( CtlOptions const& options );
void ctlAdd( CtlOptions const& options );
void ctlDelete( CtlOptions const& options );
/// Joins groups, or changes the sources of groups that are joined.
void ctlJoin( CtlOptions const& options );
void ctlLeave( CtlOptions const& options );
/// Tells of each change as it comes.
void ctlWatch( CtlOptions const& options );

/// Does it, tells what goes wrong, and returns how the command ends.
ExitStatus ctl( void ( *verb )( CtlOptions const& ), CtlOptions const& options );

} // namespace Agent
