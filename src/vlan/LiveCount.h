#pragma once

#include "platform/zornet/Types.h"

namespace Zornet {

/// Counts the objects of a class that are alive in the process. For classes whose objects may outlive the
/// binding they were made for, so that a status and a test can tell how many do.
template <class T>
class LiveCount {
  public:
    static U32 live() { return live_; }

    LiveCount( LiveCount const& ) = delete;
    LiveCount& operator=( LiveCount const& ) = delete;

  protected:
    LiveCount() { ++live_; }
    ~LiveCount() { --live_; }

  private:
    inline static U32 live_ = 0;
};

} // namespace Zornet
