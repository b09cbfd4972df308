/// The VLAN classes and the tag functions.

#include <array>

#include "Check.h"
#include "platform/zornet/PktManager.h"
#include "vlan/VlanTaggingPam.h"

namespace Consumer {

using namespace Zornet;
using Kiv::Ptr;

namespace {

constexpr U16 vlan = 100;

Ptr<Pkt>
frame() {
    std::array<U8, 60> bytes{};
    bytes[12] = 0x08;
    return pktWithBytes( bytes );
}

/// Keeps what it is given to send.
class KeepingPam : public Pam {
  public:
    KeepingPam() : Pam( "keeping" ) {}
    void txPktIs( Ptr<Pkt> const& pkt ) override { sent = pkt; }

    Ptr<Pkt> sent;
};

void
useTagFunctions() {
    Ptr<Pkt> pkt = frame();
    check( vlanIdFromEthPkt( pkt ) == 0 );
    addPktVlanTag( pkt, vlan );
    check( vlanIdFromEthPkt( pkt ) == vlan && pkt->bytes() == 64 );
    fixupPktVlanTag( pkt, vlan + 1, true );
    check( vlanIdFromEthPkt( pkt ) == vlan + 1 );
    stripPktVlanTag( pkt );
    check( vlanIdFromEthPkt( pkt ) == 0 && pkt->bytes() == 60 );
}

void
useTaggingPam() {
    Ptr<KeepingPam> const device( new KeepingPam );
    Ptr<VlanTaggingPam> const tagging( new VlanTaggingPam( "tagging", vlan, device ) );
    tagging->txPktIs( frame() );
    check( device->sent && vlanIdFromEthPkt( device->sent ) == vlan );
    check( tagging->sm()->outerPam() == tagging );
    tagging->smDel();
}

void
useMultiplexer() {
    Ptr<KeepingPam> const device( new KeepingPam );
    IntfId const trunk( "trunk" );
    auto const multiplexer = VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, trunk );
    multiplexer->innerPamIs( device );
    auto const channel = vlanPamFactory( "100", multiplexer );
    multiplexer->vlanPamIs( channel );
    channel->txPktIs( frame() );
    check( device->sent && vlanIdFromEthPkt( device->sent ) == vlan );
    multiplexer->vlanPamDelAll();
    check( VlanPktMultiplexer::VlanPktMultiplexerIs( nullptr, trunk )->intf() == trunk );
}

} // namespace

void
useVlan() {
    useTagFunctions();
    useTaggingPam();
    useMultiplexer();
}

} // namespace Consumer
