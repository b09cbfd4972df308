#pragma once

#include "model/Enumerations.h"
#include "model/IgmpV3GroupRecord.h"
#include "platform/bridging/AllowedTrafficDirection.h"
#include "platform/zornet/EthAddr.h"
#include "platform/zornet/IntfId.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/Pam.h"

namespace Igmp {

/// The configuration of one emulated host. It is input: whoever drives the emulation sets attributes, in any
/// order, and then moves the generation counter (`configVersion`, `intfConfigVersion`, a record's `version`)
/// that makes them take effect. The engine only reads it, but for the copies of groups that replication
/// makes.
class IgmpHost : public Kiv::Entity, public Kiv::HashMember {
  public:
    /// Attribute numbers. They are part of the interface and never change.
    enum : AttributeId {
        attrConfigVersion = 258,
        attrIpAddr,
        attrMacAddr,
        attrIntfConfigVersion,
        attrIntfId,
        attrNs,
        attrDeviceName,
        attrVlanId,
        attrTagged,
        attrUseMux,
        attrExternalPam,
        attrEnableRouterAlert,
        attrBlocked,
        attrDirection,
        attrPam,
        attrEnabled,
        attrIgmpVersion,
        attrIgmpVersionForced,
        attrProcessV3GroupChange,
        attrV3group,
        attrMtu,
        attrRobustness,
        attrV1RouterPresentTimeout,
        attrV2RouterPresentTimeout,
        attrV1MaxResponseTime,
        attrMaxResponseTimeTicksPerSec,
        attrDefaultIgmpV3UnsolicitedReportIntvl,
        attrDefaultIgmpV1V2UnsolicitedReportIntvl,
        attrUnsolicitedReportInterval,
        attrEnablePeriodicReport,
    };
    using V3groups = Kiv::HashMap<IgmpV3GroupRecord, Zornet::IpAddr>;

    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onConfigVersion() {}
        virtual void onIpAddr() {}
        virtual void onMacAddr() {}
        virtual void onIntfConfigVersion() {}
        virtual void onIntfId() {}
        virtual void onNs() {}
        virtual void onDeviceName() {}
        virtual void onVlanId() {}
        virtual void onTagged() {}
        virtual void onUseMux() {}
        virtual void onExternalPam() {}
        virtual void onEnableRouterAlert() {}
        virtual void onBlocked() {}
        virtual void onDirection() {}
        virtual void onPam() {}
        virtual void onEnabled() {}
        virtual void onIgmpVersion() {}
        virtual void onIgmpVersionForced() {}
        virtual void onProcessV3GroupChange() {}
        virtual void onV3group( Zornet::IpAddr ) {}
        virtual void onV3groupkivImmediate() {}
        virtual void onV3group() {}
        virtual void onMtu() {}
        virtual void onRobustness() {}
        virtual void onV1RouterPresentTimeout() {}
        virtual void onV2RouterPresentTimeout() {}
        virtual void onV1MaxResponseTime() {}
        virtual void onUnsolicitedReportInterval() {}
        virtual void onEnablePeriodicReport() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpHost const> const& notifier );
    };
    class Notifiee : public NotifieeConst {
      public:
        IgmpHost* notifier() const;

      protected:
        explicit Notifiee( Ptr<IgmpHost> const& notifier );
    };

    /// Ticks per second of a Max Resp Time field.
    static constexpr Seconds maxResponseTimeTicksPerSecConstant = 10.0;
    /// Unsolicited report interval where none is asked for, version 3.
    static constexpr Seconds defaultIgmpV3UnsolicitedReportIntvlConstant = 1.0;
    /// Unsolicited report interval where none is asked for, versions 1 and 2.
    static constexpr Seconds defaultIgmpV1V2UnsolicitedReportIntvlConstant = 10.0;

    explicit IgmpHost( Kiv::Name const& name ) : Entity( name ) {}
    ~IgmpHost() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHost>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Kiv::Name const& fwkKey() const { return name(); }

    /// Generation of what the packet templates are built from; a move of it rebuilds them.
    U32 configVersion() const { return configVersion_; }
    void configVersionIs( U32 v ) {
        scalarIs( attrConfigVersion, configVersion_, v, &NotifieeConst::onConfigVersion );
    }

    /// The host's IPv4 source address.
    Zornet::IpAddr const& ipAddr() const { return ipAddr_; }
    void ipAddrIs( Zornet::IpAddr const& v ) { scalarIs( attrIpAddr, ipAddr_, v, &NotifieeConst::onIpAddr ); }

    /// The host's Ethernet source address.
    Zornet::EthAddr const& macAddr() const { return macAddr_; }
    void macAddrIs( Zornet::EthAddr const& v ) {
        scalarIs( attrMacAddr, macAddr_, v, &NotifieeConst::onMacAddr );
    }

    /// Generation of the interface binding; a move of it rebinds, and at 0 the host opens nothing.
    U32 intfConfigVersion() const { return intfConfigVersion_; }
    void intfConfigVersionIs( U32 v ) {
        scalarIs( attrIntfConfigVersion, intfConfigVersion_, v, &NotifieeConst::onIntfConfigVersion );
    }

    /// The interface that the host sits on; hosts that share a device share this.
    Zornet::IntfId const& intfId() const { return intfId_; }
    void intfIdIs( Zornet::IntfId const& v ) { scalarIs( attrIntfId, intfId_, v, &NotifieeConst::onIntfId ); }

    /// Network namespace of the device; empty for the process's own.
    Zornet::NamespaceName const& ns() const { return ns_; }
    void nsIs( Zornet::NamespaceName const& v ) { scalarIs( attrNs, ns_, v, &NotifieeConst::onNs ); }

    /// The device to open.
    Kiv::String8 const& deviceName() const { return deviceName_; }
    void deviceNameIs( Kiv::String8 const& v ) {
        scalarIs( attrDeviceName, deviceName_, v, &NotifieeConst::onDeviceName );
    }

    /// The host's VLAN, where `tagged`. Any number is taken; a sent tag carries its low 12 bits.
    U16 vlanId() const { return vlanId_; }
    void vlanIdIs( U16 v ) { scalarIs( attrVlanId, vlanId_, v, &NotifieeConst::onVlanId ); }

    /// Frames carry an 802.1Q tag.
    bool tagged() const { return tagged_; }
    void taggedIs( bool v ) { scalarIs( attrTagged, tagged_, v, &NotifieeConst::onTagged ); }

    /// A tagged host shares the device of its interface with others.
    bool useMux() const { return useMux_; }
    void useMuxIs( bool v ) { scalarIs( attrUseMux, useMux_, v, &NotifieeConst::onUseMux ); }

    /// Packets go through `pam`, and no device is opened.
    bool externalPam() const { return externalPam_; }
    void externalPamIs( bool v ) {
        scalarIs( attrExternalPam, externalPam_, v, &NotifieeConst::onExternalPam );
    }

    /// Sent packets carry the IPv4 Router Alert option (RFC 2113).
    bool enableRouterAlert() const { return enableRouterAlert_; }
    void enableRouterAlertIs( bool v ) {
        scalarIs( attrEnableRouterAlert, enableRouterAlert_, v, &NotifieeConst::onEnableRouterAlert );
    }

    /// Nothing is sent, and what arrives is left unread.
    bool blocked() const { return blocked_; }
    void blockedIs( bool v ) { scalarIs( attrBlocked, blocked_, v, &NotifieeConst::onBlocked ); }

    /// Which way traffic may flow.
    Bridging::AllowedTrafficDirection direction() const { return direction_; }
    void directionIs( Bridging::AllowedTrafficDirection v ) {
        scalarIs( attrDirection, direction_, v, &NotifieeConst::onDirection );
    }

    /// Packet access from outside, used where `externalPam`. It must be an EthDevPam, and the host may close
    /// it.
    Ptr<Zornet::Pam> const& pam() const { return pam_; }
    void pamIs( Ptr<Zornet::Pam> const& v ) { scalarIs( attrPam, pam_, v, &NotifieeConst::onPam ); }

    /// The host exists on the wire.
    bool enabled() const { return enabled_; }
    void enabledIs( bool v ) { scalarIs( attrEnabled, enabled_, v, &NotifieeConst::onEnabled ); }

    /// The version asked for: a ceiling for the one in force.
    IgmpVersion igmpVersion() const { return igmpVersion_; }
    void igmpVersionIs( IgmpVersion v ) {
        scalarIs( attrIgmpVersion, igmpVersion_, v, &NotifieeConst::onIgmpVersion );
    }

    /// Older queriers do not bring the version down.
    bool igmpVersionForced() const { return igmpVersionForced_; }
    void igmpVersionForcedIs( bool v ) {
        scalarIs( attrIgmpVersionForced, igmpVersionForced_, v, &NotifieeConst::onIgmpVersionForced );
    }

    /// Changes of `v3group` are acted on.
    bool processV3GroupChange() const { return processV3GroupChange_; }
    void processV3GroupChangeIs( bool v ) {
        scalarIs(
            attrProcessV3GroupChange, processV3GroupChange_, v, &NotifieeConst::onProcessV3GroupChange
        );
    }

    /// The groups that the host wants, whatever the version.
    V3groups const& v3group() const { return v3group_; }
    /// The record, or null.
    Ptr<IgmpV3GroupRecord> v3group( Zornet::IpAddr const& group ) const { return v3group_.find( group ); }
    std::size_t v3groups() const { return v3group_.size(); }
    Ptr<IgmpV3GroupRecord> newV3group( Zornet::IpAddr const& group );
    Ptr<IgmpV3GroupRecord> v3groupIs( Zornet::IpAddr const& group );
    void v3groupDel( Zornet::IpAddr const& group );
    void v3groupDel( V3groups::Iterator const& at ) { v3groupDel( at->fwkKey() ); }
    void v3groupDelAll();
    void v3groupNotify( Zornet::IpAddr const& group );

    /// Size limit of a built frame in bytes, headers included; below 65536.
    U32 mtu() const { return mtu_; }
    void mtuIs( U32 v ) { scalarIs( attrMtu, mtu_, v, &NotifieeConst::onMtu ); }

    /// How often a state change is reported in version 3 (RFC 3376 section 8.1); 1 to 255.
    U32 robustness() const { return robustness_; }
    void robustnessIs( U32 v ) { scalarIs( attrRobustness, robustness_, v, &NotifieeConst::onRobustness ); }

    /// How long a version 1 querier is remembered.
    Seconds v1RouterPresentTimeout() const { return v1RouterPresentTimeout_; }
    void v1RouterPresentTimeoutIs( Seconds v ) {
        scalarIs(
            attrV1RouterPresentTimeout, v1RouterPresentTimeout_, v, &NotifieeConst::onV1RouterPresentTimeout
        );
    }

    /// How long a version 2 querier is remembered.
    Seconds v2RouterPresentTimeout() const { return v2RouterPresentTimeout_; }
    void v2RouterPresentTimeoutIs( Seconds v ) {
        scalarIs(
            attrV2RouterPresentTimeout, v2RouterPresentTimeout_, v, &NotifieeConst::onV2RouterPresentTimeout
        );
    }

    /// Maximum response time for a query that names none: tenths of a second, but whole seconds in version 3.
    U8 v1MaxResponseTime() const { return v1MaxResponseTime_; }
    void v1MaxResponseTimeIs( U8 v ) {
        scalarIs( attrV1MaxResponseTime, v1MaxResponseTime_, v, &NotifieeConst::onV1MaxResponseTime );
    }

    Seconds maxResponseTimeTicksPerSec() const { return maxResponseTimeTicksPerSecConstant; }
    Seconds defaultIgmpV3UnsolicitedReportIntvl() const {
        return defaultIgmpV3UnsolicitedReportIntvlConstant;
    }
    Seconds defaultIgmpV1V2UnsolicitedReportIntvl() const {
        return defaultIgmpV1V2UnsolicitedReportIntvlConstant;
    }
    /// Interval asked for; 0 leaves the default of the version.
    Seconds unsolicitedReportInterval() const { return unsolicitedReportInterval_; }
    void unsolicitedReportIntervalIs( Seconds v ) {
        scalarIs(
            attrUnsolicitedReportInterval, unsolicitedReportInterval_, v,
            &NotifieeConst::onUnsolicitedReportInterval
        );
    }

    /// Unsolicited reports go on for as long as the host is a member.
    bool enablePeriodicReport() const { return enablePeriodicReport_; }
    void enablePeriodicReportIs( bool v ) {
        scalarIs(
            attrEnablePeriodicReport, enablePeriodicReport_, v, &NotifieeConst::onEnablePeriodicReport
        );
    }

  private:
    Zornet::IntfId intfId_;
    Zornet::NamespaceName ns_;
    Kiv::String8 deviceName_;
    Ptr<Zornet::Pam> pam_;
    Seconds v1RouterPresentTimeout_ = 400.0;
    Seconds v2RouterPresentTimeout_ = 400.0;
    Seconds unsolicitedReportInterval_ = 0.0;
    U32 configVersion_ = 0;
    Zornet::IpAddr ipAddr_;
    Zornet::EthAddr macAddr_;
    U32 intfConfigVersion_ = 0;
    Bridging::AllowedTrafficDirection direction_ = Bridging::AllowedTrafficDirection::both;
    IgmpVersion igmpVersion_ = igmpVersion2;
    U32 mtu_ = 1514;
    U32 robustness_ = 2;
    U16 vlanId_ = 0;
    bool tagged_ = false;
    bool useMux_ = false;
    bool externalPam_ = false;
    bool enableRouterAlert_ = true;
    bool blocked_ = false;
    bool enabled_ = false;
    bool igmpVersionForced_ = false;
    bool processV3GroupChange_ = true;
    U8 v1MaxResponseTime_ = 100;
    bool enablePeriodicReport_ = false;
    V3groups v3group_;
};

Ptr<IgmpHost> igmpHostFactory( Kiv::Name const& name );

} // namespace Igmp
