/// Ten thousand hosts on one real device answer a query at once, beside a bare batched sender of the very
/// same frames.

#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <arpa/inet.h>
#include <cstring>
#include <stdexcept>

#include "bench/support/Figures.h"
#include "bench/support/Hosts.h"
#include "platform/zornet/device/NamespaceEntry.h"
#include "tests/support/Namespace.h"

namespace {

using Bench::Hosts;
using Bytes = std::vector<Bench::U8>;

constexpr std::size_t hostCount = 10'000;
constexpr std::size_t batch = 64;

/// A packet socket on one end of the veth pair: sends the bare sender's batches, or stamps what arrives.
class PacketEnd {
  public:
    PacketEnd( Support::Namespace const& ns, char const* device ) {
        Zornet::NamespaceEntry const entry( ns.ns() );
        socket_ = socket( AF_PACKET, SOCK_RAW | SOCK_NONBLOCK, htons( ETH_P_ALL ) );
        int const bytes = 256 << 20;
        int const on = 1;
        setsockopt( socket_, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes );
        setsockopt( socket_, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on );
        setsockopt( socket_, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on );
        sockaddr_ll addr{};
        addr.sll_family = AF_PACKET;
        addr.sll_protocol = htons( ETH_P_ALL );
        addr.sll_ifindex = static_cast<int>( if_nametoindex( device ) );
        if ( socket_ < 0 || bind( socket_, reinterpret_cast<sockaddr*>( &addr ), sizeof addr ) != 0 ) {
            throw std::runtime_error(
                std::string( "cannot open " ) + device + ": " + std::strerror( errno )
            );
        }
    }
    ~PacketEnd() { close( socket_ ); }
    PacketEnd( PacketEnd const& ) = delete;
    PacketEnd& operator=( PacketEnd const& ) = delete;

    /// The next frame and the kernel's time stamp of it in seconds; false where none waits.
    bool take( Bytes& frame, double& time ) {
        frame.resize( 2048 );
        iovec vec{ frame.data(), frame.size() };
        alignas( cmsghdr ) char control[256];
        msghdr msg{};
        msg.msg_iov = &vec;
        msg.msg_iovlen = 1;
        msg.msg_control = control;
        msg.msg_controllen = sizeof control;
        ssize_t const bytes = recvmsg( socket_, &msg, 0 );
        if ( bytes < 0 ) {
            return false;
        }
        frame.resize( static_cast<std::size_t>( bytes ) );
        timespec stamp{};
        for ( cmsghdr* at = CMSG_FIRSTHDR( &msg ); at; at = CMSG_NXTHDR( &msg, at ) ) {
            if ( at->cmsg_level == SOL_SOCKET && at->cmsg_type == SCM_TIMESTAMPNS ) {
                std::memcpy( &stamp, CMSG_DATA( at ), sizeof stamp );
            }
        }
        time = static_cast<double>( stamp.tv_sec ) + static_cast<double>( stamp.tv_nsec ) * 1e-9;
        return true;
    }

    void sendAll( std::vector<Bytes>& frames ) {
        std::vector<iovec> vecs( batch );
        std::vector<mmsghdr> msgs( batch );
        for ( std::size_t sent = 0; sent < frames.size(); ) {
            std::size_t const count = std::min( batch, frames.size() - sent );
            for ( std::size_t i = 0; i < count; ++i ) {
                vecs[i] = { frames[sent + i].data(), frames[sent + i].size() };
                msgs[i].msg_hdr = {};
                msgs[i].msg_hdr.msg_iov = &vecs[i];
                msgs[i].msg_hdr.msg_iovlen = 1;
            }
            int const taken = sendmmsg( socket_, msgs.data(), static_cast<unsigned>( count ), 0 );
            sent += taken > 0 ? static_cast<std::size_t>( taken ) : 0;
        }
    }

  private:
    int socket_ = -1;
};

struct Burst {
    std::vector<Bytes> frames;
    double first = 0.0;
    double last = 0.0;
    double rate() const { return static_cast<double>( frames.size() - 1 ) / ( last - first ); }
};

Burst
collect( PacketEnd& far ) {
    Burst burst;
    Bytes frame;
    double time = 0.0;
    while ( far.take( frame, time ) ) {
        if ( burst.frames.empty() ) {
            burst.first = time;
        }
        burst.last = time;
        burst.frames.push_back( frame );
    }
    return burst;
}

Burst
checked( Burst burst, char const* who ) {
    if ( burst.frames.size() != hostCount ) {
        throw std::runtime_error(
            std::string( who ) + ": " + std::to_string( burst.frames.size() ) + " frames arrived"
        );
    }
    return burst;
}

void
measureVersion( Bench::Figures& figures, unsigned runs, Igmp::IgmpVersion version, std::size_t groups ) {
    Support::Namespace const near( "bench-near" );
    Support::Namespace const distant( "bench-far" );
    Support::outputOf(
        "ip -n " + near.name() + " link add vb0 type veth peer name vb1 netns " + distant.name()
    );
    Support::outputOf( "ip -n " + near.name() + " link set vb0 up" );
    Support::outputOf( "ip -n " + distant.name() + " link set vb1 up" );
    PacketEnd far( distant, "vb1" );
    PacketEnd bare( near, "vb0" );
    Hosts::Plan plan{ hostCount, version, groups };
    plan.device = "vb0";
    std::string const ns = near.name();
    plan.ns = ns.c_str();
    plan.answersAtOnce = true;
    Hosts const hosts( plan );
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    activity.runFor( 15.0 ); // the repeats of the joins
    collect( far );
    bool const asV3 = version == Igmp::igmpVersion3;
    std::vector<Bytes> query{ Bench::generalQuery( asV3 ? 5 : 0, asV3 ) };
    std::vector<double> ours, theirs;
    for ( unsigned i = 0; i < runs; ++i ) {
        far.sendAll( query );
        activity.runFor( 1.0 );
        Burst burst = checked( collect( far ), "the hosts" );
        bare.sendAll( burst.frames );
        ours.push_back( burst.rate() );
        theirs.push_back( checked( collect( far ), "the bare sender" ).rate() );
    }
    std::string const what =
        "version " + std::to_string( version ) + ", " + std::to_string( groups ) + " groups: ";
    figures.add( what + "frames per second, 10000 hosts answer one query at once", "1/s", ours );
    figures.add( what + "frames per second, bare sendmmsg of 64 of the same frames", "1/s", theirs );
    figures.add( what + "hosts over bare sender", "times", Bench::ratios( ours, theirs ) );
}

void
measure( Bench::Figures& figures, unsigned runs ) {
    measureVersion( figures, runs, Igmp::igmpVersion2, 1 );
    measureVersion( figures, runs, Igmp::igmpVersion3, 10 );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "Ten thousand hosts on one veth device", measure );
}
