#pragma once

#include "platform/zornet/Pkt.h"

namespace Zornet {

// The 802.1Q tag of a frame, of protocol 0x8100, and only the outermost. The frame must stand whole in its
// packet's shared buffer. A tag comes and goes at the front of that buffer: the Ethernet header shifts by 4
// bytes and the payload stays where it is. The packet remains the same object, so nobody else may be reading
// it. A frame too short to hold a tag has none.

/// The VLAN of a tagged frame, 0 to 4095. An untagged frame gives 0 too: it is the same as priority tagged.
U16 vlanIdFromEthPkt( Kiv::Ptr<Pkt> const& pkt );
/// Puts a tag with the low 12 bits of `vlanId` and priority 0 in front of any that the frame has.
void addPktVlanTag( Kiv::Ptr<Pkt>& pkt, U16 vlanId );
/// Takes the tag off; leaves an untagged frame as it is.
void stripPktVlanTag( Kiv::Ptr<Pkt>& pkt );
/// Gives the frame a tag for `vlanId`, or none. A tag that is there already keeps its priority bits.
void fixupPktVlanTag( Kiv::Ptr<Pkt>& pkt, U16 vlanId, bool tag );

} // namespace Zornet
