#include "platform/lumo/TimerWheel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>
#include <vector>

#include "platform/kiv/Clock.h"

namespace Lumo {

namespace {

constexpr double ticksPerSecond = 1e6;
constexpr unsigned timersAhead = 4;  ///< how far ahead of the one that fires a timer is fetched
constexpr Kiv::U16 noWheel = 0xffff; ///< the tag of due_ and run_

} // namespace

TimerWheel::TimerWheel( Ptr<Kiv::ActivityConfig> const& activity )
    : activity_( Kiv::kivActivitySmFor( activity.get() ) ),
      activityConfig_( activity ? activity : Kiv::defaultActivity() ),
      current_( tickOf( Kiv::now() ) ) {
    activity_->deadlineSourceIs( this );
}

TimerWheel::~TimerWheel() {
    activity_->deadlineSourceDel( this );
}

U64
TimerWheel::tickOf( Seconds time ) {
    double const ticks = time * ticksPerSecond;
    return !( ticks > 0.0 )                           ? 0
           : ticks >= static_cast<double>( lastTick ) ? lastTick
                                                      : static_cast<U64>( ticks );
}

void
TimerWheel::arm( NotifieeConst& timer ) {
    ++armed_;
    place( timer.timeMin_, timer );
}

void
TimerWheel::disarm( NotifieeConst& timer ) {
    if ( !timer.armed() ) {
        return;
    }
    --armed_;
    auto const [tag, lastOfSlot] = TimerSlot::takeOut( timer, blocks_ );
    if ( tag == noWheel ) {
        return;
    }
    if ( lastOfSlot ) {
        occupied_[tag >> digitBits] &= ~( U64{ 1 } << ( tag & ( slotsPerWheel - 1 ) ) );
    }
    nextKnown_ = nextKnown_ && timer.timeMin_ != nextTime_;
}

void
TimerWheel::place( Seconds time, TimerPlace& timer ) {
    U64 const tick = tickOf( time );
    if ( tick <= current_ ) {
        dueUnsorted_ |= !due_.empty() && due_.lastTime() > time;
        due_.append( time, timer, noWheel, blocks_ );
        return;
    }
    auto const highestBit = static_cast<unsigned>( std::bit_width( tick ^ current_ ) ) - 1;
    unsigned const wheel = highestBit / digitBits;
    auto const slot = static_cast<unsigned>( tick >> ( wheel * digitBits ) ) & ( slotsPerWheel - 1 );
    slots_[wheel][slot].append( time, timer, tagOf( wheel, slot ), blocks_ );
    occupied_[wheel] |= U64{ 1 } << slot;
    nextTime_ = std::min( nextTime_, time );
}

/// The slot whose ticks come first: the first one of the lowest wheel that holds any.
bool
TimerWheel::earliestSlot( unsigned& wheel, unsigned& slot ) const {
    for ( wheel = 0; wheel < wheels; ++wheel ) {
        if ( occupied_[wheel] != 0 ) {
            slot = static_cast<unsigned>( std::countr_zero( occupied_[wheel] ) );
            return true;
        }
    }
    return false;
}

U64
TimerWheel::slotStart( unsigned wheel, unsigned slot ) const {
    unsigned const below = ( wheel + 1 ) * digitBits;
    return ( current_ >> below << below ) | ( U64{ slot } << ( wheel * digitBits ) );
}

/// Moves the present tick into a slot that no other comes before, as near to `tick` as the slot goes, and the
/// slot's timers to where they now belong: those that `tick` has reached to due_, the others to lower wheels.
void
TimerWheel::enterSlot( unsigned wheel, unsigned slot, U64 tick ) {
    U64 const end = slotStart( wheel, slot ) + ( ( U64{ 1 } << ( wheel * digitBits ) ) - 1 );
    current_ = std::min( tick, end );
    occupied_[wheel] &= ~( U64{ 1 } << slot );
    slots_[wheel][slot].drain( blocks_, [this]( Seconds time, TimerPlace& timer ) { place( time, timer ); } );
}

/// Brings the present tick to `tick`; what has come to it on the way stands in due_.
void
TimerWheel::advance( U64 tick ) {
    unsigned wheel = 0;
    unsigned slot = 0;
    while ( earliestSlot( wheel, slot ) && slotStart( wheel, slot ) <= tick ) {
        enterSlot( wheel, slot, tick );
        nextKnown_ = false;
    }
    current_ = std::max( current_, tick );
}

void
TimerWheel::sortDue() {
    if ( !dueUnsorted_ ) {
        return;
    }
    struct Due {
        TimerBlock::Entry entry;
        std::size_t order;
    };
    std::vector<Due> timers;
    timers.reserve( 32 );
    due_.drain( blocks_, [&timers]( Seconds time, TimerPlace& timer ) {
        timers.push_back( { { time, &timer }, timers.size() } );
    } );
    std::sort( timers.begin(), timers.end(), []( Due const& a, Due const& b ) {
        return a.entry.time != b.entry.time ? a.entry.time < b.entry.time : a.order < b.order;
    } );
    for ( Due const& each : timers ) {
        due_.append( each.entry.time, *each.entry.timer, noWheel, blocks_ );
    }
    dueUnsorted_ = false;
}

/// Moves what is due at `now` to the end of run_: mostly all that has reached the present tick.
void
TimerWheel::takeDue( Seconds now ) {
    if ( !due_.empty() && due_.lastTime() <= now ) {
        run_.spliceBack( due_ );
    }
    while ( timeOfFirst( due_ ) <= now ) {
        Seconds const time = due_.firstTime();
        TimerPlace& timer = due_.first();
        TimerSlot::takeOut( timer, blocks_ );
        run_.append( time, timer, noWheel, blocks_ );
    }
}

std::size_t
TimerWheel::expire( Seconds now ) {
    Ptr<TimerWheel> const held( this );
    advance( tickOf( now ) );
    sortDue();
    takeDue( now );
    std::size_t fired = 0;
    for ( ; !run_.empty(); ++fired ) {
        __builtin_prefetch( run_.behindFirst( timersAhead ), 1 );
        fire( static_cast<NotifieeConst&>( run_.first() ) );
    }
    return fired;
}

void
TimerWheel::fire( NotifieeConst& timer ) {
    disarm( timer );
    timer.timeMin_ = Kiv::never;
    Ptr<NotifieeConst> const held( &timer );
    try {
        timer.onTime();
    } catch ( ... ) {
        timer.onNotificationException( Kiv::attrTime );
    }
}

Seconds
TimerWheel::timeOfFirst( TimerSlot const& list ) {
    return list.empty() ? Kiv::never : list.firstTime();
}

Seconds
TimerWheel::nextDeadline() {
    if ( !due_.empty() || !run_.empty() ) {
        sortDue();
        return std::min( timeOfFirst( due_ ), timeOfFirst( run_ ) );
    }
    if ( !nextKnown_ ) {
        unsigned wheel = 0;
        unsigned slot = 0;
        if ( !earliestSlot( wheel, slot ) ) {
            return Kiv::never;
        }
        nextTime_ = slots_[wheel][slot].earliestTime();
        nextKnown_ = true;
    }
    return nextTime_;
}

TimerWheel::NotifieeConst::NotifieeConst( Ptr<TimerWheel const> const& wheel )
    : Kiv::PtrInterface::NotifieeConst( wheel ) {}

TimerWheel::NotifieeConst::~NotifieeConst() {
    unlink();
}

void
TimerWheel::NotifieeConst::timeMinIs( Seconds const& time ) {
    Seconds const wanted = time; // may be the field itself
    if ( wheel() ) {
        wheel()->disarm( *this );
    }
    timeMin_ = wanted;
    if ( linked() && Kiv::isFinite( wanted ) ) {
        wheel()->arm( *this );
    }
}

void
TimerWheel::NotifieeConst::doLink( bool link ) {
    wheel()->disarm( *this );
    if ( link && Kiv::isFinite( timeMin_ ) ) {
        wheel()->arm( *this );
    }
}

} // namespace Lumo
