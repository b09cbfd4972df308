#include "agent/scenario/warnings/HostWarnings.h"

#include <net/if.h>

#include "agent/hosts/HostPattern.h"
#include "agent/scenario/warnings/FrameSizes.h"

namespace Agent {

using Igmp::IgmpHost;
using Kiv::Seconds;
using Zornet::IpAddr;

void
HostWarnings::check() {
    checkName();
    checkAddresses();
    checkBinding();
    checkTag();
    checkVersion();
    checkRobustness();
    checkMtu();
    checkPeriodicReport();
    checkTimes();
    checkSilence();
}

void
HostWarnings::warn( Kiv::AttributeId id, std::string const& text, bool endsProcess ) {
    warnings_.add( spec_.settings.placeOf( id, spec_.at ), text, endsProcess );
}

bool
HostWarnings::isVersion3() const {
    return value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ) == Igmp::igmpVersion3;
}

void
HostWarnings::checkName() {
    if ( isPattern( spec_.name ) ) {
        warnings_.add(
            spec_.at, "name: '" + spec_.name +
                          "' is a pattern too; where no host of just this name is found, it means others "
                          "that fit it"
        );
    }
}

void
HostWarnings::checkAddresses() {
    if ( value<IpAddr>( IgmpHost::attrIpAddr ).isZero() ) {
        warn( IgmpHost::attrIpAddr, "without ipAddr the host sends from 0.0.0.0" );
    } else if ( spec_.ipAddr( 0 ).isMulticast() || spec_.ipAddr( spec_.count - 1 ).isMulticast() ) {
        warn( IgmpHost::attrIpAddr, "ipAddr: a multicast address is no source of packets" );
    }
    if ( numberOf( value<Zornet::EthAddr>( IgmpHost::attrMacAddr ) ) == 0 ) {
        warn(
            IgmpHost::attrMacAddr,
            "without macAddr the host sends from 00:00:00:00:00:00, and switches drop its frames"
        );
    } else if ( ( spec_.macAddr( 0 ).bytes()[0] & 1 ) != 0 ) {
        warn(
            IgmpHost::attrMacAddr, "macAddr: a group address is no source of frames, and switches drop them"
        );
    }
}

void
HostWarnings::checkBinding() {
    std::size_t const nameBytes = value<Kiv::String8>( IgmpHost::attrDeviceName ).view().size();
    if ( nameBytes == 0 ) {
        warn( IgmpHost::attrDeviceName, "without deviceName the host is on no wire" );
    } else if ( nameBytes >= IF_NAMESIZE ) {
        warn( IgmpHost::attrDeviceName, "deviceName: no device has a name of more than 15 bytes" );
    }
    if ( spec_.settings.find( IgmpHost::attrIntfConfigVersion ) &&
         value<U32>( IgmpHost::attrIntfConfigVersion ) == 0 ) {
        warn( IgmpHost::attrIntfConfigVersion, "intfConfigVersion: at 0 the host opens no device" );
    }
    if ( !value<bool>( IgmpHost::attrProcessV3GroupChange ) && groups_.count != 0 ) {
        warn(
            IgmpHost::attrProcessV3GroupChange,
            "processV3GroupChange: false joins and leaves no group, and removing one meanwhile can end the "
            "process",
            true
        );
    }
}

void
HostWarnings::checkTag() {
    constexpr U64 lastVlan = 4094;
    bool const shared = value<bool>( IgmpHost::attrTagged ) && value<bool>( IgmpHost::attrUseMux );
    if ( !shared && !value<Zornet::IntfId>( IgmpHost::attrIntfId ).name().empty() ) {
        warn( IgmpHost::attrIntfId, "intfId has no effect without tagged and useMux" );
    }
    if ( !value<bool>( IgmpHost::attrTagged ) ) {
        if ( value<bool>( IgmpHost::attrUseMux ) ) {
            warn( IgmpHost::attrUseMux, "useMux has no effect without tagged" );
        }
        if ( value<U16>( IgmpHost::attrVlanId ) != 0 || spec_.vlanStep != 0 ) {
            warn( IgmpHost::attrVlanId, "vlanId has no effect without tagged" );
        }
        return;
    }
    U64 const last = spec_.vlanId( 0 ) + U64{ spec_.count - 1 } * spec_.vlanStep;
    for ( U64 const vlan : { U64{ spec_.vlanId( 0 ) }, last } ) {
        if ( vlan == 0 || vlan > lastVlan ) {
            warn(
                IgmpHost::attrVlanId, "vlanId: " + std::to_string( vlan ) +
                                          " is no VLAN of 1 to 4094; the host sends with tag " +
                                          std::to_string( vlan & 0xfff ) + " and may hear nothing"
            );
            return;
        }
    }
}

