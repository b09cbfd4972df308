/// The version in force: a host falls back below an older querier for as long as it remembers one, and no
/// further than configuration allows.

#include <random>

#include "tests/engine/EngineTest.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;
using Zornet::U8;

class VersionsBase : public EngineTest {
  protected:
    using EngineTest::EngineTest;

    IgmpVersion inForce() { return status().igmpVersion(); }
    Kiv::Seconds v1Hold() { return sm().v1RouterPresentTimer()->timeMin() - Kiv::now(); }
    Kiv::Seconds v2Hold() { return sm().v2RouterPresentTimer()->timeMin() - Kiv::now(); }
    bool v1Armed() { return Kiv::isFinite( v1Hold() ); }
    bool v2Armed() { return Kiv::isFinite( v2Hold() ); }
    void configure( IgmpVersion version ) {
        host().igmpVersionIs( version );
        settle();
    }
    void force( bool value ) {
        host().igmpVersionForcedIs( value );
        settle();
    }
};

// The transitions.

enum class Event { v1Query, v2Query, longQuery, v1TimerFires, v2TimerFires };

struct Transition {
    char const* name;
    bool v1On;
    bool v2On;
    Event event;
    unsigned next; ///< of a host whose ceiling is version 3
};

constexpr Transition transitions[] = {
    { "NothingHeardThenVersion1Query", false, false, Event::v1Query, 1 },
    { "NothingHeardThenVersion2Query", false, false, Event::v2Query, 2 },
    { "NothingHeardThenLongQuery", false, false, Event::longQuery, 3 },
    { "Version2HeardThenVersion2Query", false, true, Event::v2Query, 2 },
    { "Version2HeardThenVersion1Query", false, true, Event::v1Query, 1 },
    { "Version2HeardThenItsTimerFires", false, true, Event::v2TimerFires, 3 },
    { "Version2HeardThenLongQuery", false, true, Event::longQuery, 2 },
    { "Version1HeardThenVersion1Query", true, false, Event::v1Query, 1 },
    { "Version1HeardThenVersion2Query", true, false, Event::v2Query, 1 },
    { "Version1HeardThenItsTimerFires", true, false, Event::v1TimerFires, 3 },
    { "Version1HeardThenLongQuery", true, false, Event::longQuery, 1 },
    { "BothHeardThenVersion1Query", true, true, Event::v1Query, 1 },
    { "BothHeardThenVersion2Query", true, true, Event::v2Query, 1 },
    { "BothHeardThenTheVersion1TimerFires", true, true, Event::v1TimerFires, 2 },
    { "BothHeardThenTheVersion2TimerFires", true, true, Event::v2TimerFires, 1 },
    { "BothHeardThenLongQuery", true, true, Event::longQuery, 1 },
};

using TransitionParam = std::tuple<Delivery, IgmpVersion, Transition>;

std::string
transitionName( ::testing::TestParamInfo<TransitionParam> const& info ) {
    auto const& [delivery, ceiling, transition] = info.param;
    return std::string( transition.name ) + "Below" + std::to_string( ceiling ) +
           Support::deliveryName( delivery );
}

class VersionTransitions : public VersionsBase, public ::testing::WithParamInterface<TransitionParam> {
  protected:
    VersionTransitions() : VersionsBase( std::get<Delivery>( GetParam() ) ) {}

    /// The timer that is to fire is the shorter one.
    void hearBefore( Transition const& transition ) {
        bool const v1First = transition.event == Event::v1TimerFires;
        host().v1RouterPresentTimeoutIs( v1First ? 100.0 : 400.0 );
        host().v2RouterPresentTimeoutIs( v1First ? 400.0 : 100.0 );
        if ( transition.v2On ) {
            hearQuery( 100 );
        }
        if ( transition.v1On ) {
            hearV1Query();
        }
    }
    void happen( Event event ) {
        runFor( 50.0 );
        switch ( event ) {
        case Event::v1Query: hearV1Query(); break;
        case Event::v2Query: hearQuery( 100 ); break;
        case Event::longQuery: hearV3Query( 100 ); break;
        case Event::v1TimerFires:
        case Event::v2TimerFires: runFor( 50.1 ); break;
        }
    }
    /// What is left of each hold after the event, infinity for none.
    static std::pair<Kiv::Seconds, Kiv::Seconds> holdsAfter( Transition const& t ) {
        bool const v1First = t.event == Event::v1TimerFires;
        Kiv::Seconds v1 = t.v1On ? ( v1First ? 100.0 : 400.0 ) - 50.0 : Kiv::never;
        Kiv::Seconds v2 = t.v2On ? ( v1First ? 400.0 : 100.0 ) - 50.0 : Kiv::never;
        switch ( t.event ) {
        case Event::v1Query: return { 400.0, v2 };
        case Event::v2Query: return { v1, 100.0 };
        case Event::longQuery: return { v1, v2 };
        case Event::v1TimerFires: return { Kiv::never, v2 - 50.1 };
        case Event::v2TimerFires: return { v1 - 50.1, Kiv::never };
        }
        return {};
    }
};

