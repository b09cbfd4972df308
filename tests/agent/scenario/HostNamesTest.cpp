#include "agent/scenario/HostNames.h"

#include <gtest/gtest.h>

namespace Agent {

namespace {

class HostNamesTest : public ::testing::Test {
  protected:
    /// The name that is taken already, and the line; empty where the entry takes its names.
    std::string take( char const* name, U32 count, int line ) {
        HostSpec spec;
        spec.name = name;
        spec.count = count;
        spec.at.line = line;
        auto const clash = names_.take( spec );
        return clash ? clash->name + " " + std::to_string( clash->first.line ) : "";
    }

    HostNames names_;
};

TEST_F( HostNamesTest, SingleOnesClashWithTheirLike ) {
    EXPECT_EQ( take( "a", 1, 1 ), "" );
    EXPECT_EQ( take( "b", 1, 2 ), "" );
    EXPECT_EQ( take( "a", 1, 3 ), "a 1" );
}

TEST_F( HostNamesTest, SeriesClashWithSingleOnesWithin ) {
    EXPECT_EQ( take( "a-4", 1, 1 ), "" );
    EXPECT_EQ( take( "a-2", 1, 2 ), "" );
    EXPECT_EQ( take( "a", 3, 3 ), "a-2 2" );
    EXPECT_EQ( take( "a", 1, 4 ), "" );
}

TEST_F( HostNamesTest, SingleOnesClashWithSeries ) {
    EXPECT_EQ( take( "a", 3, 1 ), "" );
    EXPECT_EQ( take( "a-3", 1, 2 ), "a-3 1" );
    EXPECT_EQ( take( "a-4", 1, 3 ), "" );
    EXPECT_EQ( take( "a-03", 1, 4 ), "" );
    EXPECT_EQ( take( "a-0", 1, 5 ), "" );
    EXPECT_EQ( take( "a-", 1, 6 ), "" );
    EXPECT_EQ( take( "a-99999999999", 1, 7 ), "" );
}

TEST_F( HostNamesTest, SeriesOfOneNameClash ) {
    EXPECT_EQ( take( "a", 3, 1 ), "" );
    EXPECT_EQ( take( "a", 2, 2 ), "a-1 1" );
    EXPECT_EQ( take( "a-1", 2, 3 ), "" );
}

TEST_F( HostNamesTest, TakenOnesAreKnown ) {
    take( "a", 3, 1 );
    EXPECT_TRUE( names_.has( "a-1" ) );
    EXPECT_FALSE( names_.has( "a" ) );
    EXPECT_FALSE( names_.has( "a-4" ) );
}

} // namespace

} // namespace Agent