/// A version 2 group query brings a host down to version 2, unless it is held; then there is nothing in the
/// query that its version 3 side could read.
void
HostWarnings::checkVersion() {
    if ( value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ) == Igmp::igmpVersionUnknown ) {
        warn( IgmpHost::attrIgmpVersion, "igmpVersion: 0 is no version of the protocol" );
    }
    if ( !isVersion3() ) {
        return;
    }
    constexpr char ends[] = " at version 3, a version 2 query for one of its groups ends the process";
    if ( value<bool>( IgmpHost::attrIgmpVersionForced ) ) {
        warn(
            IgmpHost::attrIgmpVersionForced, std::string( "igmpVersionForced: with the host held" ) + ends,
            true
        );
    }
    for ( Kiv::AttributeId const id :
          { IgmpHost::attrV1RouterPresentTimeout, IgmpHost::attrV2RouterPresentTimeout } ) {
        if ( !Kiv::isFinite( value<Seconds>( id ) ) ) {
            std::string const name = spec_.settings.find( id )->attribute->name;
            warn( id, name + ": infinity holds the host; then," + ends, true );
        }
    }
}

/// The engine keeps the number of reports that still have to name a source in eight bits, and that of those
/// that have to tell a change of filter mode whole.
void
HostWarnings::checkRobustness() {
    constexpr U32 most = 255;
    U32 const robustness = value<U32>( IgmpHost::attrRobustness );
    std::string const told = "robustness: " + std::to_string( robustness );
    if ( ( robustness & most ) == 0 ) {
        warn( IgmpHost::attrRobustness, told + " ends the process when sources change in version 3", true );
    } else if ( robustness > most ) {
        warn(
            IgmpHost::attrRobustness, told + " is above 255; changes of sources are reported only " +
                                          std::to_string( robustness & most ) + " times"
        );
    }
    if ( robustness == 0 && groups_.excludes && isVersion3() ) {
        warn(
            IgmpHost::attrRobustness,
            told + " tells neither join nor leave of a group in EXCLUDE mode in version 3"
        );
    }
}

void
HostWarnings::checkMtu() {
    U32 const mtu = value<U32>( IgmpHost::attrMtu );
    U32 const least = headerBytes( spec_ ) + leastRoom;
    if ( mtu < least ) {
        warn(
            IgmpHost::attrMtu,
            "mtu: below " + std::to_string( least ) +
                ", headers and a record with a source, a report ends the process",
            true
        );
    } else if ( mtu > greatestMtu ) {
        warn(
            IgmpHost::attrMtu,
            "mtu: above 65535 the room left in a packet is reckoned wrongly, and close to 2^32 the process "
            "ends",
            true
        );
    }
}

void
HostWarnings::checkPeriodicReport() {
    if ( !value<bool>( IgmpHost::attrEnablePeriodicReport ) ) {
        return;
    }
    if ( value<Seconds>( IgmpHost::attrUnsolicitedReportInterval ) <= 0.0 ) {
        warn(
            IgmpHost::attrEnablePeriodicReport,
            "enablePeriodicReport: without unsolicitedReportInterval reports follow each other without a "
            "pause"
        );
    }
    if ( isVersion3() && headerBytes( spec_ ) + groups_.recordBytes > value<U32>( IgmpHost::attrMtu ) ) {
        warn(
            IgmpHost::attrEnablePeriodicReport,
            "enablePeriodicReport: in version 3 the stream never gets past one packet; of the groups, " +
                std::to_string( groups_.count ) + " in all, the others are told to queriers alone"
        );
    }
}

void
HostWarnings::checkTimes() {
    for ( Kiv::AttributeId const id :
          { IgmpHost::attrV1RouterPresentTimeout, IgmpHost::attrV2RouterPresentTimeout,
            IgmpHost::attrUnsolicitedReportInterval } ) {
        if ( value<Seconds>( id ) < 0.0 ) {
            warn(
                id, std::string( spec_.settings.find( id )->attribute->name ) + ": below 0 no time passes"
            );
        }
    }
}

/// Once an answer of version 3 was due and could not be sent, its timer answers nothing more. A blocked host
/// hears no query, so there only an answer that was on its way counts.
void
HostWarnings::checkSilence() {
    constexpr char mute[] = "answers no query later until it is disabled and enabled";
    if ( value<bool>( IgmpHost::attrBlocked ) ) {
        std::string const pending =
            std::string( "; with an answer pending as it is blocked, a version 3 host " ) + mute;
        warn(
            IgmpHost::attrBlocked,
            "blocked: frames that arrive meanwhile wait, and the host then lags behind by as many until it "
            "is bound anew" +
                ( isVersion3() ? pending : "" )
        );
    } else if ( isVersion3() && value<Bridging::AllowedTrafficDirection>( IgmpHost::attrDirection ) == Bridging::AllowedTrafficDirection::ingress ) {
        warn(
            IgmpHost::attrDirection,
            std::string( "direction: with ingress a version 3 host drops its answers, and " ) + mute
        );
    }
}

} // namespace Agent
