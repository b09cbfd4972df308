#pragma once

#include <vector>

#include "platform/kiv/Attribute.h"
#include "platform/kiv/Entity.h"

namespace Kiv {

enum class TypeKind { entity, object, value, enumeration };

struct Enumerator {
    char const* name;
    S32 number;
};

/// What the source says of a type. Everything that is known of it at run time derives from here.
struct TypeDeclaration {
    char const* name; ///< in full
    TypeKind kind;
    Type* ( *base )() = nullptr;
    std::span<Attribute const> ( *attributes )() = nullptr;
    std::vector<Enumerator> ( *enumerators )() = nullptr;
    Attribute key{};      ///< the row of an entity's key in its collection; without a name for no key
    bool isNamed = false; ///< an entity whose first constructor argument is its name
};

/// One attribute, or enumerator, of a type as it has been declared to introspection. A handle may be asked
/// for before that.
class KivAttr : public PtrInterface {
  public:
    explicit KivAttr( String8 const& name ) : name_( name ) {}
    /// The type's handle of that name, made where it has none yet.
    static Ptr<KivAttr> attrIs( Type& type, String8 const& name );

    String8 const& name() const { return name_; }
    AttributeId id() const { return id_; }
    String8 const& typeName() const { return typeName_; }
    String8 const& keyTypeName() const { return keyTypeName_; } ///< empty but for collections
    U32 flags() const { return flags_; }
    U32 introspectionFlags() const { return introspectionFlags_; }
    bool isDeclared() const { return isDeclared_; }
    void declarationIs(
        AttributeId id, String8 const& typeName, String8 const& keyTypeName, U32 flags, U32 introspectionFlags
    );

  private:
    String8 const name_;
    String8 typeName_;
    String8 keyTypeName_;
    AttributeId id_ = 0;
    U32 flags_ = 0;
    U32 introspectionFlags_ = 0;
    bool isDeclared_ = false;
};

/// The record of one type: one object for the life of the process. Its facts beyond the declaration are
/// filled in by registration, while introspection is live.
class Type : public PtrInterface {
  public:
    struct Argument {
        String8 name;
        String8 type;
    };

    explicit Type( TypeDeclaration const& declaration ) : declaration_( declaration ) {}

    char const* name() const { return declaration_.name; }
    TypeKind kind() const { return declaration_.kind; }
    /// The type that this one derives from, or null.
    Type* base() const { return declaration_.base ? declaration_.base() : nullptr; }
    /// The class's own table, without that of its base.
    std::span<Attribute const> attributes() const;
    /// The row of the key in a collection, or null.
    Attribute const* keyRow() const { return declaration_.key.name ? &declaration_.key : nullptr; }
    /// Every row, the key's first and those of the base types last.
    std::vector<Attribute const*> rows() const;
    /// The row of that number, or null.
    Attribute const* row( AttributeId id ) const;
    bool isA( Type const* other ) const;

    /// Enters the record under its name. The order of entry is kept.
    static void typeNodeIs( Type* type, char const* name );
    /// Every record that has been entered, in order.
    static std::vector<Type*> const& types();
    /// The record of that name, or null.
    static Type* find( std::string_view name );

    bool isEntity() const { return isEntity_; }
    void isEntityIs( bool value ) { isEntity_ = value; }
    bool isValue() const { return isValue_; }
    void isValueIs( bool value ) { isValue_ = value; }
    bool isEnumType() const { return isEnumType_; }
    void isEnumTypeIs( bool value ) { isEnumType_ = value; }
    bool hasGenericIfSupport() const { return hasGenericIfSupport_; }
    void hasGenericIfSupportIs( bool value ) { hasGenericIfSupport_ = value; }
    std::vector<Argument> const& arguments() const { return arguments_; }
    void argumentIs( String8 const& name, String8 const& type ) { arguments_.push_back( { name, type } ); }

    /// Handles, in the order in which they were first asked for.
    std::vector<Ptr<KivAttr>> const& attrs() const { return attrs_; }
    Ptr<KivAttr> attr( std::string_view name ) const;

  private:
    friend class KivAttr;

    TypeDeclaration const& declaration_;
    bool isEntity_ = false;
    bool isValue_ = false;
    bool isEnumType_ = false;
    bool hasGenericIfSupport_ = false;
    std::vector<Argument> arguments_;
    std::vector<Ptr<KivAttr>> attrs_;
};

/// The place of one type in its unit.
struct TypeSlot {
    TypeDeclaration declaration;
    Type* record = nullptr;

    /// The record, made on first use and never freed.
    Type* recordIs();
};

/// The declaration of a class. Whether it is an entity, and of which key, follows from the class.
template <class C>
constexpr TypeDeclaration
classType( char const* name, Type* ( *base )() ) {
    TypeDeclaration type{ name, TypeKind::object, base, &C::attributes };
    if constexpr ( std::derived_from<C, Entity> ) {
        type.kind = TypeKind::entity;
        type.isNamed = !std::is_default_constructible_v<C>;
        if constexpr ( requires( C const& object ) { object.fwkKey(); } ) {
            type.key = readOnlyAttribute<&C::fwkKey>( attrFwkKey, "fwkKey", AttributeKind::key, nullptr );
        }
    }
    return type;
}

/// The declaration of a value of several fields.
template <class C>
constexpr TypeDeclaration
valueTypeDeclaration( char const* name ) {
    return { name, TypeKind::value, nullptr, &C::attributes };
}

} // namespace Kiv
