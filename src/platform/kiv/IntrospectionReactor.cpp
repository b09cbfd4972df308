#include "platform/kiv/IntrospectionReactor.h"

namespace Kiv {

Ptr<IntrospectionReactor>
IntrospectionReactor::global() {
    static auto& reactor = *new Ptr<IntrospectionReactor>( new IntrospectionReactor );
    return reactor;
}

void
IntrospectionReactor::handleNameSpace( char const* name ) {
    invariant( scopes_.empty(), "a namespace stands outside every scope" );
    nameSpace_ = name;
    scopes_.push_back( Scope::nameSpace );
}

void
IntrospectionReactor::handleType( Type* type, Type* baseType ) {
    invariant( isInnermost( Scope::nameSpace ), "a type stands in a namespace" );
    invariant(
        std::string_view( type->name() ).starts_with( std::string( nameSpace_ ) + "::" ),
        "a type is declared in its namespace"
    );
    invariant( type->base() == baseType, "a type is declared with its base" );
    scopes_.push_back( Scope::type );
    types_.push_back( type );
}

void
IntrospectionReactor::defNoninstantiatingAttr(
    Type* type, char const* name, String8 const& attrType, String8 const& keyType, U32 flags,
    U32 introspectionFlags, AttributeId id
) {
    invariant( isInnermost( Scope::type ) && types_.back() == type, "an attribute stands in its type" );
    KivAttr::attrIs( *type, name )->declarationIs( id, attrType, keyType, flags, introspectionFlags );
}

void
IntrospectionReactor::handleAttr( Ptr<KivAttr> const& attr ) {
    invariant( isInnermost( Scope::type ) && attr->isDeclared(), "an attribute stands in its type" );
    scopes_.push_back( Scope::attribute );
}

void
IntrospectionReactor::handleAttrContextExit() {
    invariant( isInnermost( Scope::attribute ), "an attribute's context is open" );
    scopes_.pop_back();
}

void
IntrospectionReactor::handleScopeExit() {
    invariant( !scopes_.empty() && !isInnermost( Scope::attribute ), "a scope is open" );
    scopes_.pop_back();
}

} // namespace Kiv
