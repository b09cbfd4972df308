#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Lumo {

class TimerBlock;

/// What a timer knows of where it stands in a wheel.
class TimerPlace {
  public:
    TimerPlace() = default;
    TimerPlace( TimerPlace const& ) = delete;
    TimerPlace& operator=( TimerPlace const& ) = delete;

    bool armed() const { return block_ != nullptr; }

  private:
    friend class TimerSlot;

    TimerBlock* block_ = nullptr;
    std::uint8_t index_ = 0;
};

/// A link of a circular list; also the list's own anchor.
struct BlockLink {
    BlockLink* previous = this;
    BlockLink* next = this;
    BlockLink() = default;
    BlockLink( BlockLink const& ) = delete;
    BlockLink& operator=( BlockLink const& ) = delete;
    bool alone() const { return next == this; }
};

/// Times and timers side by side, in the order of their coming. Who looks through them reads memory in one
/// direction and touches no timer; a timer that leaves touches none of its neighbours.
class TimerBlock : public BlockLink {
  public:
    struct Entry {
        double time;
        TimerPlace* timer; ///< null once it has been taken out
    };
    static constexpr std::uint8_t capacity = 61; ///< a kilobyte in all

  private:
    friend class TimerSlot;

    std::uint16_t tag_ = 0;   ///< whose block it is, as its slot says
    std::uint8_t first_ = 0;  ///< the first entry that has not been taken out
    std::uint8_t end_ = 0;    ///< behind the last entry
    std::uint8_t inside_ = 0; ///< entries that have not been taken out; never 0 in a slot
    std::array<Entry, capacity> entries_;
};

/// Blocks to use again. A megabyte of them is kept; more go back to the heap.
class TimerBlockStore {
  public:
    TimerBlockStore() = default;
    TimerBlockStore( TimerBlockStore const& ) = delete;
    TimerBlockStore& operator=( TimerBlockStore const& ) = delete;
    ~TimerBlockStore();

    TimerBlock* take();
    void giveBack( TimerBlock* block );

  private:
    static constexpr std::size_t mostKept = 1024;

    BlockLink* first_ = nullptr; ///< each leads to the next
    std::size_t kept_ = 0;
};

/// Timers in the order in which they were appended. The timers belong to others, who take them out before
/// they go. The store of blocks is the same in every call on slots that exchange timers.
class TimerSlot {
  public:
    bool empty() const { return anchor_.alone(); }
    /// Times of the first and of the last entry; the last may have been taken out. Not of an empty slot.
    double firstTime() const;
    double lastTime() const;
    double earliestTime() const;
    TimerPlace& first() const;
    /// The timer `ahead` entries behind the first, or null: for who wants to bring it near in good time.
    TimerPlace* behindFirst( unsigned ahead ) const;

    /// `tag` is what takeOut() says of timers of this slot.
    void append( double time, TimerPlace& timer, std::uint16_t tag, TimerBlockStore& store );
    /// Returns the tag of the slot and whether that is empty now.
    static std::pair<std::uint16_t, bool> takeOut( TimerPlace& timer, TimerBlockStore& store );
    /// Moves all of `other` to the end of this slot.
    void spliceBack( TimerSlot& other );
    /// Empties the slot and hands `to( time, timer )` what was in it, in order.
    template <class To>
    void drain( TimerBlockStore& store, To const& to );

  private:
    static TimerBlock* block( BlockLink* link ) { return static_cast<TimerBlock*>( link ); }
    static void unlink( BlockLink& link );

    BlockLink anchor_;
};

template <class To>
void
TimerSlot::drain( TimerBlockStore& store, To const& to ) {
    constexpr unsigned ahead = 8;
    while ( !empty() ) {
        TimerBlock* const drained = block( anchor_.next );
        unlink( *drained );
        for ( unsigned i = drained->first_; i < drained->end_; ++i ) {
            TimerBlock::Entry const entry = drained->entries_[i];
            if ( i + ahead < drained->end_ ) {
                __builtin_prefetch( drained->entries_[i + ahead].timer, 1 );
            }
            if ( entry.timer ) {
                to( entry.time, *entry.timer );
            }
        }
        store.giveBack( drained );
    }
}

} // namespace Lumo
