#include "tests/support/HostChecks.h"

#include <algorithm>

#include "tests/support/Frames.h"

namespace Support {

namespace {

using namespace Igmp;
using Lab::append;
using Lab::Bytes;

bool
isArmed( ResponseTimerSm const& timer ) {
    return Kiv::isFinite( timer.responseDelay()->timeMin() );
}

bool
isArmed( Lumo::TimerWheel::NotifieeConst const* timer ) {
    return Kiv::isFinite( timer->timeMin() );
}

char const*
firstOf( std::initializer_list<char const*> faults ) {
    auto const* const at =
        std::find_if( faults.begin(), faults.end(), []( char const* fault ) { return fault != nullptr; } );
    return at == faults.end() ? nullptr : *at;
}

char const*
unless( bool holds, char const* what ) {
    return holds ? nullptr : what;
}

char const*
disabledFault( IgmpHostSm const& sm ) {
    return firstOf(
        { unless( !sm.igmpHostStatus() && !sm.aggregatedSenderSm(), "a disabled host has no companions" ),
          unless( !sm.igmpV3HostGeneralQueryTimerSm(), "a disabled host has no query timer" ),
          unless( sm.groupTimerSm().size() == 0, "a disabled host has no group timers" ),
          unless( sm.v3GroupQueryTimerSm().size() == 0, "a disabled host has no group query timers" ),
          unless( !isArmed( sm.v1RouterPresentTimer() ), "a disabled host remembers no querier" ),
          unless( !isArmed( sm.v2RouterPresentTimer() ), "a disabled host remembers no querier" ) }
    );
}

char const*
groupTimerFault( IgmpHostSm const& sm, IgmpHostGroupTimerSm const& timer, bool everPeriodic ) {
    bool const pending = timer.responseDelayTimerState() == timerRunning;
    return firstOf(
        { unless( sm.igmpHost()->v3group( timer.group() ) != nullptr, "a record for each group timer" ),
          unless( timer.responseDelayRemaining() >= 0.0, "time does not run backwards" ),
          unless( !pending || isArmed( timer ), "a pending answer is armed" ),
          unless( pending || everPeriodic || !isArmed( timer ), "an idle timer is not armed" ) }
    );
}

char const*
groupsFault( IgmpHostSm const& sm, bool everPeriodic ) {
    std::size_t const records = sm.igmpHost()->v3groups();
    if ( sm.groupTimerSm().size() != records ) {
        return "a group timer for each record";
    }
    if ( sm.v3GroupQueryTimerSm().size() != records ) {
        return "a group query timer for each record";
    }
    if ( sm.aggregatedSenderSm()->v3GroupSms() != records + leavingGroups( sm ) ) {
        return "a machine for each record and each group that is leaving";
    }
    for ( IgmpHostGroupTimerSm const& timer : sm.groupTimerSm() ) {
        if ( char const* const fault = groupTimerFault( sm, timer, everPeriodic ) ) {
            return fault;
        }
    }
    return nullptr;
}

/// RFC 3376 section 7.2.1: the oldest querier that is remembered rules, up to what is configured.
char const*
versionFault( IgmpHostSm const& sm, bool everPeriodic ) {
    IgmpHost const& host = *sm.igmpHost();
    IgmpVersion const inForce = sm.igmpHostStatus()->igmpVersion();
    if ( inForce > host.igmpVersion() ) {
        return "the version in force is no later than configured";
    }
    IgmpVersion const heard = isArmed( sm.v1RouterPresentTimer() )   ? igmpVersion1
                              : isArmed( sm.v2RouterPresentTimer() ) ? igmpVersion2
                                                                     : igmpVersion3;
    IgmpVersion const right =
        host.igmpVersionForced() ? host.igmpVersion() : std::min( heard, host.igmpVersion() );
    return unless( everPeriodic || inForce == right, "the oldest querier heard rules" );
}

void
appendEthernet( Bytes& bytes, IgmpHost const& host ) {
    append( bytes, host.macAddr() );
    if ( host.tagged() ) {
        append( bytes, Zornet::U16{ 0x8100 } );
        append( bytes, static_cast<Zornet::U16>( host.vlanId() & 0xfff ) );
    }
    append( bytes, Zornet::U16{ 0x0800 } );
}

/// The frame holds these bytes at that place.
bool
holds( Zornet::Pkt const& pkt, std::size_t at, Bytes const& bytes ) {
    return pkt.bytes() >= at + bytes.size() &&
           std::equal( bytes.begin(), bytes.end(), pkt.front() + static_cast<std::ptrdiff_t>( at ) );
}

char const*
templateFault( IgmpHost const& host, Zornet::Pkt const& pkt ) {
    constexpr std::size_t srcAt = 6;
    Bytes ethernet;
    appendEthernet( ethernet, host );
    std::size_t const ipAt = srcAt + ethernet.size();
    bool const routerAlert = host.enableRouterAlert();
    Bytes const ipStart{ static_cast<Zornet::U8>( routerAlert ? 0x46 : 0x45 ), 0 };
    Bytes const ttlAndProtocol{ 0, 0, 0, 0, 1, 2 }; // behind identification and fragment
    Bytes src;
    append( src, host.ipAddr() );
    return firstOf(
        { unless( holds( pkt, srcAt, ethernet ), "source, tag and type of a template" ),
          unless( holds( pkt, ipAt, ipStart ), "the IP header's length in a template" ),
          unless( holds( pkt, ipAt + 4, ttlAndProtocol ), "TTL and protocol of a template" ),
          unless( holds( pkt, ipAt + 12, src ), "the IP source of a template" ),
          unless( !routerAlert || holds( pkt, ipAt + 20, { 0x94, 4, 0, 0 } ), "a template's option" ) }
    );
}

} // namespace

char const*
hostFault( IgmpHostSm const& sm, bool everPeriodic ) {
    if ( sm.enabled() != sm.igmpHost()->enabled() ) {
        return "the machine follows the switch";
    }
    if ( !sm.enabled() ) {
        return disabledFault( sm );
    }
    if ( !sm.igmpHostStatus() || !sm.aggregatedSenderSm() || !sm.igmpV3HostGeneralQueryTimerSm() ) {
        return "an enabled host has its companions";
    }
    return firstOf( { groupsFault( sm, everPeriodic ), versionFault( sm, everPeriodic ),
                      owingFault( *sm.aggregatedSenderSm() ) } );
}

char const*
owingFault( IgmpV3HostAggregatedSenderSm const& sender ) {
    if ( !sender.knowsOwing() ) {
        return nullptr;
    }
    for ( IgmpV3HostGroupSm const& groupSm : sender.v3GroupSm() ) {
        bool const owes = groupSm.isStateChanged() || !sender.igmpHost()->v3group( groupSm.group() );
        auto const isThis = [&]( auto const& place ) { return place.key == groupSm.group(); };
        if ( groupSm.owingNoted() != std::ranges::any_of( sender.owing(), isThis ) ) {
            return "a group that is noted as asked is asked";
        }
        if ( owes && !groupSm.owingNoted() ) {
            return "a group that owes something is asked";
        }
    }
    return nullptr;
}

std::size_t
armedTimers( IgmpHostSm const& sm ) {
    std::size_t armed = isArmed( sm.v1RouterPresentTimer() );
    armed += isArmed( sm.v2RouterPresentTimer() );
    if ( !sm.enabled() ) {
        return armed;
    }
    armed += isArmed( *sm.aggregatedSenderSm() );
    armed += isArmed( *sm.igmpV3HostGeneralQueryTimerSm() );
    for ( IgmpHostGroupTimerSm const& timer : sm.groupTimerSm() ) {
        armed += isArmed( timer );
    }
    for ( IgmpV3HostGroupQueryTimerSm const& timer : sm.v3GroupQueryTimerSm() ) {
        armed += isArmed( timer );
    }
    return armed;
}

std::size_t
leavingGroups( IgmpHostSm const& sm ) {
    std::size_t leaving = 0;
    if ( sm.aggregatedSenderSm() ) {
        for ( IgmpV3HostGroupSm const& group : sm.aggregatedSenderSm()->v3GroupSm() ) {
            leaving += sm.igmpHost()->v3group( group.group() ) == nullptr;
        }
    }
    return leaving;
}

char const*
templateFault( IgmpHostSm const& sm ) {
    IgmpHost const& host = *sm.igmpHost();
    if ( !sm.v2ReportPkt() || !sm.v3ReportPkt() ) {
        return unless( !sm.enabled(), "an enabled host has its templates" );
    }
    return firstOf( { templateFault( host, *sm.v2ReportPkt() ), templateFault( host, *sm.v3ReportPkt() ) } );
}

} // namespace Support
