/// What process() makes of a difference between the wanted and the current record, on one machine that stands
/// alone: nothing runs the counts down.

#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Zornet::IpAddr;

constexpr auto include = IgmpV3GroupRecord::include;
constexpr auto exclude = IgmpV3GroupRecord::exclude;
constexpr char const* a = "10.9.9.1";
constexpr char const* b = "10.9.9.2";

class V3GroupState : public ::testing::Test {
  protected:
    V3GroupState() {
        status->igmpVersionIs( igmpVersion3 );
        host->robustnessIs( 3 );
    }

    /// Writes the wanted record anew and raises its version, without process().
    void write( IgmpV3GroupRecord::FilterMode mode, std::vector<char const*> const& sources ) {
        auto const record = host->v3groupIs( group );
        record->filterModeIs( mode );
        record->sourceIs()->sourceIpDelAll();
        for ( char const* source : sources ) {
            record->source()->sourceIpIs( IpAddr( source ), 1 );
        }
        record->versionIs( record->version() + 1 );
    }
    void want( IgmpV3GroupRecord::FilterMode mode, std::vector<char const*> const& sources = {} ) {
        write( mode, sources );
        machine->process();
    }
    void leave() {
        host->v3groupDel( group );
        machine->process();
    }
    /// As if everything owed had been sent.
    void allSent() {
        machine->filterModeTransCountIs( 0 );
        machine->addedSourceTransCount()->sourceIpDelAll();
        machine->deletedSourceTransCount()->sourceIpDelAll();
    }
    /// An exclude or include record that has been told.
    void toldOf( IgmpV3GroupRecord::FilterMode mode, std::vector<char const*> const& sources = {} ) {
        want( mode, sources );
        allSent();
    }

    SourceNumbers added() { return numbersOf( *machine->addedSourceTransCount() ); }
    SourceNumbers deleted() { return numbersOf( *machine->deletedSourceTransCount() ); }
    SourceNumbers current() { return numbersOf( *machine->currGroupRecord()->source() ); }
    auto currentMode() { return machine->currGroupRecord()->filterMode(); }

    IpAddr const group{ "232.1.1.1" };
    Ptr<IgmpHost> const host = igmpHostFactory( "host" );
    Ptr<IgmpHostStatus> const status = igmpHostStatusFactory( "host" );
    Ptr<IgmpV3HostGroupSm> const machine =
        IgmpV3HostGroupSm::IgmpV3HostGroupSmIs( nullptr, group, host, status, nullptr );
};

// A new machine.

TEST_F( V3GroupState, FreshMachineOwesNothing ) {
    EXPECT_TRUE( machine->initialized() );
    EXPECT_FALSE( machine->isStateChanged() );
    EXPECT_EQ( machine->filterModeTransCount(), 0U );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_THAT( deleted(), IsEmpty() );
    EXPECT_EQ( machine->hostSm(), nullptr );
}

TEST_F( V3GroupState, FreshMachineHasAnEmptyCurrentRecord ) {
    EXPECT_EQ( machine->currGroupRecord()->name(), "curr_group_rec" );
    EXPECT_EQ( machine->currGroupRecord()->multicastAddr(), group );
    EXPECT_EQ( currentMode(), include );
    ASSERT_NE( machine->currGroupRecord()->source(), nullptr );
    EXPECT_THAT( current(), IsEmpty() );
}

TEST_F( V3GroupState, FreshMachineHasTheRecordOfALeave ) {
    EXPECT_EQ( machine->groupRecordOnLeave()->name(), "group_rec_on_leave" );
    EXPECT_EQ( machine->groupRecordOnLeave()->multicastAddr(), group );
    EXPECT_EQ( machine->groupRecordOnLeave()->version(), 1U );
    EXPECT_EQ( machine->groupRecordOnLeave()->filterMode(), include );
    EXPECT_EQ( machine->groupRecordOnLeave()->source(), nullptr );
}

TEST_F( V3GroupState, IndexBookMarkIsAPlainAttribute ) {
    EXPECT_EQ( machine->indexBookMark(), IpAddr() );
    machine->indexBookMarkIs( group );
    EXPECT_EQ( machine->indexBookMark(), group );
}

// Nothing to do.

TEST_F( V3GroupState, NothingDiffersAndNothingIsOwed ) {
    machine->process();
    EXPECT_FALSE( machine->isStateChanged() );
    toldOf( exclude, { a } );
    machine->process();
    want( exclude, { a } );
    EXPECT_FALSE( machine->isStateChanged() );
}

