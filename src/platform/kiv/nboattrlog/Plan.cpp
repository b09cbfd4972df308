#include "platform/kiv/nboattrlog/Plan.h"

#include <map>

namespace Kiv::NboAttrLog {

namespace {

RowForm
formOf( Attribute const& row ) {
    switch ( row.kind ) {
    case AttributeKind::scalar: return row.isWritable() ? RowForm::scalar : RowForm::none;
    case AttributeKind::valueCollection: return RowForm::values;
    case AttributeKind::entityCollection: return RowForm::members;
    case AttributeKind::containedEntity: return RowForm::child;
    default: return RowForm::none;
    }
}

/// Collections without the operations that replication needs belong to machines, not to the model.
bool
isReachable( Attribute const& row, RowForm form ) {
    switch ( form ) {
    case RowForm::values:
    case RowForm::members: return row.collection && row.collection->create && row.collection->del;
    case RowForm::child: return row.pointer && row.pointer->create && row.pointer->del;
    default: return true;
    }
}

} // namespace

std::string
bytesOf( ValueType const& type, std::any const& value ) {
    Out out;
    type.out( out, value );
    return std::string( out.bytes().begin(), out.bytes().end() );
}

Plan const&
Plan::of( Type const& type ) {
    static auto& plans = *new std::map<Type const*, Plan>; // outlives every static object
    auto const at = plans.find( &type );
    return at != plans.end() ? at->second : plans.emplace( &type, Plan( type ) ).first->second;
}

Plan::Plan( Type const& type ) : keyRow_( type.keyRow() ), childPlans_( type.attributes().size() ) {
    invariant( type.attributes().size() <= 64, "a class has at most 64 attributes" );
    for ( Attribute const& row : type.attributes() ) {
        RowForm form = formOf( row );
        form = isReachable( row, form ) ? form : RowForm::none;
        U64 const bit = U64{ 1 } << rows_.size();
        std::any defaultValue;
        if ( form == RowForm::scalar ) {
            ( row.announces ? announcements_ : contents_ ) |= bit;
            defaultValue = row.defaultText ? row.type->parse( row.defaultText ) : std::any();
        } else if ( form != RowForm::none ) {
            structures_ |= bit;
        }
        rows_.push_back( { &row, form, defaultValue } );
    }
}

PlanRow const*
Plan::find( AttributeId id ) const {
    if ( rows_.empty() || id < rows_.front().attribute->id || id > rows_.back().attribute->id ) {
        return nullptr;
    }
    return &rows_[static_cast<std::size_t>( id - rows_.front().attribute->id )];
}

Plan const&
Plan::childPlan( PlanRow const& row ) const {
    Plan const*& plan = childPlans_[index( row )];
    if ( !plan ) {
        Type const* const type = Type::find( row.attribute->objectType );
        invariant( type != nullptr, "the class of a child is known" );
        plan = &of( *type );
    }
    return *plan;
}

bool
Plan::isPristine( Entity const& entity ) const {
    for ( PlanRow const& row : rows_ ) {
        Attribute const& at = *row.attribute;
        bool const isChanged = row.form == RowForm::scalar
                                   ? !row.isAtDefault( entity )
                                   : ( row.form == RowForm::child ? at.pointer->read( entity ) != nullptr
                                                                  : row.form != RowForm::none &&
                                                                        at.collection->count( entity ) != 0 );
        if ( isChanged ) {
            return false;
        }
    }
    return true;
}

void
Plan::clear( Entity& entity ) const {
    for ( PlanRow const& row : rows_ ) {
        Attribute const& at = *row.attribute;
        if ( row.form == RowForm::scalar && row.defaultValue.has_value() ) {
            at.write( entity, row.defaultValue );
        } else if ( row.form == RowForm::child ) {
            at.pointer->del( entity );
        } else if ( row.form == RowForm::values || row.form == RowForm::members ) {
            for ( auto member = at.collection->begin( entity ); member->isAtMember(); member->next() ) {
                at.collection->del( entity, member->key() );
            }
        }
    }
}

} // namespace Kiv::NboAttrLog
