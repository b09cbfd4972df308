#include "tests/support/PacketEnd.h"

#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <set>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/device/IgmpFilter.h"
#include "platform/zornet/device/NamespaceEntry.h"

namespace Support {

namespace {

constexpr std::size_t batch = 64;

double
secondsOf( timespec const& time ) {
    return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1e-9;
}

template <class T>
void
option( int socket, int level, int name, T const& value ) {
    setsockopt( socket, level, name, &value, sizeof value );
}

void
setUp( int socket ) {
    sock_fprog program{};
    program.len = static_cast<unsigned short>( Zornet::igmpFilter().size() );
    program.filter = const_cast<sock_filter*>( Zornet::igmpFilter().data() );
    option( socket, SOL_SOCKET, SO_ATTACH_FILTER, program );
    option( socket, SOL_SOCKET, SO_RCVBUFFORCE, int{ 256 << 20 } );
    option( socket, SOL_SOCKET, SO_TIMESTAMPNS, int{ 1 } );
    option( socket, SOL_PACKET, PACKET_IGNORE_OUTGOING, int{ 1 } );
}

} // namespace

Zornet::IpAddr
Arrival::source() const {
    return reinterpret_cast<Zornet::IpHdr const*>( frame.data() + sizeof( Zornet::EthHdr ) )->src();
}

std::size_t
senders( std::vector<Arrival> const& arrivals ) {
    std::set<Zornet::IpAddr> all;
    for ( Arrival const& arrival : arrivals ) {
        all.insert( arrival.source() );
    }
    return all.size();
}

double
wallClock() {
    timespec time{};
    clock_gettime( CLOCK_REALTIME, &time );
    return secondsOf( time );
}

PacketEnd::PacketEnd( Namespace const& ns, char const* device ) {
    Zornet::NamespaceEntry const entry( ns.ns() );
    socket_ = Zornet::FileDescriptor( socket( AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 ) );
    setUp( socket_.get() );
    sockaddr_ll addr{};
    addr.sll_family = AF_PACKET;
    addr.sll_protocol = htons( ETH_P_ALL );
    addr.sll_ifindex = static_cast<int>( if_nametoindex( device ) );
    if ( bind( socket_.get(), reinterpret_cast<sockaddr*>( &addr ), sizeof addr ) != 0 ) {
        throw std::runtime_error( std::string( "cannot open " ) + device + ": " + std::strerror( errno ) );
    }
}

bool
PacketEnd::take( Arrival& arrival ) {
    arrival.frame.resize( 2048 );
    iovec vec{ arrival.frame.data(), arrival.frame.size() };
    alignas( cmsghdr ) char control[256];
    msghdr msg{};
    msg.msg_iov = &vec;
    msg.msg_iovlen = 1;
    msg.msg_control = control;
    msg.msg_controllen = sizeof control;
    errno = 0;
    ssize_t const bytes = recvmsg( socket_.get(), &msg, 0 );
    if ( bytes < 0 ) {
        return false;
    }
    arrival.frame.resize( static_cast<std::size_t>( bytes ) );
    for ( cmsghdr* at = CMSG_FIRSTHDR( &msg ); at; at = CMSG_NXTHDR( &msg, at ) ) {
        if ( at->cmsg_level == SOL_SOCKET && at->cmsg_type == SCM_TIMESTAMPNS ) {
            timespec stamp{};
            std::memcpy( &stamp, CMSG_DATA( at ), sizeof stamp );
            arrival.time = secondsOf( stamp );
        }
    }
    return true;
}

std::vector<Arrival>
PacketEnd::takeAll() {
    std::vector<Arrival> arrivals;
    Arrival arrival{};
    do {
        if ( take( arrival ) ) {
            arrivals.push_back( arrival );
        }
    } while ( errno != EAGAIN ); // a device that has gone is told once, before the rest
    return arrivals;
}

void
PacketEnd::sendAll( std::vector<Bytes> const& frames ) {
    std::vector<iovec> vecs( batch );
    std::vector<mmsghdr> msgs( batch );
    for ( std::size_t sent = 0; sent < frames.size(); ) {
        std::size_t const count = std::min( batch, frames.size() - sent );
        for ( std::size_t i = 0; i < count; ++i ) {
            vecs[i] = { const_cast<Zornet::U8*>( frames[sent + i].data() ), frames[sent + i].size() };
            msgs[i].msg_hdr = {};
            msgs[i].msg_hdr.msg_iov = &vecs[i];
            msgs[i].msg_hdr.msg_iovlen = 1;
        }
        int const taken = sendmmsg( socket_.get(), msgs.data(), static_cast<unsigned>( count ), 0 );
        sent += taken > 0 ? static_cast<std::size_t>( taken ) : 0;
    }
}

bool
PacketEnd::send( std::span<Zornet::U8 const> frame ) {
    return sendto( socket_.get(), frame.data(), frame.size(), 0, nullptr, 0 ) >= 0;
}

} // namespace Support
