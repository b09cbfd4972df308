#include "lab/WireDevice.h"

#include "lab/WireSegment.h"
#include "platform/zornet/EthHdr.h"

namespace Lab {

namespace {

std::string
labelOf( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) {
    return ns.empty() ? name.charPtr() : std::string( ns.name().charPtr() ) + "/" + name.charPtr();
}

} // namespace

WireDevice::WireDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name )
    : Device( ns, name, false ), label_( labelOf( ns, name ) ) {}

void
WireDevice::segmentIs( WireSegment* segment ) {
    segment_ = segment;
    runningIs( segment_ && linkUp_ );
}

void
WireDevice::linkUpIs( bool up ) {
    linkUp_ = up;
    runningIs( segment_ && linkUp_ );
}

bool
WireDevice::send( Zornet::EthDevPam const&, std::span<Zornet::U8 const> frame ) {
    if ( !running() || frame.size() < sizeof( Zornet::EthHdr ) ) {
        return false;
    }
    tellSent( frame );
    segment_->transmit( *this, frame );
    return true;
}

bool
WireDevice::receive( std::span<Zornet::U8 const> frame ) {
    if ( running() ) {
        deliver( frame );
    }
    return running();
}

} // namespace Lab
