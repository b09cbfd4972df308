#include "platform/kiv/Type.h"

#include <algorithm>

namespace Kiv {

namespace {

std::vector<Type*>&
entered() {
    static auto& types = *new std::vector<Type*>; // outlives every static object
    return types;
}

} // namespace

void
KivAttr::declarationIs(
    AttributeId id, String8 const& typeName, String8 const& keyTypeName, U32 flags, U32 introspectionFlags
) {
    id_ = id;
    typeName_ = typeName;
    keyTypeName_ = keyTypeName;
    flags_ = flags;
    introspectionFlags_ = introspectionFlags;
    isDeclared_ = true;
}

std::span<Attribute const>
Type::attributes() const {
    return declaration_.attributes ? declaration_.attributes() : std::span<Attribute const>();
}

std::vector<Attribute const*>
Type::rows() const {
    std::vector<Attribute const*> all;
    for ( Type const* at = this; at; at = at->base() ) {
        if ( at->keyRow() ) {
            all.push_back( at->keyRow() );
        }
        for ( Attribute const& own : at->attributes() ) {
            all.push_back( &own );
        }
    }
    return all;
}

Attribute const*
Type::row( AttributeId id ) const {
    std::vector<Attribute const*> const all = rows();
    auto const at =
        std::find_if( all.begin(), all.end(), [id]( Attribute const* one ) { return one->id == id; } );
    return at == all.end() ? nullptr : *at;
}

bool
Type::isA( Type const* other ) const {
    for ( Type const* at = this; at; at = at->base() ) {
        if ( at == other ) {
            return true;
        }
    }
    return false;
}

void
Type::typeNodeIs( Type* type, char const* name ) {
    invariant( std::string_view( name ) == type->name(), "a record is entered under its own name" );
    if ( std::find( entered().begin(), entered().end(), type ) == entered().end() ) {
        entered().push_back( type );
    }
}

std::vector<Type*> const&
Type::types() {
    return entered();
}

Type*
Type::find( std::string_view name ) {
    auto const at = std::find_if( entered().begin(), entered().end(), [name]( Type const* type ) {
        return name == type->name();
    } );
    return at == entered().end() ? nullptr : *at;
}

Ptr<KivAttr>
Type::attr( std::string_view name ) const {
    auto const at = std::find_if( attrs_.begin(), attrs_.end(), [name]( Ptr<KivAttr> const& attr ) {
        return attr->name().view() == name;
    } );
    return at == attrs_.end() ? nullptr : *at;
}

Ptr<KivAttr>
KivAttr::attrIs( Type& type, String8 const& name ) {
    if ( Ptr<KivAttr> const known = type.attr( name.view() ) ) {
        return known;
    }
    type.attrs_.emplace_back( new KivAttr( name ) );
    return type.attrs_.back();
}

Type*
TypeSlot::recordIs() {
    if ( !record ) {
        record = new Type( declaration );
        record->referencesLeak();
    }
    return record;
}

namespace {

/// What every entity has. None of it can be set.
constexpr Attribute entityTable[] = {
    { attrHasAttrLogInterface, "kivHasAttrLogInterface", AttributeKind::constant, &valueType<bool>, "true",
      []( PtrInterface const& ) { return std::any( true ); }, nullptr, nullptr },
    readOnlyAttribute<&Entity::name>( 155, "name", AttributeKind::argument, nullptr ),
    fixedPointerAttribute<&Entity::parent>( attrParent, "parent", "Kiv::Entity" ),
    readOnlyAttribute<&Entity::modificationCount>( 157, "modificationCount", AttributeKind::state, "0" ),
};

std::span<Attribute const>
entityAttributes() {
    return entityTable;
}

} // namespace

Type*
PtrInterface::_fwkType() {
    static TypeSlot slot{ { "Kiv::PtrInterface", TypeKind::object } };
    return slot.recordIs();
}

Type*
Entity::_fwkType() {
    static TypeSlot slot{ { "Kiv::Entity", TypeKind::entity, &PtrInterface::_fwkType, &entityAttributes } };
    return slot.recordIs();
}

} // namespace Kiv
