/// The attributes of the VLAN classes for code that does not know them. Access objects count from 386, after
/// those of their base, the others from 130.

#include "platform/zornet/EthDevPam.h"
#include "vlan/VlanTaggingPam.h"

namespace Zornet {

namespace {

using Kiv::AttributeKind;

constexpr char activityType[] = "Kiv::ActivityConfig";
constexpr char pamType[] = "Zornet::Pam";

struct Blocked {
    using Class = VlanPktMultiplexer;
    using Value = bool;
    static Class::Blocked const& members( Class const& multiplexer ) { return multiplexer.blocked(); }
    static Value value( Class::KivBlocked const& member ) { return member.blocked(); }
    static void is( Class& multiplexer, Bridging::VlanId const& vlanId, Value value ) {
        multiplexer.blockedIs( vlanId, value );
    }
    static void del( Class& multiplexer, Bridging::VlanId const& vlanId ) {
        multiplexer.blockedDel( vlanId );
    }
};

struct Channel {
    using Class = VlanPamMultiplexer;
    using Key = U16;
    static Class::VlanPams const& members( Class const& multiplexer ) { return multiplexer.vlanPam(); }
    static Class::VlanKey mapKey( Key vlanId ) { return { vlanId }; }
    static Key key( Class::KivVlanPam const& member ) { return member.fwkKey().vlanId; }
    static Kiv::Ptr<VlanPam> const& object( Class::KivVlanPam const& member ) { return member.vlanPam(); }
    static void del( Class& multiplexer, Key vlanId ) { multiplexer.vlanPamDel( vlanId ); }
};

constexpr Kiv::Attribute vlanPamTable[] = {
    Kiv::fixedPointerAttribute<&VlanPam::multiplexer>(
        VlanPam::attrMultiplexer, "multiplexer", "Zornet::VlanPktMultiplexer", AttributeKind::argument
    ),
    Kiv::pointerAttribute<&VlanPam::inputPkt, &VlanPam::inputPktIs>(
        VlanPam::attrInputPkt, "inputPkt", "Zornet::Pkt"
    ),
    Kiv::scalarAttribute<&VlanPam::vlanId, &VlanPam::vlanIdIs, &VlanPam::NotifieeConst::onVlanId>(
        VlanPam::attrVlanId, "vlanId", "0"
    ),
    Kiv::scalarAttribute<
        &VlanPam::initialized, &VlanPam::initializedIs, &VlanPam::NotifieeConst::onInitialized>(
        VlanPam::attrInitialized, "initialized", "false"
    ),
};
static_assert( Kiv::idsAscendFrom( vlanPamTable, 386 ) );

constexpr Kiv::Attribute innerPamSmTable[] = {
    Kiv::fixedPointerAttribute<&VTaggingInnerPamSm::kivFwkActivity>(
        VTaggingInnerPamSm::attrKivFwkActivity, "kivFwkActivity", activityType, AttributeKind::argument
    ),
    Kiv::fixedPointerAttribute<&VTaggingInnerPamSm::outerPam>(
        VTaggingInnerPamSm::attrOuterPam, "outerPam", "Zornet::VlanTaggingPam", AttributeKind::argument
    ),
    Kiv::fixedPointerAttribute<&VTaggingInnerPamSm::innerPam>(
        VTaggingInnerPamSm::attrInnerPam, "innerPam", pamType, AttributeKind::argument
    ),
};
static_assert( Kiv::idsAscendFrom( innerPamSmTable, 130 ) );

constexpr Kiv::Attribute taggingPamTable[] = {
    Kiv::readOnlyAttribute<&VlanTaggingPam::vlanId>(
        VlanTaggingPam::attrVlanId, "vlanId", AttributeKind::argument, nullptr
    ),
    Kiv::fixedPointerAttribute<&VlanTaggingPam::innerPam>(
        VlanTaggingPam::attrInnerPam, "innerPam", pamType, AttributeKind::argument
    ),
    Kiv::fixedPointerAttribute<&VlanTaggingPam::sm>(
        VlanTaggingPam::attrSm, "sm", "Zornet::VTaggingInnerPamSm"
    ),
    Kiv::scalarAttribute<
        &VlanTaggingPam::initialized, &VlanTaggingPam::initializedIs,
        &VlanTaggingPam::NotifieeConst::onInitialized>(
        VlanTaggingPam::attrInitialized, "initialized", "false"
    ),
};
static_assert( Kiv::idsAscendFrom( taggingPamTable, 386 ) );

using Multiplexer = VlanPktMultiplexer;
constexpr Kiv::Attribute multiplexerTable[] = {
    Kiv::fixedPointerAttribute<&Multiplexer::kivFwkActivity>(
        Multiplexer::attrKivFwkActivity, "kivFwkActivity", activityType, AttributeKind::argument
    ),
    Kiv::readOnlyAttribute<&Multiplexer::intf>(
        Multiplexer::attrIntf, "intf", AttributeKind::argument, nullptr
    ),
    Kiv::pointerAttribute<&Multiplexer::innerPam, &Multiplexer::innerPamIs>(
        Multiplexer::attrInnerPam, "innerPam", pamType
    ),
    Kiv::pointerAttribute<&Multiplexer::innerEthDevPam, &Multiplexer::innerEthDevPamIs>(
        Multiplexer::attrInnerEthDevPam, "innerEthDevPam", "Zornet::EthDevPam"
    ),
    Kiv::collectionAttribute<Blocked>(
        Multiplexer::attrBlocked, "blocked", "Zornet::VlanPktMultiplexer::KivBlocked"
    ),
    Kiv::settableAttribute<&Multiplexer::copyPktBeforeTx, &Multiplexer::copyPktBeforeTxIs>(
        Multiplexer::attrCopyPktBeforeTx, "copyPktBeforeTx", "true"
    ),
};
static_assert( Kiv::idsAscendFrom( multiplexerTable, 130 ) );

constexpr Kiv::Attribute channelsTable[] = {
    Kiv::collectionAttribute<Channel>( VlanPamMultiplexer::attrVlanPam, "vlanPam", "Zornet::VlanPam" ),
};
static_assert( Kiv::idsAscendFrom( channelsTable, 136 ) );

} // namespace

std::span<Kiv::Attribute const>
VlanPam::attributes() {
    return vlanPamTable;
}

std::span<Kiv::Attribute const>
VTaggingInnerPamSm::attributes() {
    return innerPamSmTable;
}

std::span<Kiv::Attribute const>
VlanTaggingPam::attributes() {
    return taggingPamTable;
}

std::span<Kiv::Attribute const>
VlanPktMultiplexer::attributes() {
    return multiplexerTable;
}

std::span<Kiv::Attribute const>
VlanPamMultiplexer::attributes() {
    return channelsTable;
}

} // namespace Zornet
