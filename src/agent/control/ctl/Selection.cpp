#include "agent/control/ctl/Selection.h"

#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

[[noreturn]] void
throwNoHost( Hosts const& present, std::string const& pattern ) {
    std::vector<std::string_view> names;
    for ( auto const& host : present ) {
        names.push_back( host->name().view() );
    }
    std::string const near( nearest( pattern, names ) );
    std::string const hint = present.empty() ? "the agent has none"
                             : isPattern( pattern ) || near.empty()
                                 ? ( present.size() == 1 ? "there is " : "there are " ) + told( present )
                                 : "did you mean '" + near + "'?";
    throw std::runtime_error( "no host '" + pattern + "'; " + hint );
}

} // namespace

Hosts
selectedHosts( ControlClient const& client, std::string const& pattern ) {
    Hosts hosts = hostsOf( client.hostDir(), pattern.empty() ? "*" : pattern );
    if ( hosts.empty() && !pattern.empty() ) {
        throwNoHost( hostsOf( client.hostDir(), "*" ), pattern );
    }
    return hosts;
}

std::vector<std::string>
namesOf( Hosts const& hosts ) {
    std::vector<std::string> names;
    names.reserve( hosts.size() );
    for ( auto const& host : hosts ) {
        names.emplace_back( host->name().view() );
    }
    return names;
}

std::string
told( Hosts const& hosts ) {
    if ( hosts.empty() ) {
        return "no host";
    }
    std::string const first( hosts.front()->name().view() );
    std::string const last( hosts.back()->name().view() );
    return hosts.size() == 1   ? first
           : hosts.size() == 2 ? first + " and " + last
                               : std::to_string( hosts.size() ) + " hosts, " + first + " to " + last;
}

} // namespace Agent
