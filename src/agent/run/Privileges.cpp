#include "agent/run/Privileges.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

namespace Agent {

namespace {

bool
hasCapability( int capability ) {
    __user_cap_header_struct header{ _LINUX_CAPABILITY_VERSION_3, 0 };
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    if ( syscall( SYS_capget, &header, data ) != 0 ) {
        return true; // not to be known: the device will tell
    }
    return ( data[CAP_TO_INDEX( capability )].effective & CAP_TO_MASK( capability ) ) != 0;
}

bool
hostEntersNamespace( HostSpec const& spec ) {
    return !spec.settings.value<Zornet::NamespaceName>( Igmp::IgmpHost::attrNs ).empty();
}

} // namespace

std::string
missingPrivilege( Scenario const& scenario ) {
    return missingPrivilege( std::any_of( scenario.hosts.begin(), scenario.hosts.end(), &hostEntersNamespace )
    );
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

} // namespace Agent
