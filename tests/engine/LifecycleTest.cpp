/// A host's machine from its making to its end: what being enabled and being disabled do, and in which order.

#include <cstdlib>

#include "engine/host/Reactors.h"
#include "tests/platform/zornet/AssertionText.h"
#include "tests/support/DeliveryTest.h"
#include "tests/support/FedPam.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::assertionText;
using Zornet::IpAddr;

constexpr char const* G = "239.1.1.1";

class LifecycleTest : public Support::DeliveryTest {
  protected:
    void enabledIs( bool value ) {
        host().enabledIs( value );
        settle();
    }
    /// A host that is in the directory, and whose machine is yet to be made by machineOf().
    Ptr<IgmpHost> otherHost( bool enabled ) {
        Ptr<IgmpHost> const other = igmpHostFactory( "other" );
        other->deviceNameIs( "eth1" );
        other->intfConfigVersionIs( 1 );
        other->enabledIs( enabled );
        return other;
    }
    Ptr<IgmpHostSm> machineOf( Ptr<IgmpHost> const& other ) {
        return igmpHostSmFactory( nullptr, "other", other, wheel(), statusDir, dirSm.get() );
    }
    /// Everything that runs on the wheel: a group's repeat, answers to a version 2 and a version 1 query.
    void armEverything() {
        exclude( G );
        hearQuery( 100 );
        hearV1Query();
        hearV3Query( 100, G );
    }
};
INSTANTIATE_DELIVERY_TESTS( LifecycleTest );

TEST_P( LifecycleTest, DisabledMachineHasNeitherStatusNorCompanions ) {
    EXPECT_TRUE( sm().initialized() );
    EXPECT_FALSE( sm().enabled() );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    EXPECT_EQ( sm().aggregatedSenderSm(), nullptr );
    EXPECT_EQ( sm().igmpV3HostGeneralQueryTimerSm(), nullptr );
    EXPECT_EQ( sm().rxPam(), nullptr );
    EXPECT_EQ( sm().txPam(), nullptr );
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), nullptr );
}

TEST_P( LifecycleTest, NewMachineStartsWithTheDefaults ) {
    Ptr<IgmpHostSm> const machine = machineOf( otherHost( false ) );
    EXPECT_EQ( machine->mtu(), 1514U );
    EXPECT_EQ( machine->v3ReportPkt(), nullptr );
    EXPECT_EQ( machine->v2ReportPkt(), nullptr );
    EXPECT_EQ( machine->offsetEtherHeader() + machine->offsetIpHeader(), 0 );
    EXPECT_EQ( machine->offsetIgmpReportHeader() + machine->offsetIgmpGroupRecStart(), 0 );
    EXPECT_FALSE( machine->useMux() );
    EXPECT_EQ( machine->useMuxIntfId(), Zornet::IntfId() );
    EXPECT_FALSE( Kiv::isFinite( machine->v1RouterPresentTimer()->timeMin() ) );
    EXPECT_FALSE( Kiv::isFinite( machine->v2RouterPresentTimer()->timeMin() ) );
    EXPECT_TRUE( machine->hasNotificationActive() );
}

TEST_P( LifecycleTest, EnabledMachineHasStatusCompanionsTemplatesAndAWayToTheWire ) {
    enable();
    EXPECT_TRUE( sm().enabled() );
    EXPECT_EQ( sm().igmpHostStatus(), &status() );
    EXPECT_NE( sm().aggregatedSenderSm(), nullptr );
    EXPECT_NE( sm().igmpV3HostGeneralQueryTimerSm(), nullptr );
    EXPECT_NE( sm().v3ReportPkt(), nullptr );
    EXPECT_NE( sm().v2ReportPkt(), nullptr );
    EXPECT_NE( sm().rxPam(), nullptr );
    EXPECT_NE( sm().txPam(), nullptr );
}

TEST_P( LifecycleTest, HostEnabledBeforeItsMachineIsEnabledWhenTheFactoryReturns ) {
    Ptr<IgmpHostSm> const machine = machineOf( otherHost( true ) );
    EXPECT_TRUE( machine->enabled() );
    EXPECT_EQ( status( "other" ).numPacketInitialized(), 2U );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
    machine->doPrepareToDie();
}

