#pragma once

#include "platform/kiv/Clock.h"
#include "platform/quillog/Trace.h"

namespace Quillog {

/// Traces how long its scope took, where the handle takes the level.
class BlockTimer {
  public:
    BlockTimer( Kiv::TraceHandle const& handle, int level, char const* what )
        : handle_( handle ),
          level_( level ),
          what_( what ),
          start_( handle.on( level ) ? Kiv::now() : Kiv::never ) {}
    BlockTimer( BlockTimer const& ) = delete;
    BlockTimer& operator=( BlockTimer const& ) = delete;
    ~BlockTimer() {
        if ( Kiv::isFinite( start_ ) ) {
            KIV_TRACE( handle_, level_ ) << what_ << " took " << Kiv::now() - start_ << " sec";
        }
    }

  private:
    Kiv::TraceHandle const& handle_;
    int level_;
    char const* what_;
    Kiv::Seconds start_;
};

} // namespace Quillog
