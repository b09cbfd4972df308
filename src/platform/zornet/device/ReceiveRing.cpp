#include "platform/zornet/device/ReceiveRing.h"

#include <linux/if_ether.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <atomic>
#include <cstring>

#include "platform/kiv/Clock.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

namespace {

constexpr std::size_t ringBytes = std::size_t{ ReceiveRing::blockBytes } * ReceiveRing::blocks;
constexpr unsigned tagBytes = 4;
constexpr std::size_t addressBytes = 2 * ETH_ALEN;

template <class T>
bool
packetOption( int socket, int name, T const& value ) {
    return setsockopt( socket, SOL_PACKET, name, &value, sizeof value ) == 0;
}

tpacket_req3
ringRequest() {
    tpacket_req3 request{};
    request.tp_block_size = ReceiveRing::blockBytes;
    request.tp_block_nr = ReceiveRing::blocks;
    request.tp_frame_size = ReceiveRing::blockBytes; // blocks are filled without regard to it
    request.tp_frame_nr = ReceiveRing::blocks;
    request.tp_retire_blk_tov = ReceiveRing::blockAgeMilliseconds;
    return request;
}

} // namespace

ReceiveRing::~ReceiveRing() {
    if ( memory_ ) {
        munmap( memory_, ringBytes );
    }
}

bool
ReceiveRing::open( int socket ) {
    if ( !packetOption( socket, PACKET_VERSION, int{ TPACKET_V3 } ) ||
         !packetOption( socket, PACKET_RESERVE, tagBytes ) || // where the tag is put back
         !packetOption( socket, PACKET_RX_RING, ringRequest() ) ) {
        return false;
    }
    void* const memory = mmap( nullptr, ringBytes, PROT_READ | PROT_WRITE, MAP_SHARED, socket, 0 );
    memory_ = memory == MAP_FAILED ? nullptr : static_cast<U8*>( memory );
    return memory_ != nullptr;
}

void
ReceiveRing::drain( Kiv::FunctionRef<void( std::span<U8 const> )> frame, Kiv::Seconds span ) {
    Kiv::Seconds const end = Kiv::now() + span;
    while ( hasFrame() ) {
        auto* const header = reinterpret_cast<tpacket3_hdr*>( at_ );
        at_ += header->tp_next_offset;
        --left_;
        frame( wireFrame( header ) );
        if ( left_ == 0 ) {
            closeBlock();
        }
        if ( Kiv::now() >= end ) {
            return;
        }
    }
}

/// Goes on to the next block, where the kernel has handed that over.
bool
ReceiveRing::hasFrame() {
    while ( left_ == 0 ) {
        std::atomic_ref<U32> const status( block()->hdr.bh1.block_status );
        if ( ( status.load( std::memory_order_acquire ) & TP_STATUS_USER ) == 0 ) {
            return false;
        }
        left_ = block()->hdr.bh1.num_pkts;
        at_ = reinterpret_cast<U8*>( block() ) + block()->hdr.bh1.offset_to_first_pkt;
        if ( left_ == 0 ) {
            closeBlock();
        }
    }
    return true;
}

void
ReceiveRing::closeBlock() {
    std::atomic_ref<U32> const status( block()->hdr.bh1.block_status );
    status.store( TP_STATUS_KERNEL, std::memory_order_release );
    number_ = ( number_ + 1 ) % blocks;
}

/// Moves the addresses into the reserved room and writes the tag behind them. A tag is there where the flag
/// says so: its value may be 0, the priority tag of VLAN 0.
std::span<U8 const>
ReceiveRing::wireFrame( tpacket3_hdr* header ) {
    U8* const front = reinterpret_cast<U8*>( header ) + header->tp_mac;
    if ( ( header->tp_status & TP_STATUS_VLAN_VALID ) == 0 ) {
        return { front, header->tp_snaplen };
    }
    bool const protocolKnown = ( header->tp_status & TP_STATUS_VLAN_TPID_VALID ) != 0;
    NetU16 const tag[] = { protocolKnown ? header->hv1.tp_vlan_tpid : U16{ ETH_P_8021Q },
                           static_cast<U16>( header->hv1.tp_vlan_tci ) };
    static_assert( sizeof tag == tagBytes );
    U8* const tagged = front - tagBytes;
    std::memmove( tagged, front, addressBytes );
    std::memcpy( tagged + addressBytes, tag, tagBytes );
    return { tagged, header->tp_snaplen + tagBytes };
}

} // namespace Zornet