TEST_P( LifecycleTest, GroupsConfiguredBeforeTheMachineAreJoinedInsideTheFactory ) {
    Ptr<IgmpHost> const other = otherHost( true );
    Ptr<IgmpV3GroupRecord> const record = other->v3groupIs( IpAddr( G ) );
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    record->versionIs( 1 );
    Ptr<IgmpHostSm> const machine = machineOf( other );
    ASSERT_EQ( device( "eth1" ).sent.size(), 1U );
    EXPECT_EQ( Support::describe( device( "eth1" ).sent[0].bytes ), "v2report 239.1.1.1" );
    machine->doPrepareToDie();
}

TEST_P( LifecycleTest, SecondEnableStartsFromZero ) {
    enable();
    exclude( G );
    EXPECT_EQ( status().v2ReportsSent(), 1U );
    Ptr<IgmpHostStatus> const first( &status() );
    enabledIs( false );
    enabledIs( true );
    EXPECT_NE( &status(), first.get() );
    EXPECT_EQ( status().numPacketInitialized(), 2U );
    EXPECT_EQ( status().v2ReportsSent(), 1U ); // the join that the second enable makes
    EXPECT_EQ( first->numPacketInitialized(), 2U );
}

TEST_P( LifecycleTest, GroupCallbacksOutliveTheDisabling ) {
    enable();
    exclude( G );
    Ptr<IgmpV3GroupCallbackSm> const callback = sm().v3GroupCallbackSm( IpAddr( G ) );
    ASSERT_NE( callback, nullptr );
    enabledIs( false );
    EXPECT_EQ( sm().v3GroupCallbackSm( IpAddr( G ) ), callback );
    enabledIs( true );
    EXPECT_EQ( sm().v3GroupCallbackSm( IpAddr( G ) ), callback );
}

TEST_P( LifecycleTest, KeptCallbackStillPassesTheRecordsMovesOn ) {
    enable();
    IgmpV3GroupRecord& record = exclude( G );
    enabledIs( false );
    enabledIs( true );
    takeSent();
    record.filterModeIs( IgmpV3GroupRecord::include );
    raise( record );
    settle();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
}

TEST_P( LifecycleTest, GroupReplacedWhileDisabledGoesUnheardAfterwards ) {
    enable();
    Ptr<IgmpV3GroupRecord> const dead( &exclude( G ) );
    enabledIs( false );
    host().v3groupDel( IpAddr( G ) );
    IgmpV3GroupRecord& record = exclude( G );
    enabledIs( true );
    takeSent();
    EXPECT_EQ( sm().v3GroupCallbackSm( IpAddr( G ) )->groupRecord(), dead.get() );
    record.filterModeIs( IgmpV3GroupRecord::include );
    raise( record );
    settle();
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( LifecycleTest, DisablingKeepsTemplatesAndOffsets ) {
    enable();
    Ptr<Zornet::Pkt> const v3Pkt = sm().v3ReportPkt();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    enabledIs( false );
    EXPECT_EQ( sm().v3ReportPkt(), v3Pkt );
    EXPECT_EQ( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( sm().offsetIgmpGroupRecStart(), 46 );
}

TEST_P( LifecycleTest, DisablingSendsNothing ) {
    for ( IgmpVersion const version : { igmpVersion1, igmpVersion2, igmpVersion3 } ) {
        enable( version );
        exclude( G );
        runFor( 20.0 );
        takeSent();
        enabledIs( false );
        runFor( 500.0 );
        EXPECT_THAT( takeSent(), IsEmpty() ) << version;
    }
}

TEST_P( LifecycleTest, DisablingTakesTheStatusOutOfItsDirectory ) {
    enable();
    Ptr<IgmpHostStatus> const kept( &status() );
    enabledIs( false );
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), nullptr );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    EXPECT_FALSE( kept->hasNotifiees() );
}

TEST_P( LifecycleTest, StatusThatStandsInTheDirectoryIsAdoptedWithItsCounters ) {
    Ptr<IgmpHostStatus> const standing = statusDir->igmpHostStatusIs( "host" );
    standing->v2ReportsSentIs( 41 );
    standing->numPacketInitializedIs( 100 );
    enable();
    EXPECT_EQ( sm().igmpHostStatus(), standing.get() );
    EXPECT_EQ( standing->v2ReportsSent(), 41U );
    EXPECT_EQ( standing->numPacketInitialized(), 102U );
}

TEST_P( LifecycleTest, StatusThatStandsInTheDirectoryGoesWhenADisabledHostArrives ) {
    statusDir->igmpHostStatusIs( "late" );
    addHost( "late", "10.0.0.2" );
    EXPECT_EQ( statusDir->igmpHostStatus( "late" ), nullptr );
}

