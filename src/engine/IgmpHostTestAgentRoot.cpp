#include "engine/IgmpHostTestAgentRoot.h"

namespace Igmp {

namespace {

using Root = IgmpHostTestAgentRoot;

constexpr Kiv::Attribute table[] = {
    Kiv::pointerAttribute<&Root::igmpHostDir, &Root::igmpHostDirIs>(
        Root::attrIgmpHostDir, "igmpHostDir", "Igmp::IgmpHostDir"
    ),
    Kiv::pointerAttribute<&Root::igmpHostStatusDir, &Root::igmpHostStatusDirIs>(
        Root::attrIgmpHostStatusDir, "igmpHostStatusDir", "Igmp::IgmpHostStatusDir"
    ),
    Kiv::pointerAttribute<&Root::igmpHostDirSm, &Root::igmpHostDirSmIs>(
        Root::attrIgmpHostDirSm, "igmpHostDirSm", "Igmp::IgmpHostDirSm"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

std::span<Kiv::Attribute const>
IgmpHostTestAgentRoot::attributes() {
    return table;
}

Ptr<IgmpHostTestAgentRoot>
igmpHostTestAgentRootFactory( Kiv::Name const& name ) {
    return new IgmpHostTestAgentRoot( name );
}

} // namespace Igmp
