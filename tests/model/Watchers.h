#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "model/IgmpHostDir.h"
#include "model/IgmpHostStatusDir.h"

namespace Igmp {

using Log = std::vector<std::string>;

/// Base of the reactors below, which write down the name of each attribute that they are told of, with the
/// key of a keyed one.
template <class Class>
class Watcher : public Class::Notifiee {
  protected:
    Watcher( Ptr<Class> const& entity, Log& log ) : Class::Notifiee( entity ), log_( log ) {
        this->isRegisteredNotifieeIs( true );
    }
    void told( char const* attribute ) { log_.emplace_back( attribute ); }
    template <class Key>
    void told( char const* attribute, Key const& key ) {
        std::ostringstream text;
        text << attribute << ' ' << key;
        log_.push_back( text.str() );
    }

  private:
    Log& log_;
};

class HostWatcher : public Watcher<IgmpHost> {
  public:
    HostWatcher( Ptr<IgmpHost> const& host, Log& log ) : Watcher( host, log ) {}

    void onConfigVersion() override { told( "configVersion" ); }
    void onIpAddr() override { told( "ipAddr" ); }
    void onMacAddr() override { told( "macAddr" ); }
    void onIntfConfigVersion() override { told( "intfConfigVersion" ); }
    void onIntfId() override { told( "intfId" ); }
    void onNs() override { told( "ns" ); }
    void onDeviceName() override { told( "deviceName" ); }
    void onVlanId() override { told( "vlanId" ); }
    void onTagged() override { told( "tagged" ); }
    void onUseMux() override { told( "useMux" ); }
    void onExternalPam() override { told( "externalPam" ); }
    void onEnableRouterAlert() override { told( "enableRouterAlert" ); }
    void onBlocked() override { told( "blocked" ); }
    void onDirection() override { told( "direction" ); }
    void onPam() override { told( "pam" ); }
    void onEnabled() override { told( "enabled" ); }
    void onIgmpVersion() override { told( "igmpVersion" ); }
    void onIgmpVersionForced() override { told( "igmpVersionForced" ); }
    void onProcessV3GroupChange() override { told( "processV3GroupChange" ); }
    void onV3group( Zornet::IpAddr group ) override { told( "v3group", group ); }
    void onMtu() override { told( "mtu" ); }
    void onRobustness() override { told( "robustness" ); }
    void onV1RouterPresentTimeout() override { told( "v1RouterPresentTimeout" ); }
    void onV2RouterPresentTimeout() override { told( "v2RouterPresentTimeout" ); }
    void onV1MaxResponseTime() override { told( "v1MaxResponseTime" ); }
    void onUnsolicitedReportInterval() override { told( "unsolicitedReportInterval" ); }
    void onEnablePeriodicReport() override { told( "enablePeriodicReport" ); }
};

class StatusWatcher : public Watcher<IgmpHostStatus> {
  public:
    StatusWatcher( Ptr<IgmpHostStatus> const& status, Log& log ) : Watcher( status, log ) {}

    void onV1QueryReceived() override { told( "v1QueryReceived" ); }
    void onV1ReportsSent() override { told( "v1ReportsSent" ); }
    void onV12ReportReceived() override { told( "v12ReportReceived" ); }
    void onV2GeneralQueryReceived() override { told( "v2GeneralQueryReceived" ); }
    void onV2GroupQueryReceived() override { told( "v2GroupQueryReceived" ); }
    void onV2ReportsSent() override { told( "v2ReportsSent" ); }
    void onV2LeavesSent() override { told( "v2LeavesSent" ); }
    void onV3GeneralQueryReceived() override { told( "v3GeneralQueryReceived" ); }
    void onV3GroupQueryReceived() override { told( "v3GroupQueryReceived" ); }
    void onV3GroupSourceQueryReceived() override { told( "v3GroupSourceQueryReceived" ); }
    void onV3ReportReceived() override { told( "v3ReportReceived" ); }
    void onV3CurrentStateReportSent() override { told( "v3CurrentStateReportSent" ); }
    void onV3StateChangeReportSent() override { told( "v3StateChangeReportSent" ); }
    void onIgmpVersion() override { told( "igmpVersion" ); }
    void onNumPacketInitialized() override { told( "numPacketInitialized" ); }
    void onUnsolicitedReportInterval() override { told( "unsolicitedReportInterval" ); }
    void onEnablePeriodicReport() override { told( "enablePeriodicReport" ); }
    void onContinueUnsolicitedReport() override { told( "continueUnsolicitedReport" ); }
};

class RecordWatcher : public Watcher<IgmpV3GroupRecord> {
  public:
    RecordWatcher( Ptr<IgmpV3GroupRecord> const& record, Log& log ) : Watcher( record, log ) {}

    void onVersion() override { told( "version" ); }
    void onFilterMode() override { told( "filterMode" ); }
    void onSource() override { told( "source" ); }
    void onReplicate() override { told( "replicate" ); }
    void onReplicateNumber() override { told( "replicateNumber" ); }
    void onReplicateGroup() override { told( "replicateGroup" ); }
};

class SourceListWatcher : public Watcher<IgmpV3HostGroupSourceList> {
  public:
    SourceListWatcher( Ptr<IgmpV3HostGroupSourceList> const& list, Log& log ) : Watcher( list, log ) {}

    void onSourceIp( Zornet::IpAddr source ) override { told( "sourceIp", source ); }
};

class HostDirWatcher : public Watcher<IgmpHostDir> {
  public:
    HostDirWatcher( Ptr<IgmpHostDir> const& dir, Log& log ) : Watcher( dir, log ) {}

    void onIgmpHost( Kiv::Name name ) override { told( "igmpHost", name ); }
};

class StatusDirWatcher : public Watcher<IgmpHostStatusDir> {
  public:
    StatusDirWatcher( Ptr<IgmpHostStatusDir> const& dir, Log& log ) : Watcher( dir, log ) {}

    void onIgmpHostStatus( Kiv::Name name ) override { told( "igmpHostStatus", name ); }
};

} // namespace Igmp
