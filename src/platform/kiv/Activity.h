#pragma once

#include <sys/epoll.h>

#include <functional>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"

namespace Kiv {

class ActivitySm;

/// The handle of the activity on which a group of reactors runs. A null handle means the process's default
/// activity.
class ActivityConfig : public PtrInterface {
  public:
    ActivityConfig();

    ActivitySm& activitySm() const { return *activitySm_; }

  private:
    Ptr<ActivitySm> activitySm_;
};

/// Something with deadlines that an activity is to meet, such as a timer wheel.
class DeadlineSource {
  public:
    virtual ~DeadlineSource() = default;
    /// The earliest deadline, or never.
    virtual Seconds nextDeadline() = 0;
    /// Serves what is due at `now` and was so when the call began. Returns how much that was.
    virtual std::size_t expire( Seconds now ) = 0;
};

/// The receiver of a file descriptor's readiness.
class IoHandler {
  public:
    virtual ~IoHandler() = default;
    /// `events` as epoll gives them.
    virtual void handleIo( U32 events ) = 0;
};

/// Work that belongs at the end of a turn, such as the hand-over of a batch of frames.
class TurnEndHandler {
  public:
    virtual ~TurnEndHandler() = default;
    virtual void handleTurnEnd() = 0;
};

/// The scheduler of one activity: one thread, one loop. A turn delivers deferred notifications first, then
/// waits for the next deadline or for input, serves timers, then descriptors, then the work put off to its
/// end. Nothing in it is touched from another thread.
class ActivitySm : public PtrInterface {
  public:
    /// The least by which a turn that did something moves a simulated clock: a tick of the timer wheel.
    static constexpr Seconds tick = 1e-6;

    ActivitySm();
    ~ActivitySm() override;

    /// False, the default, delivers notifications inside the mutator; true holds them back to the next turn.
    bool deferredDelivery() const { return deferredDelivery_; }
    void deferredDeliveryIs( bool value ) { deferredDelivery_ = value; }
    /// Queues a reactor for deferred delivery. The reactor keeps what is pending.
    void defer( PtrInterface::NotifieeConst* reactor );

    /// Runs until `span` has passed. What is due at the very end is served.
    void runFor( Seconds span );
    void runUntilTime( Seconds end );
    /// Runs until `condition` holds after a turn, or `span` has passed. Returns whether it held.
    bool runUntil( std::function<bool()> const& condition, Seconds span = never );
    /// One turn. Waits for nothing; a simulated clock jumps to the next deadline.
    void runOnce();
    /// Ends a run in progress after the present turn.
    void stop() { stopped_ = true; }

    /// For a host loop: readable when runOnce() has input to serve.
    int descriptor() const { return epoll_; }
    /// For a host loop: when runOnce() must run at the latest, or never.
    Seconds nextDeadline() const;

    /// The caller keeps ownership of every handler and takes it back with the Del form before it goes.
    void deadlineSourceIs( DeadlineSource* source ) { deadlineSources_.push_back( source ); }
    void deadlineSourceDel( DeadlineSource* source );
    /// False for a descriptor that cannot be waited for, such as that of a regular file.
    bool ioHandlerIs( int descriptor, U32 events, IoHandler* handler );
    void ioHandlerDel( int descriptor );
    /// Asks for one call at the end of this turn (or the next, when outside one).
    void turnEndIs( TurnEndHandler* handler );
    void turnEndDel( TurnEndHandler* handler );

  private:
    void begin();
    bool nothingCanCome( Seconds end ) const;
    void turn( Seconds limit );
    bool deliverDeferred();
    void jumpClock( Seconds limit );
    int wait( std::span<epoll_event> events, Seconds limit );
    bool serveTimers();
    void serveIo( std::span<epoll_event const> events );
    bool serveTurnEnd();
    bool hasWorkAtOnce() const { return !deferred_.empty() || !turnEnd_.empty(); }

    bool deferredDelivery_ = false;
    bool stopped_ = false;
    int epoll_;
    std::vector<Ptr<PtrInterface::NotifieeConst>> deferred_;
    std::vector<DeadlineSource*> deadlineSources_;
    std::vector<TurnEndHandler*> turnEnd_;
    std::vector<TurnEndHandler*> servingTurnEnd_;
    std::unordered_map<int, IoHandler*> ioHandlers_;
};

/// The scheduler behind a handle; the default activity's for a null one.
ActivitySm* kivActivitySmFor( ActivityConfig const* activity );

/// The activity that a null handle stands for.
Ptr<ActivityConfig> const& defaultActivity();

} // namespace Kiv
