#pragma once

#include <deque>
#include <memory>
#include <utility>

#include "platform/kiv/Ptr.h"
#include "platform/zornet/Pkt.h"

namespace Zornet {

/// Packets that wait to be read, oldest first, `maxPkts` at most. Where each packet is read before the next
/// arrives, which is the ordinary case, it allocates nothing: only what waits behind the oldest packet lies
/// on the heap. Invariant: something waits there only while the oldest packet is set.
class PktQueue {
  public:
    static constexpr std::size_t maxPkts = 256;

    std::size_t size() const { return ( oldest_ ? 1 : 0 ) + ( rest_ ? rest_->size() : 0 ); }

    /// Appends a packet. Returns false where the oldest had to go for it.
    bool push( Kiv::Ptr<Pkt> const& pkt ) {
        bool const room = size() < maxPkts;
        if ( !room ) {
            pop();
        }
        if ( !oldest_ ) {
            oldest_ = pkt;
            return room;
        }
        if ( !rest_ ) {
            rest_ = std::make_unique<std::deque<Kiv::Ptr<Pkt>>>();
        }
        rest_->push_back( pkt );
        return room;
    }
    /// Takes the oldest packet out; null where none waits.
    Kiv::Ptr<Pkt> pop() {
        Kiv::Ptr<Pkt> next;
        if ( rest_ ) {
            next = std::move( rest_->front() );
            rest_->pop_front();
            if ( rest_->empty() ) {
                rest_.reset();
            }
        }
        return std::exchange( oldest_, std::move( next ) );
    }
    void clear() {
        oldest_ = nullptr;
        rest_.reset();
    }

  private:
    Kiv::Ptr<Pkt> oldest_;
    std::unique_ptr<std::deque<Kiv::Ptr<Pkt>>> rest_; ///< none, or not empty
};

} // namespace Zornet
