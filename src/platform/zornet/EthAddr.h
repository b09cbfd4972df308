#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string_view>

#include "platform/kiv/String8.h"
#include "platform/kiv/Value.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// A 48-bit Ethernet address as it stands on the wire: six bytes of alignment 1. The default is
/// 00:00:00:00:00:00.
class EthAddr {
  public:
    constexpr EthAddr() = default;
    constexpr explicit EthAddr( std::array<U8, 6> const& bytes ) : bytes_( bytes ) {}
    /// From six pairs of hexadecimal digits with colons between, such as "02:00:00:00:00:01". Raises
    /// RangeException for any other text.
    explicit EthAddr( std::string_view text );
    explicit EthAddr( std::nullptr_t ) = delete;

    constexpr std::array<U8, 6> const& bytes() const { return bytes_; }

    friend constexpr bool operator==( EthAddr const& a, EthAddr const& b ) = default;

  private:
    std::array<U8, 6> bytes_{};
};

static_assert( sizeof( EthAddr ) == 6 && alignof( EthAddr ) == 1 );

Kiv::String8 valueToStrep( EthAddr const& addr );
std::ostream& operator<<( std::ostream& out, EthAddr const& addr );

} // namespace Zornet

template <>
struct Kiv::ValueTraits<Zornet::EthAddr> {
    static constexpr char const* name = "Zornet::EthAddr";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Zornet::EthAddr const& value ) {
        return std::string( valueToStrep( value ).view() );
    }
    static Zornet::EthAddr parse( std::string_view text ) { return Zornet::EthAddr( text ); }
};
