#include "platform/kiv/Exception.h"
#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using Zornet::assertionText;
using Zornet::IpAddr;

class V3Groups : public V3Test {
  protected:
    static constexpr char const* other = "239.1.1.2";

    void processChanges( bool value ) {
        host().processV3GroupChangeIs( value );
        settle();
    }
    void configureWithVersion0( char const* group = G ) {
        auto const added = host().v3groupIs( IpAddr( group ) );
        added->filterModeIs( IgmpV3GroupRecord::exclude );
        settle();
    }
    static std::string handled( std::string const& group ) { return "IgmpHost host handleGroup " + group; }
    static std::string armed() { return "Setting timer to expire in 0"; }
    static std::string fired() { return "AggregatedSenderSm for host response delay timer expired"; }
    bool hasNoMachine( char const* group = G ) {
        return !hasCallback( group ) && !hasGroupSm( group ) && !hasQueryTimer( group );
    }
};

INSTANTIATE_DELIVERY_TESTS( V3Groups );

// The machines of a group.

TEST_P( V3Groups, ConfiguredGroupIsWatched ) {
    enable( igmpVersion3 );
    exclude( G );
    auto const callback = sm().v3GroupCallbackSm( IpAddr( G ) );
    ASSERT_NE( callback, nullptr );
    EXPECT_EQ( callback->mcastAddr(), IpAddr( G ) );
    EXPECT_EQ( callback->groupRecord(), &record() );
    EXPECT_EQ( callback->kivFwkActivity(), nullptr );
    EXPECT_TRUE( callback->initialized() );
}

TEST_P( V3Groups, ConfiguredGroupGetsItsMemory ) {
    enable( igmpVersion3 );
    exclude( G );
    ASSERT_TRUE( hasGroupSm() );
    EXPECT_EQ( groupSm().group(), IpAddr( G ) );
    EXPECT_EQ( groupSm().igmpHost(), &host() );
    EXPECT_EQ( groupSm().igmpHostStatus(), &status() );
    EXPECT_EQ( groupSm().hostSm(), &sm() );
    EXPECT_EQ( groupSm().kivFwkActivity(), nullptr );
}

TEST_P( V3Groups, ConfiguredGroupGetsItsQueryTimer ) {
    enable( igmpVersion3 );
    exclude( G );
    ASSERT_TRUE( hasQueryTimer() );
    EXPECT_EQ( queryTimer().mcastAddr(), IpAddr( G ) );
    EXPECT_EQ( queryTimer().timerWheel(), wheel() );
    EXPECT_EQ( queryTimer().igmpHost(), &host() );
    EXPECT_EQ( queryTimer().igmpHostStatus(), &status() );
    EXPECT_EQ( queryTimer().igmpHostSm(), &sm() );
    EXPECT_EQ( queryTimer().kivFwkActivity(), nullptr );
}

TEST_P( V3Groups, LaterChangesKeepTheMachines ) {
    enable( igmpVersion3 );
    exclude( G );
    auto const callback = sm().v3GroupCallbackSm( IpAddr( G ) );
    auto const* const memory = &groupSm();
    auto const* const timer = &queryTimer();
    addSources( G, { a } );
    EXPECT_EQ( sm().v3GroupCallbackSm( IpAddr( G ) ), callback );
    EXPECT_EQ( &groupSm(), memory );
    EXPECT_EQ( &queryTimer(), timer );
}

TEST_P( V3Groups, DeletedGroupLosesCallbackAndQueryTimerAtOnce ) {
    enable( igmpVersion3 );
    exclude( G );
    removeGroup();
    EXPECT_FALSE( hasCallback() );
    EXPECT_FALSE( hasQueryTimer() );
    EXPECT_TRUE( hasGroupSm() );
    runFor( 5.0 );
    EXPECT_FALSE( hasGroupSm() );
}

TEST_P( V3Groups, QueryDuringTheRepeatsOfALeaveFindsNoTimer ) {
    enable( igmpVersion3 );
    exclude( G );
    rest();
    removeGroup();
    auto const changed = changes();
    hearV3Query( 10, G );
    EXPECT_THAT( changed.list(), ElementsAre( "v3GeneralQueryReceived=1" ) );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}", "TO_IN 239.1.1.1 {}" ) );
}