TEST_P( VersionTransitions, LeadToTheOlderOfWhatIsHeardAndWhatIsConfigured ) {
    auto const& [delivery, ceiling, transition] = GetParam();
    enable( ceiling );
    hearBefore( transition );
    happen( transition.event );
    EXPECT_EQ( inForce(), std::min<unsigned>( transition.next, ceiling ) );
    auto const [v1, v2] = holdsAfter( transition );
    EXPECT_TRUE( v1Hold() == v1 || std::abs( v1Hold() - v1 ) < 1e-4 ) << v1Hold();
    EXPECT_TRUE( v2Hold() == v2 || std::abs( v2Hold() - v2 ) < 1e-4 ) << v2Hold();
}

INSTANTIATE_TEST_SUITE_P(
    Table, VersionTransitions,
    ::testing::Combine(
        Support::eitherDelivery(), ::testing::Values( igmpVersion1, igmpVersion2, igmpVersion3 ),
        ::testing::ValuesIn( transitions )
    ),
    transitionName
);

// Chains of them.

class Versions : public VersionsBase, public ::testing::WithParamInterface<Delivery> {
  protected:
    Versions() : VersionsBase( GetParam() ) {}
};
INSTANTIATE_DELIVERY_TESTS( Versions );

TEST_P( Versions, HostClimbsStepByStepAsItForgets ) {
    host().v1RouterPresentTimeoutIs( 100.0 );
    enable( igmpVersion3 );
    hearV1Query();
    hearQuery( 100 );
    EXPECT_EQ( inForce(), igmpVersion1 );
    runFor( 100.1 );
    EXPECT_EQ( inForce(), igmpVersion2 );
    runFor( 299.8 );
    EXPECT_EQ( inForce(), igmpVersion2 );
    runFor( 0.2 );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, HostClimbsStraightToVersion3WhereNoVersion2QuerierIsRemembered ) {
    enable( igmpVersion3 );
    hearQuery( 100 );
    runFor( 100.0 );
    hearV1Query();
    runFor( 399.9 );
    EXPECT_EQ( inForce(), igmpVersion1 );
    runFor( 0.2 );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, HoldLastsFromTheLastQuery ) {
    enable( igmpVersion3 );
    for ( int i = 0; i < 5; ++i ) {
        hearQuery( 100 );
        runFor( 399.0 );
        EXPECT_EQ( inForce(), igmpVersion2 );
    }
    runFor( 1.1 );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, NoQueryRaisesAVersion2Host ) {
    enable( igmpVersion2 );
    hearV3Query( 100 );
    hearQuery( 100 );
    hearV3Query( 100, G );
    EXPECT_EQ( inForce(), igmpVersion2 );
    runFor( 500.0 );
    EXPECT_EQ( inForce(), igmpVersion2 );
}

TEST_P( Versions, TimeoutOfZeroClimbsBackOnTheNextTurn ) {
    host().v1RouterPresentTimeoutIs( 0.0 );
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    hearV1Query();
    settle();
    settle();
    EXPECT_THAT( trace.texts(), Contains( "Host host transition to igmpVersion1" ) );
    EXPECT_EQ( inForce(), igmpVersion2 );
}

TEST_P( Versions, InfiniteTimeoutRemembersNothing ) {
    host().v1RouterPresentTimeoutIs( Kiv::never );
    enable( igmpVersion3 );
    hearV1Query();
    EXPECT_FALSE( v1Armed() );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, UnknownVersionIsCarriedThroughAsANumber ) {
    enable( igmpVersionUnknown );
    EXPECT_EQ( inForce(), igmpVersionUnknown );
    hearV1Query();
    EXPECT_EQ( inForce(), igmpVersionUnknown );
}

// What the version in force changes.

