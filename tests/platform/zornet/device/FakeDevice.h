#pragma once

#include <functional>
#include <vector>

#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/device/DeviceProvider.h"

namespace Zornet {

using Frame = std::vector<U8>;

inline Frame
bytesOf( Pkt const& pkt ) {
    Frame frame( pkt.bytes() );
    pkt.copyTo( frame.data() );
    return frame;
}

/// A frame of that Ethernet type whose payload is one byte, `mark`.
inline Frame
frameOf( U16 type, U8 mark = 0 ) {
    Frame frame( sizeof( EthHdr ) + 1 );
    reinterpret_cast<EthHdr*>( frame.data() )->typeOrLenIs( type );
    frame.back() = mark;
    return frame;
}

/// A device without a wire: keeps what it is given to send and hears what the test says.
class FakeDevice : public Device {
  public:
    FakeDevice( NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {}

    bool send( EthDevPam const&, std::span<U8 const> frame ) override {
        if ( takes ) {
            sent.emplace_back( frame.begin(), frame.end() );
        }
        return takes;
    }
    void hear( Frame const& frame ) { deliver( frame ); }
    using Device::port;
    using Device::portNumber;
    using Device::runningIs;
    using Device::rxErrorsInc;

    bool takes = true;
    std::vector<Frame> sent;
    int firstPorts = 0;
    int noPorts = 0;

  protected:
    void handleFirstPort() override { ++firstPorts; }
    void handleNoPort() override { ++noPorts; }
};

class FakeProvider : public DeviceProvider {
  protected:
    Kiv::Ptr<Device> newDevice( NamespaceName const& ns, Kiv::String8 const& name ) override {
        return new FakeDevice( ns, name );
    }
};

/// A reactor that does at each signal what the test says, by default reads one packet.
class PamReader : public Pam::Notifiee {
  public:
    explicit PamReader( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }

    void onReadableCount() override {
        ++signals;
        onSignal();
    }
    void read() {
        if ( auto const pkt = notifier()->rxPkt() ) {
            pkts.push_back( pkt );
        }
    }

    std::function<void()> onSignal = [this] { read(); };
    unsigned signals = 0;
    std::vector<Kiv::Ptr<Pkt>> pkts;
};

} // namespace Zornet
