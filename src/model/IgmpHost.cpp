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
            IgmpHost::attrConfigVersion, "configVersion", "0",
            "Generation of ipAddr, macAddr, mtu and enableRouterAlert: they take effect when it moves"
        )
    ),
    Kiv::scalarAttribute<&IgmpHost::ipAddr, &IgmpHost::ipAddrIs, &Watcher::onIpAddr>(
        IgmpHost::attrIpAddr, "ipAddr", "0.0.0.0", "IPv4 source address"
    ),
    Kiv::scalarAttribute<&IgmpHost::macAddr, &IgmpHost::macAddrIs, &Watcher::onMacAddr>(
        IgmpHost::attrMacAddr, "macAddr", "00:00:00:00:00:00", "Ethernet source address"
    ),
    announcing( Kiv::scalarAttribute<
                &IgmpHost::intfConfigVersion, &IgmpHost::intfConfigVersionIs, &Watcher::onIntfConfigVersion>(
        IgmpHost::attrIntfConfigVersion, "intfConfigVersion", "0",
        "Generation of device, namespace, VLAN and interface: they take effect when it moves; at 0 the host "
        "opens no device"
    ) ),
    Kiv::scalarAttribute<&IgmpHost::intfId, &IgmpHost::intfIdIs, &Watcher::onIntfId>(
        IgmpHost::attrIntfId, "intfId", "",
        "Name of the interface that the host sits on; hosts that share a device (useMux) share this"
    ),
    Kiv::scalarAttribute<&IgmpHost::ns, &IgmpHost::nsIs, &Watcher::onNs>(
        IgmpHost::attrNs, "ns", "", "Network namespace of the device; empty for that of the process"
    ),
    Kiv::scalarAttribute<&IgmpHost::deviceName, &IgmpHost::deviceNameIs, &Watcher::onDeviceName>(
        IgmpHost::attrDeviceName, "deviceName", "", "Network device to send and receive on"
    ),
    Kiv::scalarAttribute<&IgmpHost::vlanId, &IgmpHost::vlanIdIs, &Watcher::onVlanId>(
        IgmpHost::attrVlanId, "vlanId", "0", "VLAN of the host, where tagged: 1 to 4094"
    ),
    Kiv::scalarAttribute<&IgmpHost::tagged, &IgmpHost::taggedIs, &Watcher::onTagged>(
        IgmpHost::attrTagged, "tagged", "false", "Frames carry an 802.1Q tag"
    ),
    Kiv::scalarAttribute<&IgmpHost::useMux, &IgmpHost::useMuxIs, &Watcher::onUseMux>(
        IgmpHost::attrUseMux, "useMux", "false",
        "Share one access to the device with the other tagged hosts of the interface"
    ),
    Kiv::scalarAttribute<&IgmpHost::externalPam, &IgmpHost::externalPamIs, &Watcher::onExternalPam>(
        IgmpHost::attrExternalPam, "externalPam", "false",
        "Packets go through an access object from outside, and no device is opened"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::enableRouterAlert, &IgmpHost::enableRouterAlertIs, &Watcher::onEnableRouterAlert>(
        IgmpHost::attrEnableRouterAlert, "enableRouterAlert", "true",
        "Sent packets carry the IPv4 Router Alert option (RFC 2113)"
    ),
    Kiv::scalarAttribute<&IgmpHost::blocked, &IgmpHost::blockedIs, &Watcher::onBlocked>(
        IgmpHost::attrBlocked, "blocked", "false", "Send nothing and leave unread what arrives"
    ),
    Kiv::scalarAttribute<&IgmpHost::direction, &IgmpHost::directionIs, &Watcher::onDirection>(
        IgmpHost::attrDirection, "direction", "both",
        "Which way traffic may flow: with ingress nothing is sent, with egress nothing is received"
    ),
    Kiv::pointerAttribute<&IgmpHost::pam, &IgmpHost::pamIs>( IgmpHost::attrPam, "pam", "Zornet::Pam" ),
    announcing( Kiv::scalarAttribute<&IgmpHost::enabled, &IgmpHost::enabledIs, &Watcher::onEnabled>(
        IgmpHost::attrEnabled, "enabled", "false", "The host exists on the wire"
    ) ),
    Kiv::scalarAttribute<&IgmpHost::igmpVersion, &IgmpHost::igmpVersionIs, &Watcher::onIgmpVersion>(
        IgmpHost::attrIgmpVersion, "igmpVersion", "igmpVersion2",
        "IGMP version asked for, 1 to 3: a ceiling for the one in force"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::igmpVersionForced, &IgmpHost::igmpVersionForcedIs, &Watcher::onIgmpVersionForced>(
        IgmpHost::attrIgmpVersionForced, "igmpVersionForced", "false",
        "Older queriers do not bring the version down; at version 3 a version 2 query for one of the groups "
        "then ends the process"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::processV3GroupChange, &IgmpHost::processV3GroupChangeIs, &Watcher::onProcessV3GroupChange>(
        IgmpHost::attrProcessV3GroupChange, "processV3GroupChange", "true", "Act on changes of the groups"
    ),
    Kiv::collectionAttribute<V3group>( IgmpHost::attrV3group, "v3group", "Igmp::IgmpV3GroupRecord" ),
    Kiv::scalarAttribute<&IgmpHost::mtu, &IgmpHost::mtuIs, &Watcher::onMtu>(
        IgmpHost::attrMtu, "mtu", "1514", "Size limit of a sent frame in bytes, headers included; below 65536"
    ),
    Kiv::scalarAttribute<&IgmpHost::robustness, &IgmpHost::robustnessIs, &Watcher::onRobustness>(
        IgmpHost::attrRobustness, "robustness", "2",
        "How often a state change is reported in version 3 (RFC 3376, section 8.1); 1 to 255"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v1RouterPresentTimeout, &IgmpHost::v1RouterPresentTimeoutIs,
        &Watcher::onV1RouterPresentTimeout>(
        IgmpHost::attrV1RouterPresentTimeout, "v1RouterPresentTimeout", "400",
        "Seconds for which a version 1 querier is remembered"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v2RouterPresentTimeout, &IgmpHost::v2RouterPresentTimeoutIs,
        &Watcher::onV2RouterPresentTimeout>(
        IgmpHost::attrV2RouterPresentTimeout, "v2RouterPresentTimeout", "400",
        "Seconds for which a version 2 querier is remembered"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::v1MaxResponseTime, &IgmpHost::v1MaxResponseTimeIs, &Watcher::onV1MaxResponseTime>(
        IgmpHost::attrV1MaxResponseTime, "v1MaxResponseTime", "100",
        "Maximum response time for a query that names none: tenths of a second, but whole seconds in version "
        "3"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::maxResponseTimeTicksPerSec>(
        IgmpHost::attrMaxResponseTimeTicksPerSec, "maxResponseTimeTicksPerSec", Kiv::AttributeKind::constant,
        "10", "Ticks per second of a Max Resp Time field"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::defaultIgmpV3UnsolicitedReportIntvl>(
        IgmpHost::attrDefaultIgmpV3UnsolicitedReportIntvl, "defaultIgmpV3UnsolicitedReportIntvl",
        Kiv::AttributeKind::constant, "1",
        "Seconds between unsolicited reports of version 3 where no interval is asked for"
    ),
    Kiv::readOnlyAttribute<&IgmpHost::defaultIgmpV1V2UnsolicitedReportIntvl>(
        IgmpHost::attrDefaultIgmpV1V2UnsolicitedReportIntvl, "defaultIgmpV1V2UnsolicitedReportIntvl",
        Kiv::AttributeKind::constant, "10",
        "Seconds between unsolicited reports of versions 1 and 2 where no interval is asked for"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::unsolicitedReportInterval, &IgmpHost::unsolicitedReportIntervalIs,
        &Watcher::onUnsolicitedReportInterval>(
        IgmpHost::attrUnsolicitedReportInterval, "unsolicitedReportInterval", "0",
        "Seconds between unsolicited reports; 0 leaves the default of the version"
    ),
    Kiv::scalarAttribute<
        &IgmpHost::enablePeriodicReport, &IgmpHost::enablePeriodicReportIs, &Watcher::onEnablePeriodicReport>(
        IgmpHost::attrEnablePeriodicReport, "enablePeriodicReport", "false",
        "Unsolicited reports go on for as long as the host is a member; needs an unsolicitedReportInterval"
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
