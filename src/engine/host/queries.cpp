#include "engine/RandomDelay.h"
#include "engine/Trace.h"
#include "engine/host/Reactors.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

namespace {

/// The length of a version 3 query without sources; every shorter query is of version 1 or 2 (RFC 3376
/// section 7.1).
constexpr U32 leastV3QueryBytes = sizeof( Zornet::IgmpV3QueryHdr );
constexpr U32 v2QueryBytes = sizeof( Zornet::IgmpV12Hdr );

bool
isAtVersion3( IgmpHostStatus const* status ) {
    return status && status->igmpVersion() == igmpVersion3;
}

} // namespace

/// Every query of any version. An 8-byte query at a host that is held at version 3 is answered on both paths
/// and counted twice, on purpose. Whoever is told of the version or of a count may disable the host; nothing
/// more is done for the query then.
void
IgmpHostSm::handleV12Query( Zornet::IgmpV12Hdr* hdr, U32 size ) {
    Kiv::invariant( igmpHost()->enabled(), "igmpHost()->enabled()" );
    KIV_TRACE( igmpHostTrace, traceAction )
        << "IgmpHost " << name_ << " received query: " << *hdr << " size: " << size
        << " maxResp: " << static_cast<U32>( hdr->maxResponseCode() );
    if ( size < leastV3QueryBytes ) {
        raiseRouterPresentTimer( hdr->maxResponseCode() );
        handleV2V3Compatibility();
        if ( size == v2QueryBytes && isAtVersion3( igmpHostStatus() ) ) {
            handleV2QueryHeldAtV3( hdr );
        }
    } else if ( isAtVersion3( igmpHostStatus() ) ) {
        handleV3Query( hdr, size );
        return;
    }
    if ( igmpHostStatus() ) {
        answerAsV12( *hdr );
    }
}

/// Each query extends the memory of its querier from its own arrival, also to an earlier time than before.
void
IgmpHostSm::raiseRouterPresentTimer( U8 maxResp ) {
    if ( maxResp == 0 ) {
        v1RouterPresentTimer_->timeMinIs( Kiv::now() + igmpHost()->v1RouterPresentTimeout() );
    } else {
        v2RouterPresentTimer_->timeMinIs( Kiv::now() + igmpHost()->v2RouterPresentTimeout() );
    }
}

/// The general counter rises for a group query too, on purpose.
void
IgmpHostSm::handleV3Query( Zornet::IgmpV12Hdr* hdr, U32 size ) {
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    auto const* const query = static_cast<Zornet::IgmpV3QueryHdr const*>( hdr );
    Zornet::IpAddr const group = query->groupAddress();
    if ( query->messageBytes() != size ) {
        KIV_TRACE( igmpHostTrace, traceAction )
            << "Packet has " << query->numSources() << " sources, size not correct";
        return;
    }
    if ( group.isZero() ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " general query ";
    } else {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " group query on: " << group
                                                << " number of source " << query->numSources();
        if ( auto const timer = v3GroupQueryTimerSm( group ) ) {
            timer->processGroupQuerySources( query, size );
        }
    }
    status->v3GeneralQueryReceivedInc( 1 );
    if ( igmpHostStatus() ) {
        auto const seconds = static_cast<U32>( query->maxResponseSeconds() );
        maybeStartGroupTimerV3( this, group, seconds, query->queryIntervalSeconds() );
    }
}

/// A group query of the old form has no sources to read, so it must not meet a group query timer.
void
IgmpHostSm::handleV2QueryHeldAtV3( Zornet::IgmpV12Hdr* hdr ) {
    Zornet::IpAddr const group = hdr->groupAddress();
    if ( group.isZero() ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " general query ";
    } else if ( auto const timer = v3GroupQueryTimerSm( group ) ) {
        timer->processGroupQuerySources( nullptr, 0 );
    }
    igmpHostStatus()->v2GeneralQueryReceivedInc( 1 );
    if ( igmpHostStatus() ) {
        maybeStartGroupTimerV3( this, group, static_cast<U32>( hdr->maxResponseSeconds() ), 0.0 );
    }
}

/// A group query starts the timer of any record that exists, joined or not.
void
IgmpHostSm::answerAsV12( Zornet::IgmpV12Hdr const& hdr ) {
    Zornet::IpAddr const queried = hdr.groupAddress();
    U32 const maxResp = hdr.maxResponseCode();
    if ( !queried.isZero() ) {
        igmpHostStatus()->v2GroupQueryReceivedInc( 1 );
        if ( igmpHostStatus() && igmpHost()->v3group( queried ) ) {
            maybeStartGroupTimer( this, queried, maxResp );
        }
        return;
    }
    igmpHostStatus()->v2GeneralQueryReceivedInc( 1 );
    for ( auto at = igmpHost()->v3group().begin(); at && igmpHostStatus(); ++at ) {
        if ( groupIsJoined( at.ptr() ) ) {
            maybeStartGroupTimer( this, at->multicastAddr(), maxResp );
        }
    }
}

Seconds
maxResponseTime( U32 mrt ) {
    Seconds const maxSecs = static_cast<float>( mrt ) / 10.0F;
    KIV_TRACE( igmpHostTrace, traceDetail ) << "maxResponseTime: mrt " << mrt << " maxSecs " << maxSecs;
    return maxSecs;
}

void
maybeStartGroupTimer( IgmpHostSm* sm, Zornet::IpAddr group, U32 mrt ) {
    Ptr<IgmpHostGroupTimerSm> const timer = sm->groupTimerSmIs( nullptr, group, sm->timerWheel() );
    Seconds const maxSecs = maxResponseTime( mrt == 0 ? sm->igmpHost()->v1MaxResponseTime() : mrt );
    if ( timer->responseDelayTimerState() == timerRunning ) {
        Seconds const remaining = timer->responseDelayRemaining();
        if ( !Kiv::isFinite( remaining ) || maxSecs >= remaining ) {
            return;
        }
    }
    Seconds const delay = randomDelay( maxSecs );
    timer->doSetTimer( delay );
    KIV_TRACE( igmpHostTrace, traceAction )
        << "IgmpHost " << sm->name() << " start timer for group " << group << " delay " << delay;
}

} // namespace Igmp
