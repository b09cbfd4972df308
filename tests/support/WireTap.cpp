#include "tests/support/WireTap.h"

#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "platform/kiv/Clock.h"
#include "platform/zornet/device/NamespaceEntry.h"
#include "tests/support/Frames.h"

namespace Support {

namespace {

int
openTap( Namespace const& ns, char const* device ) {
    Zornet::NamespaceEntry const entry( ns.ns() );
    int const tap = socket( AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 );
    int const on = 1;
    int const room = 64 << 20;
    setsockopt( tap, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on );
    setsockopt( tap, SOL_PACKET, PACKET_AUXDATA, &on, sizeof on );
    setsockopt( tap, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room );
    sockaddr_ll addr{};
    addr.sll_family = AF_PACKET;
    addr.sll_protocol = htons( ETH_P_ALL );
    addr.sll_ifindex = static_cast<int>( if_nametoindex( device ) );
    if ( tap < 0 || bind( tap, reinterpret_cast<sockaddr*>( &addr ), sizeof addr ) != 0 ) {
        throw std::runtime_error( std::string( "cannot tap " ) + device );
    }
    return tap;
}

std::string
temporaryFile() {
    char path[] = "/tmp/igmphost-tap-XXXXXX";
    int const file = mkstemp( path );
    if ( file < 0 ) {
        throw std::runtime_error( "cannot make a temporary file" );
    }
    close( file );
    return path;
}

/// The frame as it was on the wire: the kernel has taken its tag out and tells it beside the frame.
Lab::Bytes
withTag( std::span<unsigned char const> frame, msghdr& msg ) {
    Lab::Bytes whole( frame.begin(), frame.end() );
    for ( cmsghdr* at = CMSG_FIRSTHDR( &msg ); at; at = CMSG_NXTHDR( &msg, at ) ) {
        tpacket_auxdata aux{};
        if ( at->cmsg_level != SOL_PACKET || at->cmsg_type != PACKET_AUXDATA ) {
            continue;
        }
        std::memcpy( &aux, CMSG_DATA( at ), sizeof aux );
        if ( ( aux.tp_status & TP_STATUS_VLAN_VALID ) != 0 ) {
            Lab::Bytes const tag{ 0x81, 0x00, static_cast<unsigned char>( aux.tp_vlan_tci >> 8 ),
                                  static_cast<unsigned char>( aux.tp_vlan_tci ) };
            whole.insert( whole.begin() + 2 * ETH_ALEN, tag.begin(), tag.end() );
        }
    }
    return whole;
}

bool
isIpv4( std::span<unsigned char const> frame ) {
    return frame.size() > ETH_HLEN && frame[12] == 0x08 && frame[13] == 0x00;
}

} // namespace

WireTap::WireTap( Namespace const& ns, char const* device )
    : socket_( openTap( ns, device ) ),
      path_( temporaryFile() ),
      file_( path_, std::ios::binary ),
      writer_( file_, Lab::PcapResolution::microseconds ) {
    Kiv::defaultActivity()->activitySm().ioHandlerIs( socket_, EPOLLIN, this );
}

WireTap::~WireTap() {
    Kiv::defaultActivity()->activitySm().ioHandlerDel( socket_ );
    close( socket_ );
    std::remove( path_.c_str() );
}

void
WireTap::flush() {
    std::array<unsigned char, 2048> frame;
    alignas( cmsghdr ) std::array<char, 256> control;
    for ( ;; ) {
        iovec vec{ frame.data(), frame.size() };
        msghdr msg{};
        msg.msg_iov = &vec;
        msg.msg_iovlen = 1;
        msg.msg_control = control.data();
        msg.msg_controllen = control.size();
        ssize_t const bytes = recvmsg( socket_, &msg, 0 );
        if ( bytes < 0 ) {
            break;
        }
        std::span<unsigned char const> const seen( frame.data(), static_cast<std::size_t>( bytes ) );
        if ( isIpv4( seen ) ) {
            writer_.frameIs( Kiv::now(), withTag( seen, msg ) );
            ++frames_;
        }
    }
    file_.flush();
}

std::vector<std::string>
tshark( std::string const& path, std::string const& filter, std::vector<std::string> const& fields ) {
    std::string command = "( tshark -n -o ip.check_checksum:TRUE -r " + path + " -Y '" + filter +
                          "' -T fields -E separator='|' -E occurrence=a -E aggregator=,";
    for ( std::string const& field : fields ) {
        command += " -e " + field;
    }
    std::istringstream output( outputOf( command + " 2>/dev/null )" ) );
    std::vector<std::string> lines;
    for ( std::string line; std::getline( output, line ); ) {
        lines.push_back( line );
    }
    return lines;
}

} // namespace Support
