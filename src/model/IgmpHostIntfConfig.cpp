#include "model/IgmpHostIntfConfig.h"

#include "platform/kiv/CompositeText.h"

namespace Igmp {

namespace {

using Config = IgmpHostIntfConfig;
using Kiv::AttributeKind;

constexpr char typeName[] = "Igmp::IgmpHostIntfConfig";
constexpr Kiv::Attribute table[] = {
    Kiv::readOnlyAttribute<&Config::intfId>( Config::attrIntfId, "intfId", AttributeKind::argument, "" ),
    Kiv::readOnlyAttribute<&Config::deviceName>(
        Config::attrDeviceName, "deviceName", AttributeKind::argument, ""
    ),
    Kiv::readOnlyAttribute<&Config::vlanId>( Config::attrVlanId, "vlanId", AttributeKind::argument, "0" ),
    Kiv::readOnlyAttribute<&Config::tagged>( Config::attrTagged, "tagged", AttributeKind::argument, "false" ),
    Kiv::readOnlyAttribute<&Config::useMux>( Config::attrUseMux, "useMux", AttributeKind::argument, "false" ),
};
static_assert( Kiv::idsAscendFrom( table, 2 ) );

} // namespace

IgmpHostIntfConfig::IgmpHostIntfConfig(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end
)
    : IgmpHostIntfConfig( Kiv::compositeArguments( typeName, table, at, end ) ) {}

IgmpHostIntfConfig::IgmpHostIntfConfig( Kiv::NboAttrLog::In* in, Kiv::StreamBogon )
    : intfId_( Kiv::NboAttrLog::valueIn<Zornet::IntfId>( *in ) ),
      deviceName_( in->nextString() ),
      vlanId_( in->nextU16() ),
      tagged_( in->nextbool() ),
      useMux_( in->nextbool() ) {}

IgmpHostIntfConfig::IgmpHostIntfConfig( std::span<std::any const> values )
    : IgmpHostIntfConfig(
          std::any_cast<Zornet::IntfId const&>( values[0] ), std::any_cast<Kiv::String8 const&>( values[1] ),
          std::any_cast<U16>( values[2] ), std::any_cast<bool>( values[3] ), std::any_cast<bool>( values[4] )
      ) {}

std::span<Kiv::Attribute const>
IgmpHostIntfConfig::attributes() {
    return table;
}

Kiv::String8
valueToStrep( IgmpHostIntfConfig const& config ) {
    return Kiv::compositeText( typeName, table, Kiv::ValueHolder( config ) );
}

Kiv::Ptr<Kiv::NboAttrLog::Out> const&
operator<<( Kiv::Ptr<Kiv::NboAttrLog::Out> const& out, IgmpHostIntfConfig const& config ) {
    for ( Kiv::Attribute const& field : table ) {
        field.type->out( *out, field.read( Kiv::ValueHolder( config ) ) );
    }
    return out;
}

void
sequenceToValue(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IgmpHostIntfConfig* config
) {
    *config = IgmpHostIntfConfig( at, end );
}

} // namespace Igmp
