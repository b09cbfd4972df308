#pragma once

#include <map>

#include "platform/bridging/VlanId.h"
#include "platform/zornet/EthDevPam.h"

namespace Agent {

/// Many VLANs on one device, for those who write and read tags themselves: each VLAN's access object is given
/// the frames that bear its tag, as they are on the wire, so that a frame costs the same however many VLANs
/// there are. What is given to send leaves as it is.
class VlanTrunk {
  public:
    /// The device's reader from now on. It must hear every protocol.
    explicit VlanTrunk( Kiv::Ptr<Zornet::EthDevPam> const& device );
    ~VlanTrunk();
    VlanTrunk( VlanTrunk const& ) = delete;
    VlanTrunk& operator=( VlanTrunk const& ) = delete;

    /// The access object of that VLAN, made on first demand.
    Kiv::Ptr<Zornet::Pam> pam( Bridging::VlanId vlanId );

  private:
    class Reader;
    class VlanPort;

    void handleFrame( Kiv::Ptr<Zornet::Pkt> const& pkt );

    Kiv::Ptr<Zornet::EthDevPam> const device_;
    std::map<Zornet::U16, Kiv::Ptr<VlanPort>> ports_;
    Kiv::Ptr<Reader> reader_;
};

} // namespace Agent
