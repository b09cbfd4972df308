#include "platform/kiv/Attribute.h"

#include <gtest/gtest.h>

#include "tests/platform/kiv/Gauge.h"

namespace {

using Kiv::AttributeKind;
using Kiv::Ptr;

/// A table as a class of the model has it.
constexpr Kiv::Attribute table[] = {
    Kiv::scalarAttribute<&Gauge::level, &Gauge::levelIs, &Gauge::Notifiee::onLevel>(
        Gauge::attrLevel, "level", "0"
    ),
    Kiv::scalarAttribute<&Gauge::label, &Gauge::labelIs, &Gauge::Notifiee::onLabel>(
        Gauge::attrLabel, "label", ""
    ),
    Kiv::
        structuralAttribute( Gauge::attrMark, "mark", AttributeKind::entityCollection, &Kiv::valueType<Kiv::Name> ),
    Kiv::readOnlyAttribute<&Gauge::modificationCount>( 261, "changes", AttributeKind::constant, nullptr ),
};

class AttributeTest : public ::testing::Test {
  protected:
    static Kiv::Attribute const& row( std::string_view name ) { return *Kiv::findAttribute( table, name ); }

    Ptr<Gauge> gauge_{ new Gauge };
    Probe::Log log_;
    Ptr<Probe> probe_ = Probe::on( gauge_, log_ );
};

TEST_F( AttributeTest, RowIsFoundByName ) {
    EXPECT_EQ( row( "label" ).id, Gauge::attrLabel );
    EXPECT_EQ( Kiv::findAttribute( table, "lab" ), nullptr );
    EXPECT_EQ( Kiv::findAttribute( table, "labels" ), nullptr );
}

TEST_F( AttributeTest, ScalarIsReadAsText ) {
    gauge_->levelIs( 7 );
    EXPECT_EQ( Kiv::attributeText( row( "level" ), *gauge_ ), "7" );
    EXPECT_EQ( Kiv::attributeText( row( "label" ), *gauge_ ), "" );
}

TEST_F( AttributeTest, ScalarIsSetFromTextThroughItsMutator ) {
    Kiv::attributeTextIs( row( "level" ), *gauge_, "9" );
    EXPECT_EQ( gauge_->level(), 9 );
    EXPECT_EQ( log_, Probe::Log{ "level" } );
}

TEST_F( AttributeTest, BadTextLeavesTheValueAlone ) {
    gauge_->levelIs( 7 );
    EXPECT_THROW( Kiv::attributeTextIs( row( "level" ), *gauge_, "256" ), Kiv::RangeException );
    EXPECT_EQ( gauge_->level(), 7 );
}

TEST_F( AttributeTest, RowCallsTheCallbackOfItsAttribute ) {
    row( "label" ).callback( *probe_ );
    EXPECT_EQ( log_, Probe::Log{ "label" } );
}

TEST_F( AttributeTest, OnlyScalarsAreWritable ) {
    EXPECT_TRUE( row( "level" ).isWritable() );
    EXPECT_FALSE( row( "mark" ).isWritable() );
    EXPECT_FALSE( row( "changes" ).isWritable() );
    EXPECT_EQ( Kiv::attributeText( row( "changes" ), *gauge_ ), "0" );
}

TEST_F( AttributeTest, IdsAscendWithoutAGap ) {
    static_assert( Kiv::idsAscendFrom( table, 258 ) );
    static_assert( !Kiv::idsAscendFrom( table, 257 ) );
    constexpr Kiv::Attribute gap[] = { table[0], table[2] };
    EXPECT_FALSE( Kiv::idsAscendFrom( gap, 258 ) );
}

} // namespace
