#include "model/IgmpHostStatus.h"

namespace Igmp {

namespace {

using Watcher = IgmpHostStatus::NotifieeConst;

constexpr Kiv::Attribute table[] = {
    Kiv::scalarAttribute<
        &IgmpHostStatus::v1QueryReceived, &IgmpHostStatus::v1QueryReceivedIs, &Watcher::onV1QueryReceived>(
        IgmpHostStatus::attrV1QueryReceived, "v1QueryReceived", "0",
        "Reserved, always 0; version 1 queries count in v2GeneralQueryReceived"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v1ReportsSent, &IgmpHostStatus::v1ReportsSentIs, &Watcher::onV1ReportsSent>(
        IgmpHostStatus::attrV1ReportsSent, "v1ReportsSent", "0",
        "Version 1 reports sent, those dropped by a blocked host too"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v12ReportReceived, &IgmpHostStatus::v12ReportReceivedIs,
        &Watcher::onV12ReportReceived>(
        IgmpHostStatus::attrV12ReportReceived, "v12ReportReceived", "0",
        "Version 1 and 2 reports of other hosts received"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v2GeneralQueryReceived, &IgmpHostStatus::v2GeneralQueryReceivedIs,
        &Watcher::onV2GeneralQueryReceived>(
        IgmpHostStatus::attrV2GeneralQueryReceived, "v2GeneralQueryReceived", "0",
        "General queries of versions 1 and 2 received, and version 2 group queries at a host held at version "
        "3"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v2GroupQueryReceived, &IgmpHostStatus::v2GroupQueryReceivedIs,
        &Watcher::onV2GroupQueryReceived>(
        IgmpHostStatus::attrV2GroupQueryReceived, "v2GroupQueryReceived", "0",
        "Version 2 group queries received"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v2ReportsSent, &IgmpHostStatus::v2ReportsSentIs, &Watcher::onV2ReportsSent>(
        IgmpHostStatus::attrV2ReportsSent, "v2ReportsSent", "0",
        "Version 2 reports sent, those dropped by a blocked host too"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v2LeavesSent, &IgmpHostStatus::v2LeavesSentIs, &Watcher::onV2LeavesSent>(
        IgmpHostStatus::attrV2LeavesSent, "v2LeavesSent", "0",
        "Version 2 leaves sent, those dropped by a blocked host too"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3GeneralQueryReceived, &IgmpHostStatus::v3GeneralQueryReceivedIs,
        &Watcher::onV3GeneralQueryReceived>(
        IgmpHostStatus::attrV3GeneralQueryReceived, "v3GeneralQueryReceived", "0",
        "Version 3 general queries received; group queries count here too"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3GroupQueryReceived, &IgmpHostStatus::v3GroupQueryReceivedIs,
        &Watcher::onV3GroupQueryReceived>(
        IgmpHostStatus::attrV3GroupQueryReceived, "v3GroupQueryReceived", "0",
        "Version 3 group queries without sources received"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3GroupSourceQueryReceived, &IgmpHostStatus::v3GroupSourceQueryReceivedIs,
        &Watcher::onV3GroupSourceQueryReceived>(
        IgmpHostStatus::attrV3GroupSourceQueryReceived, "v3GroupSourceQueryReceived", "0",
        "Version 3 group queries with sources received"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3ReportReceived, &IgmpHostStatus::v3ReportReceivedIs, &Watcher::onV3ReportReceived>(
        IgmpHostStatus::attrV3ReportReceived, "v3ReportReceived", "0",
        "Version 3 reports of other hosts received"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3CurrentStateReportSent, &IgmpHostStatus::v3CurrentStateReportSentIs,
        &Watcher::onV3CurrentStateReportSent>(
        IgmpHostStatus::attrV3CurrentStateReportSent, "v3CurrentStateReportSent", "0",
        "Version 3 reports sent as an answer or periodically"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::v3StateChangeReportSent, &IgmpHostStatus::v3StateChangeReportSentIs,
        &Watcher::onV3StateChangeReportSent>(
        IgmpHostStatus::attrV3StateChangeReportSent, "v3StateChangeReportSent", "0",
        "Version 3 reports sent for a change"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::igmpVersion, &IgmpHostStatus::igmpVersionIs, &Watcher::onIgmpVersion>(
        IgmpHostStatus::attrIgmpVersion, "igmpVersion", "igmpVersion2", "IGMP version in force"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::numPacketInitialized, &IgmpHostStatus::numPacketInitializedIs,
        &Watcher::onNumPacketInitialized>(
        IgmpHostStatus::attrNumPacketInitialized, "numPacketInitialized", "0",
        "Packet templates built; two at a time"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::unsolicitedReportInterval, &IgmpHostStatus::unsolicitedReportIntervalIs,
        &Watcher::onUnsolicitedReportInterval>(
        IgmpHostStatus::attrUnsolicitedReportInterval, "unsolicitedReportInterval", "10",
        "Seconds between unsolicited reports, in force"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::enablePeriodicReport, &IgmpHostStatus::enablePeriodicReportIs,
        &Watcher::onEnablePeriodicReport>(
        IgmpHostStatus::attrEnablePeriodicReport, "enablePeriodicReport", "false",
        "Periodic reporting in force"
    ),
    Kiv::scalarAttribute<
        &IgmpHostStatus::continueUnsolicitedReport, &IgmpHostStatus::continueUnsolicitedReportIs,
        &Watcher::onContinueUnsolicitedReport>(
        IgmpHostStatus::attrContinueUnsolicitedReport, "continueUnsolicitedReport", "false",
        "A further unsolicited report is due"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

IgmpHostStatus::~IgmpHostStatus() = default;

std::span<Kiv::Attribute const>
IgmpHostStatus::attributes() {
    return table;
}

IgmpHostStatus::NotifieeConst::NotifieeConst( Ptr<IgmpHostStatus const> const& notifier )
    : Kiv::Entity::NotifieeConst( notifier ) {}

IgmpHostStatus::Notifiee::Notifiee( Ptr<IgmpHostStatus> const& notifier ) : NotifieeConst( notifier ) {}

IgmpHostStatus*
IgmpHostStatus::Notifiee::notifier() const {
    return const_cast<IgmpHostStatus*>( static_cast<IgmpHostStatus const*>( notifierEntity() ) );
}

Ptr<IgmpHostStatus>
igmpHostStatusFactory( Kiv::Name const& name ) {
    return new IgmpHostStatus( name );
}

} // namespace Igmp
