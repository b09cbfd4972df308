#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/kiv/Activity.h"
#include "platform/zornet/device/Device.h"
#include "platform/zornet/device/LinkMonitor.h"
#include "platform/zornet/device/PacketSocket.h"
#include "platform/zornet/device/SendBatch.h"
#include "platform/zornet/device/SendingThread.h"

namespace Zornet {

/// A device of the machine, reached through one PacketSocket that all its ports share. It has that while it
/// is in use and its link is up; the link's changes open and close it. Frames to send are batched and leave
/// in order, at the end of the loop's turn or, where that is many, in full bursts through a thread beside it;
/// what became of these is known by the turn's end. What the kernel does not take waits for room; without
/// room to wait it is not taken. A device whose last port has closed stays in use until the frames that wait
/// have left.
class PacketSocketDevice : public Device,
                           private LinkHandler,
                           private Kiv::IoHandler,
                           private Kiv::TurnEndHandler,
                           private Kiv::DeadlineSource {
  public:
    PacketSocketDevice(
        NamespaceName const& ns, Kiv::String8 const& name, Kiv::Ptr<LinkMonitor> const& links,
        Kiv::Ptr<Kiv::ActivityConfig> const& activity
    );
    ~PacketSocketDevice() override;

    bool send( EthDevPam const& sender, std::span<U8 const> frame ) override;
    std::size_t framesWaiting() const override { return batch_ ? batch_->size() : 0; }

  private:
    /// Why what waits cannot leave at present.
    enum class Hindrance { none, socketFull, queueFull };

    void handleFirstPort() override;
    void handleNoPort() override;
    void handleLink( LinkState const& state ) override;
    void handleIo( Kiv::U32 events ) override;
    void handleTurnEnd() override;
    Kiv::Seconds nextDeadline() override { return retryTime_; }
    std::size_t expire( Kiv::Seconds now ) override;

    void start( LinkState const& state );
    void stop();
    void leave();
    void problemIs( std::string const& problem );

    void receive();
    bool store( EthDevPam const& sender, std::span<U8 const> frame );
    void sendFullBurst();
    void flush();
    void sendWaiting();
    void settle( unsigned most );
    void account( Burst const& burst );
    void handleRefusal( int error );
    void hindranceIs( Hindrance hindrance );
    void lose( SendBatch& waiting );

    Kiv::ActivitySm& activity() const { return activity_->activitySm(); }

    Kiv::Ptr<LinkMonitor> const links_;
    Kiv::Ptr<Kiv::ActivityConfig> const activity_;
    bool watching_ = false;
    std::optional<std::string> problem_; ///< why there are no sockets, as last told; empty where there are
    Kiv::Ptr<PacketSocket> socket_;
    // While there are sockets:
    std::unique_ptr<SendBatch> batch_;
    std::unique_ptr<Burst> burst_;                 ///< for what leaves without the thread
    std::unique_ptr<SendingThread> sendingThread_; ///< from the first turn on that made a full burst
    Hindrance hindrance_ = Hindrance::none;
    Kiv::Seconds retryTime_ = Kiv::never;
    bool turnEndAsked_ = false;
};

} // namespace Zornet
