#include "platform/zornet/device/PacketSocket.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>

#include <cerrno>

#include "platform/zornet/device/IgmpFilter.h"

namespace Zornet {

namespace {

/// What may be on its way through a busy link's queue.
constexpr int sendBufferBytes = 4 << 20;

/// Bound to it, a socket hears nothing.
constexpr U16 noProtocol = 0;

FileDescriptor
packetSocket() {
    return FileDescriptor( socket( AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, noProtocol ) );
}

template <class T>
bool
option( int socket, int level, int name, T const& value ) {
    return setsockopt( socket, level, name, &value, sizeof value ) == 0;
}

bool
filterIs( int socket, std::span<sock_filter const> filter ) {
    sock_fprog program{};
    program.len = static_cast<unsigned short>( filter.size() );
    program.filter = const_cast<sock_filter*>( filter.data() );
    return option( socket, SOL_SOCKET, SO_ATTACH_FILTER, program );
}

bool
sendBufferIs( int socket, int bytes ) {
    return option( socket, SOL_SOCKET, SO_SNDBUFFORCE, bytes ) ||
           option( socket, SOL_SOCKET, SO_SNDBUF, bytes );
}

bool
bindTo( int socket, U32 linkIndex, U16 protocol ) {
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons( protocol );
    address.sll_ifindex = static_cast<int>( linkIndex );
    return bind( socket, reinterpret_cast<sockaddr const*>( &address ), sizeof address ) == 0;
}

bool
hearAllMulticast( int socket, U32 linkIndex ) {
    packet_mreq membership{};
    membership.mr_ifindex = static_cast<int>( linkIndex );
    membership.mr_type = PACKET_MR_ALLMULTI;
    return option( socket, SOL_PACKET, PACKET_ADD_MEMBERSHIP, membership );
}

} // namespace

Kiv::Ptr<PacketSocket>
PacketSocket::open( U32 linkIndex ) {
    Kiv::Ptr<PacketSocket> const socket( new PacketSocket( linkIndex ) );
    return socket->openReceiver() && socket->openSender() ? socket : nullptr;
}

PacketSocket::PacketSocket( U32 linkIndex ) : linkIndex_( linkIndex ) {}

/// Binds last: a socket of no protocol hears nothing, so that no frame gets in which the filter has not seen.
bool
PacketSocket::openReceiver() {
    receiver_ = packetSocket();
    int const socket = receiver();
    return receiver_ && filterIs( socket, igmpFilter() ) &&
           option( socket, SOL_PACKET, PACKET_IGNORE_OUTGOING, int{ 1 } ) && ring_.open( socket ) &&
           bindTo( socket, linkIndex_, ETH_P_ALL ) && hearAllMulticast( socket, linkIndex_ );
}

bool
PacketSocket::openSender() {
    sender_ = packetSocket();
    return sender_ && sendBufferIs( sender(), sendBufferBytes ) && bindTo( sender(), linkIndex_, noProtocol );
}

U32
PacketSocket::takeLostFrames() {
    tpacket_stats_v3 statistics{};
    socklen_t bytes = sizeof statistics;
    getsockopt( receiver(), SOL_PACKET, PACKET_STATISTICS, &statistics, &bytes );
    return statistics.tp_drops;
}

int
PacketSocket::takeError() {
    int error = 0;
    socklen_t bytes = sizeof error;
    getsockopt( receiver(), SOL_SOCKET, SO_ERROR, &error, &bytes );
    return error;
}

std::size_t
PacketSocket::send( std::span<mmsghdr> messages ) {
    int const sent =
        sendmmsg( sender(), messages.data(), static_cast<unsigned>( messages.size() ), MSG_DONTWAIT );
    return sent < 0 ? 0 : static_cast<std::size_t>( sent );
}

} // namespace Zornet