TEST_F( V3GroupState, RecordOfVersion0IsSkipped ) {
    toldOf( include, { a } );
    machine->addedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    host->v3group( group )->versionIs( 0 );
    host->v3group( group )->filterModeIs( exclude );
    TraceCapture trace( "IgmpHost", 9 );
    machine->process();
    EXPECT_THAT( trace.texts(), ElementsAre( "Group Record version is 0. Skip Processing." ) );
    EXPECT_EQ( currentMode(), include );
    EXPECT_THAT( current(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_EQ( machine->filterModeTransCount(), 0U );
}

// Filter mode.

TEST_F( V3GroupState, JoinOfAnExcludeGroupIsAChangeOfMode ) {
    TraceCapture trace( "IgmpHost", 9 );
    want( exclude, { a, b } );
    EXPECT_THAT( trace.texts(), ElementsAre( "filterModeChange to MODE_IS_EXCLUDE" ) );
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
    EXPECT_EQ( currentMode(), exclude );
    EXPECT_THAT( current(), ElementsAre( std::pair( a, 1U ), std::pair( b, 1U ) ) );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_TRUE( machine->isStateChanged() );
}

TEST_F( V3GroupState, ChangeOfModeDropsSourceChanges ) {
    toldOf( include, { a } );
    want( include, { b } );
    want( exclude, { b } );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_THAT( deleted(), IsEmpty() );
    EXPECT_THAT( current(), ElementsAre( std::pair( b, 1U ) ) );
}

TEST_F( V3GroupState, ChangeOfModeWithoutASourceListEmptiesTheCurrentOne ) {
    toldOf( include, { a } );
    host->v3group( group )->sourceDel();
    host->v3group( group )->filterModeIs( exclude );
    machine->process();
    EXPECT_THAT( current(), IsEmpty() );
    EXPECT_THAT( deleted(), IsEmpty() );
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
}

TEST_F( V3GroupState, ChangeOfModeTakesSourcesWhateverTheirNumber ) {
    write( exclude, {} );
    host->v3group( group )->source()->sourceIpIs( IpAddr( a ), 7 );
    machine->process();
    EXPECT_THAT( current(), ElementsAre( std::pair( a, 1U ) ) );
}

TEST_F( V3GroupState, SecondChangeOfModeRestartsTheCount ) {
    want( exclude );
    machine->filterModeTransCountIs( 1 );
    want( include, { a } );
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
    EXPECT_EQ( currentMode(), include );
}

TEST_F( V3GroupState, SourceChangeDuringAPendingChangeOfModeIsCountedAsUsual ) {
    want( exclude, { a } );
    want( exclude, { b } );
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
    EXPECT_THAT( added(), ElementsAre( std::pair( b, 3U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ) ) );
}

// Sources.

TEST_F( V3GroupState, JoinOfAnIncludeGroupIsAChangeOfSources ) {
    TraceCapture trace( "IgmpHost", 9 );
    want( include, { a } );
    EXPECT_THAT(
        trace.texts(),
        ElementsAre(
            "groupRecord has source: 10.9.9.1", " add to added list IGMP version =igmpVersion3",
            "Processing source since igmp version is 3", "currGroupRecord has source: 10.9.9.1"
        )
    );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 3U ) ) );
    EXPECT_THAT( current(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_EQ( machine->filterModeTransCount(), 0U );
    EXPECT_TRUE( machine->isStateChanged() );
}

TEST_F( V3GroupState, AddedSourceLeavesTheOthersAlone ) {
    toldOf( exclude, { a } );
    want( exclude, { a, b } );
    EXPECT_THAT( added(), ElementsAre( std::pair( b, 3U ) ) );
    EXPECT_THAT( deleted(), IsEmpty() );
    EXPECT_EQ( machine->filterModeTransCount(), 0U );
}

TEST_F( V3GroupState, RemovedSourceIsCounted ) {
    toldOf( include, { a } );
    TraceCapture trace( "IgmpHost", 9 );
    want( include );
    EXPECT_THAT(
        trace.texts(), ElementsAre( "currGroupRecord has source: 10.9.9.1", " add to deleted list" )
    );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ) ) );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_THAT( current(), IsEmpty() );
    EXPECT_TRUE( machine->isStateChanged() );
}

TEST_F( V3GroupState, SourceAddedAndRemovedBeforeAnyReportOwesItsRemovalInFull ) {
    want( include, { a } );
    machine->addedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    want( include );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ) ) );
}

TEST_F( V3GroupState, SourceAddedAgainRestartsItsCountAndWithdrawsTheRemoval ) {
    toldOf( include, { a } );
    want( include );
    machine->deletedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    want( include, { a } );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 3U ) ) );
    EXPECT_THAT( deleted(), IsEmpty() );
}

TEST_F( V3GroupState, MissingSourceListRemovesEachSource ) {
    toldOf( include, { a, b } );
    host->v3group( group )->sourceDel();
    machine->process();
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ), std::pair( b, 3U ) ) );
    EXPECT_THAT( current(), IsEmpty() );
}

TEST_F( V3GroupState, WantedSourceWithAnotherNumberThan1IsAddedAndRemovedAtOnce ) {
    write( include, {} );
    host->v3group( group )->source()->sourceIpIs( IpAddr( a ), 2 );
    machine->process();
    EXPECT_THAT( current(), IsEmpty() );
    EXPECT_THAT( added(), IsEmpty() );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ) ) );
}

