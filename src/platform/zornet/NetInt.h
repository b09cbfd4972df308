#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string>

#include "platform/kiv/String8.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// An unsigned number as it stands in a header: its bytes in network order, of alignment 1.
template <class Int>
class NetInt {
  public:
    constexpr NetInt( Int value = 0 ) { valueIs( value ); }

    constexpr Int value() const {
        U32 v = 0;
        for ( U8 byte : bytes_ ) {
            v = v << 8 | byte;
        }
        return static_cast<Int>( v );
    }
    constexpr void valueIs( Int value ) {
        for ( std::size_t i = bytes_.size(); i-- > 0; ) {
            bytes_[i] = static_cast<U8>( value );
            value = static_cast<Int>( value >> 8 );
        }
    }

    friend constexpr bool operator==( NetInt const& a, NetInt const& b ) = default;

  private:
    std::array<U8, sizeof( Int )> bytes_{};
};

using NetU8 = NetInt<U8>;
using NetU16 = NetInt<U16>;

static_assert( sizeof( NetU16 ) == 2 && alignof( NetU16 ) == 1 );

/// In decimal.
template <class Int>
Kiv::String8
valueToStrep( NetInt<Int> const& field ) {
    return std::to_string( field.value() );
}

template <class Int>
std::ostream&
operator<<( std::ostream& out, NetInt<Int> const& field ) {
    return out << +field.value();
}

} // namespace Zornet
