#include "model/IgmpV3GroupRecord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"

namespace Igmp {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;

class IgmpV3GroupRecordTest : public ::testing::Test {
  protected:
    static inline IpAddr const group{ "239.1.1.1" };
    static inline IpAddr const source{ "10.9.9.1" };

    Ptr<IgmpV3GroupRecord> record = igmpV3GroupRecordFactory( "record", group );
    Log log;
    Ptr<RecordWatcher> watcher{ new RecordWatcher( record, log ) };
};

TEST_F( IgmpV3GroupRecordTest, NewRecordIncludesNothingAndHasNotBeenFilledIn ) {
    EXPECT_EQ( static_cast<U8>( record->filterMode() ), 1 );
    EXPECT_EQ( record->source(), nullptr );
    EXPECT_EQ( record->version(), 0U );
    EXPECT_FALSE( record->replicate() );
    EXPECT_EQ( record->replicateNumber(), 0U );
    EXPECT_TRUE( record->replicateGroup().isZero() );
}

TEST_F( IgmpV3GroupRecordTest, IsKnownByItsGroupAndStandsAlone ) {
    EXPECT_EQ( record->fwkKey(), group );
    EXPECT_EQ( record->multicastAddr(), group );
    EXPECT_EQ( record->name(), Kiv::Name( "record" ) );
    EXPECT_EQ( record->parent(), nullptr );
}

TEST_F( IgmpV3GroupRecordTest, FilterModeTakesAnyByte ) {
    record->filterModeIs( IgmpV3GroupRecord::FilterMode{ 77 } );
    EXPECT_EQ( static_cast<U8>( record->filterMode() ), 77 );
}

TEST_F( IgmpV3GroupRecordTest, SourceListIsMadeOnDemandAndToldOfOnce ) {
    auto const list = record->sourceIs();
    EXPECT_EQ( record->sourceIs(), list );
    EXPECT_EQ( record->source(), list );
    EXPECT_EQ( list->parent(), record.get() );
    EXPECT_EQ( list->parentAttrId(), 260 );
    EXPECT_TRUE( list->name().empty() );
    EXPECT_THAT( log, ElementsAre( "source" ) );
}

TEST_F( IgmpV3GroupRecordTest, LowerFormMakesAListUntold ) {
    auto const list = record->newSource();
    EXPECT_EQ( record->source(), list );
    EXPECT_EQ( list->parent(), record.get() );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( IgmpV3GroupRecordTest, ReplacedListHasNoParent ) {
    auto const first = record->newSource();
    auto const second = record->newSource();
    EXPECT_NE( first, second );
    EXPECT_EQ( first->parent(), nullptr );
    EXPECT_EQ( second->parent(), record.get() );
}

TEST_F( IgmpV3GroupRecordTest, DroppedListIsToldOfAndHasNoParent ) {
    auto const list = record->sourceIs();
    log.clear();
    record->sourceDel();
    EXPECT_EQ( record->source(), nullptr );
    EXPECT_EQ( list->parent(), nullptr );
    EXPECT_THAT( log, ElementsAre( "source" ) );
}

TEST_F( IgmpV3GroupRecordTest, DroppingNoListTellsNobody ) {
    record->sourceDel();
    EXPECT_THAT( log, IsEmpty() );
    EXPECT_EQ( record->modificationCount(), 0U );
}

TEST_F( IgmpV3GroupRecordTest, ListThatOutlivesItsRecordHasNoParent ) {
    auto const list = record->sourceIs();
    watcher = nullptr;
    record = nullptr;
    EXPECT_EQ( list->parent(), nullptr );
}

TEST_F( IgmpV3GroupRecordTest, ChangeOfASourceIsNoChangeOfTheRecord ) {
    auto const list = record->sourceIs();
    log.clear();
    list->sourceIpIs( source, 1 );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( IgmpV3GroupRecordTest, VersionIsToldThroughTheEntityWideCallback ) {
    class EntityWatcher : public Kiv::Entity::NotifieeConst {
      public:
        explicit EntityWatcher( Ptr<IgmpV3GroupRecord> const& entity ) : NotifieeConst( entity ) {
            isRegisteredNotifieeIs( true );
        }
        void onVersion() override { ++versions; }
        int versions = 0;
    };
    watcher = nullptr; // a list of reactors holds one sort only
    Ptr<EntityWatcher> const entityWatcher( new EntityWatcher( record ) );
    record->versionIs( 1 );
    EXPECT_EQ( entityWatcher->versions, 1 );
}

TEST_F( IgmpV3GroupRecordTest, NoRecordIsNotJoined ) {
    EXPECT_FALSE( groupIsJoined( nullptr ) );
}

TEST_F( IgmpV3GroupRecordTest, ExcludeModeIsJoinedWhateverItsSources ) {
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    EXPECT_TRUE( groupIsJoined( record ) );
    record->sourceIs();
    EXPECT_TRUE( groupIsJoined( record ) );
    record->source()->sourceIpIs( source, 1 );
    EXPECT_TRUE( groupIsJoined( record ) );
}

TEST_F( IgmpV3GroupRecordTest, IncludeModeIsJoinedWithASourceOnly ) {
    EXPECT_FALSE( groupIsJoined( record ) );
    record->sourceIs();
    EXPECT_FALSE( groupIsJoined( record ) );
    record->source()->sourceIpIs( source, 0 );
    EXPECT_TRUE( groupIsJoined( record ) );
    record->source()->sourceIpDel( source );
    EXPECT_FALSE( groupIsJoined( record ) );
}

TEST_F( IgmpV3GroupRecordTest, VersionDoesNotEnterIntoMembership ) {
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    EXPECT_EQ( record->version(), 0U );
    EXPECT_TRUE( groupIsJoined( record ) );
}

} // namespace Igmp
