#include "agent/run/Emulation.h"

namespace Agent {

Emulation::Emulation( Kiv::Ptr<Lumo::TimerWheel const> const& wheel )
    : hostDir_( Igmp::igmpHostDirFactory( "hosts" ) ),
      statusDir_( Igmp::igmpHostStatusDirFactory( "status" ) ),
      dirSm_( Igmp::igmpHostDirSmFactory( nullptr, hostDir_, statusDir_, wheel ) ) {}

Emulation::~Emulation() {
    hostDir_->igmpHostDelAll();
}

} // namespace Agent
