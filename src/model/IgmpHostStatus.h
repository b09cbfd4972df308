#pragma once

#include "model/Enumerations.h"
#include "platform/kiv/Attribute.h"
#include "platform/kiv/Entity.h"

namespace Igmp {

/// What the engine reports about one emulated host, and the little derived state that it feeds back to
/// itself. It lives from the host's enabling to its disabling, and its counters with it; they wrap.
class IgmpHostStatus : public Kiv::Entity, public Kiv::HashMember {
  public:
    /// Attribute numbers. They are part of the interface and never change.
    enum : AttributeId {
        attrV1QueryReceived = 258,
        attrV1ReportsSent,
        attrV12ReportReceived,
        attrV2GeneralQueryReceived,
        attrV2GroupQueryReceived,
        attrV2ReportsSent,
        attrV2LeavesSent,
        attrV3GeneralQueryReceived,
        attrV3GroupQueryReceived,
        attrV3GroupSourceQueryReceived,
        attrV3ReportReceived,
        attrV3CurrentStateReportSent,
        attrV3StateChangeReportSent,
        attrIgmpVersion,
        attrNumPacketInitialized,
        attrUnsolicitedReportInterval,
        attrEnablePeriodicReport,
        attrContinueUnsolicitedReport,
    };

    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onV1QueryReceived() {}
        virtual void onV1ReportsSent() {}
        virtual void onV12ReportReceived() {}
        virtual void onV2GeneralQueryReceived() {}
        virtual void onV2GroupQueryReceived() {}
        virtual void onV2ReportsSent() {}
        virtual void onV2LeavesSent() {}
        virtual void onV3GeneralQueryReceived() {}
        virtual void onV3GroupQueryReceived() {}
        virtual void onV3GroupSourceQueryReceived() {}
        virtual void onV3ReportReceived() {}
        virtual void onV3CurrentStateReportSent() {}
        virtual void onV3StateChangeReportSent() {}
        virtual void onIgmpVersion() {}
        virtual void onNumPacketInitialized() {}
        virtual void onUnsolicitedReportInterval() {}
        virtual void onEnablePeriodicReport() {}
        virtual void onContinueUnsolicitedReport() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpHostStatus const> const& notifier );
    };
    class Notifiee : public NotifieeConst {
      public:
        IgmpHostStatus* notifier() const;

      protected:
        explicit Notifiee( Ptr<IgmpHostStatus> const& notifier );
    };

    explicit IgmpHostStatus( Kiv::Name const& name ) : Entity( name ) {}
    ~IgmpHostStatus() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostStatus>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Kiv::Name const& fwkKey() const { return name(); }

    /// Reserved: nothing raises it. Version 1 queries count in v2GeneralQueryReceived, on purpose.
    U32 v1QueryReceived() const { return v1QueryReceived_; }
    void v1QueryReceivedIs( U32 v ) {
        scalarIs( attrV1QueryReceived, v1QueryReceived_, v, &NotifieeConst::onV1QueryReceived );
    }
    void v1QueryReceivedInc( U32 n ) { v1QueryReceivedIs( v1QueryReceived_ + n ); }

    /// Version 1 reports handed over for sending, dropped ones included.
    U32 v1ReportsSent() const { return v1ReportsSent_; }
    void v1ReportsSentIs( U32 v ) {
        scalarIs( attrV1ReportsSent, v1ReportsSent_, v, &NotifieeConst::onV1ReportsSent );
    }
    void v1ReportsSentInc( U32 n ) { v1ReportsSentIs( v1ReportsSent_ + n ); }

    /// Version 1 and 2 reports heard from other hosts.
    U32 v12ReportReceived() const { return v12ReportReceived_; }
    void v12ReportReceivedIs( U32 v ) {
        scalarIs( attrV12ReportReceived, v12ReportReceived_, v, &NotifieeConst::onV12ReportReceived );
    }
    void v12ReportReceivedInc( U32 n ) { v12ReportReceivedIs( v12ReportReceived_ + n ); }

    /// General queries answered as version 1 or 2, and version 2 group queries at a host held at version 3.
    U32 v2GeneralQueryReceived() const { return v2GeneralQueryReceived_; }
    void v2GeneralQueryReceivedIs( U32 v ) {
        scalarIs(
            attrV2GeneralQueryReceived, v2GeneralQueryReceived_, v, &NotifieeConst::onV2GeneralQueryReceived
        );
    }
    void v2GeneralQueryReceivedInc( U32 n ) { v2GeneralQueryReceivedIs( v2GeneralQueryReceived_ + n ); }

    /// Group queries answered as version 1 or 2.
    U32 v2GroupQueryReceived() const { return v2GroupQueryReceived_; }
    void v2GroupQueryReceivedIs( U32 v ) {
        scalarIs(
            attrV2GroupQueryReceived, v2GroupQueryReceived_, v, &NotifieeConst::onV2GroupQueryReceived
        );
    }
    void v2GroupQueryReceivedInc( U32 n ) { v2GroupQueryReceivedIs( v2GroupQueryReceived_ + n ); }

    /// Version 2 reports handed over for sending, dropped ones included.
    U32 v2ReportsSent() const { return v2ReportsSent_; }
    void v2ReportsSentIs( U32 v ) {
        scalarIs( attrV2ReportsSent, v2ReportsSent_, v, &NotifieeConst::onV2ReportsSent );
    }
    void v2ReportsSentInc( U32 n ) { v2ReportsSentIs( v2ReportsSent_ + n ); }

    /// Version 2 leaves handed over for sending, dropped ones included.
    U32 v2LeavesSent() const { return v2LeavesSent_; }
    void v2LeavesSentIs( U32 v ) {
        scalarIs( attrV2LeavesSent, v2LeavesSent_, v, &NotifieeConst::onV2LeavesSent );
    }
    void v2LeavesSentInc( U32 n ) { v2LeavesSentIs( v2LeavesSent_ + n ); }

    /// Version 3 queries of any kind, on purpose.
    U32 v3GeneralQueryReceived() const { return v3GeneralQueryReceived_; }
    void v3GeneralQueryReceivedIs( U32 v ) {
        scalarIs(
            attrV3GeneralQueryReceived, v3GeneralQueryReceived_, v, &NotifieeConst::onV3GeneralQueryReceived
        );
    }
    void v3GeneralQueryReceivedInc( U32 n ) { v3GeneralQueryReceivedIs( v3GeneralQueryReceived_ + n ); }

    /// Version 3 group queries for a group that the host has.
    U32 v3GroupQueryReceived() const { return v3GroupQueryReceived_; }
    void v3GroupQueryReceivedIs( U32 v ) {
        scalarIs(
            attrV3GroupQueryReceived, v3GroupQueryReceived_, v, &NotifieeConst::onV3GroupQueryReceived
        );
    }
    void v3GroupQueryReceivedInc( U32 n ) { v3GroupQueryReceivedIs( v3GroupQueryReceived_ + n ); }

    /// Version 3 group-and-source queries for a group that the host has.
    U32 v3GroupSourceQueryReceived() const { return v3GroupSourceQueryReceived_; }
    void v3GroupSourceQueryReceivedIs( U32 v ) {
        scalarIs(
            attrV3GroupSourceQueryReceived, v3GroupSourceQueryReceived_, v,
            &NotifieeConst::onV3GroupSourceQueryReceived
        );
    }
    void v3GroupSourceQueryReceivedInc( U32 n ) {
        v3GroupSourceQueryReceivedIs( v3GroupSourceQueryReceived_ + n );
    }

    /// Version 3 reports heard from other hosts.
    U32 v3ReportReceived() const { return v3ReportReceived_; }
    void v3ReportReceivedIs( U32 v ) {
        scalarIs( attrV3ReportReceived, v3ReportReceived_, v, &NotifieeConst::onV3ReportReceived );
    }
    void v3ReportReceivedInc( U32 n ) { v3ReportReceivedIs( v3ReportReceived_ + n ); }

    /// Version 3 reports sent that leave no change pending in the groups they carry.
    U32 v3CurrentStateReportSent() const { return v3CurrentStateReportSent_; }
    void v3CurrentStateReportSentIs( U32 v ) {
        scalarIs(
            attrV3CurrentStateReportSent, v3CurrentStateReportSent_, v,
            &NotifieeConst::onV3CurrentStateReportSent
        );
    }
    void v3CurrentStateReportSentInc( U32 n ) { v3CurrentStateReportSentIs( v3CurrentStateReportSent_ + n ); }

    /// Version 3 reports sent that leave a change to be repeated.
    U32 v3StateChangeReportSent() const { return v3StateChangeReportSent_; }
    void v3StateChangeReportSentIs( U32 v ) {
        scalarIs(
            attrV3StateChangeReportSent, v3StateChangeReportSent_, v,
            &NotifieeConst::onV3StateChangeReportSent
        );
    }
    void v3StateChangeReportSentInc( U32 n ) { v3StateChangeReportSentIs( v3StateChangeReportSent_ + n ); }

    /// The version in force.
    IgmpVersion igmpVersion() const { return igmpVersion_; }
    void igmpVersionIs( IgmpVersion v ) {
        scalarIs( attrIgmpVersion, igmpVersion_, v, &NotifieeConst::onIgmpVersion );
    }

    /// Packet templates built; a full rebuild counts two.
    U32 numPacketInitialized() const { return numPacketInitialized_; }
    void numPacketInitializedIs( U32 v ) {
        scalarIs(
            attrNumPacketInitialized, numPacketInitialized_, v, &NotifieeConst::onNumPacketInitialized
        );
    }
    void numPacketInitializedInc( U32 n ) { numPacketInitializedIs( numPacketInitialized_ + n ); }

    /// The interval in force.
    Seconds unsolicitedReportInterval() const { return unsolicitedReportInterval_; }
    void unsolicitedReportIntervalIs( Seconds v ) {
        scalarIs(
            attrUnsolicitedReportInterval, unsolicitedReportInterval_, v,
            &NotifieeConst::onUnsolicitedReportInterval
        );
    }

    /// Periodic reporting is in force.
    bool enablePeriodicReport() const { return enablePeriodicReport_; }
    void enablePeriodicReportIs( bool v ) {
        scalarIs(
            attrEnablePeriodicReport, enablePeriodicReport_, v, &NotifieeConst::onEnablePeriodicReport
        );
    }

    /// The unsolicited stream of version 3 is to run now.
    bool continueUnsolicitedReport() const { return continueUnsolicitedReport_; }
    void continueUnsolicitedReportIs( bool v ) {
        scalarIs(
            attrContinueUnsolicitedReport, continueUnsolicitedReport_, v,
            &NotifieeConst::onContinueUnsolicitedReport
        );
    }

  private:
    Seconds unsolicitedReportInterval_ = 10.0;
    U32 v1QueryReceived_ = 0;
    U32 v1ReportsSent_ = 0;
    U32 v12ReportReceived_ = 0;
    U32 v2GeneralQueryReceived_ = 0;
    U32 v2GroupQueryReceived_ = 0;
    U32 v2ReportsSent_ = 0;
    U32 v2LeavesSent_ = 0;
    U32 v3GeneralQueryReceived_ = 0;
    U32 v3GroupQueryReceived_ = 0;
    U32 v3GroupSourceQueryReceived_ = 0;
    U32 v3ReportReceived_ = 0;
    U32 v3CurrentStateReportSent_ = 0;
    U32 v3StateChangeReportSent_ = 0;
    IgmpVersion igmpVersion_ = igmpVersion2;
    U32 numPacketInitialized_ = 0;
    bool enablePeriodicReport_ = false;
    bool continueUnsolicitedReport_ = false;
};

Ptr<IgmpHostStatus> igmpHostStatusFactory( Kiv::Name const& name );

} // namespace Igmp
