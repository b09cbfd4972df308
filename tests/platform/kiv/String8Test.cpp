#include "platform/kiv/String8.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>
#include <type_traits>

#include "platform/kiv/PtrInterface.h"

namespace {

using Kiv::Name;
using Kiv::String8;

TEST( String8Test, EmptyStringsShareOneRepresentation ) {
    EXPECT_EQ( String8().charPtr(), String8( "" ).charPtr() );
    EXPECT_TRUE( String8().empty() );
    EXPECT_STREQ( String8().charPtr(), "" );
    EXPECT_EQ( String8().hash(), Kiv::StringN<unsigned char>::nullStringData_.hash() );
}

TEST( String8Test, CopySharesItsRepresentation ) {
    String8 const text( "group" );
    String8 const copy = text;
    EXPECT_EQ( copy.charPtr(), text.charPtr() );
}

TEST( String8Test, CopyOutlivesTheOriginal ) {
    auto* const text = new String8( "a text that is stored apart" );
    String8 const copy = *text;
    delete text;
    EXPECT_STREQ( copy.charPtr(), "a text that is stored apart" );
}

TEST( String8Test, AssigningItselfKeepsTheText ) {
    String8 text( "group" );
    String8 const& same = text;
    text = same;
    EXPECT_STREQ( text.charPtr(), "group" );
}

TEST( String8Test, TakesACStringByAssignment ) {
    String8 text( "old" );
    text = "new";
    EXPECT_EQ( text, String8( "new" ) );
}

TEST( String8Test, AppendingLeavesCopiesAlone ) {
    String8 text( "host" );
    String8 const copy = text;
    text += "-1";
    EXPECT_STREQ( text.charPtr(), "host-1" );
    EXPECT_STREQ( copy.charPtr(), "host" );
    EXPECT_EQ( copy + String8( "-1" ), text );
}

TEST( String8Test, MayHoldAnyByte ) {
    String8 const text( std::string_view( "a\0b", 3 ) );
    EXPECT_EQ( text.bytes(), 3U );
    EXPECT_EQ( text.view(), std::string_view( "a\0b", 3 ) );
    EXPECT_NE( text, String8( "a" ) );
}

TEST( String8Test, SubstringTakesAtMostTheCount ) {
    String8 const text( "ethernet" );
    EXPECT_STREQ( text.substr( 0, 5 ).charPtr(), "ether" );
    EXPECT_STREQ( text.substr( 5, 100 ).charPtr(), "net" );
    EXPECT_TRUE( text.substr( 8, 1 ).empty() );
}

TEST( String8Test, SubstringOutsideIsEmpty ) {
    String8 const text( "ethernet" );
    EXPECT_TRUE( text.substr( -1, 3 ).empty() );
    EXPECT_TRUE( text.substr( 9, 1 ).empty() );
}

TEST( String8Test, InitTakesAPartOfAText ) {
    String8 text( "old" );
    text.init( "0123456789", 2, 3 );
    EXPECT_STREQ( text.charPtr(), "234" );
}

TEST( String8Test, IteratorWalksTheBytesAndKnowsItsColumn ) {
    String8 const text( "ab" );
    auto at = text.begin();
    EXPECT_EQ( *at, 'a' );
    ++at;
    EXPECT_EQ( *at, 'b' );
    EXPECT_EQ( at.column(), 1 );
    ++at;
    EXPECT_EQ( at, text.end() );
}

TEST( String8Test, EqualTextsAreEqualAndHashAlike ) {
    String8 const a( "rx-1" );
    String8 const b( std::string( "rx-" ) + "1" );
    EXPECT_NE( a.charPtr(), b.charPtr() );
    EXPECT_EQ( a, b );
    EXPECT_EQ( a.hash(), b.hash() );
    EXPECT_NE( a.hash(), String8( "rx-2" ).hash() );
}

TEST( String8Test, OrderIsThatOfTheBytes ) {
    EXPECT_LT( String8( "a" ), String8( "b" ) );
    EXPECT_LT( String8( "a" ), String8( "ab" ) );
    EXPECT_LT( Name( "a" ), Name( "b" ) );
}

TEST( String8Test, NameIsAStringWithoutEditing ) {
    Name const name( "rx-1" );
    EXPECT_EQ( name, Name( String8( "rx-1" ) ) );
    EXPECT_EQ( name.hash(), String8( "rx-1" ).hash() );
    EXPECT_TRUE( Name().empty() );
}

TEST( String8Test, StringAndNamePrintTheirText ) {
    std::ostringstream out;
    out << String8( "a" ) << Name( "b" );
    EXPECT_EQ( out.str(), "ab" );
}

TEST( String8Test, TextIsSharedByThreadsWhereCountsAreAtomic ) {
    Kiv::VFPtrInterface::enableThreadSafePointers = true;
    {
        String8 const text( "a text that is stored apart" );
        std::vector<std::thread> threads;
        for ( int i = 0; i < 4; ++i ) {
            threads.emplace_back( [&text] {
                for ( int n = 0; n < 50'000; ++n ) {
                    String8 const copy = text;
                }
            } );
        }
        for ( std::thread& thread : threads ) {
            thread.join();
        }
        EXPECT_STREQ( text.charPtr(), "a text that is stored apart" );
    }
    Kiv::VFPtrInterface::enableThreadSafePointers = false;
}

} // namespace
