#pragma once

#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "platform/kiv/Activity.h"
#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/PktManager.h"
#include "platform/zornet/device/FileDescriptor.h"
#include "platform/zornet/device/NamespaceEntry.h"
#include "tests/support/Namespace.h"

namespace Zornet {

using Frame = std::vector<U8>;

inline void
append( Frame& frame, std::initializer_list<U16> words ) {
    for ( U16 word : words ) {
        frame.push_back( static_cast<U8>( word >> 8 ) );
        frame.push_back( static_cast<U8>( word ) );
    }
}

/// One 802.1Q or 802.1ad tag.
struct Tag {
    U16 control;
    U16 protocol = ETH_P_8021Q;
};

/// A multicast frame of that IP protocol behind the tags; its payload of 8 bytes tells it apart by `mark`.
inline Frame
ipFrame( U8 protocol, U32 mark, std::vector<Tag> const& tags = {} ) {
    Frame frame{ 0x01, 0x00, 0x5e, 0x01, 0x02, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x01 };
    for ( Tag const& tag : tags ) {
        append( frame, { tag.protocol, tag.control } );
    }
    append( frame, { ETH_P_IP, 0x4500, 28, 0, 0, static_cast<U16>( 0x0100 | protocol ), 0 } );
    append( frame, { 0x0a00, 0x0001, 0xef01, 0x0203 } );
    append( frame, { 0x1600, 0, static_cast<U16>( mark >> 16 ), static_cast<U16>( mark ) } );
    return frame;
}

inline Frame
igmpFrame( U32 mark, std::vector<Tag> const& tags = {} ) {
    return ipFrame( IPPROTO_IGMP, mark, tags );
}

/// The mark of such a frame, wherever it is.
inline U32
markOf( Frame const& frame ) {
    U8 const* const at = frame.data() + frame.size() - 4;
    return U32{ at[0] } << 24 | U32{ at[1] } << 16 | U32{ at[2] } << 8 | at[3];
}

/// The station at the far end of a cable: a packet socket of the test's own, one system call a frame, that
/// tells frames as they were on the wire.
class FarEnd {
  public:
    FarEnd( Support::Namespace const& ns, char const* device ) {
        NamespaceEntry const entry( ns.ns() );
        socket_ = FileDescriptor( socket( AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0 ) );
        int const one = 1;
        int const bytes = 64 << 20;
        setsockopt( socket_.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, &one, sizeof one );
        setsockopt( socket_.get(), SOL_PACKET, PACKET_AUXDATA, &one, sizeof one );
        setsockopt( socket_.get(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes );
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_protocol = htons( ETH_P_ALL );
        address.sll_ifindex = static_cast<int>( if_nametoindex( device ) );
        EXPECT_EQ( bind( socket_.get(), reinterpret_cast<sockaddr*>( &address ), sizeof address ), 0 );
    }

    void send( Frame const& frame ) {
        ASSERT_EQ(
            ::send( socket_.get(), frame.data(), frame.size(), 0 ), static_cast<ssize_t>( frame.size() )
        );
    }
    /// What has arrived since the last call, the kernel's own frames left out.
    std::vector<Frame> const& heard() {
        for ( Frame frame = next(); !frame.empty(); frame = next() ) {
            if ( frame[6] == 0x02 && frame[11] == 0x01 ) {
                heard_.push_back( std::move( frame ) );
            }
        }
        return heard_;
    }
    void forget() { heard_.clear(); }

  private:
    Frame next() {
        Frame frame( 2048 );
        iovec part{ frame.data(), frame.size() };
        alignas( cmsghdr ) std::array<char, 256> control;
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        ssize_t const bytes = recvmsg( socket_.get(), &message, 0 );
        frame.resize( bytes < 0 ? 0 : static_cast<std::size_t>( bytes ) );
        for ( cmsghdr* at = CMSG_FIRSTHDR( &message ); bytes > 0 && at; at = CMSG_NXTHDR( &message, at ) ) {
            tpacket_auxdata data;
            std::memcpy( &data, CMSG_DATA( at ), sizeof data );
            if ( ( data.tp_status & TP_STATUS_VLAN_VALID ) != 0 ) {
                Frame tag;
                append( tag, { data.tp_vlan_tpid, data.tp_vlan_tci } );
                frame.insert( frame.begin() + 12, tag.begin(), tag.end() );
            }
        }
        return frame;
    }

    FileDescriptor socket_;
    std::vector<Frame> heard_;
};

/// Keeps every frame that its access object receives.
class Listener : public Pam::Notifiee {
  public:
    explicit Listener( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }

    void onReadableCount() override {
        if ( auto const pkt = notifier()->rxPkt() ) {
            frames.emplace_back( pkt->bytes() );
            pkt->copyTo( frames.back().data() );
        }
    }

    std::vector<Frame> frames;
};

/// An open access object and what it hears.
struct Station {
    Station( Support::Namespace const& ns, char const* device, U16 protocol ) : pam( EthDevPamIs( device ) ) {
        pam->ethProtocolIs( protocol );
        pam->captureModeIs( 1 );
        pam->nsIs( ns.ns() );
        listener = new Listener( pam );
        pam->deviceOpenIs( true );
    }

    std::vector<Frame> const& heard() const { return listener->frames; }
    void send( Frame const& frame ) const { pam->txPktIs( pktWithBytes( frame ) ); }

    Kiv::Ptr<EthDevPam> pam;
    Kiv::Ptr<Listener> listener;
};

/// A test with real devices in namespaces of its own, on the real clock: it waits for what is to happen and
/// never for time to pass.
class DeviceFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
            GTEST_SKIP() << "needs network namespaces: " << reason;
        }
    }

    /// Runs the loop until the condition holds, which is looked at often, because what the far end hears
    /// wakes no loop. False where it does not hold within a time that only a failure takes.
    template <class Condition>
    static bool eventually( Condition condition ) {
        bool held = false;
        for ( int i = 0; !held && i < 2000; ++i ) {
            held = Kiv::defaultActivity()->activitySm().runUntil( condition, 0.005 );
        }
        return held;
    }
};

/// A cable between two namespaces: the stations under test on `near0`, the far end on `far0`.
class CableFixture : public DeviceFixture {
  protected:
    void SetUp() override {
        DeviceFixture::SetUp();
        if ( IsSkipped() ) {
            return;
        }
        near_ = std::make_unique<Support::Namespace>( "near" );
        far_ = std::make_unique<Support::Namespace>( "far" );
        vethIs( *near_, "near0", *far_, "far0" );
        farEnd_ = std::make_unique<FarEnd>( *far_, "far0" );
    }

    Station station( U16 protocol = ethTypeIp ) { return { *near_, "near0", protocol }; }
    Support::Namespace& nearNs() { return *near_; }
    Support::Namespace& farNs() { return *far_; }
    FarEnd& farEnd() { return *farEnd_; }

  private:
    std::unique_ptr<Support::Namespace> near_;
    std::unique_ptr<Support::Namespace> far_;
    std::unique_ptr<FarEnd> farEnd_;
};

} // namespace Zornet
