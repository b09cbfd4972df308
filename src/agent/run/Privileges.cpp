#include "agent/run/Privileges.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace Agent {

namespace {

using CapabilityWords = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

__user_cap_header_struct
ofThisThread() {
    return { _LINUX_CAPABILITY_VERSION_3, 0 };
}

bool
hasCapability( unsigned capability ) {
    __user_cap_header_struct header = ofThisThread();
    CapabilityWords words{};
    if ( syscall( SYS_capget, &header, words.data() ) != 0 ) {
        return true; // not to be known: the device will tell
    }
    return ( words.at( CAP_TO_INDEX( capability ) ).effective & CAP_TO_MASK( capability ) ) != 0;
}

bool
hostEntersNamespace( HostSpec const& spec ) {
    return !spec.settings.value<Zornet::NamespaceName>( Igmp::IgmpHost::attrNs ).empty();
}

/// What an event sets may move hosts into a namespace in which none began.
bool
eventEntersNamespace( Event const& event ) {
    return hostEntersNamespace( event.values );
}

bool
isInNamespace( MembershipCondition const& condition ) {
    return condition.bridge && !condition.bridge->ns.empty();
}

bool
looksIntoNamespace( Expectation const& expectation ) {
    return std::any_of( expectation.memberships.begin(), expectation.memberships.end(), &isInNamespace );
}

bool
entersNamespace( Scenario const& scenario ) {
    return std::any_of( scenario.hosts.begin(), scenario.hosts.end(), &hostEntersNamespace ) ||
           std::any_of( scenario.events.begin(), scenario.events.end(), &eventEntersNamespace ) ||
           std::any_of( scenario.expectations.begin(), scenario.expectations.end(), &looksIntoNamespace ) ||
           ( scenario.querier && !scenario.querier->ns.empty() );
}

} // namespace

std::string
missingPrivilege( Scenario const& scenario ) {
    return missingPrivilege( entersNamespace( scenario ) );
}

std::string
missingPrivilege( bool entersNamespace ) {
    std::string missing;
    std::string grant;
    if ( !hasCapability( CAP_NET_RAW ) ) {
        missing = "packet sockets need the capability CAP_NET_RAW";
        grant = "cap_net_raw";
    }
    if ( entersNamespace && !hasCapability( CAP_SYS_ADMIN ) ) {
        missing += std::string( missing.empty() ? "" : ", and " ) +
                   "entering a network namespace needs the capability CAP_SYS_ADMIN";
        grant += grant.empty() ? "cap_sys_admin" : ",cap_sys_admin";
    }
    return missing.empty()
               ? missing
               : missing + "; run as root, or once: setcap " + grant + "+ep $(command -v igmphost)";
}

bool
isSetUid() {
    return getuid() != geteuid() || getgid() != getegid();
}

void
keepCapabilities( std::vector<unsigned> const& kept ) {
    __user_cap_header_struct header = ofThisThread();
    CapabilityWords words{};
    bool done = syscall( SYS_capget, &header, words.data() ) == 0;
    CapabilityWords mask{};
    for ( unsigned const capability : kept ) {
        mask.at( CAP_TO_INDEX( capability ) ).permitted |= CAP_TO_MASK( capability );
    }
    for ( std::size_t i = 0; i < words.size(); ++i ) {
        words[i].permitted &= mask[i].permitted;
        words[i].effective &= mask[i].permitted;
        words[i].inheritable &= mask[i].permitted;
    }
    done = done && syscall( SYS_capset, &header, words.data() ) == 0 &&
           prctl( PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0 ) == 0;
    if ( !done ) {
        throw std::system_error( errno, std::generic_category(), "cannot give up capabilities" );
    }
}

std::vector<unsigned>
runCapabilities( RunOptions const& options, Scenario const& scenario ) {
    bool const anyNamespace = options.controlPath.has_value(); // of hosts that come through it
    std::vector<unsigned> needed = deviceCapabilities( anyNamespace || entersNamespace( scenario ) );
    if ( options.simulate ) {
        needed.clear();
    }
    auto const isFile = []( std::optional<std::string> const& path ) { return path && *path != "-"; };
    if ( options.controlPath || isFile( options.statusFile ) || isFile( options.junitFile ) ) {
        needed.insert( needed.end(), { CAP_DAC_OVERRIDE, CAP_FOWNER } );
    }
    return needed;
}

std::vector<unsigned>
deviceCapabilities( bool entersNamespace ) {
    std::vector<unsigned> needed{ CAP_NET_RAW, CAP_NET_ADMIN };
    if ( entersNamespace ) {
        needed.push_back( CAP_SYS_ADMIN );
    }
    return needed;
}

} // namespace Agent
