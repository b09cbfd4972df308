#pragma once

#include <array>
#include <vector>

#include "platform/kiv/NotifieeConst.h"

namespace Kiv {

/// A walk over the reactors that were registered when it was filled: strong references, so that one that
/// leaves during the walk stays valid and one that arrives is not met. The first few live in the object,
/// because most lists are that short and a walk must not cost an allocation.
class SnapshotIterator {
  public:
    using Reactor = PtrInterface::NotifieeConst;

    void add( Reactor* reactor ) {
        if ( count_ < inPlace_.size() ) {
            inPlace_[count_] = reactor;
        } else {
            further_.emplace_back( reactor );
        }
        ++count_;
    }
    explicit operator bool() const { return at_ < count_; }
    SnapshotIterator& operator++() {
        slot() = nullptr;
        ++at_;
        return *this;
    }
    Reactor& operator*() { return *slot(); }
    Reactor* operator->() { return slot().get(); }

  private:
    Ptr<Reactor>& slot() { return at_ < inPlace_.size() ? inPlace_[at_] : further_[at_ - inPlace_.size()]; }

    std::array<Ptr<Reactor>, 4> inPlace_;
    std::vector<Ptr<Reactor>> further_;
    std::size_t count_ = 0;
    std::size_t at_ = 0;
};

} // namespace Kiv
