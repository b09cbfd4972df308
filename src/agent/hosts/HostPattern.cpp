#include "agent/hosts/HostPattern.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstring>

namespace Agent {

bool
isPattern( std::string_view text ) {
    return text.find_first_of( patternCharacters ) != std::string_view::npos;
}

bool
fits( std::string const& name, std::string const& pattern ) {
    return fnmatch( pattern.c_str(), name.c_str(), 0 ) == 0;
}

bool
comesBefore( std::string const& a, std::string const& b ) {
    return strverscmp( a.c_str(), b.c_str() ) < 0;
}

std::vector<Kiv::Ptr<Igmp::IgmpHost>>
hostsOf( Igmp::IgmpHostDir const& dir, std::string const& pattern ) {
    if ( Kiv::Ptr<Igmp::IgmpHost> const host = dir.igmpHost( pattern ) ) {
        return { host };
    }
    std::vector<Kiv::Ptr<Igmp::IgmpHost>> hosts;
    if ( isPattern( pattern ) ) {
        for ( Igmp::IgmpHost& host : dir.igmpHost() ) {
            if ( fits( host.name().charPtr(), pattern ) ) {
                hosts.emplace_back( &host );
            }
        }
        std::sort( hosts.begin(), hosts.end(), []( auto const& a, auto const& b ) {
            return comesBefore( a->name().charPtr(), b->name().charPtr() );
        } );
    }
    return hosts;
}

} // namespace Agent
