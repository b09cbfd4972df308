#pragma once

#include <iosfwd>
#include <span>
#include <vector>

#include "platform/zornet/IpAddr.h"

namespace Lab {

/// A set of source addresses, with the operators by which RFC 3376 section 6.4 writes its tables. Invariant:
/// the addresses stand in ascending order, each once.
class SourceSet {
  public:
    SourceSet() = default;
    SourceSet( std::initializer_list<Zornet::IpAddr> sources );
    /// From a list in any order, with or without repetitions.
    explicit SourceSet( std::span<Zornet::IpAddr const> sources );

    bool empty() const { return sources_.empty(); }
    std::size_t size() const { return sources_.size(); }
    auto begin() const { return sources_.begin(); }
    auto end() const { return sources_.end(); }
    bool contains( Zornet::IpAddr const& source ) const;

    /// Takes in an address above all others.
    void append( Zornet::IpAddr const& source );

    /// Union, intersection, difference.
    friend SourceSet operator+( SourceSet const& a, SourceSet const& b );
    friend SourceSet operator*( SourceSet const& a, SourceSet const& b );
    friend SourceSet operator-( SourceSet const& a, SourceSet const& b );
    friend bool operator==( SourceSet const& a, SourceSet const& b ) = default;

  private:
    std::vector<Zornet::IpAddr> sources_;
};

/// The addresses between braces, such as "{10.0.0.1, 10.0.0.2}".
std::ostream& operator<<( std::ostream& out, SourceSet const& sources );

} // namespace Lab
