#pragma once

#include <set>
#include <string>
#include <vector>

#include "lab/PcapWriter.h"
#include "lab/WireFrame.h"

namespace Lab {

/// The frames that were put onto one or more segments, in the order of sending, lost ones included: it
/// listens at the senders. Segments borrow it; it must outlive them or be taken off before.
class Capture {
  public:
    std::size_t count() const { return frames_.size(); }
    bool empty() const { return frames_.empty(); }
    /// Length of all frames together.
    std::size_t bytes() const { return bytes_.size(); }
    /// Valid until the capture changes. `index` must be below `count()`.
    WireFrame frame( std::size_t index ) const;
    /// The frames that one device sent, lost ones included. Valid until the capture changes.
    std::vector<WireFrame> framesFrom( std::string_view device ) const;

    void frameIs( WireFrame const& frame );
    void clear();

    void writePcap( std::ostream& out, PcapResolution resolution = PcapResolution::microseconds ) const;

  private:
    using Devices = std::set<std::string, std::less<>>;

    struct Entry {
        Kiv::Seconds time;
        std::string const* device;
        std::size_t begin;
        std::size_t size;
        bool lost;
    };

    std::string const& deviceName( std::string_view device );

    std::vector<Zornet::U8> bytes_; ///< of all frames, one behind the other
    std::vector<Entry> frames_;
    Devices devices_; ///< keeps each name once, where entries point at it
};

} // namespace Lab
