#include "platform/kiv/RegistrationUnit.h"

#include <gtest/gtest.h>

#include <list>

namespace {

using Kiv::IntrospectionReactor;
using Kiv::Ptr;
using Kiv::String8;
using Kiv::Type;

class Dial : public Kiv::Entity {
  public:
    explicit Dial( Kiv::Name const& name ) : Entity( name ) {}

    static std::span<Kiv::Attribute const> attributes();
    Kiv::Name const& fwkKey() const { return name(); }
    Kiv::U32 turns() const { return modificationCount(); }
};

constexpr Kiv::Attribute table[] = {
    Kiv::readOnlyAttribute<&Dial::turns>( 258, "turns", Kiv::AttributeKind::constant, "0" ),
};

std::span<Kiv::Attribute const>
Dial::attributes() {
    return table;
}

/// A unit of one class, new for each test, and the process's introspection as it was when the test is over.
class RegistrationUnitTest : public ::testing::Test {
  protected:
    RegistrationUnitTest() { reactor_->hasActiveIntrospectionIs( false ); }
    ~RegistrationUnitTest() override { reactor_->hasActiveIntrospectionIs( wasActive_ ); }

    /// Records are never freed, and neither may be what they refer to: all slots are held to the end.
    static std::vector<Kiv::TypeSlot>& newSlots() {
        static auto& all = *new std::list<std::vector<Kiv::TypeSlot>>;
        std::vector<Kiv::TypeSlot> slots{ { Kiv::classType<Dial>( "Test::Dial", &Kiv::Entity::_fwkType ) } };
        return all.emplace_back( std::move( slots ) );
    }
    std::size_t declared() const { return reactor_->types().size(); }

    Ptr<IntrospectionReactor> const reactor_ = IntrospectionReactor::global();
    bool const wasActive_ = reactor_->hasActiveIntrospection();
    std::vector<Kiv::TypeSlot>& slots_ = newSlots();
    Kiv::RegistrationUnit unit_{ "Test", slots_ };
    std::size_t const before_ = declared();
};

TEST_F( RegistrationUnitTest, NothingIsDeclaredWhileNobodyWantsToKnow ) {
    Kiv::U32 const references = reactor_->references();
    unit_.registerTypes();
    EXPECT_EQ( declared(), before_ );
    EXPECT_EQ( slots_[0].record, nullptr );
    EXPECT_EQ( reactor_->references(), references );
}

TEST_F( RegistrationUnitTest, LaterCallDeclaresWhatAnEarlierOneCouldNot ) {
    unit_.registerTypes();
    reactor_->hasActiveIntrospectionIs( true );
    unit_.registerTypes();
    ASSERT_EQ( declared(), before_ + 1 );
    EXPECT_STREQ( reactor_->types().back()->name(), "Test::Dial" );
}

TEST_F( RegistrationUnitTest, TypesAreDeclaredOnce ) {
    reactor_->hasActiveIntrospectionIs( true );
    unit_.registerTypes();
    unit_.registerTypes();
    EXPECT_EQ( declared(), before_ + 1 );
}

TEST_F( RegistrationUnitTest, TypeHasARecordAtAnyMoment ) {
    Type* const record = unit_.type( "Test::Dial" );
    EXPECT_FALSE( record->isEntity() );
    EXPECT_FALSE( record->attr( "turns" ) );
    reactor_->hasActiveIntrospectionIs( true );
    unit_.registerTypes();
    EXPECT_EQ( unit_.type( "Test::Dial" ), record );
    EXPECT_TRUE( record->isEntity() );
    EXPECT_TRUE( record->attr( "turns" )->isDeclared() );
}

TEST_F( RegistrationUnitTest, AskingForATypeRegistersItsUnit ) {
    reactor_->hasActiveIntrospectionIs( true );
    EXPECT_TRUE( unit_.type( "Test::Dial" )->isEntity() );
    EXPECT_EQ( declared(), before_ + 1 );
}

TEST_F( RegistrationUnitTest, RecordIsNeverFreed ) {
    Type* const record = unit_.type( "Test::Dial" );
    EXPECT_EQ( record->references(), 1U );
    { Ptr<Type> const held( record ); }
    EXPECT_EQ( record->references(), 1U );
}

TEST_F( RegistrationUnitTest, LoadingEntersNamesAndHandlesWithoutDeclaringThem ) {
    unit_.load();
    Type* const record = Type::find( "Test::Dial" );
    ASSERT_NE( record, nullptr );
    for ( char const* name : { "kivNboAttrLogSaForMsgChannel", "kivHasAttrLogInterface", "turns" } ) {
        ASSERT_TRUE( record->attr( name ) ) << name;
        EXPECT_FALSE( record->attr( name )->isDeclared() ) << name;
    }
    EXPECT_EQ( declared(), before_ );
}

TEST_F( RegistrationUnitTest, HandleFromBeforeIsTheOneThatIsDeclared ) {
    unit_.load();
    Ptr<Kiv::KivAttr> const handle = unit_.type( "Test::Dial" )->attr( "turns" );
    reactor_->hasActiveIntrospectionIs( true );
    unit_.registerTypes();
    EXPECT_TRUE( handle->isDeclared() );
    EXPECT_EQ( handle->id(), 258 );
    EXPECT_EQ( handle->typeName(), String8( "U32" ) );
}

TEST_F( RegistrationUnitTest, DerivedTypeIsOfItsBasesToo ) {
    Type* const record = unit_.type( "Test::Dial" );
    EXPECT_EQ( record->base(), Kiv::Entity::_fwkType() );
    EXPECT_TRUE( record->isA( record ) );
    EXPECT_TRUE( record->isA( Kiv::PtrInterface::_fwkType() ) );
    EXPECT_FALSE( Kiv::Entity::_fwkType()->isA( record ) );
}

TEST_F( RegistrationUnitTest, IntrospectionIsOneForTheProcess ) {
    EXPECT_EQ( IntrospectionReactor::global(), reactor_ );
}

TEST_F( RegistrationUnitTest, HandleOfAnAttributeIsMadeOnce ) {
    Type* const record = unit_.type( "Test::Dial" );
    Ptr<Kiv::KivAttr> const handle = Kiv::KivAttr::attrIs( *record, "turns" );
    EXPECT_EQ( handle->name(), String8( "turns" ) );
    EXPECT_FALSE( handle->isDeclared() );
    EXPECT_EQ( Kiv::KivAttr::attrIs( *record, "turns" ), handle );
    EXPECT_EQ( record->attr( "turns" ), handle );
    EXPECT_EQ( record->attrs().size(), 1U );
}

TEST_F( RegistrationUnitTest, TypeOfAnotherUnitEndsTheProcess ) {
    EXPECT_DEATH( unit_.type( "Test::Disc" ), "a type of the unit" );
}

/// What is told in a wrong order. Each test is of a process of its own, which ends.
class IntrospectionReactorDeathTest : public RegistrationUnitTest {
  protected:
    void declare( Type* type, char const* name ) {
        reactor_->defNoninstantiatingAttr( type, name, "U32", "", 0, 0, 258 );
    }
    Ptr<Kiv::KivAttr> declaredAttr() {
        Ptr<Kiv::KivAttr> const attr = Kiv::KivAttr::attrIs( *record_, "turns" );
        attr->declarationIs( 258, "U32", "", 0, 0 );
        return attr;
    }
    void openType() {
        reactor_->handleNameSpace( "Test" );
        reactor_->handleType( record_, record_->base() );
    }

