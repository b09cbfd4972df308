#include "agent/demo/VlanTrunk.h"

#include <deque>

#include "vlan/VlanTag.h"

namespace Agent {

class VlanTrunk::Reader : public Zornet::Pam::Notifiee {
  public:
    Reader( Kiv::Ptr<Zornet::Pam> const& device, VlanTrunk& trunk ) : Notifiee( device ), trunk_( trunk ) {}

    void onReadableCount() override {
        if ( Kiv::Ptr<Zornet::Pkt> const pkt = notifier()->rxPkt() ) {
            trunk_.handleFrame( pkt );
        }
    }

  private:
    VlanTrunk& trunk_;
};

class VlanTrunk::VlanPort : public Zornet::Pam {
  public:
    VlanPort( Bridging::VlanId vlanId, Kiv::Ptr<Zornet::EthDevPam> const& device )
        : Pam( std::to_string( vlanId.value() ) ), device_( device ) {}

    void receive( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
        received_.push_back( pkt );
        readableCountInc( 1 );
    }
    void doGetRxPkt() override {
        if ( !received_.empty() ) {
            rxPktHolderIs( received_.front() );
            received_.pop_front();
        }
    }
    void txPktIs( Kiv::Ptr<Zornet::Pkt> const& pkt ) override { device_->txPktIs( pkt ); }

  private:
    Kiv::Ptr<Zornet::EthDevPam> const device_;
    std::deque<Kiv::Ptr<Zornet::Pkt>> received_;
};

VlanTrunk::VlanTrunk( Kiv::Ptr<Zornet::EthDevPam> const& device )
    : device_( device ), reader_( new Reader( device, *this ) ) {
    reader_->isRegisteredNotifieeIs( true );
}

VlanTrunk::~VlanTrunk() {
    reader_->isRegisteredNotifieeIs( false );
}

Kiv::Ptr<Zornet::Pam>
VlanTrunk::pam( Bridging::VlanId vlanId ) {
    Kiv::Ptr<VlanPort>& port = ports_[vlanId.value()];
    if ( !port ) {
        port = new VlanPort( vlanId, device_ );
    }
    return port;
}

void
VlanTrunk::handleFrame( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
    auto const port = ports_.find( Zornet::vlanIdFromEthPkt( pkt ) );
    if ( port != ports_.end() ) {
        port->second->receive( pkt );
    }
}

} // namespace Agent
