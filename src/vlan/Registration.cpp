#include "vlan/Registration.h"

#include "platform/kiv/RegistrationUnit.h"
#include "vlan/VlanTaggingPam.h"

namespace Zornet {

namespace {

constinit Kiv::TypeSlot types[] = {
    { Kiv::classType<VlanPam>( "Zornet::VlanPam", &Pam::_fwkType ) },
    { Kiv::classType<VTaggingInnerPamSm>( "Zornet::VTaggingInnerPamSm", &Kiv::PtrInterface::_fwkType ) },
    { Kiv::classType<VlanTaggingPam>( "Zornet::VlanTaggingPam", &Pam::_fwkType ) },
    { Kiv::classType<VlanPktMultiplexer>( "Zornet::VlanPktMultiplexer", &Kiv::PtrInterface::_fwkType ) },
    { Kiv::classType<VlanPamMultiplexer>( "Zornet::VlanPamMultiplexer", &VlanPktMultiplexer::_fwkType ) },
};
constinit Kiv::RegistrationUnit unit( "Zornet", types );

/// The host model loads first, then the state machines, then the VLAN classes.
[[gnu::init_priority( 65003 ), maybe_unused]] Kiv::UnitLoader const loaded( unit );

} // namespace

void
kivInitVlanTaggingPam() {
    unit.registerTypes();
}

Kiv::Type*
VlanPam::_fwkType() {
    return unit.type( "Zornet::VlanPam" );
}

Kiv::Type*
VTaggingInnerPamSm::_fwkType() {
    return unit.type( "Zornet::VTaggingInnerPamSm" );
}

Kiv::Type*
VlanTaggingPam::_fwkType() {
    return unit.type( "Zornet::VlanTaggingPam" );
}

Kiv::Type*
VlanPktMultiplexer::_fwkType() {
    return unit.type( "Zornet::VlanPktMultiplexer" );
}

Kiv::Type*
VlanPamMultiplexer::_fwkType() {
    return unit.type( "Zornet::VlanPamMultiplexer" );
}

} // namespace Zornet