TEST_P( V3Groups, RecordOfVersion0GetsMachinesAndAFiringButNoReport ) {
    enable( igmpVersion3 );
    TraceCapture trace( "IgmpHost", 9 );
    configureWithVersion0();
    EXPECT_TRUE( hasCallback() );
    EXPECT_TRUE( hasGroupSm() );
    EXPECT_TRUE( hasQueryTimer() );
    EXPECT_THAT( trace.texts(), Contains( armed() ) );
    EXPECT_THAT( trace.texts(), Contains( fired() ) );
    EXPECT_THAT( sent(), IsEmpty() );
}

// What brings a change in.

TEST_P( V3Groups, RaisedVersionWithNothingChangedFiresOnceAndSendsNothing ) {
    exclude( G );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    raiseAndSettle();
    EXPECT_THAT( trace.texts(), Contains( armed() ) );
    runFor( 20.0 );
    EXPECT_THAT( trace.texts(), Contains( fired() ).Times( 1 ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( V3Groups, EditWithoutARaisedVersionPassesUnheard ) {
    exclude( G );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    record().filterModeIs( IgmpV3GroupRecord::include );
    record().sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    settle();
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_EQ( groupSm().currGroupRecord()->filterMode(), IgmpV3GroupRecord::exclude );
}

TEST_P( V3Groups, ChangeOfOneGroupLeavesTheOthersAlone ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    raiseAndSettle( other );
    EXPECT_THAT( trace.texts(), Contains( handled( other ) ).Times( 1 ) );
    EXPECT_THAT( trace.texts(), Not( Contains( handled( G ) ) ) );
}

TEST_P( V3Groups, SeveralGroupsOfOneTurnAreTakenUp ) {
    enable( igmpVersion3 );
    excludeAll( { G, other } );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}, TO_EX 239.1.1.2 {}" ) );
}

TEST_P( V3Groups, DeletingAllGroupsLeavesEach ) {
    excludeAll( { G, other } );
    enableAndRest();
    host().v3groupDelAll();
    settle();
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}, TO_IN 239.1.1.2 {}" ) );
    EXPECT_TRUE( sm().v3GroupCallbackSm().size() == 0 && sm().v3GroupQueryTimerSm().size() == 0 );
}

TEST_P( V3Groups, DisabledHostHasNoMachines ) {
    exclude( G );
    EXPECT_FALSE( hasCallback() );
    EXPECT_FALSE( hasQueryTimer() );
    sm().handleV3Group();
    sm().handleV3Group( IpAddr( G ) );
    EXPECT_FALSE( hasCallback() );
    EXPECT_EQ( sm().aggregatedSenderSm(), nullptr );
}

TEST_P( V3Groups, EnablingReportsTheWholeMembershipAnew ) {
    exclude( G );
    include( S, { a } );
    enable( igmpVersion3 );
    EXPECT_THAT( takeRecords(), ElementsAre( "ALLOW 232.1.1.1 {10.9.9.1}, TO_EX 239.1.1.1 {}" ) );
    rest();
    host().enabledIs( false );
    settle();
    host().enabledIs( true );
    settle();
    EXPECT_THAT( takeRecords(), ElementsAre( "ALLOW 232.1.1.1 {10.9.9.1}, TO_EX 239.1.1.1 {}" ) );
}

TEST_P( V3Groups, DisablingTellsNobodyAndKeepsTheCallbacks ) {
    exclude( G );
    enableAndRest();
    auto const callback = sm().v3GroupCallbackSm( IpAddr( G ) );
    host().enabledIs( false );
    settle();
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( sm().aggregatedSenderSm(), nullptr );
    EXPECT_FALSE( hasQueryTimer() );
    EXPECT_EQ( sm().v3GroupCallbackSm( IpAddr( G ) ), callback );
}

TEST_P( V3Groups, GroupReplacedWhileDisabledIsNeverHeardOfAgain ) {
    exclude( G );
    enableAndRest();
    host().enabledIs( false );
    settle();
    removeGroup();
    exclude( G );
    enableAndRest();
    addSources( G, { a } );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_NE( sm().v3GroupCallbackSm( IpAddr( G ) )->groupRecord(), &record() );
}

TEST_P( V3Groups, GroupReplacedWhileDisabledIsHeardOfOnceItIsReplacedAgain ) {
    exclude( G );
    enableAndRest();
    host().enabledIs( false );
    settle();
    removeGroup();
    exclude( G );
    enableAndRest();
    removeGroup();
    exclude( G );
    rest();
    addSources( G, { a } );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 239.1.1.1 {10.9.9.1}" ) );
}

// Whether changes are processed.

TEST_P( V3Groups, NothingAtAllHappensWhileChangesAreNotProcessed ) {
    enable();
    processChanges( false );
    TraceCapture trace( "IgmpHost", 9 );
    exclude( G );
    raiseAndSettle();
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_TRUE( hasNoMachine() );
    EXPECT_FALSE( hasTimer() );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( V3Groups, KnownGroupsAreLeftAloneWhileChangesAreNotProcessed ) {
    exclude( G );
    enableAndRest();
    processChanges( false );
    addSources( G, { a } );
    removeGroup();
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_TRUE( hasCallback() && hasGroupSm() && hasQueryTimer() );
}

TEST_P( V3Groups, AllGroupsAreTakenUpWhenProcessingBegins ) {
    processChanges( false );
    exclude( G );
    include( S, { a } );
    enableAndRest();
    EXPECT_EQ( sender().v3GroupSms(), 0U );
    processChanges( true );
    EXPECT_THAT( takeRecords(), ElementsAre( "ALLOW 232.1.1.1 {10.9.9.1}, TO_EX 239.1.1.1 {}" ) );
}

TEST_P( V3Groups, GroupDeletedWhileNobodyWatchedIsLeftWhenProcessingBegins ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    processChanges( false );
    removeGroup();
    processChanges( true );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}" ) );
    EXPECT_FALSE( hasCallback() );
    EXPECT_FALSE( hasQueryTimer() );
}

TEST_P( V3Groups, GeneralQueryIsAnsweredForGroupsThatWereNeverTakenUp ) {
    enable( igmpVersion3 );
    processChanges( false );
    exclude( G );
    hearV3Query( 10 );
    runFor( 2.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( V3Groups, GroupDeletedUnheardWithAnArmedTimerEndsTheProcess ) {
    enable();
    exclude( G );
    processChanges( false );
    removeGroup();
    EXPECT_DEATH( runFor( 20.0 ), assertionText( "igmpHost()->v3group( group )" ) );
}

TEST_P( V3Groups, GroupThatWasNeverTakenUpMayGo ) {
    enable( igmpVersion3 );
    TraceCapture trace( "IgmpHost", 9 );
    sm().handleV3Group( IpAddr( G ) );
    EXPECT_TRUE( hasNoMachine() );
    EXPECT_THAT( trace.texts(), Contains( armed() ) );
    EXPECT_THAT( trace.texts(), Contains( handled( G ) ) );
}

TEST_P( V3Groups, ChangeWithoutASenderEndsTheProcess ) {
    enable( igmpVersion3 );
    sm().aggregatedSenderSmDel();
    EXPECT_DEATH( sm().handleV3Group( IpAddr( G ) ), assertionText( "aggregatedSenderSm()" ) );
}

// The version in force.

TEST_P( V3Groups, EveryVersionRunsTheMembershipDriver ) {
    enable( igmpVersion3 );
    exclude( G );
    EXPECT_TRUE( timer().joined() );
    removeGroup();
    EXPECT_FALSE( hasTimer() );
    EXPECT_EQ( status().v2ReportsSent() + status().v2LeavesSent(), 0U );
}

TEST_P( V3Groups, UnderVersion2TheMachinesFollowAndTheSenderIsLeftAlone ) {
    enable();
    TraceCapture trace( "IgmpHost", 9 );
    exclude( G );
    EXPECT_TRUE( hasCallback() && hasGroupSm() && hasQueryTimer() );
    EXPECT_EQ( groupSm().currGroupRecord()->filterMode(), IgmpV3GroupRecord::exclude );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
    EXPECT_THAT( trace.texts(), Not( Contains( fired() ) ) );
    EXPECT_EQ( groupSm().filterModeTransCount(), 2U );
}

TEST_P( V3Groups, LeaveUnderVersion2WaitsForVersion3 ) {
    enable();
    exclude( G );
    removeGroup();
    EXPECT_FALSE( hasCallback() );
    EXPECT_FALSE( hasQueryTimer() );
    EXPECT_EQ( groupSm().filterModeTransCount(), 2U );
    host().igmpVersionIs( igmpVersion3 );
    rest();
    EXPECT_TRUE( hasGroupSm() ); // nothing has armed the sender
    include( S, { a } );
    EXPECT_THAT( takeRecords(), ElementsAre( "ALLOW 232.1.1.1 {10.9.9.1}, TO_IN 239.1.1.1 {}" ) );
}

TEST_P( V3Groups, SourceChangesUnderVersion2AreNeverReportedAsChanges ) {
    include( S, { a } );
    enableAndRest();
    hearQuery( 100 );
    addSources( S, { b } );
    removeSources( S, { a } );
    EXPECT_FALSE( groupSm( S ).isStateChanged() );
    EXPECT_THAT( numbersOf( *groupSm( S ).currGroupRecord()->source() ), ElementsAre( std::pair( b, 1U ) ) );
    runFor( 400.0 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion3 );
    takeRecords();
    raiseAndSettle( S );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( V3Groups, LongQueryAtVersion2ArmsNothingOfVersion3 ) {
    enable();
    exclude( G );
    hearV3Query( 100 );
    hearV3Query( 100, G );
    EXPECT_EQ( general().responseDelayTimerState(), idle );
    EXPECT_EQ( queryTimer().responseDelayTimerState(), idle );
    EXPECT_EQ( status().v3GeneralQueryReceived(), 0U );
}

// Templates.

TEST_P( V3Groups, TemplateIsSpreadAfterItsOwnChange ) {
    enable( igmpVersion3 );
    auto& pattern = exclude( G );
    pattern.replicateIs( true );
    pattern.replicateNumberIs( 2 );
    sent().clear();
    raiseAndSettle();
    EXPECT_EQ( host().v3groups(), 2U );
    EXPECT_TRUE( hasCallback( other ) && hasGroupSm( other ) && hasQueryTimer( other ) );
    EXPECT_THAT( takeRecords(), Contains( HasSubstr( "TO_EX 239.1.1.2 {}" ) ) );
}

TEST_P( V3Groups, CopiesOfATemplateAreTakenUpWithinTheSweep ) {
    auto& pattern = exclude( G );
    pattern.replicateIs( true );
    pattern.replicateNumberIs( 200 );
    enable( igmpVersion3 );
    EXPECT_EQ( host().v3groups(), 200U );
    EXPECT_EQ( sender().v3GroupSms(), 200U );
    EXPECT_EQ( sm().v3GroupQueryTimerSm().size(), 200U );
}

TEST_P( V3Groups, TemplateMayDeleteAGroupBeforeTheSweepMeetsIt ) {
    auto const order = groupsInOrder( 2 );
    excludeAll( order );
    record( order[0].c_str() ).replicateIs( true );
    enable( igmpVersion3 );
    EXPECT_EQ( host().v3groups(), 1U );
    EXPECT_TRUE( hasNoMachine( order[1].c_str() ) );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX " + order[0] + " {}" ) );
}

TEST_P( V3Groups, TemplateMayDeleteAGroupThatTheSweepHasTakenUp ) {
    auto const order = groupsInOrder( 2 );
    excludeAll( order );
    record( order[1].c_str() ).replicateIs( true );
    enable( igmpVersion3 );
    EXPECT_EQ( host().v3groups(), 1U );
    EXPECT_FALSE( hasCallback( order[0].c_str() ) );
    EXPECT_THAT(
        takeRecords(), ElementsAre( AllOf(
                           HasSubstr( "TO_IN " + order[0] + " {}" ), HasSubstr( "TO_EX " + order[1] + " {}" )
                       ) )
    );
}

TEST_P( V3Groups, TemplateMayDeleteAGroupBeforeItIsTakenUpWhenProcessingBegins ) {
    auto const order = groupsInOrder( 2 );
    processChanges( false );
    excludeAll( order );
    record( order[0].c_str() ).replicateIs( true );
    enable( igmpVersion3 );
    processChanges( true );
    EXPECT_EQ( host().v3groups(), 1U );
    EXPECT_TRUE( hasNoMachine( order[1].c_str() ) );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX " + order[0] + " {}" ) );
}

// Get-or-make.

template <class Call>
std::string
refusal( Call call ) {
    try {
        call();
    } catch ( Kiv::NameInUseException const& exception ) {
        return exception.what();
    }
    return "none";
}

auto
refuses( std::string const& parameter ) {
    return StartsWith(
        "Reinstantiating the pointer interface where constructor parameter attribute _" + parameter +
        " has a different value of "
    );
}

TEST_P( V3Groups, CallbackIsGotOrRefused ) {
    enable( igmpVersion3 );
    exclude( G );
    Ptr<IgmpV3GroupRecord> const held( &record() );
    auto const callback = sm().v3GroupCallbackSm( IpAddr( G ) );
    EXPECT_EQ( sm().v3GroupCallbackSmIs( nullptr, IpAddr( G ), held ), callback );
    auto const stranger = igmpV3GroupRecordFactory( "stranger", IpAddr( G ) );
    EXPECT_THAT(
        refusal( [&] { sm().v3GroupCallbackSmIs( nullptr, IpAddr( G ), stranger ); } ),
        refuses( "groupRecord" )
    );
}

TEST_P( V3Groups, QueryTimerIsGotOrRefused ) {
    enable( igmpVersion3 );
    exclude( G );
    Ptr<IgmpHost> const held( &host() );
    Ptr<IgmpHostStatus> const heldStatus( &status() );
    Ptr<Lumo::TimerWheel> const otherWheel( new Lumo::TimerWheel );
    auto const ask = [&]( auto const& timerWheel, auto const& ofHost, auto const& ofStatus ) {
        return sm().v3GroupQueryTimerSmIs( nullptr, timerWheel, IpAddr( G ), ofHost, ofStatus );
    };
    EXPECT_EQ( ask( wheel(), held, heldStatus ).get(), &queryTimer() );
    EXPECT_THAT( refusal( [&] { ask( otherWheel, held, heldStatus ); } ), refuses( "timerWheel" ) );
    EXPECT_THAT(
        refusal( [&] { ask( wheel(), igmpHostFactory( "x" ), heldStatus ); } ), refuses( "igmpHost" )
    );
    EXPECT_THAT(
        refusal( [&] { ask( wheel(), held, igmpHostStatusFactory( "x" ) ); } ), refuses( "igmpHostStatus" )
    );
}

TEST_P( V3Groups, GroupMemoryIsGotOrRefused ) {
    enable( igmpVersion3 );
    exclude( G );
    Ptr<IgmpHost> const held( &host() );
    Ptr<IgmpHostStatus> const heldStatus( &status() );
    auto const ask = [&]( auto const& ofHost, auto const& ofStatus ) {
        return sender().v3GroupSmIs( nullptr, IpAddr( G ), ofHost, ofStatus );
    };
    EXPECT_EQ( ask( held, heldStatus ).get(), &groupSm() );
    EXPECT_THAT( refusal( [&] { ask( igmpHostFactory( "x" ), heldStatus ); } ), refuses( "igmpHost" ) );
    EXPECT_THAT( refusal( [&] { ask( held, igmpHostStatusFactory( "x" ) ); } ), refuses( "igmpHostStatus" ) );
}

// The watcher alone.

TEST( V3GroupCallback, WatchesNothingWithoutARecord ) {
    auto const callback =
        IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSmIs( nullptr, IpAddr( "239.1.1.1" ), nullptr, nullptr );
    EXPECT_TRUE( callback->initialized() );
    EXPECT_EQ( callback->groupRecord(), nullptr );
}

TEST( V3GroupCallback, MoveOfAVersionWithoutAHostEndsTheProcess ) {
    auto const record = igmpV3GroupRecordFactory( "record", IpAddr( "239.1.1.1" ) );
    auto const callback =
        IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSmIs( nullptr, IpAddr( "239.1.1.1" ), record, nullptr );
    EXPECT_EQ( callback->groupRecord(), record.get() );
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    EXPECT_DEATH( record->versionIs( 1 ), assertionText( "igmpHostSm()" ) );
}

} // namespace
