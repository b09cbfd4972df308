#include "model/IgmpV3HostGroupSourceList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"
#include "tests/platform/zornet/AssertionText.h"

namespace Igmp {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;

class SourceListTest : public ::testing::Test {
  protected:
    static inline IpAddr const a{ "10.9.9.1" };
    static inline IpAddr const b{ "10.9.9.2" };

    Ptr<IgmpV3HostGroupSourceList> const list = igmpV3HostGroupSourceListFactory();
    Log log;
    Ptr<SourceListWatcher> const watcher{ new SourceListWatcher( list, log ) };
};

TEST_F( SourceListTest, NewListIsEmptyAndHasTheEmptyName ) {
    EXPECT_EQ( list->sourceIps(), 0U );
    EXPECT_TRUE( list->name().empty() );
    EXPECT_EQ( list->sourceIp( a ), 0 );
    EXPECT_FALSE( list->hasSourceIp( a ) );
}

TEST_F( SourceListTest, AbsentSourceIsMadeAndToldOf ) {
    list->sourceIpIs( a, 1 );
    EXPECT_EQ( list->sourceIp( a ), 1 );
    EXPECT_TRUE( list->hasSourceIp( a ) );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1" ) );
    EXPECT_EQ( list->modificationCount(), 1U );
}

TEST_F( SourceListTest, OtherNumberIsStoredAndToldOf ) {
    list->sourceIpIs( a, 1 );
    list->sourceIpIs( a, 9 );
    EXPECT_EQ( list->sourceIp( a ), 9 );
    EXPECT_EQ( list->sourceIps(), 1U );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1", "sourceIp 10.9.9.1" ) );
}

TEST_F( SourceListTest, EqualNumberTellsNobody ) {
    list->sourceIpIs( a, 1 );
    log.clear();
    list->sourceIpIs( a, 1 );
    EXPECT_THAT( log, IsEmpty() );
    EXPECT_EQ( list->modificationCount(), 1U );
}

TEST_F( SourceListTest, LowerFormMakesASourceUntold ) {
    auto const member = list->newSourceIp( a, 3 );
    EXPECT_EQ( member->key, a );
    EXPECT_EQ( member->value, 3 );
    EXPECT_EQ( list->sourceIp( a ), 3 );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( SourceListTest, RaisingAnAbsentSourceGivesItTheIncrement ) {
    EXPECT_EQ( list->sourceIpInc( a, 5 ), 5 );
    EXPECT_EQ( list->sourceIp( a ), 5 );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1" ) );
}

TEST_F( SourceListTest, LoweringAnAbsentSourceWraps ) {
    EXPECT_EQ( list->sourceIpDec( a, 3 ), 253 );
    EXPECT_EQ( list->sourceIp( a ), 253 );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1" ) );
}

TEST_F( SourceListTest, NumbersWrapInBothDirections ) {
    list->sourceIpIs( a, 0 );
    EXPECT_EQ( list->sourceIpDec( a, 1 ), 255 );
    EXPECT_EQ( list->sourceIpInc( a, 1 ), 0 );
    EXPECT_TRUE( list->hasSourceIp( a ) );
    list->sourceIpIs( b, 255 );
    EXPECT_EQ( list->sourceIpInc( b, 1 ), 0 );
}

TEST_F( SourceListTest, ChangeByZeroTellsNobodyYetMakesTheSource ) {
    EXPECT_EQ( list->sourceIpInc( a, 0 ), 0 );
    EXPECT_EQ( list->sourceIpDec( b, 0 ), 0 );
    EXPECT_TRUE( list->hasSourceIp( a ) && list->hasSourceIp( b ) );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( SourceListTest, DeletedSourceIsToldOfAndAnAbsentOneIsNot ) {
    list->sourceIpIs( a, 1 );
    log.clear();
    list->sourceIpDel( b );
    EXPECT_THAT( log, IsEmpty() );
    list->sourceIpDel( a );
    EXPECT_FALSE( list->hasSourceIp( a ) );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1" ) );
}

TEST_F( SourceListTest, DeletingAllTellsOfEachInTheOrderOfTheWalk ) {
    for ( U32 i = 0; i < 9; ++i ) {
        list->sourceIpIs( IpAddr::fromHost( 0x0a090900 + i ), 1 );
    }
    Log inOrder;
    for ( auto const& member : list->sourceIp() ) {
        inOrder.push_back( "sourceIp " + std::string( valueToStrep( member.key ).view() ) );
    }
    log.clear();
    list->sourceIpDelAll();
    EXPECT_EQ( list->sourceIps(), 0U );
    EXPECT_EQ( log.size(), 9U );
    EXPECT_EQ( log, inOrder );
}

TEST_F( SourceListTest, SourceCanBeToldOfWithoutAChange ) {
    list->sourceIpNotify( a );
    EXPECT_EQ( list->sourceIps(), 0U );
    EXPECT_EQ( list->modificationCount(), 0U );
    EXPECT_THAT( log, ElementsAre( "sourceIp 10.9.9.1" ) );
}

TEST_F( SourceListTest, CountdownLowersEachAndDropsTheLastOnes ) {
    list->sourceIpIs( a, 1 );
    list->sourceIpIs( b, 3 );
    log.clear();
    decrementAllCounter( list );
    EXPECT_EQ( list->sourceIps(), 1U );
    EXPECT_EQ( list->sourceIp( b ), 2 );
    EXPECT_THAT( log, ::testing::UnorderedElementsAre( "sourceIp 10.9.9.1", "sourceIp 10.9.9.2" ) );
}

TEST_F( SourceListTest, CountdownSurvivesTheRemovalOfEveryMember ) {
    for ( U32 i = 0; i < 50; ++i ) {
        list->sourceIpIs( IpAddr::fromHost( 0x0a090900 + i ), 1 );
    }
    decrementAllCounter( list );
    EXPECT_EQ( list->sourceIps(), 0U );
}

TEST_F( SourceListTest, CountdownOfAnEmptyListDoesNothing ) {
    decrementAllCounter( list );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( SourceListTest, CountdownOfAZeroEndsTheProcess ) {
    list->sourceIpIs( a, 0 );
    EXPECT_DEATH( decrementAllCounter( list ), Zornet::assertionText( "*sourceIter > 0" ) );
}

} // namespace Igmp
