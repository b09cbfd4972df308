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
constexpr Kiv::U8 noWheel = 255; ///< in due_ or run_

} // namespace

void
TimerWheel::Link::takeOut() {
    previous->next = next;
    next->previous = previous;
    previous = next = this;
}

void
TimerWheel::Link::insertBefore( Link& other ) {
    previous = other.previous;
    next = &other;
    previous->next = this;
    other.previous = this;
}

void
TimerWheel::Link::spliceBack( Link& other ) {
    if ( other.alone() ) {
        return;
    }
    other.next->previous = previous;
    previous->next = other.next;
    other.previous->next = this;
    previous = other.previous;
    other.previous = other.next = &other;
}

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
    timer.tick_ = tickOf( timer.timeMin_ );
    timer.armed_ = true;
    ++armed_;
    place( timer );
    if ( timer.wheelIndex_ != noWheel && nextKnown_ ) {
        nextTime_ = std::min( nextTime_, timer.timeMin_ );
    }
}

void
TimerWheel::disarm( NotifieeConst& timer ) {
    if ( !timer.armed_ ) {
        return;
    }
    timer.armed_ = false;
    --armed_;
    timer.takeOut();
    if ( timer.wheelIndex_ == noWheel ) {
        return;
    }
    if ( slots_[timer.wheelIndex_][timer.slotIndex_].alone() ) {
        occupied_[timer.wheelIndex_] &= ~( U64{ 1 } << timer.slotIndex_ );
    }
    nextKnown_ = nextKnown_ && timer.timeMin_ != nextTime_;
}

void
TimerWheel::place( NotifieeConst& timer ) {
    if ( timer.tick_ <= current_ ) {
        timer.wheelIndex_ = noWheel;
        if ( !due_.alone() ) {
            dueUnsorted_ |= timeOf( *due_.previous ) > timer.timeMin_;
        }
        timer.insertBefore( due_ );
        return;
    }
    auto const highestBit = static_cast<unsigned>( std::bit_width( timer.tick_ ^ current_ ) ) - 1;
    unsigned const wheel = highestBit / digitBits;
    auto const slot = static_cast<unsigned>( timer.tick_ >> ( wheel * digitBits ) ) & ( slotsPerWheel - 1 );
    timer.wheelIndex_ = static_cast<U8>( wheel );
    timer.slotIndex_ = static_cast<U8>( slot );
    timer.insertBefore( slots_[wheel][slot] );
    occupied_[wheel] |= U64{ 1 } << slot;
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

/// Moves the present tick to the start of a slot and its timers to where they now belong.
void
TimerWheel::enterSlot( unsigned wheel, unsigned slot ) {
    current_ = slotStart( wheel, slot );
    occupied_[wheel] &= ~( U64{ 1 } << slot );
    Link& entered = slots_[wheel][slot];
    Link* at = std::exchange( entered.next, &entered );
    entered.previous = &entered;
    while ( at != &entered ) { // each belongs elsewhere, so its links need not be undone first
        auto* const timer = static_cast<NotifieeConst*>( at );
        at = at->next;
        __builtin_prefetch( at );
        place( *timer );
    }
}

/// Brings the present tick to `tick`; what has come to it on the way stands in due_.
void
TimerWheel::advance( U64 tick ) {
    unsigned wheel = 0;
    unsigned slot = 0;
    while ( earliestSlot( wheel, slot ) && slotStart( wheel, slot ) <= tick ) {
        enterSlot( wheel, slot );
        nextKnown_ = false;
    }
    current_ = std::max( current_, tick );
}

void
TimerWheel::sortDue() {
    if ( !dueUnsorted_ ) {
        return;
    }
    std::vector<NotifieeConst*> timers;
    for ( Link* at = due_.next; at != &due_; at = at->next ) {
        timers.push_back( static_cast<NotifieeConst*>( at ) );
    }
    std::stable_sort( timers.begin(), timers.end(), []( auto const* a, auto const* b ) {
        return a->timeMin_ < b->timeMin_;
    } );
    for ( NotifieeConst* timer : timers ) {
        timer->takeOut();
        timer->insertBefore( due_ );
    }
    dueUnsorted_ = false;
}

/// Moves what is due at `now` to the end of run_: mostly all that has reached the present tick.
void
TimerWheel::takeDue( Seconds now ) {
    if ( !due_.alone() && timeOf( *due_.previous ) <= now ) {
        run_.spliceBack( due_ );
    }
    while ( timeOfFirst( due_ ) <= now ) {
        Link* const timer = due_.next;
        timer->takeOut();
        timer->insertBefore( run_ );
    }
}

std::size_t
TimerWheel::expire( Seconds now ) {
    Ptr<TimerWheel> const held( this );
    advance( tickOf( now ) );
    sortDue();
    takeDue( now );
    std::size_t fired = 0;
    for ( ; !run_.alone(); ++fired ) {
        __builtin_prefetch( run_.next->next );
        fire( *static_cast<NotifieeConst*>( run_.next ) );
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
TimerWheel::timeOf( Link const& timer ) {
    return static_cast<NotifieeConst const&>( timer ).timeMin_;
}

Seconds
TimerWheel::timeOfFirst( Link const& list ) {
    return list.alone() ? Kiv::never : timeOf( *list.next );
}

Seconds
TimerWheel::earliestTimeIn( Link const& slot ) {
    Seconds earliest = Kiv::never;
    for ( Link const* at = slot.next; at != &slot; at = at->next ) {
        earliest = std::min( earliest, timeOf( *at ) );
    }
    return earliest;
}

Seconds
TimerWheel::nextDeadline() {
    if ( !due_.alone() || !run_.alone() ) {
        sortDue();
        return std::min( timeOfFirst( due_ ), timeOfFirst( run_ ) );
    }
    if ( !nextKnown_ ) {
        unsigned wheel = 0;
        unsigned slot = 0;
        if ( !earliestSlot( wheel, slot ) ) {
            return Kiv::never;
        }
        nextTime_ = earliestTimeIn( slots_[wheel][slot] );
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
