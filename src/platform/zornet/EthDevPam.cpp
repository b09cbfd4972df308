#include "platform/zornet/EthDevPam.h"

#include <span>
#include <utility>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/device/DeviceProvider.h"

namespace Zornet {

EthDevPam::EthDevPam( Kiv::String8 const& deviceName ) : Pam( deviceName ) {}

EthDevPam::~EthDevPam() {
    close();
}

Kiv::Ptr<EthDevPam>
EthDevPamIs( Kiv::String8 const& deviceName ) {
    return new EthDevPam( deviceName );
}

void
EthDevPam::ethProtocolIs( U16 protocol ) {
    if ( protocol != everyProtocol && protocol != ethTypeIp ) {
        Kiv::throwRangeException( "EthDevPam::ethProtocol other than 3 and 0x0800 not allowed" );
    }
    if ( protocol == ethProtocol_ ) {
        return;
    }
    bool const wasOpen = deviceOpen();
    deviceOpenIs( false );
    attributeIs( attrEthProtocol, ethProtocol_, protocol );
    deviceOpenIs( wasOpen );
}

void
EthDevPam::captureModeIs( U32 mode ) {
    attributeIs( attrCaptureMode, captureMode_, mode );
}

void
EthDevPam::nsIs( NamespaceName const& ns ) {
    attributeIs( attrNs, ns_, ns );
}

void
EthDevPam::deviceOpenIs( bool open ) {
    if ( open == deviceOpen() ) {
        return;
    }
    if ( open ) {
        Kiv::Ptr<Device> const device = deviceProvider().device( ns_, name().string() );
        device_ = device;
        device->portIs( *this );
    } else {
        close();
    }
    tellOf( attrDeviceOpen );
}

void
EthDevPam::close() {
    if ( Kiv::Ptr<Device> const device = std::exchange( device_, nullptr ) ) {
        queue_.clear();
        device->portDel( *this );
    }
}

void
EthDevPam::receive( Kiv::Ptr<Pkt> const& pkt ) {
    if ( !pkt || !queue_.push( pkt ) ) {
        rxErrorsInc( 1 );
    }
    if ( pkt && deviceOpen() ) {
        readableCountInc( 1 );
    }
}

void
EthDevPam::doGetRxPkt() {
    rxPktHolderIs( queue_.pop() );
}

void
EthDevPam::txPktIs( Kiv::Ptr<Pkt> const& pkt ) {
    bool const taken = device_ && withFrame( *pkt, [this]( std::span<U8 const> frame ) {
                           return device_->send( *this, frame );
                       } );
    if ( !taken ) {
        if ( device_ ) {
            device_->tellSendLosses( 1 );
        }
        txDropsInc( 1 );
    }
}

} // namespace Zornet
