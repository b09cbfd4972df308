#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "lab/PcapWriter.h"
#include "platform/kiv/Activity.h"
#include "tests/support/Namespace.h"

namespace Support {

/// Captures every IGMP frame that arrives at a real device into a file, as long as it lives. It reads on the
/// default activity, while that runs.
class WireTap : private Kiv::IoHandler {
  public:
    WireTap( Namespace const& ns, char const* device );
    ~WireTap() override;
    WireTap( WireTap const& ) = delete;
    WireTap& operator=( WireTap const& ) = delete;

    /// The capture so far. The file goes with the tap.
    std::string const& path() const { return path_; }
    std::size_t frames() const { return frames_; }
    /// Takes in what waits and brings the file up to date.
    void flush();

  private:
    void handleIo( Kiv::U32 ) override { flush(); }

    int socket_ = -1;
    std::string path_;
    std::ofstream file_;
    Lab::PcapWriter writer_;
    std::size_t frames_ = 0;
};

/// What `tshark` says of the capture: a line per IGMP frame that meets `filter`, with the fields separated by
/// '|' and several values of one field by ','. Checksums of IP and IGMP are verified.
std::vector<std::string>
tshark( std::string const& path, std::string const& filter, std::vector<std::string> const& fields );

} // namespace Support
