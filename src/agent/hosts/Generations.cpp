#include "agent/hosts/Generations.h"

#include <algorithm>

#include "platform/kiv/Type.h"

namespace Agent {

using Igmp::IgmpHost;

namespace {

struct Dependence {
    Kiv::AttributeId attribute;
    Kiv::AttributeId counter;
};

constexpr Dependence dependences[] = {
    { IgmpHost::attrIpAddr, IgmpHost::attrConfigVersion },
    { IgmpHost::attrMacAddr, IgmpHost::attrConfigVersion },
    { IgmpHost::attrMtu, IgmpHost::attrConfigVersion },
    { IgmpHost::attrEnableRouterAlert, IgmpHost::attrConfigVersion },
    { IgmpHost::attrIntfId, IgmpHost::attrIntfConfigVersion },
    { IgmpHost::attrNs, IgmpHost::attrIntfConfigVersion },
    { IgmpHost::attrDeviceName, IgmpHost::attrIntfConfigVersion },
    { IgmpHost::attrVlanId, IgmpHost::attrIntfConfigVersion },
    { IgmpHost::attrTagged, IgmpHost::attrIntfConfigVersion },
    { IgmpHost::attrUseMux, IgmpHost::attrIntfConfigVersion },
};

bool
needs( Settings const& settings, Kiv::Attribute const& counter ) {
    return std::any_of(
        settings.settings().begin(), settings.settings().end(),
        [&]( Setting const& setting ) { return generationOf( setting.attribute->id ) == &counter; }
    );
}

} // namespace

Kiv::Attribute const*
generationOf( Kiv::AttributeId attribute ) {
    for ( Dependence const& dependence : dependences ) {
        if ( dependence.attribute == attribute ) {
            return IgmpHost::_fwkType()->row( dependence.counter );
        }
    }
    return nullptr;
}

Kiv::U32
nextGeneration( Kiv::U32 present, Kiv::U32 step ) {
    Kiv::U32 const next = present + step;
    return next == 0 ? 1 : next;
}

std::vector<Kiv::Attribute const*>
setHost( IgmpHost& host, Settings const& settings, Kiv::U32 step ) {
    for ( Setting const& setting : settings.settings() ) {
        if ( !setting.attribute->announces ) {
            setting.attribute->write( host, setting.value );
        }
    }
    std::vector<Kiv::Attribute const*> raised;
    for ( Kiv::Attribute const& row : IgmpHost::attributes() ) {
        if ( !row.announces ) {
            continue;
        }
        if ( Setting const* const setting = settings.find( row.id ) ) {
            row.write( host, setting->value );
        } else if ( needs( settings, row ) ) {
            row.write( host, nextGeneration( std::any_cast<Kiv::U32>( row.read( host ) ), step ) );
            raised.push_back( &row );
        }
    }
    return raised;
}

} // namespace Agent
