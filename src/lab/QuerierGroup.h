#pragma once

#include <map>

#include "lab/QuerierConfig.h"
#include "lab/SourceSet.h"
#include "lab/Timer.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"

namespace Lab {

enum class FilterMode { include, exclude };

/// What a router knows of one group on its link (RFC 3376 section 6.2): filter mode, group timer, a timer for
/// each source. A group of versions 1 and 2 is one in EXCLUDE mode without sources.
///
/// Invariants: in INCLUDE mode the group timer stands still and every source's timer runs. In EXCLUDE mode
/// the group timer runs; a source whose timer runs is requested, one whose timer has come to zero is
/// excluded. Queries are pending only for sources that stand.
class QuerierGroup {
  public:
    /// What a group needs of its querier.
    class Router {
      public:
        virtual ~Router() = default;
        virtual QuerierConfig const& configInForce() const = 0;
        /// False while another querier asks; then nobody is asked here, and no timer is lowered before that
        /// one asks.
        virtual bool isQuerier() const = 0;
        virtual void sendGroupQuery( IpAddr const& group, bool suppress ) = 0;
        virtual void sendGroupSourceQuery( IpAddr const& group, SourceSet const& sources, bool suppress ) = 0;
        /// The group has come to its end by a timer. It may be destroyed by this call.
        virtual void handleGroupEnded( IpAddr const& group ) = 0;
    };

    QuerierGroup( Router& router, Kiv::Ptr<Lumo::TimerWheel const> const& wheel, IpAddr const& group );
    QuerierGroup( QuerierGroup const& ) = delete;
    QuerierGroup& operator=( QuerierGroup const& ) = delete;

    IpAddr const& group() const { return group_; }
    FilterMode filterMode() const { return filterMode_; }
    /// The sources that somebody asked for: all of them in INCLUDE mode, those with a running timer in
    /// EXCLUDE mode.
    SourceSet requestedSources() const { return sources( true ); }
    /// The sources that nobody wants; EXCLUDE mode only.
    SourceSet excludedSources() const { return sources( false ); }
    /// The version to whose hosts the group is bound at present, 1 to 3 (RFC 3376 section 7.3.2).
    U8 compatibilityVersion() const;
    /// Who reported the group last.
    IpAddr const& lastReporter() const { return lastReporter_; }
    /// Seconds to go; 0 where the timer does not run.
    Seconds groupTimerRemaining() const { return groupTimer_->remaining(); }
    Seconds sourceTimerRemaining( IpAddr const& source ) const;
    /// Whether the router forwards the source's traffic for the group (RFC 3376 section 6.3).
    bool forwards( IpAddr const& source ) const;
    /// True for a group that nobody wants anything of.
    bool isIdle() const { return filterMode_ == FilterMode::include && sources_.empty(); }

    // Reception. A group that is idle afterwards is the caller's to remove.
    void handleV1Report( IpAddr const& reporter );
    void handleV2Report( IpAddr const& reporter );
    void handleV2Leave();
    void handleRecord( Zornet::IgmpV3GroupRecordType type, SourceSet const& sources, IpAddr const& reporter );
    /// Another querier's query with a clear S flag: what it asks about ends after `lastMemberQueryTime`
    /// seconds, unless somebody answers.
    void handleGroupQuery( Seconds lastMemberQueryTime );
    void handleGroupSourceQuery( SourceSet const& sources, Seconds lastMemberQueryTime );

  private:
    struct Source {
        Kiv::Ptr<Timer> timer;
        U32 queriesLeft = 0;
    };

    QuerierConfig const& config() const { return router_.configInForce(); }
    void apply( Zornet::IgmpV3GroupRecordType type, SourceSet const& sources );

    // The tables of RFC 3376 section 6.4, one function for one row: what a record does in a filter mode.
    void handleInInclude( Zornet::IgmpV3GroupRecordType type, SourceSet const& b );
    void includeIsIn( SourceSet const& b );
    void includeIsEx( SourceSet const& b );
    void includeAllow( SourceSet const& b );
    void includeBlock( SourceSet const& b );
    void includeToEx( SourceSet const& b );
    void includeToIn( SourceSet const& b );
    void handleInExclude( Zornet::IgmpV3GroupRecordType type, SourceSet const& a );
    void excludeIsIn( SourceSet const& a );
    void excludeIsEx( SourceSet const& a );
    void excludeAllow( SourceSet const& a );
    void excludeBlock( SourceSet const& a );
    void excludeToEx( SourceSet const& a );
    void excludeToIn( SourceSet const& a );

    // The words in which the tables speak.
    SourceSet sources( bool running ) const;
    void excludeModeIs();
    void sourceTimersAreMembershipInterval( SourceSet const& sources );
    void sourceTimersAreGroupTimer( SourceSet const& sources );
    void sourceTimersAreZero( SourceSet const& sources );
    void sourcesDel( SourceSet const& sources );
    void groupTimerIsMembershipInterval();
    void sendQuery();
    void sendQuery( SourceSet const& sources );

    // Timers.
    Source& sourceIs( IpAddr const& source );
    void handleGroupTimer();
    void handleSourceTimer( IpAddr const& source );
    static void lower( Timer& timer, Seconds span );

    // Queries that are to be repeated.
    void transmitGroupQuery();
    void transmitGroupSourceQueries();

    Router& router_;
    Kiv::Ptr<Lumo::TimerWheel const> wheel_;
    IpAddr group_;
    IpAddr lastReporter_;
    FilterMode filterMode_ = FilterMode::include;
    Kiv::Ptr<Timer> groupTimer_;
    std::map<IpAddr, Source> sources_;
    Seconds v1HostsUntil_ = -Kiv::never; ///< when the last version 1 report is forgotten
    Seconds v2HostsUntil_ = -Kiv::never;

    bool asked_ = false; ///< a round of group queries has begun since the group timer was last raised
    U32 groupQueriesLeft_ = 0;
    Kiv::Ptr<Timer> groupQueryTimer_;
    Kiv::Ptr<Timer> sourceQueryTimer_;
};

} // namespace Lab
