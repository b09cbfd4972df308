#pragma once

#include <span>

#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"
#include "platform/kiv/String8.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/device/PortList.h"

namespace Zornet {

class EthDevPam;

/// A network device as this process shares it: one object per namespace and name, with a port for each access
/// object that has it open. A frame is received once and handed to every port that wants it; a port is an
/// EthDevPam between its opening and its closing. Devices are held by strong pointer, from their making on.
class Device : public Kiv::PtrInterface {
  public:
    NamespaceName const& ns() const { return ns_; }
    Kiv::String8 const& name() const { return name_; }
    std::size_t ports() const { return everyFrame_.size() + ipv4Only_.size(); }
    /// False while the device is missing or down. Its ports then hear nothing and lose what they send.
    bool running() const { return running_; }

    /// Opens a port; one that opens on a device which is not running counts an error in either direction.
    void portIs( EthDevPam& port );
    void portDel( EthDevPam& port );

    /// Takes a frame, as it is to stand on the wire, from an open port. The bytes are copied before the call
    /// returns; the frame leaves later, and nothing is delivered to any port inside the call. False means
    /// that it was not taken.
    virtual bool send( EthDevPam const& sender, std::span<U8 const> frame ) = 0;
    /// Frames that were taken and have not left yet.
    virtual std::size_t framesWaiting() const { return 0; }

  protected:
    Device( NamespaceName const& ns, Kiv::String8 const& name, bool running = true )
        : ns_( ns ), name_( name ), running_( running ) {}

    /// Hands a received frame, as it was on the wire and with its tags, to the ports. Those of protocol 3 get
    /// every frame, each in a packet of its own; those of protocol 0x0800 share one packet, of frames that
    /// have this very type. Ports may open, close and vanish meanwhile. The frame's bytes must stay until the
    /// call returns.
    void deliver( std::span<U8 const> frame );
    /// Tells the ports that the device has stopped, with an error in either direction, or that it runs again.
    void runningIs( bool running );
    /// Counts frames lost on the way in, on every port.
    void rxErrorsInc( U32 frames );
    // Tell the tap in force of frames that have left, and of such that were given to send and lost.
    void tellSent( std::span<U8 const> frame ) const;
    void tellSendLosses( U64 frames ) const;
    /// The number by which an open port is found again, once what it sent turns out to be lost.
    static U64 portNumber( EthDevPam const& port );
    /// The port of that number, if it is open still.
    Kiv::Ptr<EthDevPam> port( U64 number ) const;

    /// A first port has opened; the last port has closed.
    virtual void handleFirstPort() {}
    virtual void handleNoPort() {}

  private:
    friend class EthDevPam;

    PortList& listOf( EthDevPam const& port );
    void countOnPorts( U32 rxErrors, U32 txErrors );

    NamespaceName ns_;
    Kiv::String8 name_;
    bool running_;
    U64 lastPortNumber_ = 0;
    PortList everyFrame_;
    PortList ipv4Only_;
};

} // namespace Zornet
