#include "engine/IgmpHostConfigHelper.h"

#include "engine/GroupReplication.h"

namespace Igmp {

void
IgmpHostConfigHelper::replicateGroup( Zornet::IpAddr group ) {
    replicateGroupOver( igmpHost_, group );
}

Ptr<IgmpHostConfigHelper>
igmpHostConfigHelperFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& igmpHost
) {
    return Kiv::stateMachineIs<IgmpHostConfigHelper>( activity, name, igmpHost );
}

} // namespace Igmp
