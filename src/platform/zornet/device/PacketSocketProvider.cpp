#include "platform/zornet/device/PacketSocketProvider.h"

#include <vector>

#include "platform/zornet/device/PacketSocketDevice.h"

namespace Zornet {

PacketSocketProvider::PacketSocketProvider() : activity_( Kiv::defaultActivity() ) {}
PacketSocketProvider::~PacketSocketProvider() = default;

Kiv::Ptr<Device>
PacketSocketProvider::newDevice( NamespaceName const& ns, Kiv::String8 const& name ) {
    return new PacketSocketDevice( ns, name, links( ns ), activity_ );
}

Kiv::Ptr<LinkMonitor>
PacketSocketProvider::links( NamespaceName const& ns ) {
    Kiv::Ptr<LinkMonitor>& links = links_[ns.name()];
    if ( !links ) {
        links = new LinkMonitor( ns, activity_ );
    }
    if ( !ns.empty() && !namespaces_ ) {
        namespaces_ = std::make_unique<NamespaceMonitor>( activity_, [this] { handleNamespaces(); } );
    }
    return links;
}

void
PacketSocketProvider::handleNamespaces() {
    std::vector<Kiv::Ptr<LinkMonitor>> monitors; // more may come meanwhile
    for ( auto const& [name, links] : links_ ) {
        if ( !name.empty() ) {
            monitors.push_back( links );
        }
    }
    for ( auto const& links : monitors ) {
        links->handleNamespaces();
    }
}

} // namespace Zornet
