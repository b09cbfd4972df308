#pragma once

#include "platform/kiv/Clock.h"

namespace Support {

/// A clock that is a second later whenever it is read. It starts at 0.
class HurryingClock : public Kiv::Clock {
  public:
    Kiv::Seconds now() const override { return ++now_; }

  private:
    mutable Kiv::Seconds now_ = 0.0;
};

} // namespace Support
