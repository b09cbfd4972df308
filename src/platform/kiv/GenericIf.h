#pragma once

#include <functional>

#include "platform/kiv/Type.h"

namespace Kiv {

/// A value on its way through the generic interface: a plain value with its type, an object, or nothing.
struct GenericValue {
    std::any value;
    ValueType const* type = nullptr; ///< of `value`; null for an object and for nothing
    Ptr<PtrInterface> object;
    Type* objectType = nullptr; ///< the object's own type

    GenericValue() = default;
    GenericValue( std::any const& plain, ValueType const* itsType ) : value( plain ), type( itsType ) {}
    GenericValue( Ptr<PtrInterface> const& held );
    template <class T>
    static GenericValue of( T const& plain ) {
        return { plain, &valueType<T> };
    }

    bool isNothing() const { return !type && !object; }
    /// The plain value, which must be of type T.
    template <class T>
    T const& as() const {
        return std::any_cast<T const&>( value );
    }
};

/// What the generic interface raises. The text is the attribute's name, but for ConstException.
class GenericIfException : public RangeException {
    using RangeException::RangeException;
};
class ConstException : public GenericIfException {
    using GenericIfException::GenericIfException;
};
class BadIndexAttrException : public GenericIfException {
    using GenericIfException::GenericIfException;
};
class TypeException : public GenericIfException {
    using GenericIfException::GenericIfException;
};
class OpNotSupportedException : public GenericIfException {
    using GenericIfException::GenericIfException;
};
class UnknownArgException : public GenericIfException {
    using GenericIfException::GenericIfException;
};
class UnknownAttrException : public GenericIfException {
    using GenericIfException::GenericIfException;
};

/// The view of an object for code that does not know its class: attributes are read, set and walked by number
/// or name. One implementation over the tables of all classes; what a class offers stands in its rows. A
/// read-only view changes nothing.
class GenericIf : public PtrInterface {
  public:
    struct AttributeOp {
        AttributeId id;
        U32 operation;
    };
    /// Operations. Those above 0x7f change the object.
    enum : U32 {
        opRead = 0,       ///< with a key, that member
        opCount = 1,      ///< members of a collection
        opGeneration = 2, ///< of a collection; moves whenever a member comes or goes
        opExists = 3,     ///< a member under the key
        opSet = 0x80,     ///< on a collection, creates the member under the key
        opDel = 0x81,     ///< the member under the key, or the one child
        lastReading = 0x7f,
    };
    class Iterator;

    Type* type() const { return type_; }
    Ptr<PtrInterface> const& obj() const { return object_; }
    bool isReadOnly() const { return isReadOnly_; }
    virtual Ptr<GenericIf> clone() const = 0;
    /// Turns the view to another object of its type.
    void voidPtrIs( Ptr<PtrInterface> const& object );

    /// Raises UnknownAttrException for a name that the object does not have.
    AttributeId attributeId( String8 const& name ) const;
    /// "unknown" for a number that the object does not hold.
    String8 attributeString( AttributeId id ) const;
    /// Every attribute, those of the base types last.
    std::vector<Attribute const*> attributes() const { return type_->rows(); }

    /// The one entry for every read and write.
    virtual GenericValue
    attributeOp( AttributeOp op, GenericValue const& key = {}, GenericValue const& value = {} );

    // Walks over a collection. An iterator survives the removal of any member.
    Iterator attributeIteratorConst( AttributeId id ) const;
    /// At the member under `key`, or at the next in the walk's order.
    Iterator attributeIteratorKeyConst( AttributeId id, GenericValue const& key ) const;
    static void attributeIterator_iterInc( Iterator& at );
    static Iterator attributeIterator_iterClone( Iterator const& at );
    /// Deletes the member under the iterator.
    void attributeIterator_iterDel( Iterator& at );
    static GenericValue attributeIterator_iterKey( Iterator const& at );
    /// The member, or its value.
    static GenericValue attributeIterator_iterObj( Iterator const& at );
    static bool attributeIterator_nonNull( Iterator const& at );

    [[noreturn]] static void throwConstException();
    [[noreturn]] static void throwBadIndexAttrException( String8 const& attribute );
    [[noreturn]] static void throwTypeException( String8 const& attribute );
    [[noreturn]] static void
    throwOpNotSupportedException( String8 const& attribute, U32 operation, bool isKeyed );
    [[noreturn]] static void throwUnknownArgException( String8 const& attribute );
    [[noreturn]] static void throwUnknownAttrException( String8 const& attribute );

