#include "model/Enumerations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/platform/zornet/RangeMessage.h"

namespace Igmp {

namespace {

template <class E>
std::string
streamed( E value ) {
    std::ostringstream out;
    out << value;
    return out.str();
}

struct NamedVersion {
    U32 number;
    IgmpVersion version;
    char const* name;
};
constexpr NamedVersion versions[] = {
    { 0, igmpVersionUnknown, "igmpVersionUnknown" },
    { 1, igmpVersion1, "igmpVersion1" },
    { 2, igmpVersion2, "igmpVersion2" },
    { 3, igmpVersion3, "igmpVersion3" },
};

struct NamedState {
    U32 number;
    TimerState state;
    char const* name;
};
constexpr NamedState states[] = {
    { 0, timerDisabled, "timerDisabled" },
    { 1, timerRunning, "timerRunning" },
    { 2, timerExpired, "timerExpired" },
};

} // namespace

TEST( Enumerations, AreOfThirtyTwoBits ) {
    EXPECT_EQ( sizeof( IgmpVersion ), 4U );
    EXPECT_EQ( sizeof( TimerState ), 4U );
}

TEST( Enumerations, VersionsHaveTheirNumbersAndNames ) {
    for ( NamedVersion const& one : versions ) {
        EXPECT_EQ( static_cast<U32>( one.version ), one.number );
        EXPECT_EQ( stringValue( one.version ), Kiv::String8( one.name ) );
        EXPECT_EQ( streamed( one.version ), one.name );
        EXPECT_EQ( valueToStrep( one.version ), Kiv::String8( "'" + std::string( one.name ) + "'" ) );
    }
}

TEST( Enumerations, TimerStatesHaveTheirNumbersAndNames ) {
    for ( NamedState const& one : states ) {
        EXPECT_EQ( static_cast<U32>( one.state ), one.number );
        EXPECT_EQ( stringValue( one.state ), Kiv::String8( one.name ) );
        EXPECT_EQ( streamed( one.state ), one.name );
        EXPECT_EQ( valueToStrep( one.state ), Kiv::String8( "'" + std::string( one.name ) + "'" ) );
    }
}

TEST( Enumerations, VersionsAreFoundByNumberAndName ) {
    for ( NamedVersion const& one : versions ) {
        EXPECT_EQ( IgmpVersionInstance( one.number ), one.version );
        EXPECT_EQ( IgmpVersionInstance( one.name ), one.version );
    }
}

TEST( Enumerations, TimerStatesAreFoundByNumberAndName ) {
    for ( NamedState const& one : states ) {
        EXPECT_EQ( TimerStateInstance( one.number ), one.state );
        EXPECT_EQ( TimerStateInstance( one.name ), one.state );
    }
}

TEST( Enumerations, UnknownNumbersAndNamesAreRefusedWithTheTypesNameAlone ) {
    EXPECT_EQ( Zornet::rangeMessage( [] { IgmpVersionInstance( 4U ); } ), "IgmpVersion" );
    EXPECT_EQ( Zornet::rangeMessage( [] { IgmpVersionInstance( "igmpVersion4" ); } ), "IgmpVersion" );
    EXPECT_EQ( Zornet::rangeMessage( [] { TimerStateInstance( 3U ); } ), "TimerState" );
    EXPECT_EQ( Zornet::rangeMessage( [] { TimerStateInstance( "timerPaused" ); } ), "TimerState" );
}

TEST( Enumerations, NumberWithoutANamePrintsWithItsType ) {
    EXPECT_EQ( streamed( IgmpVersion{ 9 } ), "IgmpVersion(9)" );
    EXPECT_EQ( streamed( TimerState{ 7 } ), "TimerState(7)" );
}

TEST( Enumerations, StringValueOfANumberOutsideTheTableHasTheNumber ) {
    EXPECT_EQ( stringValue( IgmpVersion{ 7 } ), Kiv::String8( "IgmpVersion(7)" ) );
    EXPECT_EQ( stringValue( TimerState{ 9 } ), Kiv::String8( "TimerState(9)" ) );
}

/// Numbers print as the 32-bit integers with a sign that %d makes of them.
TEST( Enumerations, NumberWithoutANamePrintsWithItsSign ) {
    EXPECT_EQ( stringValue( IgmpVersion{ 0xffffffff } ), Kiv::String8( "IgmpVersion(-1)" ) );
    EXPECT_EQ( stringValue( TimerState{ 0x80000000 } ), Kiv::String8( "TimerState(-2147483648)" ) );
}

TEST( Enumerations, NamesAreComparedWhole ) {
    for ( char const* const name :
          { "", "igmpVersion", "igmpVersion22", "IgmpVersion2", " igmpVersion2", "2" } ) {
        EXPECT_EQ( Zornet::rangeMessage( [&] { IgmpVersionInstance( name ); } ), "IgmpVersion" ) << name;
    }
    for ( char const* const name : { "", "timer", "timerRunning2", "TimerRunning", "timerRunning ", "1" } ) {
        EXPECT_EQ( Zornet::rangeMessage( [&] { TimerStateInstance( name ); } ), "TimerState" ) << name;
    }
}

TEST( Enumerations, NumberWithoutANameHasATextFormThatIsNotRead ) {
    IgmpVersion version = igmpVersion1;
    EXPECT_EQ( valueToStrep( IgmpVersion{ 7 } ), Kiv::String8( "'IgmpVersion(7)'" ) );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( valueToStrep( IgmpVersion{ 7 } ), &version ); } ),
        "IgmpVersion"
    );
    EXPECT_EQ( version, igmpVersion1 );
}

