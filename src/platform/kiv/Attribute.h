#pragma once

#include <span>
#include <string_view>

#include "platform/kiv/AttributeOps.h"
#include "platform/kiv/NotifieeConst.h"

namespace Kiv {

/// What an attribute is, and so what may be done with it from outside.
enum class AttributeKind {
    key,              ///< the entity's key in its collection, fixed
    argument,         ///< given at construction, fixed
    scalar,           ///< stored, writable
    state,            ///< stored, changed by the object alone
    constant,         ///< of the type: no storage, no mutator
    pointer,          ///< a writable pointer to an object of another kind
    valueCollection,  ///< keyed values
    entityCollection, ///< keyed children
    containedEntity,  ///< one child, made on demand
    operation,        ///< runs when it is set
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
    char const* objectType = nullptr;   ///< full name of the class that is held or collected
    PointerOps const* pointer = nullptr;
    CollectionOps const* collection = nullptr;
    /// Whether the attribute has that value, of its type.
    bool ( *holds )( PtrInterface const& object, std::any const& value ) = nullptr;
    /// A change of it makes what else was changed on the object take effect, so a replica gets it last.
    bool announces = false;
    char const* help = nullptr; ///< one line for users: meaning, unit, range

    bool isWritable() const { return write != nullptr; }
};

/// A row for a value that can be read only.
template <auto reader>
constexpr Attribute
readOnlyAttribute(
    AttributeId id, char const* name, AttributeKind kind, char const* defaultText, char const* help = nullptr
) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using T = typename ReaderTraits<decltype( reader )>::Value;
    Attribute row{ id,
                   name,
                   kind,
                   &valueType<T>,
                   defaultText,
                   []( PtrInterface const& object ) {
                       return std::any( T( ( objectAs<Class>( object ).*reader )() ) );
                   },
                   nullptr,
                   nullptr };
    row.help = help;
    row.holds = []( PtrInterface const& object, std::any const& value ) {
        return ( objectAs<Class>( object ).*reader )() == std::any_cast<T const&>( value );
    };
    return row;
}

/// A row for a stored, writable scalar.
template <auto reader, auto mutator, auto callback>
constexpr Attribute
scalarAttribute( AttributeId id, char const* name, char const* defaultText, char const* help = nullptr ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using T = typename ReaderTraits<decltype( reader )>::Value;
    Attribute row = readOnlyAttribute<reader>( id, name, AttributeKind::scalar, defaultText, help );
    row.write = []( PtrInterface& object, std::any const& value ) {
        ( static_cast<Class&>( object ).*mutator )( std::any_cast<T const&>( value ) );
    };
    row.callback = &CallbackThunk<callback>::call;
    return row;
}

/// The same row for an attribute whose change makes the others take effect.
constexpr Attribute
announcing( Attribute row ) {
    row.announces = true;
    return row;
}

/// A row for a stored scalar of an object that has no reactors to tell.
template <auto reader, auto mutator>
constexpr Attribute
settableAttribute( AttributeId id, char const* name, char const* defaultText ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using T = typename ReaderTraits<decltype( reader )>::Value;
    Attribute row = readOnlyAttribute<reader>( id, name, AttributeKind::scalar, defaultText );
    row.write = []( PtrInterface& object, std::any const& value ) {
        ( static_cast<Class&>( object ).*mutator )( std::any_cast<T const&>( value ) );
    };
    return row;
}

/// A row for an attribute that holds an object of class `objectType`, or collects them. Its operations are
/// added by one of the functions below; without them it can only be named.
constexpr Attribute
structuralAttribute(
    AttributeId id, char const* name, AttributeKind kind, ValueType const* keyType = nullptr
) {
    return { id, name, kind, nullptr, nullptr, nullptr, nullptr, nullptr, keyType };
}

/// A row for an operation of one argument: setting it runs the operation, and there is nothing to read.
template <auto operation>
constexpr Attribute
operationAttribute( AttributeId id, char const* name ) {
    using Class = typename OperationTraits<decltype( operation )>::Class;
    using T = typename OperationTraits<decltype( operation )>::Argument;
    Attribute row = structuralAttribute( id, name, AttributeKind::operation );
    row.type = &valueType<T>;
    row.write = []( PtrInterface& object, std::any const& value ) {
        ( static_cast<Class&>( object ).*operation )( std::any_cast<T const&>( value ) );
    };
    return row;
}

constexpr Attribute
objectAttribute(
    AttributeId id, char const* name, AttributeKind kind, char const* objectType, PointerOps const& ops
) {
    Attribute row = structuralAttribute( id, name, kind );
    row.objectType = objectType;
    row.pointer = &ops;
    return row;
}

/// A row for a pointer that its object alone sets, or one given at construction.
template <auto reader>
constexpr Attribute
fixedPointerAttribute(
    AttributeId id, char const* name, char const* objectType, AttributeKind kind = AttributeKind::pointer
) {
    return objectAttribute( id, name, kind, objectType, fixedPointerOps<reader> );
}

template <auto reader, auto mutator>
constexpr Attribute
pointerAttribute( AttributeId id, char const* name, char const* objectType ) {
    return objectAttribute( id, name, AttributeKind::pointer, objectType, pointerOps<reader, mutator> );
}

/// A row for one child, made and deleted on demand.
template <auto reader, auto creator, auto deleter>
constexpr Attribute
containedAttribute( AttributeId id, char const* name, char const* objectType ) {
    return objectAttribute( id, name, AttributeKind::containedEntity, objectType, containedOps<reader, creator, deleter> );
}

/// A row for the collection that class `C` names, see Collection.
template <class C>
constexpr Attribute
collectionAttribute( AttributeId id, char const* name, char const* objectType ) {
    using Key = typename Collection<C>::Key;
    constexpr bool ofValues = Collection<C>::hasValues;
    Attribute row =
        structuralAttribute( id, name, ofValues ? AttributeKind::valueCollection : AttributeKind::entityCollection, &valueType<Key> );
    row.objectType = objectType;
    row.collection = &collectionOps<C>;
    return row;
}

/// The kind in words.
char const* kindText( AttributeKind kind );

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
