#pragma once

#include <iosfwd>

#include "platform/kiv/String8.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The 16 bits of an 802.1Q tag control field: priority and drop eligibility in the top four, the VLAN below.
class Eth8021QTagControl {
  public:
    constexpr Eth8021QTagControl( U16 value = 0 ) : value_( value ) {}

    constexpr U16 value() const { return value_; }
    constexpr U16 vlanId() const { return value_ & vlanMask; }
    /// Takes the low 12 bits of `vlan`; the top four bits stay.
    constexpr void vlanIdIs( U16 vlan ) {
        value_ = static_cast<U16>( ( value_ & ~vlanMask ) | ( vlan & vlanMask ) );
    }

    friend constexpr bool operator==( Eth8021QTagControl a, Eth8021QTagControl b ) = default;

  private:
    static constexpr U16 vlanMask = 0x0fff;

    U16 value_;
};

/// The whole field as four hexadecimal digits, such as "0x2064".
Kiv::String8 valueToStrep( Eth8021QTagControl tag );
std::ostream& operator<<( std::ostream& out, Eth8021QTagControl tag );

} // namespace Zornet
