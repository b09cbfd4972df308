#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <set>

#include "engine/IgmpHostDirSm.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/device/Device.h"
#include "tests/support/Flood.h"

namespace Interop {

using Igmp::IgmpHost;
using Igmp::IgmpHostStatus;
using Kiv::Ptr;
using Kiv::Seconds;
using Support::Bytes;
using Zornet::EthDevPam;
using Zornet::IpAddr;
using Zornet::U64;
using Zornet::U8;

/// Hosts on the device "near0" of a namespace, at one end of a cable, and a bare packet socket on "far0" in
/// another, which asks, counts and stamps. Every frame that the hosts count as sent must have arrived there
/// or be counted as lost, and answers must come within the response time. At the end the process has no more
/// descriptors open than when the hosts were ready, and not much more memory.
class FaultTest : public ::testing::Test {
  protected:
    /// How late an answer may arrive, besides the time for which the process was ready to run and had no
    /// processor.
    static constexpr Seconds tolerance = 0.05;
    static constexpr Seconds responseTime = 1.0;
    /// What the process may take more for a fault. A receive ring fills for the first time then.
    static constexpr std::size_t memory = 16U << 20;
    static constexpr IpAddr group = IpAddr::fromHost( 0xef010101 ); ///< 239.1.1.1

    void SetUp() override;
    void TearDown() override;

    /// How long a fault is to last: IGMPHOST_FAULT_SECONDS, else what every change can afford.
    static Seconds faultTime();
    virtual void cableIs() { vethIs( near_, "near0", far_, "far0" ); }
    /// Makes the far end's socket, anew where its device was made anew.
    void listen();
    /// Enabled hosts, each a member of `group`, once the repeats of their joins are through.
    void hostsAre( unsigned count, Igmp::IgmpVersion version );

    /// Makes a host a member of a further group.
    void join( std::size_t i, IpAddr const& addr );

    std::size_t hosts() const { return dir_->igmpHosts(); }
    IgmpHost& host( std::size_t i ) const { return *dir_->igmpHost( nameOf( i ) ); }
    EthDevPam& pam( std::size_t i ) const { return *dirSm_->igmpHostSm( nameOf( i ) )->txPam(); }
    IgmpHostStatus& status( std::size_t i ) const { return *statusDir_->igmpHostStatus( nameOf( i ) ); }
    bool running() const { return pam( 0 ).device()->running(); }

    /// The general query of a second's response time that suits the hosts' version.
    Bytes query() const;
    /// Sends it. False where the far end has no link.
    bool ask();
    /// Takes in what the far end has heard.
    void hear();
    /// Asks and waits: every host must answer in time, and once for all (version 3) or each of its groups.
    void expectAnswersInTime();

    // Sums over all hosts.
    U64 reportsSent() const;
    /// Frames that hosts were to send. Each time that the device stopped counts as an error too, on every
    /// host.
    U64 framesLost( U64 stops ) const;
    /// Answers that have not been sent yet.
    bool isAnswering() const;

    /// Everything that was sent must have been heard or counted as lost, by the devices up to the moment at
    /// which it is missed. These may count more than that, as they do with a frame that they refuse and are
    /// given again.
    void expectNothingLostUncounted(
        U64 stops, std::function<U64()> const& lostByDevices = [] { return U64{ 0 }; }
    );
    /// What a device of the far or near end counts under "rx" or "tx" as "dropped", "errors", …
    static U64
    linkCounter( Support::Namespace const& ns, char const* device, char const* direction, char const* what );

    Ptr<Lumo::TimerWheel> const& wheel() const { return wheel_; }
    static void live( Seconds span ) { Kiv::defaultActivity()->activitySm().runFor( span ); }
    /// Runs the hosts until the condition holds; false where that takes longer than a failure allows.
    static bool eventually( std::function<bool()> const& condition );
    static std::size_t residentBytes();
    /// Files, sockets and whatever else this process has open.
    static std::size_t openDescriptors();
    /// Time that this process was ready to run and waited for a processor, in seconds.
    static Seconds timeWithoutProcessor();

    Support::Namespace near_{ "fault-near", false };
    Support::Namespace far_{ "fault-far", false };
    std::vector<Support::Arrival> heard_; ///< what came from the hosts

  private:
    static Kiv::Name nameOf( std::size_t i ) { return Kiv::Name( "host-" + std::to_string( i ) ); }
    void hostIs( std::size_t i, Igmp::IgmpVersion version );

    Ptr<Lumo::TimerWheel> wheel_;
    Ptr<Igmp::IgmpHostDir> dir_;
    Ptr<Igmp::IgmpHostStatusDir> statusDir_;
    Ptr<Igmp::IgmpHostDirSm> dirSm_;
    std::unique_ptr<Support::PacketEnd> end_;
    Igmp::IgmpVersion version_ = Igmp::igmpVersion2;
    std::size_t memberships_ = 0;
    std::size_t resident_ = 0;    ///< when the hosts were ready, as
    std::size_t descriptors_ = 0; ///< these
};

} // namespace Interop
