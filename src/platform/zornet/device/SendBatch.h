#pragma once

#include <memory>
#include <span>

#include "platform/zornet/Types.h"
#include "platform/zornet/device/Burst.h"

namespace Zornet {

/// Frames that wait to be sent, in order, with the number of the port that each came from. They lie one
/// behind the other in one region, each behind a record, and the region is used as a ring. It is allocated
/// with the object, and nothing after. Invariants: frames lie from `head_` to `tail_`, or, where `tail_` is
/// the lesser, from `head_` to `wrap_` and from 0 to `tail_`; while any waits, `head_` and `tail_` differ or
/// `tail_` lies at the region's end; the oldest `inBursts_` of them are part of a burst, and the next one, if
/// there is one, lies at `next_`.
class SendBatch {
  public:
    /// All that may wait: 50,000 reports and more. Pages that are never reached take no memory.
    static constexpr std::size_t capacity = std::size_t{ 4 } << 20;

    SendBatch();
    SendBatch( SendBatch const& ) = delete;
    SendBatch& operator=( SendBatch const& ) = delete;

    std::size_t size() const { return frames_; }
    bool empty() const { return frames_ == 0; }
    /// Appends a copy. False where there is no room.
    bool push( U64 sender, std::span<U8 const> frame );
    /// Frames that are in no burst.
    std::size_t outsideBursts() const { return frames_ - inBursts_; }
    /// Makes the oldest frames that are in no burst the content of that one. They stay where they are until
    /// they are removed.
    void fill( Burst& burst );
    /// What was put into bursts and not removed is in none any more.
    void emptyBursts();
    /// Who sent the oldest frame. One must wait.
    U64 oldestSender() const { return record( head_ )->sender; }
    /// Removes the oldest frames.
    void pop( std::size_t frames );

  private:
    struct alignas( 16 ) Record {
        U64 sender;
        U32 bytes;
    };

    Record* record( std::size_t at ) const { return reinterpret_cast<Record*>( region_.get() + at ); }
    static std::size_t room( std::size_t frameBytes );
    bool makeRoom( std::size_t bytes );
    std::size_t after( std::size_t at ) const;

    std::unique_ptr<U8[]> region_;
    std::size_t head_ = 0;
    std::size_t tail_ = 0;
    std::size_t wrap_ = capacity;
    std::size_t frames_ = 0;
    std::size_t next_ = 0;
    std::size_t inBursts_ = 0;
};

} // namespace Zornet
