/// The directory of shared devices: one multiplexer and one count of users for each interface.

#include "engine/IgmpHostDirSm.h"

namespace Igmp {

Ptr<Zornet::VlanPamMultiplexer>
IgmpHostDirSm::KivMultiplexerDir::
    multiplexerDirIs( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& interface ) {
    if ( !multiplexer || !( multiplexer->intf() == interface ) ) {
        multiplexer = Zornet::VlanPamMultiplexer::VlanPamMultiplexerIs( activity, interface );
    }
    return multiplexer;
}

Ptr<Zornet::VlanPamMultiplexer>
IgmpHostDirSm::multiplexerDir( Zornet::IntfId const& intf ) const {
    KivMultiplexerDir const* const member = multiplexerDir_.find( intf );
    return member ? member->multiplexer : nullptr;
}

Ptr<Zornet::VlanPamMultiplexer>
IgmpHostDirSm::newMultiplexerDir( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& intf ) {
    Ptr<KivMultiplexerDir> const member( new KivMultiplexerDir( intf ) );
    multiplexerDir_.insert( member );
    return member->multiplexerDirIs( activity, intf );
}

Ptr<Zornet::VlanPamMultiplexer>
IgmpHostDirSm::multiplexerDirIs( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& intf ) {
    Ptr<Zornet::VlanPamMultiplexer> const present = multiplexerDir( intf );
    return present ? present : newMultiplexerDir( activity, intf );
}

Ptr<Zornet::VlanPamMultiplexer>
IgmpHostDirSm::multiplexerDirDel( Zornet::IntfId const& intf ) {
    Ptr<KivMultiplexerDir> const member = multiplexerDir_.remove( intf );
    return member ? member->multiplexer : nullptr;
}

U16
IgmpHostDirSm::multiplexerRefCount( Zornet::IntfId const& intf ) const {
    KivMultiplexerRefCount const* const member = multiplexerRefCount_.find( intf );
    return member ? member->count : U16{ 0 };
}

void
IgmpHostDirSm::multiplexerRefCountIs( Zornet::IntfId const& intf, U16 count ) {
    if ( KivMultiplexerRefCount* const present = multiplexerRefCount_.find( intf ) ) {
        present->count = count;
    } else {
        multiplexerRefCount_.insert( new KivMultiplexerRefCount( intf, count ) );
    }
}

U16
IgmpHostDirSm::multiplexerRefCountInc( Zornet::IntfId const& intf, U16 by ) {
    auto const count = static_cast<U16>( multiplexerRefCount( intf ) + by );
    multiplexerRefCountIs( intf, count );
    return count;
}

U16
IgmpHostDirSm::multiplexerRefCountDec( Zornet::IntfId const& intf, U16 by ) {
    return multiplexerRefCountInc( intf, static_cast<U16>( -by ) );
}

} // namespace Igmp
