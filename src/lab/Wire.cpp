#include "lab/Wire.h"

namespace Lab {

using Zornet::NamespaceName;

Wire::Wire( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, Zornet::U64 seed )
    : wheel_( wheel ), random_( seed ) {}

Wire::~Wire() {
    for ( auto const& device : devices_ ) {
        device->segmentIs( nullptr );
    }
}

WireSegment&
Wire::segment( std::string const& name ) {
    std::unique_ptr<WireSegment>& segment = segments_[name];
    if ( !segment ) {
        segment = std::make_unique<WireSegment>( wheel_, random_ );
    }
    return *segment;
}

Kiv::Ptr<Zornet::Device>
Wire::newDevice( NamespaceName const& ns, Kiv::String8 const& name ) {
    Kiv::Ptr<WireDevice> const device( new WireDevice( ns, name ) );
    devices_.push_back( device );
    if ( defaultSegment_ ) {
        segment( *defaultSegment_ ).deviceIs( *device );
    }
    return device;
}

WireDevice&
Wire::wireDevice( NamespaceName const& ns, Kiv::String8 const& name ) {
    return static_cast<WireDevice&>( *device( ns, name ) );
}

void
Wire::attach( NamespaceName const& ns, Kiv::String8 const& device, std::string const& name ) {
    detach( ns, device );
    segment( name ).deviceIs( wireDevice( ns, device ) );
}

void
Wire::detach( NamespaceName const& ns, Kiv::String8 const& device ) {
    WireDevice& present = wireDevice( ns, device );
    if ( present.segment() ) {
        present.segment()->deviceDel( present );
    }
}

void
Wire::linkUpIs( NamespaceName const& ns, Kiv::String8 const& device, bool up ) {
    wireDevice( ns, device ).linkUpIs( up );
}

} // namespace Lab
