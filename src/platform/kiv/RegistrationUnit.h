#pragma once

#include "platform/kiv/IntrospectionReactor.h"

namespace Kiv {

/// A collection whose key introspection knows by a name of its own instead of by its type's.
struct NamedKey {
    char const* type; ///< in full name
    char const* collection;
    char const* key;
};

/// The types of one part of the library, in the order of their declaration. At load their names and the
/// handles of their attributes are entered; they are declared to introspection once, the first time that they
/// are asked for while it is live.
class RegistrationUnit {
  public:
    constexpr RegistrationUnit(
        char const* nameSpace, std::span<TypeSlot> types, std::span<NamedKey const> namedKeys = {}
    )
        : nameSpace_( nameSpace ), types_( types ), namedKeys_( namedKeys ) {}

    /// For the unit's static initialiser.
    void load();
    /// Declares every type. Does nothing when done already, or while nobody wants to know.
    void registerTypes();
    /// The record of a type of this unit, in full name. It exists from now on.
    Type* type( std::string_view name );

  private:
    Type* type( TypeSlot& slot );

    char const* const nameSpace_;
    std::span<TypeSlot> const types_;
    std::span<NamedKey const> const namedKeys_;
    bool done_ = false;
};

/// Loads its unit. A static object of each unit, with an initialisation priority, so that the units load in
/// their order whatever the order of linking.
class UnitLoader {
  public:
    explicit UnitLoader( RegistrationUnit& unit );
};

} // namespace Kiv
