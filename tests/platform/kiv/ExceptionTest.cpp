#include "platform/kiv/Exception.h"

#include <gtest/gtest.h>

namespace {

using Kiv::Exception;
using Kiv::Expect;
using Kiv::String8;

/// The message of what `raise` throws, which must be of class `E`.
template <class E>
std::string
messageOf( auto raise ) {
    try {
        raise();
    } catch ( E const& e ) {
        EXPECT_EQ( e.message().view(), e.what() );
        return e.what();
    }
    return "nothing was raised";
}

TEST( ExceptionTest, CarriesMessageIdsAndExpectation ) {
    Exception const e( "text", Exception::IdBitArray( 5 ), true );
    EXPECT_STREQ( e.what(), "text" );
    EXPECT_EQ( e.ids().to_ulong(), 5U );
    EXPECT_TRUE( e.expected() );
}

TEST( ExceptionTest, RangeErrorTakesBothFormsOfText ) {
    EXPECT_EQ( messageOf<Kiv::RangeException>( [] { Kiv::throwRangeException( "too big" ); } ), "too big" );
    EXPECT_EQ( messageOf<Kiv::RangeException>( [] { Kiv::throwRangeException( String8( "s" ) ); } ), "s" );
}

TEST( ExceptionTest, InternalErrorTakesBothFormsOfText ) {
    EXPECT_EQ( messageOf<Kiv::InternalException>( [] { Kiv::throwInternalException( "state" ); } ), "state" );
    EXPECT_EQ(
        messageOf<Kiv::InternalException>( [] { Kiv::throwInternalException( String8( "s" ) ); } ), "s"
    );
}

TEST( ExceptionTest, NameInUseIsAClassOfItsOwn ) {
    EXPECT_EQ( messageOf<Kiv::NameInUseException>( [] { Kiv::throwNameInUseException( "name" ); } ), "name" );
}

TEST( ExceptionTest, AllDeriveFromTheBase ) {
    EXPECT_EQ( messageOf<Exception>( [] { Kiv::throwRangeException( "a" ); } ), "a" );
    EXPECT_EQ( messageOf<Exception>( [] { Kiv::throwInternalException( "b" ); } ), "b" );
    EXPECT_EQ( messageOf<Exception>( [] { Kiv::throwNameInUseException( "c" ); } ), "c" );
}

TEST( ExceptionTest, IsUnexpectedOutsideAGuard ) {
    try {
        Kiv::throwRangeException( "x" );
    } catch ( Exception const& e ) {
        EXPECT_FALSE( e.expected() );
        EXPECT_TRUE( e.ids().none() );
    }
}

TEST( ExceptionTest, IsExpectedWithinAGuard ) {
    try {
        Expect const guard( 3 );
        Kiv::throwRangeException( "x" );
    } catch ( Exception const& e ) {
        EXPECT_TRUE( e.expected() );
        EXPECT_TRUE( e.ids().test( 3 ) );
    }
    EXPECT_TRUE( Expect::current().none() );
}

TEST( ExceptionTest, GuardsNest ) {
    Expect const outer( 1 );
    {
        Expect const inner( 2 );
        EXPECT_EQ( Expect::current().to_ulong(), 0b110U );
    }
    EXPECT_EQ( Expect::current().to_ulong(), 0b010U );
}

} // namespace
