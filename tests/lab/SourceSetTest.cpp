#include "lab/SourceSet.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Lab {

using Zornet::IpAddr;

class SourceSetTest : public ::testing::Test {
  protected:
    IpAddr const a{ "10.0.0.1" };
    IpAddr const b{ "10.0.0.2" };
    IpAddr const c{ "10.0.0.3" };
};

TEST_F( SourceSetTest, KeepsEachAddressOnceInAscendingOrder ) {
    SourceSet const set{ c, a, c, b, a };
    EXPECT_EQ( std::vector( set.begin(), set.end() ), ( std::vector{ a, b, c } ) );
}

TEST_F( SourceSetTest, PlusIsTheUnion ) {
    EXPECT_EQ( ( SourceSet{ a, b } + SourceSet{ b, c } ), ( SourceSet{ a, b, c } ) );
}

TEST_F( SourceSetTest, TimesIsTheIntersection ) {
    EXPECT_EQ( ( SourceSet{ a, b } * SourceSet{ b, c } ), SourceSet{ b } );
}

TEST_F( SourceSetTest, MinusIsTheDifference ) {
    EXPECT_EQ( ( SourceSet{ a, b } - SourceSet{ b, c } ), SourceSet{ a } );
}

TEST_F( SourceSetTest, ContainsOnlyItsMembers ) {
    SourceSet const set{ a, c };
    EXPECT_TRUE( set.contains( c ) );
    EXPECT_FALSE( set.contains( b ) );
}

TEST_F( SourceSetTest, AppendRefusesAnAddressOutOfOrder ) {
    SourceSet set{ b };
    set.append( c );
    EXPECT_EQ( set, ( SourceSet{ b, c } ) );
    EXPECT_DEATH( set.append( a ), "sources ascend" );
}

TEST_F( SourceSetTest, PrintsItsAddressesBetweenBraces ) {
    std::ostringstream out;
    out << SourceSet{ b, a } << SourceSet{};
    EXPECT_EQ( out.str(), "{10.0.0.1, 10.0.0.2}{}" );
}

} // namespace Lab