TEST_F( V3GroupState, CurrentSourceWithAnotherNumberThan1CountsAsAbsent ) {
    toldOf( include, { a } );
    machine->currGroupRecord()->source()->sourceIpIs( IpAddr( a ), 2 );
    machine->process();
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 3U ) ) );
    EXPECT_THAT( current(), ElementsAre( std::pair( a, 1U ) ) );
}

TEST_F( V3GroupState, RobustnessIsThatOfTheChange ) {
    want( include, { a } );
    host->robustnessIs( 1 );
    want( include, { a, b } );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 3U ), std::pair( b, 1U ) ) );
}

// The version in force.

class V3GroupStateOfOlderVersions : public V3GroupState, public ::testing::WithParamInterface<IgmpVersion> {
  protected:
    V3GroupStateOfOlderVersions() { status->igmpVersionIs( GetParam() ); }
};

INSTANTIATE_TEST_SUITE_P(
    Version, V3GroupStateOfOlderVersions, ::testing::Values( igmpVersion1, igmpVersion2 )
);

TEST_P( V3GroupStateOfOlderVersions, SourcesAreAdoptedAndNothingIsOwed ) {
    TraceCapture trace( "IgmpHost", 9 );
    want( include, { a } );
    EXPECT_THAT( trace.texts(), Contains( HasSubstr( " add to added list IGMP version =" ) ) );
    EXPECT_THAT( trace.texts(), Not( Contains( "Processing source since igmp version is 3" ) ) );
    want( include, { b } );
    EXPECT_THAT( current(), ElementsAre( std::pair( b, 1U ) ) );
    EXPECT_FALSE( machine->isStateChanged() );
}

TEST_P( V3GroupStateOfOlderVersions, ChangeOfModeIsOwedAllTheSame ) {
    want( exclude, { a } );
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
    EXPECT_EQ( currentMode(), exclude );
}

TEST_P( V3GroupStateOfOlderVersions, SourceCountsThatRunAreLeftAsTheyAre ) {
    machine->addedSourceTransCount()->sourceIpIs( IpAddr( a ), 2 );
    machine->deletedSourceTransCount()->sourceIpIs( IpAddr( b ), 2 );
    want( include, { b } );
    want( include, { a } );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 2U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( b, 2U ) ) );
}

// Leaving.

TEST_F( V3GroupState, LeaveOfAnExcludeGroupIsAChangeToIncludeMode ) {
    toldOf( exclude, { a } );
    leave();
    EXPECT_EQ( machine->filterModeTransCount(), 3U );
    EXPECT_EQ( currentMode(), include );
    EXPECT_THAT( current(), IsEmpty() );
    EXPECT_THAT( deleted(), IsEmpty() );
}

TEST_F( V3GroupState, LeaveOfAnIncludeGroupRemovesItsSources ) {
    toldOf( include, { a, b } );
    leave();
    EXPECT_EQ( machine->filterModeTransCount(), 0U );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 3U ), std::pair( b, 3U ) ) );
}

TEST_F( V3GroupState, LeaveOfAnIncludeGroupWithoutSourcesOwesNothing ) {
    toldOf( include );
    leave();
    EXPECT_FALSE( machine->isStateChanged() );
}

TEST_F( V3GroupState, GroupThatComesBackStartsFromWhatTheLeaveLeft ) {
    toldOf( include, { a, b } );
    leave();
    want( include, { a } );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 3U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( b, 3U ) ) );
}

// What is owed.

TEST_F( V3GroupState, EachOfThreeCountsOwesAReport ) {
    machine->filterModeTransCountIs( 1 );
    EXPECT_TRUE( machine->isStateChanged() );
    allSent();
    machine->addedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    EXPECT_TRUE( machine->isStateChanged() );
    allSent();
    machine->deletedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    EXPECT_TRUE( machine->isStateChanged() );
    allSent();
    EXPECT_FALSE( machine->isStateChanged() );
}

TEST_F( V3GroupState, SourceCountTakesTheLowByteOfTheRobustness ) {
    host->robustnessIs( 300 );
    want( exclude, { a } );
    EXPECT_EQ( machine->filterModeTransCount(), 300U );
    want( exclude, { b } );
    EXPECT_THAT( added(), ElementsAre( std::pair( b, 44U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( a, 44U ) ) );
}

TEST_F( V3GroupState, RobustnessOf0OwesNoChangeOfMode ) {
    host->robustnessIs( 0 );
    want( exclude );
    EXPECT_FALSE( machine->isStateChanged() );
    EXPECT_EQ( currentMode(), exclude );
}

TEST_F( V3GroupState, RobustnessOf0Or256StoresASourceCountOf0 ) {
    host->robustnessIs( 0 );
    want( include, { a } );
    host->robustnessIs( 256 );
    want( include, { a, b } );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 0U ), std::pair( b, 0U ) ) );
}

} // namespace
