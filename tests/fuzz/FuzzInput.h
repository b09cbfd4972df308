#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include "platform/kiv/Types.h"

namespace Fuzz {

/// The bytes of an input, read from first to last. Past the end everything reads as zero.
class Input {
  public:
    explicit Input( std::span<Kiv::U8 const> bytes ) : bytes_( bytes ) {}

    bool atEnd() const { return bytes_.empty(); }
    Kiv::U8 byte() {
        if ( atEnd() ) {
            return 0;
        }
        Kiv::U8 const value = bytes_.front();
        bytes_ = bytes_.subspan( 1 );
        return value;
    }
    Kiv::U16 word() {
        unsigned const high = byte();
        return static_cast<Kiv::U16>( high << 8 | byte() );
    }
    /// A number below `limit`, from one byte.
    unsigned below( unsigned limit ) { return byte() % limit; }
    /// As many as there are, at most `count`.
    std::vector<Kiv::U8> bytes( std::size_t count ) {
        auto const taken = bytes_.first( std::min( count, bytes_.size() ) );
        bytes_ = bytes_.subspan( taken.size() );
        return { taken.begin(), taken.end() };
    }

  private:
    std::span<Kiv::U8 const> bytes_;
};

/// What the fuzzer takes as a find.
inline void
require( bool holds, char const* what ) {
    if ( !holds ) {
        std::fprintf( stderr, "does not hold: %s\n", what );
        std::abort();
    }
}

} // namespace Fuzz
