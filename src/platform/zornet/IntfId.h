#pragma once

#include <compare>
#include <iosfwd>

#include "platform/kiv/String8.h"
#include "platform/kiv/Value.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// Identifies an interface by a name that the configuration chose; hosts with equal identifiers may share a
/// device. The default is the empty name.
class IntfId {
  public:
    IntfId() = default;
    explicit IntfId( Kiv::String8 const& name ) : name_( name ) {}

    Kiv::String8 const& name() const { return name_; }
    U32 hash() const { return name_.hash(); }

    friend bool operator==( IntfId const& a, IntfId const& b ) = default;
    friend std::strong_ordering operator<=>( IntfId const& a, IntfId const& b ) {
        return a.name_ <=> b.name_;
    }

  private:
    Kiv::String8 name_;
};

std::ostream& operator<<( std::ostream& out, IntfId const& intf );

/// The name between quotes, and its reader.
Kiv::String8 valueToStrep( IntfId const& intf );
void sequenceToValue( Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IntfId* intf );

} // namespace Zornet

template <>
struct Kiv::ValueTraits<Zornet::IntfId> {
    static constexpr char const* name = "Zornet::IntfId";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Zornet::IntfId const& value ) { return std::string( value.name().view() ); }
    static Zornet::IntfId parse( std::string_view text ) { return Zornet::IntfId( Kiv::String8( text ) ); }
};
