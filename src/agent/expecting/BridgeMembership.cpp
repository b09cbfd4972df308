#include "agent/expecting/BridgeMembership.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

namespace {

using Json = nlohmann::json;

/// Starts a program with both of its streams on `out`.
pid_t
spawn( std::vector<std::string>& words, int out ) {
    std::vector<char*> arguments;
    for ( std::string& word : words ) {
        arguments.push_back( word.data() );
    }
    arguments.push_back( nullptr );
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init( &actions );
    posix_spawn_file_actions_adddup2( &actions, out, STDOUT_FILENO );
    posix_spawn_file_actions_adddup2( &actions, out, STDERR_FILENO );
    pid_t process = 0;
    int const fault = posix_spawnp( &process, arguments[0], &actions, nullptr, arguments.data(), environ );
    posix_spawn_file_actions_destroy( &actions );
    if ( fault != 0 ) {
        throw std::system_error( fault, std::generic_category(), words[0] );
    }
    return process;
}

std::string
readToEnd( int descriptor ) {
    std::string text;
    std::array<char, 65536> part;
    ssize_t bytes = 0;
    while ( ( bytes = read( descriptor, part.data(), part.size() ) ) > 0 ) {
        text.append( part.data(), static_cast<std::size_t>( bytes ) );
    }
    return text;
}

/// What a program prints. Raises std::runtime_error where it fails.
std::string
outputOf( std::vector<std::string> words ) {
    std::array<int, 2> ends{};
    if ( pipe2( ends.data(), O_CLOEXEC ) != 0 ) {
        throw std::system_error( errno, std::generic_category(), "pipe" );
    }
    Zornet::FileDescriptor const in( ends[0] );
    Zornet::FileDescriptor out( ends[1] );
    pid_t const process = spawn( words, out.get() );
    out = Zornet::FileDescriptor();
    std::string const output = readToEnd( in.get() );
    int status = 0;
    waitpid( process, &status, 0 );
    if ( status != 0 ) {
        throw std::runtime_error( words[0] + ": " + output.substr( 0, output.find( '\n' ) ) );
    }
    return output;
}

/// A source whose timer has run out is one that is blocked (RFC 3376, section 6.2.1). In INCLUDE mode the
/// others count, in EXCLUDE mode those.
Want
wantOf( Json const& entry ) {
    bool const excludes = entry.value( "filter_mode", "exclude" ) == "exclude";
    std::vector<Zornet::IpAddr> sources;
    for ( Json const& source : entry.value( "source_list", Json::array() ) ) {
        bool const isBlocked = std::stod( source.value( "timer", "0" ) ) == 0.0;
        if ( isBlocked == excludes ) {
            sources.emplace_back( source.at( "address" ).get<std::string>() );
        }
    }
    return { excludes ? Lab::FilterMode::exclude : Lab::FilterMode::include, Lab::SourceSet( sources ) };
}

void
addEntry( Json const& entry, Membership& membership ) {
    std::string const group = entry.at( "grp" ).get<std::string>();
    if ( entry.contains( "src" ) || group.find( ':' ) != std::string::npos ) {
        return; // told by the entry for the whole group; of IPv6
    }
    Want const want = wantOf( entry );
    auto const [at, isNew] = membership.emplace( Zornet::IpAddr( group ), want );
    if ( !isNew ) {
        at->second = at->second + want;
    }
}

} // namespace

Membership
bridgeMembershipOf( std::string const& json, std::string const& port ) {
    Membership membership;
    try {
        for ( Json const& part : Json::parse( json ) ) {
            for ( Json const& entry : part.value( "mdb", Json::array() ) ) {
                if ( port.empty() || entry.value( "port", "" ) == port ) {
                    addEntry( entry, membership );
                }
            }
        }
    } catch ( std::exception const& fault ) {
        throw std::runtime_error( std::string( "bridge: not understood: " ) + fault.what() );
    }
    return membership;
}

std::string
reasonToKnowNothing( std::string const& json ) {
    Json const links = Json::parse( json, nullptr, false );
    if ( !links.is_array() || links.empty() || !links[0].is_object() ) {
        return "";
    }
    Json const info = links[0].value( "linkinfo", Json::object() );
    if ( info.value( "info_kind", "" ) != "bridge" ) {
        return "is no bridge";
    }
    bool const snoops = info.value( "info_data", Json::object() ).value( "mcast_snooping", 1 ) != 0;
    return snoops ? "" : "does not snoop; of more groups than its mcast_hash_max a bridge stops snooping";
}

Membership
bridgeMembership( MembershipCondition::Bridge const& bridge ) {
    auto const outputAbout = [&]( std::string const& program, std::vector<std::string> const& what ) {
        std::vector<std::string> words{ program };
        if ( !bridge.ns.empty() ) {
            words.insert( words.end(), { "-n", bridge.ns } );
        }
        words.insert( words.end(), what.begin(), what.end() );
        words.push_back( bridge.device );
        return outputOf( std::move( words ) );
    };
    Membership const membership = bridgeMembershipOf(
        outputAbout( "bridge", { "-d", "-s", "-j", "mdb", "show", "dev" } ), bridge.port
    );
    if ( membership.empty() ) {
        std::string const reason =
            reasonToKnowNothing( outputAbout( "ip", { "-d", "-j", "link", "show", "dev" } ) );
        if ( !reason.empty() ) {
            throw std::runtime_error( "bridge: " + bridge.device + " " + reason );
        }
    }
    return membership;
}

} // namespace Agent
