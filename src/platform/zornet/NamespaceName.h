#pragma once

#include <iosfwd>

#include "platform/kiv/String8.h"
#include "platform/kiv/Value.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// Name of a network namespace, of at most `maxBytes` bytes. The empty name, which is the default, is the
/// namespace that the process runs in.
class NamespaceName {
  public:
    static constexpr U32 maxBytes = 150;

    NamespaceName() = default;
    /// Raises RangeException for a longer name.
    explicit NamespaceName( Kiv::String8 const& name );

    Kiv::String8 const& name() const { return name_; }
    bool empty() const { return name_.empty(); }

    friend bool operator==( NamespaceName const& a, NamespaceName const& b ) = default;

  private:
    Kiv::String8 name_;
};

std::ostream& operator<<( std::ostream& out, NamespaceName const& ns );

} // namespace Zornet

template <>
struct Kiv::ValueTraits<Zornet::NamespaceName> {
    static constexpr char const* name = "Zornet::NamespaceName";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Zornet::NamespaceName const& value ) {
        return std::string( value.name().view() );
    }
    static Zornet::NamespaceName parse( std::string_view text ) {
        return Zornet::NamespaceName( Kiv::String8( text ) );
    }
};