TEST_P( LifecycleTest, EnablingWhatIsEnabledDoesNothing ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    enabledIs( true );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_EQ( status().numPacketInitialized(), 2U );
}

TEST_P( LifecycleTest, ForcedSecondEnableBuildsNewTemplatesAndKeepsTheCompanions ) {
    enable();
    auto const sender = sm().aggregatedSenderSm();
    auto const generalTimer = sm().igmpV3HostGeneralQueryTimerSm();
    Ptr<IgmpHostStatus> const kept( &status() );
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    sm().handleEnabled( true );
    settle();
    EXPECT_EQ( status().numPacketInitialized(), 4U );
    EXPECT_NE( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( sm().aggregatedSenderSm(), sender );
    EXPECT_EQ( sm().igmpV3HostGeneralQueryTimerSm(), generalTimer );
    EXPECT_EQ( &status(), kept.get() );
}

TEST_P( LifecycleTest, ForcedSecondDisableIsHarmless ) {
    sm().handleEnabled( false );
    EXPECT_FALSE( sm().enabled() );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
}

TEST_P( LifecycleTest, EnablingIsTracedWithTheConfiguredVersion ) {
    TraceCapture const trace( "IgmpHost", 0 );
    enable( igmpVersion3 );
    enabledIs( false );
    EXPECT_THAT(
        trace.texts(), ElementsAre(
                           "IgmpHost host enabled, version is: igmpVersion3",
                           "IgmpHost host disabled, version is: igmpVersion3"
                       )
    );
    EXPECT_THAT( trace.levels(), ElementsAre( 0, 0 ) );
}

TEST_P( LifecycleTest, DisabledHostLeavesNoTimerArmed ) {
    enable();
    armEverything();
    EXPECT_GT( wheel()->armedTimers(), 1U );
    enabledIs( false );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( LifecycleTest, DisabledVersion3HostLeavesNoTimerArmed ) {
    enable( igmpVersion3 );
    armEverything();
    enabledIs( false );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( LifecycleTest, DisablingStopsPeriodicReportingWhichACancelWouldRearm ) {
    for ( IgmpVersion const version : { igmpVersion1, igmpVersion2, igmpVersion3 } ) {
        host().enablePeriodicReportIs( true );
        settle();
        host().unsolicitedReportIntervalIs( 5.0 );
        settle();
        enable( version );
        exclude( G );
        runFor( 20.0 );
        enabledIs( false );
        EXPECT_EQ( wheel()->armedTimers(), 0U ) << version;
    }
}

TEST_P( LifecycleTest, MachineReadyToDieLeavesNoTimerArmed ) {
    enable();
    armEverything();
    sm().doPrepareToDie();
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    takeSent();
    TraceCapture const trace( "IgmpHost", 9 );
    runFor( 1000.0 );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( LifecycleTest, MachineReadyToDieIsAsADisabledOneThoughItsHostIsEnabled ) {
    enable();
    sm().doPrepareToDie();
    EXPECT_TRUE( host().enabled() );
    EXPECT_FALSE( sm().enabled() );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    EXPECT_EQ( sm().txPam(), nullptr );
    EXPECT_NE( dirSm->igmpHostSm( "host" ), nullptr );
}

TEST_P( LifecycleTest, MachineReadyToDieHearsNothingFromItsDevice ) {
    enable();
    sm().doPrepareToDie();
    TraceCapture const trace( "IgmpHost", 9 );
    hearQuery( 100 );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( LifecycleTest, MachineReadyToDieDropsWhatAnOutsidePamGives ) {
    Ptr<FedPam> const fed( new FedPam );
    host().externalPamIs( true );
    settle();
    host().pamIs( fed );
    settle();
    enable();
    sm().doPrepareToDie();
    TraceCapture const trace( "IgmpHost", 9 );
    fed->feed( Lab::v2Report( IpAddr( "10.0.0.7" ), IpAddr( G ) ) );
    settle();
    EXPECT_EQ( fed->waiting(), 0U );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host disabled. dropping packet " ) );
}

TEST_P( LifecycleTest, ReadyToDieIsTraced ) {
    TraceCapture const trace( "IgmpHost", 9 );
    sm().doPrepareToDie();
    ASSERT_EQ( trace.texts().size(), 2U );
    EXPECT_EQ( trace.texts()[0], " host host" );
    EXPECT_EQ( trace.levels()[0], 8 );
    EXPECT_EQ( trace.texts()[1], "IgmpHost host disabled, version is: igmpVersion2" );
}

TEST_P( LifecycleTest, VlanAloneChangesNothingOnTheWire ) {
    enable();
    exclude( G );
    host().vlanIdIs( 100 );
    host().taggedIs( true );
    settle();
    exclude( "239.1.1.2" );
    ASSERT_EQ( sent().size(), 2U );
    EXPECT_EQ( sent()[1].bytes.size(), sent()[0].bytes.size() );
    EXPECT_EQ( sm().offsetIpHeader(), 14 );
    host().intfConfigVersionIs( 2 );
    settle();
    exclude( "239.1.1.3" );
    EXPECT_EQ( sent()[2].bytes.size(), sent()[0].bytes.size() + 4 );
}

TEST_P( LifecycleTest, MtuTakesEffectWithEitherGeneration ) {
    enable();
    host().mtuIs( 600 );
    settle();
    EXPECT_EQ( sm().mtu(), 1514U );
    host().configVersionIs( 1 );
    settle();
    EXPECT_EQ( sm().mtu(), 600U );
    host().mtuIs( 700 );
    settle();
    EXPECT_EQ( sm().mtu(), 600U );
    host().intfConfigVersionIs( 2 );
    settle();
    EXPECT_EQ( sm().mtu(), 700U );
}

TEST_P( LifecycleTest, HostsOfOneSecondSeedTheDelaysAlike ) {
    runUntilElapsed( 10.25 );
    addHost( "b", "10.0.0.2" );
    double const first = drand48();
    double const second = drand48();
    runUntilElapsed( 10.875 );
    addHost( "c", "10.0.0.3" );
    EXPECT_EQ( drand48(), first );
    EXPECT_EQ( drand48(), second );
    runUntilElapsed( 11.0 );
    addHost( "d", "10.0.0.4" );
    EXPECT_NE( drand48(), first );
}

TEST_P( LifecycleTest, DelaysAreSeededWithTheClocksWholeSeconds ) {
    runUntilElapsed( 10.875 );
    addHost( "b", "10.0.0.2" );
    double const drawn = drand48();
    srand48( 1010 );
    EXPECT_EQ( drawn, drand48() );
}

TEST_P( LifecycleTest, EnablingDoesNotSeedTheDelays ) {
    srand48( 77 );
    enable();
    double const drawn = drand48();
    srand48( 77 );
    EXPECT_EQ( drawn, drand48() );
}

TEST_P( LifecycleTest, EndOfAMachineSilencesItsReactors ) {
    enable();
    armEverything();
    Ptr<IgmpHostStatus> const kept( &status() );
    Ptr<Zornet::EthDevPam> const pam = sm().txPam();
    dirSm->igmpHostSmDel( "host" );
    takeSent();
    TraceCapture const trace( "IgmpHost", 9 );
    host().configVersionIs( 9 );
    host().igmpVersionIs( igmpVersion3 );
    kept->igmpVersionIs( igmpVersion1 );
    hearQuery( 100 );
    runFor( 1000.0 );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_FALSE( host().hasNotifiees() || kept->hasNotifiees() || pam->hasNotifiees() );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( LifecycleTest, EndOfAMachineAloneKeepsItsStatus ) {
    enable();
    dirSm->igmpHostSmDel( "host" );
    EXPECT_NE( statusDir->igmpHostStatus( "host" ), nullptr );
}

TEST_P( LifecycleTest, NothingOfADisabledAndDroppedHostIsKept ) {
    enable( igmpVersion3 );
    armEverything();
    Ptr<IgmpHostStatus> const kept( &status() );
    auto const sender = sm().aggregatedSenderSm();
    dir->igmpHostDel( "host" );
    settle();
    EXPECT_EQ( kept->references(), 1U + 2U ); // this test's, and two of the sender that it holds
    EXPECT_EQ( sender->references(), 1U );
}

TEST_P( LifecycleTest, MachineWithoutAHostEndsTheProcess ) {
    EXPECT_DEATH(
        igmpHostSmFactory( nullptr, "other", nullptr, wheel(), statusDir, dirSm.get() ),
        assertionText( "null Ptr" )
    );
}

TEST_P( LifecycleTest, CompanionsAskedForWithOtherParametersAreRefused ) {
    enable();
    Ptr<IgmpHost> const otherHost = igmpHostFactory( "other" );
    Ptr<IgmpHostStatus> const otherStatus = igmpHostStatusFactory( "other" );
    Ptr<Lumo::TimerWheel const> const otherWheel( new Lumo::TimerWheel );
    using Refused = Kiv::NameInUseException;
    EXPECT_THROW( sm().aggregatedSenderSmIs( nullptr, otherWheel, &host(), &status() ), Refused );
    EXPECT_THROW( sm().aggregatedSenderSmIs( nullptr, wheel(), otherHost, &status() ), Refused );
    EXPECT_THROW( sm().igmpV3HostGeneralQueryTimerSmIs( nullptr, wheel(), &host(), otherStatus ), Refused );
    EXPECT_NO_THROW( sm().igmpV3HostGeneralQueryTimerSmIs( nullptr, wheel(), &host(), &status() ) );
}

/// Writes down the messages that begin with one of `keys`, each with what stands of the machine by then.
class Progress : public TraceCapture {
  public:
    Progress( IgmpHostSm& sm, IgmpHostStatusDir& statuses, std::vector<std::string> keys )
        : TraceCapture( "IgmpHost", 9 ), sm_( sm ), statuses_( statuses ), keys_( std::move( keys ) ) {}

    void message( Quillog::MsgDesc const& desc, std::string_view text ) override {
        TraceCapture::message( desc, text );
        for ( std::string const& key : keys_ ) {
            if ( text.starts_with( key ) ) {
                note( key );
            }
        }
    }
    void note( std::string const& step ) { steps.push_back( step + ":" + state() ); }

    std::vector<std::string> steps;

  private:
    std::string state() const {
        std::string text;
        auto const add = [&text]( bool stands, char const* what ) {
            text += stands ? std::string( " " ) + what : "";
        };
        add( sm_.groupTimerSm().size() != 0, "groupTimers" );
        add( Kiv::isFinite( sm_.v1RouterPresentTimer()->timeMin() ), "v1Timer" );
        add( Kiv::isFinite( sm_.v2RouterPresentTimer()->timeMin() ), "v2Timer" );
        add( sm_.aggregatedSenderSm() != nullptr, "sender" );
        add( sm_.igmpV3HostGeneralQueryTimerSm() != nullptr, "generalTimer" );
        add( sm_.v3GroupQueryTimerSm().size() != 0, "queryTimers" );
        add( sm_.igmpHostStatus() != nullptr, "status" );
        add( statuses_.igmpHostStatus( "host" ) != nullptr, "entry" );
        add( sm_.enabled(), "enabled" );
        return text;
    }

    IgmpHostSm& sm_;
    IgmpHostStatusDir& statuses_;
    std::vector<std::string> keys_;
};

/// Runs a piece of the test whenever a status comes or goes.
class StatusDirProbe : public IgmpHostStatusDir::Notifiee {
  public:
    StatusDirProbe( Ptr<IgmpHostStatusDir> const& statuses, std::function<void()> then )
        : Notifiee( statuses ), then_( std::move( then ) ) {
        isRegisteredNotifieeIs( true );
    }
    void onIgmpHostStatus( Kiv::Name ) override { then_(); }

  private:
    std::function<void()> then_;
};

/// The two sequences from inside, step by step.
class LifecycleInline : public Support::HostTest {
  protected:
    LifecycleInline() {
        host().externalPamIs( true );
        host().pamIs( fed );
    }
    void feed( Lab::Bytes const& igmp ) {
        fed->feed( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), igmp ) );
    }
    static Lab::Bytes query( Zornet::U8 code ) {
        return Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr() );
    }

    Ptr<FedPam> const fed{ new FedPam };
};

TEST_F( LifecycleInline, EnableSequenceRunsInOrder ) {
    host().igmpVersionIs( igmpVersion3 );
    host().enablePeriodicReportIs( true );
    exclude( G );
    Progress progress(
        sm(), *statusDir,
        { "IgmpHost host enabled", "Packet buffer allocated", "Setting timer to expire in inf",
          " Setting pam to external parameter", "aggregated timer schedule a delay",
          "Host host igmp version set", " host host set to", "IgmpHost host handleGroup" }
    );
    Ptr<StatusDirProbe> const probe( new StatusDirProbe( statusDir, [&] { progress.note( "status" ); } ) );
    host().enabledIs( true );
    std::string const companions = " sender generalTimer status entry";
    EXPECT_THAT(
        progress.steps,
        ElementsAre(
            "IgmpHost host enabled:", "status: entry", "Packet buffer allocated: status entry",
            "Packet buffer allocated: status entry", "Setting timer to expire in inf: status entry",
            " Setting pam to external parameter:" + companions + " enabled",
            "aggregated timer schedule a delay:" + companions + " enabled",
            "Host host igmp version set:" + companions + " enabled",
            " host host set to:" + companions + " enabled",
            "IgmpHost host handleGroup: sender generalTimer queryTimers status entry enabled"
        )
    );
}

TEST_F( LifecycleInline, EnabledHostHasTemplatesBeforeItsCompanions ) {
    Ptr<Zornet::Pkt> const old = sm().v3ReportPkt();
    bool ready = false;
    class Hook : public TraceCapture {
      public:
        explicit Hook( std::function<void()> then )
            : TraceCapture( "IgmpHost", 9 ), then_( std::move( then ) ) {}
        void message( Quillog::MsgDesc const&, std::string_view text ) override {
            if ( text == "Setting timer to expire in inf" ) {
                then_();
            }
        }

      private:
        std::function<void()> then_;
    };
    Hook const hook( [&] { ready = sm().v3ReportPkt() != old && sm().v2ReportPkt() != nullptr; } );
    host().enabledIs( true );
    EXPECT_TRUE( ready );
}

TEST_F( LifecycleInline, DisableSequenceRunsInOrder ) {
    host().igmpVersionForcedIs( true );
    host().enablePeriodicReportIs( true );
    host().unsolicitedReportIntervalIs( 5.0 );
    enable( igmpVersion3 );
    exclude( G );
    feed( query( 0 ) );
    feed( query( 100 ) );
    Progress progress(
        sm(), *statusDir,
        { "IgmpHost host disabled", " tstate : timerDisabled", "Setting timer to expire in inf",
          "Setting timer for 125", " Setting pam to external parameter" }
    );
    Ptr<StatusDirProbe> const probe( new StatusDirProbe( statusDir, [&] { progress.note( "status" ); } ) );
    host().enabledIs( false );
    EXPECT_THAT(
        progress.steps,
        ElementsAre(
            "IgmpHost host disabled: groupTimers v1Timer v2Timer sender generalTimer queryTimers status "
            "entry enabled",
            " tstate : timerDisabled: groupTimers v1Timer v2Timer sender generalTimer queryTimers status "
            "entry enabled",
            "Setting timer to expire in inf: sender generalTimer queryTimers status entry enabled",
            "Setting timer for 125: generalTimer queryTimers status entry enabled", "status: enabled",
            " Setting pam to external parameter:"
        )
    );
}

TEST_F( LifecycleInline, GroupTimersAreStoppedOneByOneBeforeTheyGo ) {
    enable();
    for ( char const* group : { G, "239.1.1.2", "239.1.1.3" } ) {
        exclude( group );
    }
    Progress progress( sm(), *statusDir, { " tstate : timerDisabled" } );
    host().enabledIs( false );
    EXPECT_EQ( progress.steps.size(), 3U );
    EXPECT_THAT( progress.steps, ::testing::Each( ::testing::HasSubstr( " groupTimers" ) ) );
}

TEST_F( LifecycleInline, MachineThatEndsWithinAWalkOfItsHostHearsNoMoreOfIt ) {
    class Remover : public IgmpHost::Notifiee {
      public:
        Remover( Ptr<IgmpHost> const& watched, IgmpHostDir& hosts ) : Notifiee( watched ), hosts_( hosts ) {
            isRegisteredNotifieeIs( true );
        }
        void onConfigVersion() override { hosts_.igmpHostDel( name() ); }

      private:
        IgmpHostDir& hosts_;
    };
    Ptr<IgmpHost> const late = dir->newIgmpHost( "late" );
    Ptr<Remover> const remover( new Remover( late, *dir ) ); // told before the machine's own reactor
    dir->igmpHostNotify( "late" );
    TraceCapture const trace( "IgmpHost", 9 );
    late->configVersionIs( 1 );
    EXPECT_EQ( dirSm->igmpHostSm( "late" ), nullptr );
    EXPECT_FALSE( trace.contains( "Packet buffer allocated" ) );
}

TEST_F( LifecycleInline, HostEnabledByAWatcherOfItsStatusEndsAsTheLastWord ) {
    // A watcher that switches the host off while it is being enabled: what it did is overrun by the rest of
    // the sequence, so that the machine is enabled and its host is not.
    Ptr<StatusDirProbe> const probe( new StatusDirProbe( statusDir, [&] { host().enabledIs( false ); } ) );
    host().enabledIs( true );
    EXPECT_FALSE( host().enabled() );
    EXPECT_TRUE( sm().enabled() );
}

} // namespace
