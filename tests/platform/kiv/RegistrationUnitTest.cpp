#include "platform/kiv/RegistrationUnit.h"

#include <gtest/gtest.h>

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

    std::size_t declared() const { return reactor_->types().size(); }

    Ptr<IntrospectionReactor> const reactor_ = IntrospectionReactor::global();
    bool const wasActive_ = reactor_->hasActiveIntrospection();
    // Records are never freed, and neither may be what they refer to.
    std::vector<Kiv::TypeSlot>& slots_ =
        *new std::vector<Kiv::TypeSlot>{ { Kiv::classType<Dial>( "Test::Dial", &Kiv::Entity::_fwkType ) } };
    Kiv::RegistrationUnit unit_{ "Test", slots_ };
    std::size_t const before_ = declared();
};

TEST_F( RegistrationUnitTest, NothingIsDeclaredWhileNobodyWantsToKnow ) {
    unit_.registerTypes();
    EXPECT_EQ( declared(), before_ );
    EXPECT_EQ( slots_[0].record, nullptr );
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

using IntrospectionReactorDeathTest = RegistrationUnitTest;

TEST_F( IntrospectionReactorDeathTest, ScopesNest ) {
    Type* const record = unit_.type( "Test::Dial" );
    EXPECT_DEATH( reactor_->handleType( record, record->base() ), "a type stands in a namespace" );
    EXPECT_DEATH( reactor_->handleScopeExit(), "a scope is open" );
}

} // namespace
