#pragma once

#include <span>
#include <string_view>

#include "platform/kiv/NotifieeConst.h"
#include "platform/kiv/Value.h"
#include "platform/kiv/ValueHolder.h"

namespace Kiv {

/// What an attribute is, and so what may be done with it from outside.
enum class AttributeKind {
    key,              ///< the entity's key in its collection, fixed
    argument,         ///< given at construction, fixed
    scalar,           ///< stored, writable
    constant,         ///< of the type: no storage, no mutator
    pointer,          ///< a writable pointer to an object of another kind
    valueCollection,  ///< keyed values
    entityCollection, ///< keyed children
    containedEntity,  ///< one child, made on demand
};

/// One row of a class's table of attributes: what code that does not know the class needs to reach the
/// attribute. Plain accessors of the class do the work; the row only names them.
struct Attribute {
    AttributeId id;
    char const* name;
    AttributeKind kind;
    ValueType const* type;   ///< of the value; null for pointers, children and collections of them
    char const* defaultText; ///< canonical text of the value in a new object; null where there is none
    std::any ( *read )( PtrInterface const& object );
    void ( *write )( PtrInterface& object, std::any const& value ); ///< null for what cannot be set
    void ( *callback )( PtrInterface::NotifieeConst& reactor
    );                                  ///< the scalar callback that tells of a change
    ValueType const* keyType = nullptr; ///< of a collection

    bool isWritable() const { return write != nullptr; }
};

template <class Reader>
struct ReaderTraits;
template <class C, class T>
struct ReaderTraits<T ( C::* )() const> {
    using Class = C;
    using Value = std::remove_cvref_t<T>;
};

/// A row for a value that can be read only.
template <auto reader>
constexpr Attribute
readOnlyAttribute( AttributeId id, char const* name, AttributeKind kind, char const* defaultText ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using T = typename ReaderTraits<decltype( reader )>::Value;
    return { id,
             name,
             kind,
             &valueType<T>,
             defaultText,
             []( PtrInterface const& object ) {
                 return std::any( T( ( objectAs<Class>( object ).*reader )() ) );
             },
             nullptr,
             nullptr };
}

/// A row for a stored, writable scalar.
template <auto reader, auto mutator, auto callback>
constexpr Attribute
scalarAttribute( AttributeId id, char const* name, char const* defaultText ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using T = typename ReaderTraits<decltype( reader )>::Value;
    Attribute row = readOnlyAttribute<reader>( id, name, AttributeKind::scalar, defaultText );
    row.write = []( PtrInterface& object, std::any const& value ) {
        ( static_cast<Class&>( object ).*mutator )( std::any_cast<T const&>( value ) );
    };
    row.callback = &CallbackThunk<callback>::call;
    return row;
}

/// A row that only names an attribute: pointers, children and collections, which have operations of their
/// own.
constexpr Attribute
structuralAttribute(
    AttributeId id, char const* name, AttributeKind kind, ValueType const* keyType = nullptr
) {
    return { id, name, kind, nullptr, nullptr, nullptr, nullptr, nullptr, keyType };
}

/// The row of that name, or null.
Attribute const* findAttribute( std::span<Attribute const> table, std::string_view name );

/// The attribute's value in canonical text. The row must have a value type.
std::string attributeText( Attribute const& row, PtrInterface const& object );
/// Sets the attribute from text. Raises RangeException for a text that is no such value; the row must be
/// writable.
void attributeTextIs( Attribute const& row, PtrInterface& object, std::string_view text );

/// True where the ids of the table ascend without a gap from `first` on.
constexpr bool
idsAscendFrom( std::span<Attribute const> table, AttributeId first ) {
    for ( Attribute const& row : table ) {
        if ( row.id != first++ ) {
            return false;
        }
    }
    return true;
}

} // namespace Kiv
