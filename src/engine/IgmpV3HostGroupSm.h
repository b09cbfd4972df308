#pragma once

#include "engine/V3Report.h"
#include "model/IgmpHostStatus.h"
#include "platform/kiv/StateMachine.h"

namespace Igmp {

class IgmpV3HostAggregatedSenderSm;

/// The memory of one group of a version 3 host: what the host has announced of it (the current record), and
/// how many more reports each difference from what is wanted owes (RFC 3376 section 5.1). It outlives the
/// group's configuration until the leave has been told. Invariant: a source owes reports in one of the two
/// lists at most, and at least one report there.
class IgmpV3HostGroupSm : public Kiv::StateMachine, public Kiv::HashMember {
  public:
    static Ptr<IgmpV3HostGroupSm> IgmpV3HostGroupSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpV3HostAggregatedSenderSm* aggregatedSenderSm
    );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3HostGroupSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Zornet::IpAddr const& fwkKey() const { return group_; }
    Zornet::IpAddr const& group() const { return group_; }
    Ptr<IgmpHost> const& igmpHost() const { return igmpHost_; }
    Ptr<IgmpHostStatus> const& igmpHostStatus() const { return igmpHostStatus_; }
    /// The host's machine; null for one that stands alone.
    IgmpHostSm* hostSm() const { return hostSm_; }
    Ptr<IgmpV3GroupRecord> const& currGroupRecord() const { return currGroupRecord_; }
    Ptr<IgmpV3GroupRecord> const& groupRecordOnLeave() const { return groupRecordOnLeave_; }
    Zornet::IpAddr const& indexBookMark() const { return indexBookMark_; }
    void indexBookMarkIs( Zornet::IpAddr const& addr ) { indexBookMark_ = addr; }
    U32 filterModeTransCount() const { return filterModeTransCount_; }
    void filterModeTransCountIs( U32 count );
    /// Only this machine puts sources into the two lists: the sender does not learn of others.
    Ptr<IgmpV3HostGroupSourceList> const& addedSourceTransCount() const { return addedSourceTransCount_; }
    Ptr<IgmpV3HostGroupSourceList> const& deletedSourceTransCount() const { return deletedSourceTransCount_; }
    bool initialized() const { return initialized_; }
    /// The sender's notes: it asks the group with the next report, and the configuration has it no longer.
    bool owingNoted() const { return owingNoted_; }
    void owingNotedIs( bool noted ) { owingNoted_ = noted; }
    bool leaveNoted() const { return leaveNoted_; }
    void leaveNotedIs( bool noted ) { leaveNoted_ = noted; }
    /// The owner; null for a machine that stands alone.
    IgmpV3HostAggregatedSenderSm* aggregatedSenderSm() const { return aggregatedSenderSm_; }

    void handleInitialized();
    /// Compares what is wanted with the current record, adopts it and counts the reports that each difference
    /// owes.
    void process();
    /// Some report is owed.
    bool isStateChanged() const;
    /// A report has something to do here: tell a change, or drop the machine of a group that has gone.
    bool isOwing() const;

    /// Adds what this group owes to the packet. A group that has left and owes nothing more deletes its
    /// machine here: it must not be used after the call, but looked up again.
    void
    doGroupRecordPktConstruct( Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo );
    void constructModeChangeRecord(
        Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
        Ptr<IgmpV3ReportProcessInfo> const& reportInfo
    );
    void constructSourceChangeRecord(
        Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
        Ptr<IgmpV3ReportProcessInfo> const& reportInfo
    );
    void constructCurrentRecord(
        Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
        Ptr<IgmpV3ReportProcessInfo> const& reportInfo
    );

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpV3HostGroupSm(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpV3HostAggregatedSenderSm* aggregatedSenderSm
    );

    /// The configuration's record, or the empty one that stands in once the group has gone.
    Ptr<IgmpV3GroupRecord> wantedRecord() const;
    void adoptFilterMode( IgmpV3GroupRecord const& wanted );
    void adoptAddedSources( IgmpV3GroupRecord const& wanted );
    void adoptDeletedSources( IgmpV3GroupRecord const& wanted );
    /// Neither is so without a status.
    bool isVersion3() const;
    bool reportsGoOn() const;
    void decideOnLaterReport( IgmpV3ReportProcessInfo& reportInfo );
    void noteOwing();

    Zornet::IpAddr const group_;
    Zornet::IpAddr indexBookMark_;
    Ptr<IgmpHost> const igmpHost_;
    Ptr<IgmpHostStatus> const igmpHostStatus_;
    IgmpHostSm* hostSm_ = nullptr;
    Ptr<IgmpV3GroupRecord> currGroupRecord_;
    Ptr<IgmpV3GroupRecord> groupRecordOnLeave_;
    Ptr<IgmpV3HostGroupSourceList> addedSourceTransCount_;
    Ptr<IgmpV3HostGroupSourceList> deletedSourceTransCount_;
    U32 filterModeTransCount_ = 0;
    bool initialized_ = false;
    bool owingNoted_ = false;
    bool leaveNoted_ = false;
    IgmpV3HostAggregatedSenderSm* const aggregatedSenderSm_;
};

/// A machine that stands alone, with neither status nor sender: it keeps the current record and counts
/// changes of mode, but no changes of sources.
Ptr<IgmpV3HostGroupSm> igmpV3HostGroupSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost
);

} // namespace Igmp
