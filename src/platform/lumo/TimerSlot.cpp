#include "platform/lumo/TimerSlot.h"

#include <algorithm>

namespace Lumo {

TimerBlockStore::~TimerBlockStore() {
    while ( kept_ > 0 ) {
        delete take();
    }
}

TimerBlock*
TimerBlockStore::take() {
    if ( kept_ == 0 ) {
        return new TimerBlock;
    }
    --kept_;
    return static_cast<TimerBlock*>( std::exchange( first_, first_->next ) );
}

void
TimerBlockStore::giveBack( TimerBlock* block ) {
    if ( kept_ == mostKept ) {
        delete block;
        return;
    }
    ++kept_;
    block->next = std::exchange( first_, block );
}

void
TimerSlot::unlink( BlockLink& link ) {
    link.previous->next = link.next;
    link.next->previous = link.previous;
}

double
TimerSlot::firstTime() const {
    TimerBlock const& head = *block( anchor_.next );
    return head.entries_[head.first_].time;
}

double
TimerSlot::lastTime() const {
    TimerBlock const& tail = *block( anchor_.previous );
    return tail.entries_[tail.end_ - 1U].time;
}

TimerPlace&
TimerSlot::first() const {
    TimerBlock const& head = *block( anchor_.next );
    return *head.entries_[head.first_].timer;
}

TimerPlace*
TimerSlot::behindFirst( unsigned ahead ) const {
    TimerBlock const& head = *block( anchor_.next );
    unsigned const at = head.first_ + ahead;
    return at < head.end_ ? head.entries_[at].timer : nullptr;
}

double
TimerSlot::earliestTime() const {
    double earliest = firstTime();
    for ( BlockLink* at = anchor_.next; at != &anchor_; at = at->next ) {
        TimerBlock const& each = *block( at );
        for ( unsigned i = each.first_; i < each.end_; ++i ) {
            TimerBlock::Entry const& entry = each.entries_[i];
            earliest = entry.timer ? std::min( earliest, entry.time ) : earliest;
        }
    }
    return earliest;
}

void
TimerSlot::append( double time, TimerPlace& timer, std::uint16_t tag, TimerBlockStore& store ) {
    TimerBlock* tail = block( anchor_.previous );
    if ( empty() || tail->end_ == TimerBlock::capacity ) {
        tail = store.take();
        tail->tag_ = tag;
        tail->first_ = tail->end_ = tail->inside_ = 0;
        tail->previous = anchor_.previous;
        tail->next = &anchor_;
        tail->previous->next = tail;
        anchor_.previous = tail;
    }
    timer.block_ = tail;
    timer.index_ = tail->end_;
    tail->entries_[tail->end_] = { time, &timer };
    ++tail->end_;
    ++tail->inside_;
}

std::pair<std::uint16_t, bool>
TimerSlot::takeOut( TimerPlace& timer, TimerBlockStore& store ) {
    TimerBlock& from = *timer.block_;
    from.entries_[timer.index_].timer = nullptr;
    timer.block_ = nullptr;
    std::uint16_t const tag = from.tag_;
    if ( --from.inside_ > 0 ) {
        while ( !from.entries_[from.first_].timer ) {
            ++from.first_;
        }
        return { tag, false };
    }
    bool const last = from.next == from.previous;
    unlink( from );
    store.giveBack( &from );
    return { tag, last };
}

void
TimerSlot::spliceBack( TimerSlot& other ) {
    if ( other.empty() ) {
        return;
    }
    BlockLink& theirs = other.anchor_;
    theirs.next->previous = anchor_.previous;
    anchor_.previous->next = theirs.next;
    theirs.previous->next = &anchor_;
    anchor_.previous = theirs.previous;
    theirs.previous = theirs.next = &theirs;
}

} // namespace Lumo
