#include "model/Registration.h"

#include "model/IgmpHostDir.h"
#include "model/IgmpHostIntfConfig.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/kiv/RegistrationUnit.h"

namespace Igmp {

namespace {

template <class E>
std::vector<Kiv::Enumerator>
enumerators( std::span<Kiv::EnumName<E> const> names ) {
    std::vector<Kiv::Enumerator> all;
    for ( Kiv::EnumName<E> const& one : names ) {
        all.push_back( { one.text, static_cast<Kiv::S32>( one.value ) } );
    }
    return all;
}

std::vector<Kiv::Enumerator>
versions() {
    return enumerators( igmpVersions() );
}

std::vector<Kiv::Enumerator>
states() {
    return enumerators( timerStates() );
}

constexpr Kiv::TypeDeclaration
enumeration( char const* name, std::vector<Kiv::Enumerator> ( *names )() ) {
    return { name, Kiv::TypeKind::enumeration, nullptr, nullptr, names };
}

template <class C>
constexpr Kiv::TypeDeclaration
entity( char const* name ) {
    return Kiv::classType<C>( name, &Kiv::Entity::_fwkType );
}

constinit Kiv::TypeSlot types[] = {
    { enumeration( "Igmp::IgmpVersion", &versions ) },
    { enumeration( "Igmp::TimerState", &states ) },
    { entity<IgmpV3HostGroupSourceList>( "Igmp::IgmpV3HostGroupSourceList" ) },
    { entity<IgmpV3GroupRecord>( "Igmp::IgmpV3GroupRecord" ) },
    { Kiv::valueTypeDeclaration<IgmpHostIntfConfig>( "Igmp::IgmpHostIntfConfig" ) },
    { entity<IgmpHost>( "Igmp::IgmpHost" ) },
    { entity<IgmpHostDir>( "Igmp::IgmpHostDir" ) },
    { entity<IgmpHostStatus>( "Igmp::IgmpHostStatus" ) },
    { entity<IgmpHostStatusDir>( "Igmp::IgmpHostStatusDir" ) },
};
constinit Kiv::RegistrationUnit unit( "Igmp", types );

/// The host model loads first, then the state machines, then the VLAN classes.
[[gnu::init_priority( 65001 ), maybe_unused]] Kiv::UnitLoader const loaded( unit );

} // namespace

void
kivInitIgmpHost() {
    unit.registerTypes();
}

Kiv::Type*
IgmpV3HostGroupSourceList::_fwkType() {
    return unit.type( "Igmp::IgmpV3HostGroupSourceList" );
}

Kiv::Type*
IgmpV3GroupRecord::_fwkType() {
    return unit.type( "Igmp::IgmpV3GroupRecord" );
}

Kiv::Type*
IgmpHostIntfConfig::_fwkType() {
    return unit.type( "Igmp::IgmpHostIntfConfig" );
}

Kiv::Type*
IgmpHost::_fwkType() {
    return unit.type( "Igmp::IgmpHost" );
}

Kiv::Type*
IgmpHostDir::_fwkType() {
    return unit.type( "Igmp::IgmpHostDir" );
}

Kiv::Type*
IgmpHostStatus::_fwkType() {
    return unit.type( "Igmp::IgmpHostStatus" );
}

Kiv::Type*
IgmpHostStatusDir::_fwkType() {
    return unit.type( "Igmp::IgmpHostStatusDir" );
}

} // namespace Igmp