  protected:
    GenericIf( Ptr<PtrInterface> const& object, Type* type, bool isReadOnly )
        : object_( object ), type_( type ), isReadOnly_( isReadOnly ) {}

  private:
    Attribute const& row( AttributeId id ) const;
    Attribute const& collectionRow( AttributeId id ) const;
    GenericValue plainOp( Attribute const& row, U32 operation, GenericValue const& value );
    GenericValue pointerOp( Attribute const& row, U32 operation, GenericValue const& value );
    GenericValue
    collectionOp( Attribute const& row, U32 operation, GenericValue const& key, GenericValue const& value );
    GenericValue collectionRead( Attribute const& row, U32 operation, GenericValue const& key ) const;

    Ptr<PtrInterface> object_;
    Type* type_;
    bool isReadOnly_;
};

/// A place in a collection.
class GenericIf::Iterator {
  public:
    Iterator( Attribute const& row, std::unique_ptr<CollectionCursor> at )
        : row_( &row ), at_( std::move( at ) ) {}

  private:
    friend class GenericIf;

    Attribute const* row_;
    std::unique_ptr<CollectionCursor> at_;
};

/// Tells of every change of an entity by number, whatever its class.
class GenericIfAdapter : public Entity::NotifieeConst {
  public:
    using Told = std::function<void( AttributeId id, GenericValue const& key )>;

    /// Registered from the start. The key is nothing but for a collection.
    GenericIfAdapter( Ptr<Entity const> const& entity, Told told );

    bool isGeneric() const override { return true; }
    void onChange( AttributeId id, std::any const& key ) override;

  private:
    Told const told_;
};

/// The view of an entity.
class GenericIfEntity : public GenericIf {
  public:
    using GenericIf_Adapter_ = GenericIfAdapter;

    explicit GenericIfEntity( Ptr<Entity> const& entity, bool isReadOnly = false )
        : GenericIf( entity, entity->fwkType(), isReadOnly ) {}
    Ptr<GenericIf> clone() const override { return new GenericIfEntity( *this ); }

  protected:
    GenericIfEntity( GenericIfEntity const& other )
        : GenericIf( other.obj(), other.type(), other.isReadOnly() ) {}
};

/// The view of a state machine, or of a value in its holder.
class GenericIfPtrInterface : public GenericIf {
  public:
    explicit GenericIfPtrInterface( Ptr<PtrInterface> const& object, bool isReadOnly = false )
        : GenericIf( object, object->fwkType(), isReadOnly ) {}
    GenericIfPtrInterface( Ptr<PtrInterface> const& object, Type* type, bool isReadOnly )
        : GenericIf( object, type, isReadOnly ) {}
    Ptr<GenericIf> clone() const override { return new GenericIfPtrInterface( obj(), type(), isReadOnly() ); }
};

/// The view of a class that is known where the view is made.
template <class C>
class GenericIfOf
    : public std::conditional_t<std::derived_from<C, Entity>, GenericIfEntity, GenericIfPtrInterface> {
    using Base = std::conditional_t<std::derived_from<C, Entity>, GenericIfEntity, GenericIfPtrInterface>;

  public:
    explicit GenericIfOf( Ptr<C> const& object, bool isReadOnly = false ) : Base( object, isReadOnly ) {}
    /// What is const can only be looked at.
    explicit GenericIfOf( Ptr<C const> const& object )
        : Base( Ptr<C>( const_cast<C*>( object.get() ) ), true ) {}
};

/// The plain values of a list of fields in the table's order, which genericIfListConstructor() makes a value
/// of.
std::vector<std::any>
fieldValues( std::span<Attribute const> table, std::vector<GenericValue> const& fields );

/// The view of a value of several fields; it is read-only, as values are made whole.
template <class C>
requires( !std::derived_from<C, PtrInterface> ) class GenericIfOf<C> : public GenericIfPtrInterface {
  public:
    explicit GenericIfOf( C const& value )
        : GenericIfPtrInterface( Ptr<PtrInterface>( new ValueHolder<C>( value ) ), C::_fwkType(), true ) {}

    /// The value with these fields, in the table's order; fields left out at the end have their defaults.
    /// Raises TypeException for a field of another type and UnknownArgException for one too many.
    static C genericIfListConstructor( std::vector<GenericValue> const& fields ) {
        return C( fieldValues( C::attributes(), fields ) );
    }
};

} // namespace Kiv