    Type* const record_ = unit_.type( "Test::Dial" );
};

TEST_F( IntrospectionReactorDeathTest, TypeStandsInItsNamespace ) {
    EXPECT_DEATH( reactor_->handleType( record_, record_->base() ), "a type stands in a namespace" );
    EXPECT_DEATH(
        {
            reactor_->handleNameSpace( "Tes" );
            reactor_->handleType( record_, record_->base() );
        },
        "a type is declared in its namespace"
    );
    EXPECT_DEATH(
        {
            openType();
            reactor_->handleType( record_, record_->base() );
        },
        "a type stands in a namespace"
    );
}

TEST_F( IntrospectionReactorDeathTest, TypeIsDeclaredWithItsBase ) {
    EXPECT_DEATH(
        {
            reactor_->handleNameSpace( "Test" );
            reactor_->handleType( record_, nullptr );
        },
        "a type is declared with its base"
    );
}

TEST_F( IntrospectionReactorDeathTest, NamespacesDoNotNest ) {
    EXPECT_DEATH(
        {
            reactor_->handleNameSpace( "Test" );
            reactor_->handleNameSpace( "Test" );
        },
        "a namespace stands outside every scope"
    );
}

TEST_F( IntrospectionReactorDeathTest, AttributeStandsInItsType ) {
    EXPECT_DEATH( declare( record_, "turns" ), "an attribute stands in its type" );
    EXPECT_DEATH(
        {
            openType();
            declare( Kiv::Entity::_fwkType(), "turns" );
        },
        "an attribute stands in its type"
    );
    EXPECT_DEATH( reactor_->handleAttr( declaredAttr() ), "an attribute stands in its type" );
    EXPECT_DEATH(
        {
            openType();
            reactor_->handleAttr( Kiv::KivAttr::attrIs( *record_, "turns" ) );
        },
        "an attribute stands in its type"
    );
}

TEST_F( IntrospectionReactorDeathTest, ScopesAreClosedAsTheyWereOpened ) {
    EXPECT_DEATH( reactor_->handleScopeExit(), "a scope is open" );
    EXPECT_DEATH( reactor_->handleAttrContextExit(), "an attribute's context is open" );
    EXPECT_DEATH(
        {
            openType();
            reactor_->handleAttr( declaredAttr() );
            reactor_->handleScopeExit();
        },
        "a scope is open"
    );
}

} // namespace
