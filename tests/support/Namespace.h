#pragma once

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "platform/zornet/NamespaceName.h"

namespace Support {

/// Runs a command of the shell and returns what it prints. Raises std::runtime_error where it fails.
inline std::string
outputOf( std::string const& command ) {
    FILE* const pipe = popen( ( command + " 2>&1" ).c_str(), "r" );
    std::string output;
    std::array<char, 4096> part;
    while ( std::size_t const bytes = fread( part.data(), 1, part.size(), pipe ) ) {
        output.append( part.data(), bytes );
    }
    if ( pclose( pipe ) != 0 ) {
        throw std::runtime_error( command + ": " + output );
    }
    return output;
}

/// A network namespace of iproute2 for one test, under a name that no other test on this machine uses. It
/// goes with its object, and its links with it.
class Namespace {
  public:
    /// Where `exists` is false, only the name is taken.
    explicit Namespace( std::string const& purpose, bool exists = true )
        : name_(
              "igmphost-" + purpose + "-" + std::to_string( getpid() ) + "-" + std::to_string( ++made_ )
          ) {
        if ( exists ) {
            add();
        }
    }
    ~Namespace() {
        if ( exists_ ) {
            [[maybe_unused]] int const status = std::system( ( "ip netns del " + name_ ).c_str() );
        }
    }
    Namespace( Namespace const& ) = delete;
    Namespace& operator=( Namespace const& ) = delete;

    /// Why namespaces cannot be made here; empty where they can.
    static std::string unavailable() {
        try {
            Namespace const trial( "trial" );
            return {};
        } catch ( std::runtime_error const& error ) {
            return error.what();
        }
    }

    std::string const& name() const { return name_; }
    Zornet::NamespaceName ns() const { return Zornet::NamespaceName( name_ ); }

    void add() {
        outputOf( "ip netns add " + name_ );
        exists_ = true;
    }
    void del() {
        exists_ = false;
        outputOf( "ip netns del " + name_ );
    }
    /// Runs `ip` with the arguments inside the namespace and returns what it prints.
    std::string ip( std::string const& arguments ) const {
        return outputOf( "ip -n " + name_ + " " + arguments );
    }
    /// Runs any command inside the namespace and returns what it prints.
    std::string run( std::string const& command ) const {
        return outputOf( "ip netns exec " + name_ + " " + command );
    }

  private:
    static inline int made_ = 0;

    std::string name_;
    bool exists_ = false;
};

/// Makes a pair of virtual Ethernet devices, `a` in one namespace and `b` in the other, and takes both up.
inline void
vethIs( Namespace const& nsA, std::string const& a, Namespace const& nsB, std::string const& b ) {
    nsA.ip( "link add " + a + " type veth peer name " + b + " netns " + nsB.name() );
    nsA.ip( "link set " + a + " up" );
    nsB.ip( "link set " + b + " up" );
}

} // namespace Support
