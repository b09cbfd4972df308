#include "agent/run/MissingDevices.h"

#include <net/if.h>

#include <cerrno>
#include <map>

#include "platform/zornet/device/NamespaceEntry.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;

struct Place {
    std::string ns;
    std::string device;

    friend auto operator<=>( Place const&, Place const& ) = default; // NOLINT(modernize-use-nullptr)
};

Place
placeOf( HostSpec const& spec ) {
    auto const ns = spec.settings.value<Zornet::NamespaceName>( IgmpHost::attrNs );
    auto const device = spec.settings.value<Kiv::String8>( IgmpHost::attrDeviceName );
    return { ns.name().charPtr(), std::string( device.view() ) };
}

/// What is missing of the place, if anything.
std::string
missingOf( Place const& place ) {
    Zornet::NamespaceEntry const entry( Zornet::NamespaceName( Kiv::String8( place.ns ) ) );
    if ( entry.error() == ENOENT ) {
        return "namespace " + place.ns;
    }
    if ( entry.error() != 0 || if_nametoindex( place.device.c_str() ) != 0 ) {
        return "";
    }
    return "device " + place.device + ( place.ns.empty() ? "" : " in " + place.ns );
}

using Places = std::map<Place, std::string>; // with who needs it

/// Who needs a place first is kept.
Places
neededPlaces( Scenario const& scenario ) {
    Places atStart;
    Places later;
    scenario.forEachEntry( [&]( HostSpec const& spec, U32, U32 ) {
        ( spec.later ? later : atStart )
            .emplace( placeOf( spec ), spec.later ? " for hosts added later" : "" );
    } );
    if ( scenario.querier ) {
        Place const place{ scenario.querier->ns.name().charPtr(),
                           std::string( scenario.querier->device.view() ) };
        atStart.emplace( place, " for the querier" );
    }
    for ( Expectation const& expectation : scenario.expectations ) {
        for ( MembershipCondition const& condition : expectation.memberships ) {
            if ( auto const& bridge = condition.bridge ) {
                atStart.emplace( Place{ bridge->ns, bridge->device }, " for an expectation" );
            }
        }
    }
    atStart.merge( later );
    return atStart;
}

} // namespace

std::vector<std::string>
missingDevices( Scenario const& scenario ) {
    std::vector<std::string> missing;
    std::map<std::string, std::size_t> told; // several places may lie in one namespace that is missing
    for ( auto const& [place, who] : neededPlaces( scenario ) ) {
        std::string const one = place.device.empty() ? "" : missingOf( place );
        if ( one.empty() ) {
            continue;
        }
        auto const [first, isNew] = told.emplace( one, missing.size() );
        if ( isNew ) {
            missing.push_back( one + who );
        } else if ( missing[first->second] != one + who ) {
            missing[first->second] = one; // for more than one reason
        }
    }
    return missing;
}

} // namespace Agent
