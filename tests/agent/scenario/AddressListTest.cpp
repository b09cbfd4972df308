#include "agent/scenario/AddressList.h"

#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

using Zornet::IpAddr;

std::string
faultOf( char const* text ) {
    try {
        addressBlock( text );
    } catch ( Kiv::RangeException const& fault ) {
        return fault.what();
    }
    return "none";
}

std::string
rangeOf( char const* text ) {
    AddressBlock const block = addressBlock( text );
    return textOf( AddressList( { { block.first, 1, 1, {} }, { block.last(), 1, 1, {} } } ) ) + " " +
           std::to_string( block.count );
}

TEST( AddressBlockText, IsAnAddressAPrefixOrTwoEnds ) {
    EXPECT_EQ( rangeOf( "239.1.1.1" ), "239.1.1.1 239.1.1.1 1" );
    EXPECT_EQ( rangeOf( "239.1.0.0/24" ), "239.1.0.0 239.1.0.255 256" );
    EXPECT_EQ( rangeOf( "239.1.1.7/32" ), "239.1.1.7 239.1.1.7 1" );
    EXPECT_EQ( rangeOf( "239.1.1.1-239.1.1.50" ), "239.1.1.1 239.1.1.50 50" );
    EXPECT_EQ( rangeOf( "0.0.0.1-255.255.255.255" ), "0.0.0.1 255.255.255.255 4294967295" );
}

TEST( AddressBlockText, IsRefusedWithWhatWasExpected ) {
    EXPECT_EQ(
        faultOf( "239.1.1" ),
        "expected an IPv4 address such as 239.1.1.1, or a range such as 239.1.1.0/24 or "
        "239.1.1.1-239.1.1.50, found '239.1.1'"
    );
    EXPECT_EQ(
        faultOf( "239.1.0.0/33" ), "expected a prefix length from 0 to 32 behind '/', found '239.1.0.0/33'"
    );
    EXPECT_EQ(
        faultOf( "239.1.0.5/24" ), "expected the first address of a block, 239.1.0.0/24, found '239.1.0.5/24'"
    );
    EXPECT_EQ(
        faultOf( "239.1.1.9-239.1.1.1" ),
        "expected a range whose last address is not below its first, found '239.1.1.9-239.1.1.1'"
    );
    EXPECT_EQ(
        faultOf( "0.0.0.0/0" ), "expected a range of at most 4294967295 addresses, found '0.0.0.0/0'"
    );
    for ( char const* const text : { "", "-", "/", "239.1.1.1-", "-239.1.1.1", "239.1.1.1/", "239.1.1.1-x",
                                     "1.1.1.1-1.1.1.2-1.1.1.3" } ) {
        EXPECT_NE( faultOf( text ), "none" ) << text;
    }
}

AddressBlock
block( char const* first, U32 count, U32 step, int line = 0 ) {
    return { IpAddr( first ), count, step, { 0, line, 1 } };
}

TEST( AddressList, WalksItsBlocksInOrder ) {
    AddressList const list( { block( "239.1.1.9", 2, 1 ), block( "239.1.1.1", 3, 256 ) } );
    EXPECT_EQ( list.count(), 5U );
    EXPECT_EQ( textOf( list ), "239.1.1.9 239.1.1.10 239.1.1.1 239.1.2.1 239.1.3.1" );
    EXPECT_EQ( list.lowest(), IpAddr( "239.1.1.1" ) );
    EXPECT_EQ( list.highest(), IpAddr( "239.1.3.1" ) );
}

TEST( AddressList, GivesEachAddressByIndex ) {
    AddressList const list( { block( "239.1.1.9", 2, 1 ), block( "239.1.1.1", 3, 256 ) } );
    std::vector<IpAddr> walked;
    list.forEach( [&]( IpAddr const& addr ) { walked.push_back( addr ); } );
    for ( std::size_t i = 0; i < walked.size(); ++i ) {
        EXPECT_EQ( list.addr( i ), walked[i] ) << i;
    }
}

std::string
repeated( std::vector<AddressBlock> const& blocks ) {
    Diagnostics errors;
    tellRepetitions( blocks, "group", { "" }, errors );
    return linesOf( errors );
}

TEST( AddressRepetitions, AreFoundBetweenRanges ) {
    EXPECT_EQ( repeated( { block( "239.1.1.1", 9, 1, 1 ), block( "239.1.1.10", 9, 1, 2 ) } ), "" );
    EXPECT_EQ(
        repeated( { block( "239.1.1.10", 9, 1, 1 ), block( "239.1.1.1", 10, 1, 2 ) } ),
        ":1:1: error: group 239.1.1.10 is there already, in line 2\n"
    );
}

TEST( AddressRepetitions, AreNotSeenWhereStepsPassEachOther ) {
    EXPECT_EQ( repeated( { block( "239.1.1.0", 50, 2, 1 ), block( "239.1.1.1", 50, 2, 2 ) } ), "" );
    EXPECT_EQ(
        repeated( { block( "239.1.1.0", 50, 2, 1 ), block( "239.1.1.1", 50, 3, 2 ) } ),
        ":2:1: error: group 239.1.1.4 is there already, in line 1\n"
    );
}

} // namespace

} // namespace Agent
