#include "platform/zornet/device/Device.h"

#include "platform/kiv/Clock.h"
#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/PktManager.h"
#include "platform/zornet/device/FrameTap.h"

namespace Zornet {

namespace {

bool
isIpv4( std::span<U8 const> frame ) {
    return frame.size() >= sizeof( EthHdr ) &&
           reinterpret_cast<EthHdr const*>( frame.data() )->typeOrLen() == ethTypeIp;
}

} // namespace

void
Device::portIs( EthDevPam& port ) {
    bool const first = ports() == 0;
    port.portNumberIs( ++lastPortNumber_ );
    listOf( port ).insert( port, lastPortNumber_ );
    if ( first ) {
        handleFirstPort();
    }
    if ( !running_ ) {
        port.txErrorsInc( 1 );
        port.rxErrorsInc( 1 );
    }
}

void
Device::portDel( EthDevPam& port ) {
    listOf( port ).remove( port.portNumber() );
    if ( ports() == 0 ) {
        handleNoPort();
    }
}

void
Device::deliver( std::span<U8 const> frame ) {
    Kiv::Ptr<Device> const self( this );
    Kiv::MomentScope const arrival; // to be heard by the last of many hosts takes its time
    if ( FrameTap* const tap = frameTap() ) {
        tap->handleReceived( *this, frame );
    }
    PortList::Walk everyFrame( everyFrame_ );
    PortList::Walk ipv4Only( ipv4Only_ );
    while ( auto const port = everyFrame.next() ) {
        port->receive( pktWithBytes( frame ) );
    }
    if ( ipv4Only_.empty() || !isIpv4( frame ) ) {
        return;
    }
    Kiv::Ptr<Pkt> const shared = pktWithBytes( frame );
    while ( auto const port = ipv4Only.next() ) {
        port->receive( shared );
    }
}

void
Device::runningIs( bool running ) {
    if ( running_ == running ) {
        return;
    }
    running_ = running;
    if ( !running ) {
        countOnPorts( 1, 1 );
    }
}

void
Device::rxErrorsInc( U32 frames ) {
    if ( FrameTap* const tap = frameTap() ) {
        tap->handleReceiveLosses( *this, frames );
    }
    countOnPorts( frames, 0 );
}

void
Device::tellSent( std::span<U8 const> frame ) const {
    if ( FrameTap* const tap = frameTap() ) {
        tap->handleSent( *this, frame );
    }
}

void
Device::tellSendLosses( U64 frames ) const {
    if ( FrameTap* const tap = frameTap(); tap && frames != 0 ) {
        tap->handleSendLosses( *this, frames );
    }
}

void
Device::countOnPorts( U32 rxErrors, U32 txErrors ) {
    Kiv::Ptr<Device> const self( this );
    for ( PortList* list : { &everyFrame_, &ipv4Only_ } ) {
        PortList::Walk walk( *list );
        while ( auto const port = walk.next() ) {
            port->rxErrorsInc( rxErrors );
            port->txErrorsInc( txErrors );
        }
    }
}

U64
Device::portNumber( EthDevPam const& port ) {
    return port.portNumber();
}

Kiv::Ptr<EthDevPam>
Device::port( U64 number ) const {
    EthDevPam* const port = everyFrame_.find( number );
    return port ? port : ipv4Only_.find( number );
}

PortList&
Device::listOf( EthDevPam const& port ) {
    return port.ethProtocol() == ethTypeIp ? ipv4Only_ : everyFrame_;
}

} // namespace Zornet
