#pragma once

#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/Pam.h"
#include "platform/zornet/device/PktQueue.h"

namespace Zornet {

class Device;

/// The access object of a network device. While it is open it is a port of that device, which it shares with
/// every other access object of the process on the same device. It has a receive queue of its own: a frame is
/// queued and then signalled by one step of `readableCount`. When the queue is full the oldest frame goes and
/// counts in `rxErrors`; the signal comes all the same. Closed it hears nothing and has nothing to read, and
/// what it is given to send counts in `txDrops`.
class EthDevPam : public Pam {
  public:
    static constexpr Kiv::AttributeId attrEthProtocol = attrDerived;
    static constexpr Kiv::AttributeId attrCaptureMode = attrDerived + 1;
    static constexpr Kiv::AttributeId attrNs = attrDerived + 2;
    static constexpr Kiv::AttributeId attrDeviceOpen = attrDerived + 3;

    static constexpr U16 everyProtocol = 3;

    explicit EthDevPam( Kiv::String8 const& deviceName );
    ~EthDevPam() override;

    /// Which frames it hears: `everyProtocol`, the default, for all, each in a packet and a buffer of its
    /// own; 0x0800 for those whose Ethernet type says IPv4, hence untagged ones, in packets that it shares
    /// and must not change. Raises RangeException for any other. A change while it is open closes and reopens
    /// it.
    U16 ethProtocol() const { return ethProtocol_; }
    virtual void ethProtocolIs( U16 protocol );

    /// 1 stands for received frames only, which is how a device always works: nobody hears what this process
    /// sends.
    U32 captureMode() const { return captureMode_; }
    virtual void captureModeIs( U32 mode );

    /// The namespace of the device. Takes effect with the next opening.
    NamespaceName const& ns() const { return ns_; }
    virtual void nsIs( NamespaceName const& ns );

    /// Opens or closes. A device that is missing or down is waited for. Frames given to send before the
    /// closing leave all the same.
    bool deviceOpen() const { return device_ != nullptr; }
    virtual void deviceOpenIs( bool open );
    /// The device, while open.
    Kiv::Ptr<Device> const& device() const { return device_; }

    void doGetRxPkt() override;
    void txPktIs( Kiv::Ptr<Pkt> const& pkt ) override;

  private:
    friend class Device;

    U64 portNumber() const { return portNumber_; }
    void portNumberIs( U64 number ) { portNumber_ = number; }
    /// Queues and signals a packet. A null one stands for a frame for which there was no packet.
    void receive( Kiv::Ptr<Pkt> const& pkt );

    void close();

    U16 ethProtocol_ = everyProtocol;
    U32 captureMode_ = 1;
    NamespaceName ns_;
    Kiv::Ptr<Device> device_;
    U64 portNumber_ = 0; ///< at the device, while open
    PktQueue queue_;
};

/// A new, closed access object of the device of that name.
Kiv::Ptr<EthDevPam> EthDevPamIs( Kiv::String8 const& deviceName );

} // namespace Zornet
