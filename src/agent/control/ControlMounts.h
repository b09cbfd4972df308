#pragma once

#include "model/IgmpHostDir.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/kiv/Connection.h"

namespace Agent {

/// What an agent serves to its controllers, by the names that both know: the hosts, which they may change,
/// and their status, which they may only look at.
std::vector<Kiv::Connection::Mount>
controlMounts( Kiv::Ptr<Igmp::IgmpHostDir> const& hosts, Kiv::Ptr<Igmp::IgmpHostStatusDir> const& status );

} // namespace Agent
