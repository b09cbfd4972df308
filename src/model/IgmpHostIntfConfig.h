#pragma once

#include "model/Types.h"
#include "platform/kiv/Attribute.h"
#include "platform/zornet/IntfId.h"

namespace Igmp {

/// Where a host sits, as one value: the interface, its device, and the VLAN. It is there for users of the
/// model who pass these settings around together; a host itself has them as attributes of its own, and no
/// state machine holds one. The fields are fixed at construction.
class IgmpHostIntfConfig {
  public:
    enum : AttributeId { attrIntfId = 2, attrDeviceName, attrVlanId, attrTagged, attrUseMux };

    explicit IgmpHostIntfConfig(
        Zornet::IntfId const& intfId = {}, Kiv::String8 const& deviceName = {}, U16 vlanId = 0,
        bool tagged = false, bool useMux = false
    )
        : intfId_( intfId ),
          deviceName_( deviceName ),
          vlanId_( vlanId ),
          tagged_( tagged ),
          useMux_( useMux ) {}
    /// From its text form; advances `at` past it. Raises RangeException. A number of a VLAN beyond 16 bits is
    /// cut, on purpose.
    IgmpHostIntfConfig( Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end );
    /// From its binary form on a stream: the fields in order, and nothing else. Raises what the reading of a
    /// field raises.
    IgmpHostIntfConfig( Kiv::NboAttrLog::In* in, Kiv::StreamBogon );
    /// From the values of its fields, in order.
    explicit IgmpHostIntfConfig( std::span<std::any const> values );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostIntfConfig>;
    static Kiv::Type* _fwkType();

    Zornet::IntfId const& intfId() const { return intfId_; }
    Kiv::String8 const& deviceName() const { return deviceName_; }
    U16 vlanId() const { return vlanId_; }
    bool tagged() const { return tagged_; }
    bool useMux() const { return useMux_; }

    friend bool operator==( IgmpHostIntfConfig const& a, IgmpHostIntfConfig const& b ) = default;

  private:
    Zornet::IntfId intfId_;
    Kiv::String8 deviceName_;
    U16 vlanId_;
    bool tagged_;
    bool useMux_;
};

Kiv::String8 valueToStrep( IgmpHostIntfConfig const& config );
/// Appends the binary form. Raises AttrLogRecordException for a text that no stream may carry.
Kiv::Ptr<Kiv::NboAttrLog::Out> const&
operator<<( Kiv::Ptr<Kiv::NboAttrLog::Out> const& out, IgmpHostIntfConfig const& config );
void sequenceToValue(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IgmpHostIntfConfig* config
);

} // namespace Igmp