TEST_P( Versions, DecidesTheTypeOfReports ) {
    joinAndRest( igmpVersion3 );
    hearQuery( 10 );
    runFor( 1.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    hearV1Query();
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
    hearV3Query( 10 );
    runFor( 1.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
}

// Configuration.

TEST_P( Versions, EnablingPutsTheConfiguredVersionInForce ) {
    for ( IgmpVersion const version : { igmpVersion1, igmpVersion2, igmpVersion3 } ) {
        enable( version );
        EXPECT_EQ( inForce(), version );
        EXPECT_FALSE( v1Armed() || v2Armed() );
        host().enabledIs( false );
        settle();
    }
}

TEST_P( Versions, DisablingForgetsBothQueriers ) {
    enable( igmpVersion3 );
    hearV1Query();
    hearQuery( 100 );
    host().enabledIs( false );
    settle();
    EXPECT_FALSE( v1Armed() || v2Armed() );
    enable( igmpVersion3 );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, WriteOfTheVersionEndsEveryHold ) {
    enable( igmpVersion3 );
    hearV1Query();
    hearQuery( 100 );
    configure( igmpVersion2 );
    EXPECT_FALSE( v1Armed() || v2Armed() );
    EXPECT_EQ( inForce(), igmpVersion2 );
}

TEST_P( Versions, WriteOfTheVersionHoldsUntilTheOlderQuerierIsHeardAgain ) {
    joinAndRest( igmpVersion3 );
    hearV1Query();
    configure( igmpVersion2 );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    hearV1Query();
    EXPECT_EQ( inForce(), igmpVersion1 );
}

TEST_P( Versions, WriteOfTheVersionInPlaceChangesNothing ) {
    enable( igmpVersion3 );
    hearV1Query();
    configure( igmpVersion3 );
    EXPECT_EQ( inForce(), igmpVersion1 );
    EXPECT_TRUE( v1Armed() );
}

TEST_P( Versions, WriteOfTheForcedFlagActsAsAWriteOfTheVersion ) {
    enable( igmpVersion3 );
    for ( bool const value : { true, false } ) {
        hearV1Query();
        hearQuery( 100 );
        force( value );
        EXPECT_FALSE( v1Armed() || v2Armed() ) << value;
        EXPECT_EQ( inForce(), igmpVersion3 ) << value;
    }
}

TEST_P( Versions, WriteAtADisabledHostDoesNothing ) {
    configure( igmpVersion3 );
    force( true );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    EXPECT_FALSE( v1Armed() || v2Armed() );
}

class PeriodicVersions : public Versions {
  protected:
    PeriodicVersions() {
        host().enablePeriodicReportIs( true );
        host().unsolicitedReportIntervalIs( 5.0 );
        settle();
    }
};
INSTANTIATE_DELIVERY_TESTS( PeriodicVersions );

TEST_P( PeriodicVersions, WriteOfVersion1SetsItsTimerToNowAndLeavesTheOther ) {
    enable( igmpVersion3 );
    hearQuery( 100 );
    status().continueUnsolicitedReportIs( false );
    host().igmpVersionIs( igmpVersion1 );
    if ( GetParam() == Delivery::isInline ) {
        EXPECT_EQ( v1Hold(), 0.0 );
    }
    settle();
    settle();
    EXPECT_FALSE( v1Armed() );
    EXPECT_DOUBLE_EQ( v2Hold(), 400.0 );
    EXPECT_EQ( inForce(), igmpVersion1 );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
}

TEST_P( PeriodicVersions, WriteOfVersion2SetsItsTimerToNowAndLeavesTheOther ) {
    enable( igmpVersion3 );
    hearV1Query();
    hearQuery( 100 );
    status().continueUnsolicitedReportIs( false );
    TraceCapture const trace( "IgmpHost", 9 );
    configure( igmpVersion2 );
    settle();
    EXPECT_THAT( trace.texts(), Contains( "Host host igmp version set to igmpVersion2" ) );
    EXPECT_DOUBLE_EQ( v1Hold(), 400.0 );
    EXPECT_FALSE( v2Armed() );
    EXPECT_EQ( inForce(), igmpVersion1 ); // what is still remembered counts again
    EXPECT_TRUE( status().continueUnsolicitedReport() );
}

TEST_P( PeriodicVersions, WriteOfVersion3LeavesBothTimersAndPutsItInForce ) {
    enable( igmpVersion2 );
    hearV1Query();
    hearQuery( 100 );
    runFor( 1.0 );
    status().continueUnsolicitedReportIs( false );
    configure( igmpVersion3 );
    settle();
    EXPECT_NEAR( v1Hold(), 399.0, 1e-4 );
    EXPECT_NEAR( v2Hold(), 399.0, 1e-4 );
    EXPECT_EQ( inForce(), igmpVersion3 );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
}

TEST_P( PeriodicVersions, WriteOfTheForcedFlagActsAsAWriteOfTheVersion ) {
    enable( igmpVersion2 );
    hearV1Query();
    status().continueUnsolicitedReportIs( false );
    force( true );
    settle();
    EXPECT_DOUBLE_EQ( v1Hold(), 400.0 );
    EXPECT_EQ( inForce(), igmpVersion2 ); // forced: what is remembered does not count
    EXPECT_TRUE( status().continueUnsolicitedReport() );
    force( false );
    settle();
    EXPECT_EQ( inForce(), igmpVersion1 ); // and now it does
}

TEST_P( PeriodicVersions, EnablingAVersion2HostRecomputesOnTheNextTurn ) {
    enable( igmpVersion2 );
    settle();
    EXPECT_EQ( inForce(), igmpVersion2 );
    EXPECT_FALSE( v2Armed() );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
}

// Forced.

TEST_P( Versions, ForcedVersion3HostStaysUnderAStreamOfVersion1Queries ) {
    force( true );
    enable( igmpVersion3 );
    for ( int i = 0; i < 20; ++i ) {
        hearV1Query();
        EXPECT_EQ( inForce(), igmpVersion3 );
        EXPECT_DOUBLE_EQ( v1Hold(), 400.0 );
        runFor( 50.0 );
    }
    runFor( 500.0 );
    EXPECT_EQ( inForce(), igmpVersion3 );
}

TEST_P( Versions, ForcedVersion2HostReportsAndLeavesBesideAVersion1Querier ) {
    force( true );
    joinAndRest( igmpVersion2 );
    hearV1Query();
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    removeGroup();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
}

TEST_P( Versions, EndOfForcingDoesNotRestoreAFallBack ) {
    force( true );
    enable( igmpVersion3 );
    hearQuery( 100 );
    force( false );
    EXPECT_EQ( inForce(), igmpVersion3 );
    EXPECT_FALSE( v2Armed() );
    hearQuery( 100 );
    EXPECT_EQ( inForce(), igmpVersion2 );
}

// What is said.

TEST_P( Versions, SaysEachTransitionAlsoToTheSameVersion ) {
    enable( igmpVersion3 );
    hearV1Query();
    TraceCapture const trace( "IgmpHost", 9 );
    hearQuery( 100 );
    EXPECT_THAT( trace.texts(), Contains( "v2routerpresent timer : 1400" ) );
    EXPECT_THAT( trace.texts(), Contains( "Host host transition to igmpVersion1" ) );
    EXPECT_THAT(
        trace.texts(), Contains( "in handlev2v3compatibility igmpHostStatus version: igmpVersion1" )
    );
}

TEST_P( Versions, SaysNoTransitionWhereForced ) {
    force( true );
    enable( igmpVersion3 );
    TraceCapture const trace( "IgmpHost", 9 );
    hearQuery( 100 );
    EXPECT_FALSE( trace.contains( "transition to" ) );
    EXPECT_FALSE( trace.contains( "v2routerpresent" ) );
}

TEST_P( Versions, SaysWhichTimerFired ) {
    enable( igmpVersion3 );
    hearV1Query();
    hearQuery( 100 );
    TraceCapture const trace( "IgmpHost", 9 );
    runFor( 401.0 );
    EXPECT_THAT( trace.texts(), Contains( "for v1 router present timer" ) );
    EXPECT_THAT( trace.texts(), Contains( "for v2 router present timer" ) );
}

TEST_P( Versions, SaysWhatWasConfigured ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    configure( igmpVersion3 );
    EXPECT_THAT( trace.texts(), Contains( "Host host igmp version set to igmpVersion3" ) );
    EXPECT_THAT( trace.texts(), Contains( "set v2routerpresent to :inf" ) );
}

// Values that stand for an instant.

class VersionsInline : public VersionsBase {
  protected:
    class Watcher : public IgmpHostStatus::NotifieeConst {
      public:
        explicit Watcher( Kiv::Ptr<IgmpHostStatus> const& status ) : NotifieeConst( status ) {
            isRegisteredNotifieeIs( true );
        }
        void onIgmpVersion() override {
            heard.push_back( static_cast<IgmpHostStatus const*>( notifierEntity() )->igmpVersion() );
        }
        std::vector<IgmpVersion> heard;
    };
};

TEST_F( VersionsInline, TimeoutOfZeroHoldsForTheQueryOnly ) {
    host().v1RouterPresentTimeoutIs( 0.0 );
    joinAndRest( igmpVersion3 );
    Kiv::Ptr<Watcher> const watcher( new Watcher( &status() ) );
    hearV1Query();
    settle();
    EXPECT_THAT( watcher->heard, ElementsAre( igmpVersion1, igmpVersion3 ) );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
    EXPECT_EQ( status().v3GeneralQueryReceived(), 0U );
}

// A storm of queries.

/// The rule itself: the oldest querier heard within its timeout, and no later than configured.
struct VersionModel {
    IgmpVersion configured;
    bool forced;
    Kiv::Seconds v1Until = 0.0;
    Kiv::Seconds v2Until = 0.0;

    IgmpVersion inForce( Kiv::Seconds now ) const {
        IgmpVersion const heard = now < v1Until ? igmpVersion1 : now < v2Until ? igmpVersion2 : igmpVersion3;
        return forced ? configured : std::min( heard, configured );
    }
};

class VersionStorm : public EngineDeliveryTest {
  protected:
    static constexpr char const* names[] = { "host", "two", "three", "four", "five", "six" };

    VersionStorm() {
        for ( std::size_t i = 0; i < std::size( names ); ++i ) {
            IgmpHost& one = i == 0 ? host() : addHost( names[i], "10.0.0.9" );
            auto const version = static_cast<IgmpVersion>( 1 + i % 3 );
            one.igmpVersionIs( version );
            settle();
            one.igmpVersionForcedIs( i >= 3 );
            settle();
            auto const record = one.v3groupIs( IpAddr( G ) );
            record->filterModeIs( IgmpV3GroupRecord::exclude );
            record->versionIs( 1 );
            settle();
        }
    }
    /// All hosts as new.
    void restart( Kiv::Seconds v1Timeout, Kiv::Seconds v2Timeout ) {
        models.clear();
        for ( char const* const name : names ) {
            IgmpHost& one = host( name );
            one.enabledIs( false );
            settle();
            one.v1RouterPresentTimeoutIs( v1Timeout );
            one.v2RouterPresentTimeoutIs( v2Timeout );
            one.enabledIs( true );
            settle();
            models.push_back( { one.igmpVersion(), one.igmpVersionForced() } );
        }
    }
    /// A query of any version, to everyone or about a group. An 8-byte query about G would end the process at
    /// a host that is held at version 3, so the old forms ask about another group.
    void hearAny( std::mt19937& random ) {
        bool const general = random() % 2 == 0;
        auto const code = static_cast<U8>( 1 + random() % 255 );
        switch ( random() % 3 ) {
        case 0:
            hearQuery( 0, general ? "0.0.0.0" : unknownGroup );
            hold( &VersionModel::v1Until, host().v1RouterPresentTimeout() );
            break;
        case 1:
            hearQuery( code, general ? "0.0.0.0" : unknownGroup );
            hold( &VersionModel::v2Until, host().v2RouterPresentTimeout() );
            break;
        default: hearV3Query( code, general ? "0.0.0.0" : G );
        }
    }
    void hold( Kiv::Seconds VersionModel::*until, Kiv::Seconds timeout ) {
        for ( VersionModel& model : models ) {
            model.*until = Kiv::now() + timeout;
        }
    }
    ::testing::AssertionResult agrees() {
        for ( std::size_t i = 0; i < std::size( names ); ++i ) {
            auto const expected = models[i].inForce( Kiv::now() );
            if ( status( names[i] ).igmpVersion() != expected ) {
                return ::testing::AssertionFailure()
                       << names[i] << " is at " << status( names[i] ).igmpVersion() << ", not " << expected
                       << ", at " << elapsed();
            }
        }
        return ::testing::AssertionSuccess();
    }

    std::vector<VersionModel> models;
};
INSTANTIATE_DELIVERY_TESTS( VersionStorm );

TEST_P( VersionStorm, VersionInForceIsAlwaysThatOfTheRule ) {
    for ( unsigned seed = 0; seed < 1000; ++seed ) {
        std::mt19937 random( seed );
        std::uniform_real_distribution<double> timeout( 1.0, 400.0 );
        std::exponential_distribution<double> gap( 1.0 / 80.0 );
        restart( timeout( random ), timeout( random ) );
        for ( int query = 0; query < 20; ++query ) {
            runFor( gap( random ) );
            ASSERT_TRUE( agrees() ) << "before query " << query << " of seed " << seed;
            hearAny( random );
            ASSERT_TRUE( agrees() ) << "after query " << query << " of seed " << seed;
        }
    }
}

} // namespace
