#pragma once

#include <map>
#include <memory>
#include <vector>

#include "lab/IgmpFrame.h"
#include "lab/QuerierCounters.h"
#include "lab/QuerierGroup.h"
#include "lab/QueryPackets.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/Pam.h"

namespace Lab {

/// A multicast router's side of IGMP on one link, as RFC 1112, 2236, 3376 and 9776 give it: it asks at its
/// intervals, keeps a state for each group that somebody reports, and tells what it would forward. It judges
/// emulated hosts, so it shares nothing with them but frames. Any bytes may arrive: what is malformed is
/// counted and has no other effect.
///
/// It works on any access object, in the calls and timers of that object's activity. It neither opens nor
/// closes it.
class Querier : private QuerierGroup::Router {
  public:
    /// Stands still until it is enabled. Raises RangeException for a `config` that fails its check.
    Querier(
        QuerierConfig const& config, Kiv::Ptr<Zornet::Pam> const& pam,
        Kiv::Ptr<Lumo::TimerWheel const> const& wheel
    );
    ~Querier() override;
    Querier( Querier const& ) = delete;
    Querier& operator=( Querier const& ) = delete;

    /// True sends the first general query at once and begins to listen; frames that wait in the access object
    /// are read. False falls silent and forgets every group. The counters stay.
    void enabledIs( bool enabled );
    bool enabled() const { return enabled_; }

    /// As it was made with.
    QuerierConfig const& config() const { return config_; }
    /// With the robustness and the query interval of another querier while that one asks (RFC 3376
    /// section 4.1.6).
    QuerierConfig const& configInForce() const override { return configInForce_; }
    /// False while a querier with a lower address asks.
    bool isQuerier() const override { return !otherQuerierTimer_->isRunning(); }
    /// The querier of the link: this one or the one that won.
    IpAddr const& querierAddr() const { return isQuerier() ? config_.ipAddr : otherQuerier_; }

    /// The groups that it keeps a state for, in ascending order.
    std::vector<IpAddr> groups() const;
    std::size_t groupCount() const { return groups_.size(); }
    /// The state of a group, or null. It stands until the group ends.
    QuerierGroup const* group( IpAddr const& group ) const;
    /// Whether it would forward the source's traffic for the group onto the link.
    bool forwards( IpAddr const& group, IpAddr const& source ) const;
    QuerierCounters const& counters() const { return counters_; }
    /// Who sent the last report that it understood; 0.0.0.0 before the first.
    IpAddr const& lastReporter() const { return lastReporter_; }

    /// Asks about every group now, beside the queries that are due anyway. Nothing where it is not the
    /// querier.
    void sendGeneralQuery();

  private:
    class KivRxPam;

    // Reception.
    void handleReadable();
    void handlePkt( Zornet::Pkt const& pkt );
    void handleFrame( std::span<U8 const> frame );
    void countFault( IgmpFrame::Verdict verdict );
    void handleMessage( IgmpFrame const& frame );
    void handleV1Report( IgmpFrame const& frame );
    void handleV2Report( IgmpFrame const& frame );
    void handleV2Leave( IgmpFrame const& frame );
    void handleV3Report( IgmpFrame const& frame );
    void handleRecord( Zornet::IgmpReportGroupRecordHeader const& record, IpAddr const& reporter );
    bool understood( U8 version );
    bool isJoinable( IpAddr const& group );
    void judgeManner( IgmpFrame const& frame, IpAddr const& destination, bool routerAlert );
    QuerierGroup& groupIs( IpAddr const& group );
    void groupDelIfIdle( QuerierGroup const& group );

    // Other queriers.
    void handleQuery( IgmpFrame const& frame );
    void handleV3Query( IgmpFrame const& frame );
    bool losesTo( IpAddr const& other ) const;
    void otherQuerierIs( IpAddr const& other );
    void handleOtherQuerierGone();
    void adopt( Zornet::IgmpV3QueryHdr const& query );
    void endSoon( Zornet::IgmpV12Hdr const& query, Seconds maxResponse, SourceSet const& sources );

    // Queries of its own.
    void handleGeneralQueryTimer();
    void sendGroupQuery( IpAddr const& group, bool suppress ) override;
    void sendGroupSourceQuery( IpAddr const& group, SourceSet const& sources, bool suppress ) override;
    void handleGroupEnded( IpAddr const& group ) override;

    QuerierConfig config_;
    QuerierConfig configInForce_;
    Kiv::Ptr<Zornet::Pam> pam_;
    Kiv::Ptr<Lumo::TimerWheel const> wheel_;
    QueryPackets packets_;
    QuerierCounters counters_;
    bool enabled_ = false;
    IpAddr lastReporter_;
    IpAddr otherQuerier_;
    U32 startupQueriesLeft_ = 0;
    Kiv::Ptr<Timer> generalQueryTimer_;
    Kiv::Ptr<Timer> otherQuerierTimer_;
    std::map<IpAddr, std::unique_ptr<QuerierGroup>> groups_;
    std::vector<U8> scratch_; ///< for a frame that lies in two regions
    Kiv::Ptr<KivRxPam> rxPam_;
};

} // namespace Lab
