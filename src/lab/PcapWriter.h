#pragma once

#include <iosfwd>
#include <span>

#include "platform/zornet/Types.h"

namespace Lab {

enum class PcapResolution { microseconds, nanoseconds };

/// Writes Ethernet frames to a stream in the capture format that packet analysers read. The same frames and
/// times give the same bytes on every machine.
class PcapWriter {
  public:
    /// Writes the file header. The stream must be binary and outlive the writer; its state tells of failures.
    PcapWriter( std::ostream& out, PcapResolution resolution );

    /// Appends a frame; times in seconds since 1970, rounded to the resolution.
    void frameIs( Kiv::Seconds time, std::span<Zornet::U8 const> frame );

  private:
    void write( Zornet::U32 value );

    std::ostream& out_;
    double fractionsPerSecond_;
};

} // namespace Lab
