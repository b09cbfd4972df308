#pragma once

#include <string>

#include "platform/zornet/device/Device.h"

namespace Lab {

class WireSegment;

/// A device on a wire. It runs while it is attached to a segment and its link is up. Its wire keeps it; where
/// an access object keeps it longer, it is a device without a segment.
class WireDevice : public Zornet::Device {
  public:
    WireDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name );

    /// "name", or "namespace/name" outside the default namespace.
    std::string const& label() const { return label_; }
    WireSegment* segment() const { return segment_; }
    void segmentIs( WireSegment* segment );
    bool linkUp() const { return linkUp_; }
    void linkUpIs( bool up );

    /// Refuses what is shorter than an Ethernet header, as a network does.
    bool send( Zornet::EthDevPam const& sender, std::span<Zornet::U8 const> frame ) override;
    /// Hands a frame to the ports, where the device runs. Returns whether it does.
    bool receive( std::span<Zornet::U8 const> frame );

  private:
    std::string label_;
    WireSegment* segment_ = nullptr;
    bool linkUp_ = true;
};

} // namespace Lab