TEST( Enumerations, TextFormKeepsTheSingleQuotes ) {
    EXPECT_EQ( valueToStrep( igmpVersion3 ), Kiv::String8( "'igmpVersion3'" ) );
}

TEST( Enumerations, TextFormParsesBack ) {
    for ( NamedVersion const& one : versions ) {
        IgmpVersion version{ 99 };
        Kiv::strepToValue( valueToStrep( one.version ), &version );
        EXPECT_EQ( version, one.version );
    }
    for ( NamedState const& one : states ) {
        TimerState state{ 99 };
        Kiv::strepToValue( valueToStrep( one.state ), &state );
        EXPECT_EQ( state, one.state );
    }
}

TEST( Enumerations, BadTextFormIsRefusedWithTheTypesNameAlone ) {
    IgmpVersion version = igmpVersion1;
    TimerState state = timerRunning;
    EXPECT_EQ( Zornet::rangeMessage( [&] { Kiv::strepToValue( "'v3'", &version ); } ), "IgmpVersion" );
    EXPECT_EQ( Zornet::rangeMessage( [&] { Kiv::strepToValue( "'on'", &state ); } ), "TimerState" );
    EXPECT_EQ( version, igmpVersion1 );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( "'timerRunning' x", &state ); } ),
        "junk at column 14 deserializing 'timerRunning' x"
    );
}

TEST( Enumerations, TextFormWithoutItsQuotesIsRefusedByTheReaderOfStrings ) {
    IgmpVersion version = igmpVersion1;
    TimerState state = timerRunning;
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( "igmpVersion2", &version ); } ),
        "expected \" '\" at column 0"
    );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( "'timerExpired", &state ); } ),
        "expected \"'\" at column 13"
    );
    EXPECT_EQ( version, igmpVersion1 );
    EXPECT_EQ( state, timerRunning );
}

TEST( Enumerations, ReaderStopsBehindTheText ) {
    Kiv::String8 const text( " 'igmpVersion3''timerExpired', next" );
    Kiv::String8::IteratorConst at = text.begin();
    IgmpVersion version = igmpVersion1;
    TimerState state = timerRunning;
    sequenceToValue( at, text.end(), &version );
    EXPECT_EQ( at.column(), 15 );
    sequenceToValue( at, text.end(), &state );
    EXPECT_EQ( *at, ',' );
    EXPECT_EQ( version, igmpVersion3 );
    EXPECT_EQ( state, timerExpired );
}

TEST( Enumerations, TimerStatesAreReadFromTextByName ) {
    using Traits = Kiv::ValueTraits<TimerState>;
    for ( NamedState const& one : states ) {
        EXPECT_EQ( Traits::parse( one.name ), one.state );
        EXPECT_EQ( Traits::format( one.state ), one.name );
    }
    EXPECT_THROW( Traits::parse( "1" ), Kiv::RangeException );
}

TEST( Enumerations, EveryTextThatIsReadIsListed ) {
    using ::testing::ElementsAre;
    EXPECT_THAT(
        Kiv::valueTexts<TimerState>(), ElementsAre( "timerDisabled", "timerRunning", "timerExpired" )
    );
    for ( std::string const& text : Kiv::valueTexts<IgmpVersion>() ) {
        EXPECT_NO_THROW( Kiv::ValueTraits<IgmpVersion>::parse( text ) ) << text;
    }
    EXPECT_EQ( Kiv::valueTexts<IgmpVersion>().size(), 8U );
}

TEST( Enumerations, VersionsAreReadFromTextByNameOrNumber ) {
    using Traits = Kiv::ValueTraits<IgmpVersion>;
    for ( NamedVersion const& one : versions ) {
        EXPECT_EQ( Traits::parse( one.name ), one.version );
        EXPECT_EQ( Traits::parse( std::to_string( one.number ) ), one.version );
        EXPECT_EQ( Traits::format( one.version ), one.name );
    }
    for ( char const* text : { "", "4", "12", "2 ", "-1", "/" } ) {
        EXPECT_THROW( Traits::parse( text ), Kiv::RangeException ) << text;
    }
}

} // namespace Igmp
