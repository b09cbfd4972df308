#include "platform/kiv/RegistrationUnit.h"

#include <ios>

namespace Kiv {

namespace {

/// The two words that describe an attribute to introspection.
struct Flags {
    U32 first;
    U32 second;
};

constexpr Flags enumeratorFlags{ 0x20001, 0x40200400 };
constexpr Flags hasAttrLogInterfaceFlags{ 0x22001, 0x400 };

constexpr Flags
flagsOf( AttributeKind kind ) {
    switch ( kind ) {
    case AttributeKind::key: return { 0x200001, 0x400 };
    case AttributeKind::scalar:
    case AttributeKind::operation: return { 0x220143, 0x1000400 };
    case AttributeKind::argument:
    case AttributeKind::state: return { 0x220109, 0x40000400 };
    case AttributeKind::constant: return { 0x220001, 0x40000410 };
    case AttributeKind::pointer: return { 0x8220143, 0x400 };
    case AttributeKind::valueCollection: return { 0x1a20143, 0x1000400 };
    case AttributeKind::containedEntity: return { 0x8220143, 0x11000400 };
    case AttributeKind::entityCollection: return { 0x9a20143, 0x11000400 };
    }
    return {};
}

String8
typeText( Attribute const& row ) {
    if ( row.collection && row.collection->valueType ) {
        return row.collection->valueType->name;
    }
    return row.type ? row.type->name : row.objectType;
}

/// What introspection calls the key of a collection; empty for what is none.
char const*
keyText( Type const& type, Attribute const& row, std::span<NamedKey const> namedKeys ) {
    for ( NamedKey const& named : namedKeys ) {
        if ( std::string_view( type.name() ) == named.type &&
             std::string_view( row.name ) == named.collection ) {
            return named.key;
        }
    }
    return row.keyType ? row.keyType->name : "";
}

void
declareArguments( Type& type, TypeDeclaration const& declaration ) {
    if ( declaration.isNamed ) {
        type.argumentIs( "name", "Kiv::Name" );
    }
    for ( Attribute const& row : type.attributes() ) {
        if ( row.kind == AttributeKind::argument ) {
            type.argumentIs( row.name, typeText( row ) );
        }
    }
}

void
declareRow( IntrospectionReactor& reactor, Type& type, Attribute const& row, char const* key ) {
    auto const [first, second] = flagsOf( row.kind );
    reactor.defNoninstantiatingAttr( &type, row.name, typeText( row ), key, first, second, row.id );
}

void
declareInherited( IntrospectionReactor& reactor, Type& type ) {
    auto const [first, second] = hasAttrLogInterfaceFlags;
    Ptr<KivAttr> const attr = KivAttr::attrIs( type, "kivHasAttrLogInterface" );
    attr->declarationIs( attrHasAttrLogInterface, "bool", "", first, second );
    reactor.handleAttr( attr );
    reactor.handleAttrContextExit();
    if ( Attribute const* const key = type.keyRow() ) {
        declareRow( reactor, type, *key, "" );
    }
}

void
declareOwn(
    IntrospectionReactor& reactor, Type& type, TypeDeclaration const& declaration,
    std::span<NamedKey const> namedKeys
) {
    for ( Attribute const& row : type.attributes() ) {
        declareRow( reactor, type, row, keyText( type, row, namedKeys ) );
    }
    if ( declaration.enumerators ) {
        for ( Enumerator const& one : declaration.enumerators() ) {
            reactor.defNoninstantiatingAttr(
                &type, one.name, type.name(), "", enumeratorFlags.first, enumeratorFlags.second, one.number
            );
        }
    }
}

void
declareType(
    IntrospectionReactor& reactor, Type& type, TypeDeclaration const& declaration,
    std::span<NamedKey const> namedKeys
) {
    reactor.handleType( &type, type.base() );
    type.isEntityIs( declaration.kind == TypeKind::entity );
    type.isEnumTypeIs( declaration.kind == TypeKind::enumeration );
    type.isValueIs( declaration.kind == TypeKind::enumeration || declaration.kind == TypeKind::value );
    type.hasGenericIfSupportIs( true );
    declareArguments( type, declaration );
    if ( type.isEntity() ) {
        declareInherited( reactor, type );
    }
    declareOwn( reactor, type, declaration, namedKeys );
    reactor.handleScopeExit();
}

} // namespace

void
RegistrationUnit::load() {
    for ( TypeSlot& slot : types_ ) {
        Type* const record = type( slot );
        Type::typeNodeIs( record, slot.declaration.name );
        KivAttr::attrIs( *record, "kivNboAttrLogSaForMsgChannel" );
        KivAttr::attrIs( *record, "kivHasAttrLogInterface" );
        for ( Attribute const& row : record->attributes() ) {
            KivAttr::attrIs( *record, row.name );
        }
    }
    registerTypes();
}

void
RegistrationUnit::registerTypes() {
    Ptr<IntrospectionReactor> const reactor = IntrospectionReactor::global();
    if ( done_ || !reactor->hasActiveIntrospection() ) {
        return;
    }
    done_ = true;
    for ( TypeSlot& slot : types_ ) {
        type( slot );
    }
    reactor->handleNameSpace( nameSpace_ );
    for ( TypeSlot& slot : types_ ) {
        declareType( *reactor, *slot.record, slot.declaration, namedKeys_ );
    }
    reactor->handleScopeExit();
}

Type*
RegistrationUnit::type( std::string_view name ) {
    for ( TypeSlot& slot : types_ ) {
        if ( name == slot.declaration.name ) {
            return type( slot );
        }
    }
    invariant( false, "a type of the unit" );
    return nullptr;
}

/// Asking for a type registers the unit where that is possible, so that the record is as full as it can be.
Type*
RegistrationUnit::type( TypeSlot& slot ) {
    if ( !slot.record ) {
        registerTypes();
    }
    return slot.recordIs();
}

UnitLoader::UnitLoader( RegistrationUnit& unit ) {
    static std::ios_base::Init const streams; // a trace may be written from here on
    unit.load();
}

} // namespace Kiv
