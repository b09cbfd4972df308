#pragma once

#include "platform/kiv/Type.h"

namespace Kiv {

/// Takes the declarations of types and their attributes, in nested order: namespace, type, attributes. It is
/// not live until somebody who wants to know the types says so; units of types then register when asked to.
class IntrospectionReactor : public PtrInterface {
  public:
    /// The one instance of the process.
    static Ptr<IntrospectionReactor> global();

    IntrospectionReactor() = default;

    bool hasActiveIntrospection() const { return active_; }
    void hasActiveIntrospectionIs( bool value ) { active_ = value; }

    void handleNameSpace( char const* name );
    void handleType( Type* type, Type* baseType );
    /// Declares an attribute of the type whose scope is open, or an enumerator with its number as `id`.
    void defNoninstantiatingAttr(
        Type* type, char const* name, String8 const& attrType, String8 const& keyType, U32 flags,
        U32 introspectionFlags, AttributeId id
    );
    /// Declares an attribute that the type inherits, and closes its context again.
    void handleAttr( Ptr<KivAttr> const& attr );
    void handleAttrContextExit();
    /// Closes the innermost scope.
    void handleScopeExit();

    /// The types declared so far, in order.
    std::vector<Type*> const& types() const { return types_; }

  private:
    enum class Scope { nameSpace, type, attribute };

    bool isInnermost( Scope scope ) const { return !scopes_.empty() && scopes_.back() == scope; }

    bool active_ = false;
    char const* nameSpace_ = "";
    std::vector<Scope> scopes_;
    std::vector<Type*> types_;
};

} // namespace Kiv
