#include "agent/control/ControlMounts.h"

namespace Agent {

std::vector<Kiv::Connection::Mount>
controlMounts( Kiv::Ptr<Igmp::IgmpHostDir> const& hosts, Kiv::Ptr<Igmp::IgmpHostStatusDir> const& status ) {
    return { { "igmpHostDir", hosts, true }, { "igmpHostStatusDir", status, false } };
}

} // namespace Agent
