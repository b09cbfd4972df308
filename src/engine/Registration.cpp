#include "engine/Registration.h"

#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostTestAgentRoot.h"
#include "platform/kiv/RegistrationUnit.h"

namespace Igmp {

namespace {

template <class C>
constexpr Kiv::TypeDeclaration
object( char const* name ) {
    return Kiv::classType<C>( name, &Kiv::PtrInterface::_fwkType );
}

constinit Kiv::TypeSlot types[] = {
    { object<IgmpV3ReportProcessInfo>( "Igmp::IgmpV3ReportProcessInfo" ) },
    { object<IgmpHostGroupTimerSm>( "Igmp::IgmpHostGroupTimerSm" ) },
    { object<IgmpV3HostGeneralQueryTimerSm>( "Igmp::IgmpV3HostGeneralQueryTimerSm" ) },
    { object<IgmpV3HostGroupQueryTimerSm>( "Igmp::IgmpV3HostGroupQueryTimerSm" ) },
    { object<IgmpV3GroupCallbackSm>( "Igmp::IgmpV3GroupCallbackSm" ) },
    { object<IgmpV3HostGroupSm>( "Igmp::IgmpV3HostGroupSm" ) },
    { object<IgmpV3HostAggregatedSenderSm>( "Igmp::IgmpV3HostAggregatedSenderSm" ) },
    { object<IgmpHostSm>( "Igmp::IgmpHostSm" ) },
    { object<IgmpHostDirSm>( "Igmp::IgmpHostDirSm" ) },
    { object<IgmpHostConfigHelper>( "Igmp::IgmpHostConfigHelper" ) },
    { Kiv::classType<IgmpHostTestAgentRoot>( "Igmp::IgmpHostTestAgentRoot", &Kiv::Entity::_fwkType ) },
};
constexpr Kiv::NamedKey namedKeys[] = {
    { "Igmp::IgmpHostDirSm", "multiplexerDir", "multiplexerDir_Intf" },
};
constinit Kiv::RegistrationUnit unit( "Igmp", types, namedKeys );

/// The host model loads first, then the state machines, then the VLAN classes.
[[gnu::init_priority( 65002 ), maybe_unused]] Kiv::UnitLoader const loaded( unit );

} // namespace

void
kivInitIgmpHostSm() {
    unit.registerTypes();
}

Kiv::Type*
IgmpV3ReportProcessInfo::_fwkType() {
    return unit.type( "Igmp::IgmpV3ReportProcessInfo" );
}

Kiv::Type*
IgmpHostGroupTimerSm::_fwkType() {
    return unit.type( "Igmp::IgmpHostGroupTimerSm" );
}

Kiv::Type*
IgmpV3HostGeneralQueryTimerSm::_fwkType() {
    return unit.type( "Igmp::IgmpV3HostGeneralQueryTimerSm" );
}

Kiv::Type*
IgmpV3HostGroupQueryTimerSm::_fwkType() {
    return unit.type( "Igmp::IgmpV3HostGroupQueryTimerSm" );
}

Kiv::Type*
IgmpV3GroupCallbackSm::_fwkType() {
    return unit.type( "Igmp::IgmpV3GroupCallbackSm" );
}

Kiv::Type*
IgmpV3HostGroupSm::_fwkType() {
    return unit.type( "Igmp::IgmpV3HostGroupSm" );
}

Kiv::Type*
IgmpV3HostAggregatedSenderSm::_fwkType() {
    return unit.type( "Igmp::IgmpV3HostAggregatedSenderSm" );
}

Kiv::Type*
IgmpHostSm::_fwkType() {
    return unit.type( "Igmp::IgmpHostSm" );
}

Kiv::Type*
IgmpHostDirSm::_fwkType() {
    return unit.type( "Igmp::IgmpHostDirSm" );
}

Kiv::Type*
IgmpHostConfigHelper::_fwkType() {
    return unit.type( "Igmp::IgmpHostConfigHelper" );
}

Kiv::Type*
IgmpHostTestAgentRoot::_fwkType() {
    return unit.type( "Igmp::IgmpHostTestAgentRoot" );
}

} // namespace Igmp
