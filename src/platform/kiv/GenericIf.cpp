#include "platform/kiv/GenericIf.h"

namespace Kiv {

namespace {

template <class E>
[[noreturn]] void
raise( String8 const& text ) {
    throw E( text, Expect::current(), Expect::current().any() );
}

/// The key that an operation on a collection needs.
std::any const&
checkedKey( Attribute const& row, GenericValue const& key ) {
    if ( key.isNothing() ) {
        GenericIf::throwUnknownArgException( row.name );
    }
    if ( key.type != row.keyType ) {
        GenericIf::throwTypeException( row.name );
    }
    return key.value;
}

GenericValue
memberValue( CollectionOps const& ops, Ptr<PtrInterface> const& member ) {
    if ( !member || !ops.valueType ) {
        return member;
    }
    return { ops.value( *member ), ops.valueType };
}

} // namespace

GenericValue::GenericValue( Ptr<PtrInterface> const& held )
    : object( held ), objectType( held ? held->fwkType() : nullptr ) {}

void
GenericIf::voidPtrIs( Ptr<PtrInterface> const& object ) {
    if ( !validPtr( object )->fwkType()->isA( type_ ) ) {
        throwTypeException( type_->name() );
    }
    object_ = object;
}

Attribute const&
GenericIf::row( AttributeId id ) const {
    Attribute const* const found = type_->row( id );
    if ( !found ) {
        throwUnknownAttrException( attributeString( id ) );
    }
    return *found;
}

Attribute const&
GenericIf::collectionRow( AttributeId id ) const {
    Attribute const& found = row( id );
    if ( !found.collection ) {
        throwBadIndexAttrException( found.name );
    }
    return found;
}

AttributeId
GenericIf::attributeId( String8 const& name ) const {
    for ( Attribute const* candidate : type_->rows() ) {
        if ( name.view() == candidate->name ) {
            return candidate->id;
        }
    }
    throwUnknownAttrException( name );
}

String8
GenericIf::attributeString( AttributeId id ) const {
    Attribute const* const found = type_->row( id );
    return found ? found->name : "unknown";
}

GenericValue
GenericIf::attributeOp( AttributeOp op, GenericValue const& key, GenericValue const& value ) {
    if ( op.operation > lastReading && isReadOnly_ ) {
        throwConstException();
    }
    Attribute const& at = row( op.id );
    if ( at.collection ) {
        return collectionOp( at, op.operation, key, value );
    }
    if ( !key.isNothing() ) {
        throwBadIndexAttrException( at.name );
    }
    return at.pointer ? pointerOp( at, op.operation, value ) : plainOp( at, op.operation, value );
}

GenericValue
GenericIf::plainOp( Attribute const& at, U32 operation, GenericValue const& value ) {
    if ( operation == opRead && at.read ) {
        return { at.read( *object_ ), at.type };
    }
    if ( operation != opSet || !at.write ) {
        throwOpNotSupportedException( at.name, operation, false );
    }
    if ( value.type != at.type ) {
        throwTypeException( at.name );
    }
    at.write( *object_, value.value );
    return {};
}

GenericValue
GenericIf::pointerOp( Attribute const& at, U32 operation, GenericValue const& value ) {
    PointerOps const& ops = *at.pointer;
    if ( operation == opRead ) {
        return ops.read( *object_ );
    }
    if ( operation == opSet && ops.create ) {
        return ops.create( *object_ );
    }
    if ( operation == opDel && ops.del ) {
        ops.del( *object_ );
        return {};
    }
    if ( operation != opSet || !ops.write ) {
        throwOpNotSupportedException( at.name, operation, false );
    }
    if ( value.type || !ops.write( *object_, value.object ) ) {
        throwTypeException( at.name );
    }
    return {};
}

GenericValue
GenericIf::collectionRead( Attribute const& at, U32 operation, GenericValue const& key ) const {
    CollectionOps const& ops = *at.collection;
    switch ( operation ) {
    case opRead: return memberValue( ops, ops.find( *object_, checkedKey( at, key ) ) );
    case opCount: return GenericValue::of( static_cast<U32>( ops.count( *object_ ) ) );
    case opGeneration: return GenericValue::of( ops.generation( *object_ ) );
    case opExists:
        return GenericValue::of( static_cast<bool>( ops.find( *object_, checkedKey( at, key ) ) ) );
    default: throwOpNotSupportedException( at.name, operation, true );
    }
}

GenericValue
GenericIf::collectionOp(
    Attribute const& at, U32 operation, GenericValue const& key, GenericValue const& value
) {
    CollectionOps const& ops = *at.collection;
    if ( operation <= lastReading ) {
        return collectionRead( at, operation, key );
    }
    std::any const& checked = checkedKey( at, key );
    if ( operation == opSet && ops.create ) {
        if ( value.type != ops.valueType ) {
            throwTypeException( at.name );
        }
        ops.create( *object_, checked, value.value );
        return memberValue( ops, ops.find( *object_, checked ) );
    }
    if ( operation != opDel || !ops.del ) {
        throwOpNotSupportedException( at.name, operation, true );
    }
    ops.del( *object_, checked );
    return {};
}

GenericIf::Iterator
GenericIf::attributeIteratorConst( AttributeId id ) const {
    Attribute const& at = collectionRow( id );
    return { at, at.collection->begin( *object_ ) };
}

GenericIf::Iterator
GenericIf::attributeIteratorKeyConst( AttributeId id, GenericValue const& key ) const {
    Attribute const& at = collectionRow( id );
    return { at, at.collection->startAt( *object_, checkedKey( at, key ) ) };
}

void
GenericIf::attributeIterator_iterInc( Iterator& at ) {
    at.at_->next();
}

GenericIf::Iterator
GenericIf::attributeIterator_iterClone( Iterator const& at ) {
    return { *at.row_, at.at_->clone() };
}

void
GenericIf::attributeIterator_iterDel( Iterator& at ) {
    attributeOp( { at.row_->id, opDel }, attributeIterator_iterKey( at ) );
}

GenericValue
GenericIf::attributeIterator_iterKey( Iterator const& at ) {
    return { at.at_->key(), at.row_->keyType };
}

GenericValue
GenericIf::attributeIterator_iterObj( Iterator const& at ) {
    return memberValue( *at.row_->collection, at.at_->member() );
}

bool
GenericIf::attributeIterator_nonNull( Iterator const& at ) {
    return at.at_->isAtMember();
}

void
GenericIf::throwConstException() {
    raise<ConstException>( "attempting to modify a const instance" );
}

void
GenericIf::throwBadIndexAttrException( String8 const& attribute ) {
    raise<BadIndexAttrException>( attribute );
}

void
GenericIf::throwTypeException( String8 const& attribute ) {
    raise<TypeException>( attribute );
}

void
GenericIf::throwOpNotSupportedException( String8 const& attribute, U32, bool ) {
    raise<OpNotSupportedException>( attribute );
}

void
GenericIf::throwUnknownArgException( String8 const& attribute ) {
    raise<UnknownArgException>( attribute );
}

void
GenericIf::throwUnknownAttrException( String8 const& attribute ) {
    raise<UnknownAttrException>( attribute );
}

GenericIfAdapter::GenericIfAdapter( Ptr<Entity const> const& entity, Told told )
    : NotifieeConst( entity ), told_( std::move( told ) ) {
    isRegisteredNotifieeIs( true );
}

void
GenericIfAdapter::onChange( AttributeId id, std::any const& key ) {
    if ( kivZombie() ) {
        return;
    }
    Attribute const* const at = notifierEntity()->fwkType()->row( id );
    told_( id, key.has_value() && at ? GenericValue( key, at->keyType ) : GenericValue() );
}

std::vector<std::any>
fieldValues( std::span<Attribute const> table, std::vector<GenericValue> const& fields ) {
    if ( fields.size() > table.size() ) {
        GenericIf::throwUnknownArgException( "unknown" );
    }
    std::vector<std::any> values;
    for ( Attribute const& at : table ) {
        bool const isGiven = values.size() < fields.size();
        if ( isGiven && fields[values.size()].type != at.type ) {
            GenericIf::throwTypeException( at.name );
        }
        values.push_back( isGiven ? fields[values.size()].value : at.type->parse( at.defaultText ) );
    }
    return values;
}

} // namespace Kiv
