#pragma once

#include <compare>
#include <iosfwd>
#include <string_view>

#include "platform/kiv/String8.h"
#include "platform/kiv/Types.h"
#include "platform/kiv/Value.h"

namespace Bridging {

/// The number of a VLAN that frames can be tagged with: always 1 to 4094.
class VlanId {
  public:
    static constexpr Kiv::U16 min = 1;
    static constexpr Kiv::U16 max = 4094;

    /// Raises RangeException for a number outside `min` to `max`.
    explicit VlanId( Kiv::U16 value );
    /// From decimal text. Raises RangeException for a text that is no such number.
    explicit VlanId( std::string_view text );

    Kiv::U16 value() const { return value_; }
    Kiv::U32 hash() const { return value_; }

    friend bool operator==( VlanId a, VlanId b ) = default;
    friend auto operator<=>( VlanId a, VlanId b ) = default; // NOLINT(modernize-use-nullptr)

  private:
    Kiv::U16 value_;
};

/// In decimal.
Kiv::String8 valueToStrep( VlanId vlan );
std::ostream& operator<<( std::ostream& out, VlanId vlan );

} // namespace Bridging

template <>
struct Kiv::ValueTraits<Bridging::VlanId> {
    static constexpr char const* name = "Bridging::VlanId";
    static constexpr ValueForm form = ValueForm::unsignedInteger;
    static std::string format( Bridging::VlanId const& value ) {
        return std::string( valueToStrep( value ).view() );
    }
    static Bridging::VlanId parse( std::string_view text ) { return Bridging::VlanId( text ); }
};
