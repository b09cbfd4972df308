#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string_view>

#include "platform/kiv/String8.h"
#include "platform/kiv/Value.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// An IPv4 address as it stands on the wire: four bytes in network order, of alignment 1, so that headers
/// hold it as a member. Orders by its host-order value; the default is 0.0.0.0.
class IpAddr {
  public:
    constexpr IpAddr() = default;
    /// From dotted decimal, such as "10.0.0.1": four numbers of 0 to 255 without leading zeros, and nothing
    /// else. Raises RangeException for any other text.
    explicit IpAddr( std::string_view text );
    explicit IpAddr( std::nullptr_t ) = delete;

    /// 0x0a000001 is 10.0.0.1.
    static constexpr IpAddr fromHost( U32 value ) {
        IpAddr addr;
        for ( U32 i = 0; i < 4; ++i ) {
            addr.bytes_[i] = static_cast<U8>( value >> ( 24 - 8 * i ) );
        }
        return addr;
    }

    constexpr U32 hostOrder() const {
        return U32{ bytes_[0] } << 24 | U32{ bytes_[1] } << 16 | U32{ bytes_[2] } << 8 | U32{ bytes_[3] };
    }
    /// The four bytes in network order.
    constexpr std::array<U8, 4> const& bytes() const { return bytes_; }
    constexpr bool isZero() const { return hostOrder() == 0; }
    /// True for 224.0.0.0 to 239.255.255.255.
    constexpr bool isMulticast() const { return ( bytes_[0] & 0xf0 ) == 0xe0; }

    /// One to one: two addresses never have the same hash.
    constexpr U32 hash() const {
        U32 h = hostOrder();
        h = ( h ^ ( h >> 16 ) ) * 0x7feb352dU;
        h = ( h ^ ( h >> 15 ) ) * 0x846ca68bU;
        return h ^ ( h >> 16 );
    }

    friend constexpr bool operator==( IpAddr const& a, IpAddr const& b ) {
        return a.hostOrder() == b.hostOrder();
    }
    friend constexpr std::strong_ordering operator<=>( IpAddr const& a, IpAddr const& b ) {
        return a.hostOrder() <=> b.hostOrder();
    }

  private:
    std::array<U8, 4> bytes_{};
};

static_assert( sizeof( IpAddr ) == 4 && alignof( IpAddr ) == 1 );

Kiv::String8 valueToStrep( IpAddr const& addr );
std::ostream& operator<<( std::ostream& out, IpAddr const& addr );

} // namespace Zornet

template <>
struct Kiv::ValueTraits<Zornet::IpAddr> {
    static constexpr char const* name = "Zornet::IpAddr";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Zornet::IpAddr const& value ) {
        return std::string( valueToStrep( value ).view() );
    }
    static Zornet::IpAddr parse( std::string_view text ) { return Zornet::IpAddr( text ); }
};
