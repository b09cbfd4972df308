#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "lab/WireSegment.h"
#include "platform/zornet/device/DeviceProvider.h"

namespace Lab {

/// A network in memory, for access objects in place of a machine's devices: named segments, and devices
/// attached to them. A device that is attached to no segment is one that is missing. All chance comes from
/// one generator, so that two runs with one seed, one start time and the same traffic are alike to the byte.
///
/// It must outlive the scope that puts it in force; access objects that are still open then have lost their
/// device.
class Wire : public Zornet::DeviceProvider {
  public:
    explicit Wire( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, Zornet::U64 seed = 1 );
    ~Wire() override;
    Wire( Wire const& ) = delete;
    Wire& operator=( Wire const& ) = delete;

    /// The segment of that name, made on first demand. It stands as long as the wire.
    WireSegment& segment( std::string const& name );
    /// Where devices land that nobody has attached by the time somebody opens them; none, the default, leaves
    /// them missing.
    void defaultSegmentIs( std::optional<std::string> const& name ) { defaultSegment_ = name; }

    /// Attaches a device, takes it off the segment that it was on, and brings it to life where it was
    /// missing.
    void attach( Zornet::NamespaceName const& ns, Kiv::String8 const& device, std::string const& segment );
    /// Takes a device away. Frames on their way from it still arrive.
    void detach( Zornet::NamespaceName const& ns, Kiv::String8 const& device );
    /// Takes a device's link down or up. A device with a link that is down neither hears nor sends.
    void linkUpIs( Zornet::NamespaceName const& ns, Kiv::String8 const& device, bool up );

  protected:
    Kiv::Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override;

  private:
    WireDevice& wireDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name );

    Kiv::Ptr<Lumo::TimerWheel const> wheel_;
    WireSegment::Random random_;
    std::optional<std::string> defaultSegment_;
    std::map<std::string, std::unique_ptr<WireSegment>> segments_;
    std::vector<Kiv::Ptr<WireDevice>> devices_;
};

} // namespace Lab
