#include "model/IgmpHost.h"

namespace Igmp {

namespace {

using Watcher = IgmpHost::NotifieeConst;

struct V3group {
    using Class = IgmpHost;
    static IgmpHost::V3groups const& members( IgmpHost const& host ) { return host.v3group(); }
    static void is( IgmpHost& host, Zornet::IpAddr const& group ) { host.v3groupIs( group ); }
    static void del( IgmpHost& host, Zornet::IpAddr const& group ) { host.v3groupDel( group ); }
};

constexpr Kiv::Attribute table[] = {
    announcing(
        Kiv::scalarAttribute<&IgmpHost::configVersion, &IgmpHost::configVersionIs, &Watcher::onConfigVersion>(
            IgmpHost::attrConfigVersion, "configVersion", "0"
        )
    ),
    Kiv::scalarAttribute<&IgmpHost::ipAddr, &IgmpHost::ipAddrIs, &Watcher::onIpAddr>(
        IgmpHost::attrIpAddr, "ipAddr", "0.0.0.0"
    ),
    Kiv::scalarAttribute<&IgmpHost::macAddr, &IgmpHost::macAddrIs, &Watcher::onMacAddr>(
        IgmpHost::attrMacAddr, "macAddr", "00:00:00:00:00:00"
    ),
    announcing( Kiv::scalarAttribute<
                &IgmpHost::intfConfigVersion, &IgmpHost::intfConfigVersionIs, &Watcher::onIntfConfigVersion>(
        IgmpHost::attrIntfConfigVersion, "intfConfigVersion", "0"
    ) ),
    Kiv::scalarAttribute<&IgmpHost::intfId, &IgmpHost::intfIdIs, &Watcher::onIntfId>(
        IgmpHost::attrIntfId, "intfId", ""
    ),
    Kiv::scalarAttribute<&IgmpHost::ns, &IgmpHost::nsIs, &Watcher::onNs>( IgmpHost::attrNs, "ns", "" ),
    Kiv::scalarAttribute<&IgmpHost::deviceName, &IgmpHost::deviceNameIs, &Watcher::onDeviceName>(
        IgmpHost::attrDeviceName, "deviceName", ""
    ),
    Kiv::scalarAttribute<&IgmpHost::vlanId, &IgmpHost::vlanIdIs, &Watcher::onVlanId>(
        IgmpHost::attrVlanId, "vlanId", "0"
    ),
    Kiv::scalarAttribute<&IgmpHost::tagged, &IgmpHost::taggedIs, &Watcher::onTagged>(
        IgmpHost::attrTagged, "tagged", "false"
    ),
    Kiv::scalarAttribute<&IgmpHost::useMux, &IgmpHost::useMuxIs, &Watcher::onUseMux>(
        IgmpHost::attrUseMux, "useMux", "false"
    ),
    Kiv::scalarAttribute<&IgmpHost::externalPam, &IgmpHost::externalPamIs, &Watcher::onExternalPam>(
        IgmpHost::attrExternalPam, "externalPam", "false"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::enableRouterAlert, &IgmpHost::enableRouterAlertIs, &Watcher::onEnableRouterAlert>(
        IgmpHost::attrEnableRouterAlert, "enableRouterAlert", "true"
    ),
    Kiv::scalarAttribute<&IgmpHost::blocked, &IgmpHost::blockedIs, &Watcher::onBlocked>(
        IgmpHost::attrBlocked, "blocked", "false"
    ),
    Kiv::scalarAttribute<&IgmpHost::direction, &IgmpHost::directionIs, &Watcher::onDirection>(
        IgmpHost::attrDirection, "direction", "both"
    ),
    Kiv::pointerAttribute<&IgmpHost::pam, &IgmpHost::pamIs>( IgmpHost::attrPam, "pam", "Zornet::Pam" ),
    announcing( Kiv::scalarAttribute<&IgmpHost::enabled, &IgmpHost::enabledIs, &Watcher::onEnabled>(
        IgmpHost::attrEnabled, "enabled", "false"
    ) ),
    Kiv::scalarAttribute<&IgmpHost::igmpVersion, &IgmpHost::igmpVersionIs, &Watcher::onIgmpVersion>(
        IgmpHost::attrIgmpVersion, "igmpVersion", "igmpVersion2"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::igmpVersionForced, &IgmpHost::igmpVersionForcedIs, &Watcher::onIgmpVersionForced>(
        IgmpHost::attrIgmpVersionForced, "igmpVersionForced", "false"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::processV3GroupChange, &IgmpHost::processV3GroupChangeIs, &Watcher::onProcessV3GroupChange>(
        IgmpHost::attrProcessV3GroupChange, "processV3GroupChange", "true"
    ),
    Kiv::collectionAttribute<V3group>( IgmpHost::attrV3group, "v3group", "Igmp::IgmpV3GroupRecord" ),
    Kiv::scalarAttribute<&IgmpHost::mtu, &IgmpHost::mtuIs, &Watcher::onMtu>(
        IgmpHost::attrMtu, "mtu", "1514"
    ),
    Kiv::scalarAttribute<&IgmpHost::robustness, &IgmpHost::robustnessIs, &Watcher::onRobustness>(
        IgmpHost::attrRobustness, "robustness", "2"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v1RouterPresentTimeout, &IgmpHost::v1RouterPresentTimeoutIs,
        &Watcher::onV1RouterPresentTimeout>(
        IgmpHost::attrV1RouterPresentTimeout, "v1RouterPresentTimeout", "400"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v2RouterPresentTimeout, &IgmpHost::v2RouterPresentTimeoutIs,
        &Watcher::onV2RouterPresentTimeout>(
        IgmpHost::attrV2RouterPresentTimeout, "v2RouterPresentTimeout", "400"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v1MaxResponseTime, &IgmpHost::v1MaxResponseTimeIs, &Watcher::onV1MaxResponseTime>(
        IgmpHost::attrV1MaxResponseTime, "v1MaxResponseTime", "100"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::maxResponseTimeTicksPerSec>(
        IgmpHost::attrMaxResponseTimeTicksPerSec, "maxResponseTimeTicksPerSec", Kiv::AttributeKind::constant,
        "10"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::defaultIgmpV3UnsolicitedReportIntvl>(
        IgmpHost::attrDefaultIgmpV3UnsolicitedReportIntvl, "defaultIgmpV3UnsolicitedReportIntvl",
        Kiv::AttributeKind::constant, "1"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::defaultIgmpV1V2UnsolicitedReportIntvl>(
        IgmpHost::attrDefaultIgmpV1V2UnsolicitedReportIntvl, "defaultIgmpV1V2UnsolicitedReportIntvl",
        Kiv::AttributeKind::constant, "10"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::unsolicitedReportInterval, &IgmpHost::unsolicitedReportIntervalIs,
        &Watcher::onUnsolicitedReportInterval>(
        IgmpHost::attrUnsolicitedReportInterval, "unsolicitedReportInterval", "0"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::enablePeriodicReport, &IgmpHost::enablePeriodicReportIs, &Watcher::onEnablePeriodicReport>(
        IgmpHost::attrEnablePeriodicReport, "enablePeriodicReport", "false"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

IgmpHost::~IgmpHost() {
    orphanAll( v3group_ );
}

std::span<Kiv::Attribute const>
IgmpHost::attributes() {
    return table;
}

IgmpHost::NotifieeConst::NotifieeConst( Ptr<IgmpHost const> const& notifier )
    : Kiv::Entity::NotifieeConst( notifier ) {}

IgmpHost::Notifiee::Notifiee( Ptr<IgmpHost> const& notifier ) : NotifieeConst( notifier ) {}

IgmpHost*
IgmpHost::Notifiee::notifier() const {
    return const_cast<IgmpHost*>( static_cast<IgmpHost const*>( notifierEntity() ) );
}

Ptr<IgmpV3GroupRecord>
IgmpHost::newV3group( Zornet::IpAddr const& group ) {
    return memberInsert(
        v3group_, attrV3group, igmpV3GroupRecordFactory( Zornet::valueToStrep( group ), group )
    );
}

Ptr<IgmpV3GroupRecord>
IgmpHost::v3groupIs( Zornet::IpAddr const& group ) {
    return memberIs(
        v3group_, group, attrV3group, &NotifieeConst::onV3group,
        [this]( Zornet::IpAddr const& key ) { return newV3group( key ); }
    );
}

void
IgmpHost::v3groupDel( Zornet::IpAddr const& group ) {
    memberDel( v3group_, group, attrV3group, &NotifieeConst::onV3group );
}

void
IgmpHost::v3groupDelAll() {
    for ( V3groups::Iterator at = v3group_.begin(); at; ++at ) {
        v3groupDel( at );
    }
}

void
IgmpHost::v3groupNotify( Zornet::IpAddr const& group ) {
    keyNotify( attrV3group, &NotifieeConst::onV3group, group );
}

Ptr<IgmpHost>
igmpHostFactory( Kiv::Name const& name ) {
    return new IgmpHost( name );
}

} // namespace Igmp
