/// The root of the emulation: which hosts of the directory have a machine, and when one is made or dropped.

#include "engine/IgmpHostDirSm.h"

#include <sstream>

#include "engine/KivIgmpHostDir.h"
#include "tests/platform/zornet/AssertionText.h"
#include "tests/support/DeliveryTest.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::assertionText;

/// The messages of one level.
std::vector<std::string>
ofLevel( TraceCapture const& trace, int level ) {
    std::vector<std::string> texts;
    for ( std::size_t i = 0; i < trace.texts().size(); ++i ) {
        if ( trace.levels()[i] == level ) {
            texts.push_back( trace.texts()[i] );
        }
    }
    return texts;
}

class HostDirSmTest : public Support::DeliveryTest {
  protected:
    Ptr<IgmpHostDirSm> machinesOf( Ptr<IgmpHostDir> const& hosts ) {
        return igmpHostDirSmFactory( nullptr, hosts, statusDir, wheel() );
    }
    void removeHost( char const* name = "host" ) {
        dir->igmpHostDel( name );
        settle();
    }
};
INSTANTIATE_DELIVERY_TESTS( HostDirSmTest );

TEST_P( HostDirSmTest, EmptyDirectoryGetsNoMachines ) {
    Ptr<IgmpHostDirSm> const machines = machinesOf( igmpHostDirFactory( "empty" ) );
    EXPECT_TRUE( machines->initialized() );
    EXPECT_EQ( machines->igmpHostSms(), 0U );
}

TEST_P( HostDirSmTest, AbsentDirectoryGetsNoMachines ) {
    Ptr<IgmpHostDirSm> const machines = machinesOf( nullptr );
    EXPECT_EQ( machines->igmpHostDir(), nullptr );
    machines->handleIgmpHostDir();
    machines->handleIgmpHostDir( "host" );
    EXPECT_EQ( machines->igmpHostSms(), 0U );
}

TEST_P( HostDirSmTest, HoldsWhatItWasMadeWith ) {
    EXPECT_EQ( dirSm->igmpHostDir(), dir.get() );
    EXPECT_EQ( dirSm->igmpHostStatusDir(), statusDir );
    EXPECT_EQ( dirSm->timerWheel().get(), wheel().get() );
    EXPECT_TRUE( dirSm->hasNotificationActive() );
    EXPECT_EQ( sm().igmpHostDirSm(), dirSm.get() );
    EXPECT_EQ( sm().igmpHost(), &host() );
    EXPECT_EQ( sm().igmpHostStatusDir(), statusDir );
    EXPECT_EQ( sm().timerWheel().get(), wheel().get() );
    EXPECT_EQ( sm().name(), Kiv::Name( "host" ) );
}

TEST_P( HostDirSmTest, HostsAlreadyThereGetTheirMachinesInTheOrderOfTheWalk ) {
    Ptr<IgmpHostDir> const hosts = igmpHostDirFactory( "hosts" );
    for ( char const* name : { "a", "b", "c", "d", "e" } ) {
        hosts->igmpHostIs( name );
    }
    std::vector<std::string> inOrder;
    for ( IgmpHost const& host : hosts->igmpHost() ) {
        inOrder.push_back( " Creating IgmpHostSm for " + std::string( host.name().view() ) );
    }
    TraceCapture const trace( "IgmpHost", 2 );
    Ptr<IgmpHostDirSm> const machines = machinesOf( hosts );
    EXPECT_EQ( machines->igmpHostSms(), 5U );
    EXPECT_EQ( ofLevel( trace, 2 ), inOrder );
}

TEST_P( HostDirSmTest, ArrivingHostGetsAMachine ) {
    TraceCapture const trace( "IgmpHost", 2 );
    IgmpHost& late = addHost( "late", "10.0.0.2" );
    ASSERT_NE( dirSm->igmpHostSm( "late" ), nullptr );
    EXPECT_EQ( dirSm->igmpHostSm( "late" )->igmpHost(), &late );
    EXPECT_EQ( dirSm->igmpHostSms(), 2U );
    EXPECT_THAT( ofLevel( trace, 2 ), ElementsAre( " Creating IgmpHostSm for late" ) );
}

TEST_P( HostDirSmTest, HostThatArrivesEnabledIsEnabledAtOnce ) {
    Ptr<IgmpHost> const late = dir->newIgmpHost( "late" );
    late->enabledIs( true );
    dir->igmpHostNotify( "late" );
    settle();
    EXPECT_TRUE( sm( "late" ).enabled() );
    EXPECT_NE( statusDir->igmpHostStatus( "late" ), nullptr );
}

TEST_P( HostDirSmTest, NoticeOfAHostWithAMachineChangesNothing ) {
    IgmpHostSm const* const before = &sm();
    TraceCapture const trace( "IgmpHost", 9 );
    dir->igmpHostNotify( "host" );
    settle();
    EXPECT_EQ( &sm(), before );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( HostDirSmTest, NoticeOfANameThatIsNowhereIsDropped ) {
    TraceCapture const trace( "IgmpHost", 9 );
    dir->igmpHostNotify( "nobody" );
    settle();
    EXPECT_EQ( dirSm->igmpHostSms(), 1U );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( HostDirSmTest, HostDeletedWhileEnabledIsDisabledFirst ) {
    enable();
    exclude( "239.1.1.1" );
    TraceCapture const trace( "IgmpHost", 9 );
    removeHost();
    EXPECT_EQ( dirSm->igmpHostSm( "host" ), nullptr );
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), nullptr );
    EXPECT_EQ( device().ports(), 0U );
    ASSERT_GE( trace.texts().size(), 3U );
    EXPECT_EQ( trace.texts()[0], "Deleting IgmpHostSm for host" );
    EXPECT_EQ( trace.levels()[0], 2 );
    EXPECT_EQ( trace.texts()[1], " host host" );
    EXPECT_EQ( trace.levels()[1], 8 );
    EXPECT_EQ( trace.texts()[2], "IgmpHost host disabled, version is: igmpVersion2" );
    EXPECT_EQ( trace.levels()[2], 0 );
}

TEST_P( HostDirSmTest, DyingMachineIsStillAMemberWhileItIsDisabled ) {
    class Onlooker : public IgmpHostStatusDir::Notifiee {
      public:
        Onlooker( Ptr<IgmpHostStatusDir> const& statuses, IgmpHostDirSm& machines )
            : Notifiee( statuses ), machines_( machines ) {
            isRegisteredNotifieeIs( true );
        }
        void onIgmpHostStatus( Kiv::Name name ) override { seen = machines_.igmpHostSm( name ); }
        Ptr<IgmpHostSm> seen;

      private:
        IgmpHostDirSm& machines_;
    };
    enable();
    IgmpHostSm const* const machine = &sm();
    Ptr<Onlooker> const onlooker( new Onlooker( statusDir, *dirSm ) );
    removeHost();
    EXPECT_EQ( onlooker->seen.get(), machine );
    onlooker->seen = nullptr;
}

TEST_P( HostDirSmTest, DeletedHostIsFreed ) {
    Ptr<IgmpHost> const last = dir->igmpHost( "host" );
    enable();
    exclude( "239.1.1.1" );
    removeHost();
    EXPECT_EQ( last->references(), 1U );
    EXPECT_FALSE( last->hasNotifiees() );
}

TEST_P( HostDirSmTest, HostThatComesBackGetsAMachineOfItsOwn ) {
    enable();
    removeHost();
    IgmpHost& again = addHost( "host", "10.0.0.9" );
    EXPECT_EQ( sm().igmpHost(), &again );
    EXPECT_FALSE( sm().enabled() );
}

TEST_P( HostDirSmTest, EmptiedDirectoryTakesSeveralArrivalsAtOnce ) {
    removeHost();
    for ( char const* name : { "a", "b", "c" } ) {
        dir->igmpHostIs( name );
    }
    settle();
    EXPECT_EQ( dirSm->igmpHostSms(), 3U );
}

TEST_P( HostDirSmTest, SecondSweepEndsTheProcess ) {
    EXPECT_DEATH( dirSm->handleIgmpHostDir(), assertionText( "igmpHostSms() == 0" ) );
}

TEST_P( HostDirSmTest, MachineIsGivenAgainForTheSameParameters ) {
    Ptr<IgmpHostSm> const machine = dirSm->igmpHostSm( "host" );
    EXPECT_EQ( dirSm->igmpHostSmIs( nullptr, "host", &host(), wheel(), statusDir ), machine );
    EXPECT_EQ( dirSm->igmpHostSms(), 1U );
}

/// The text of the NameInUseException that `call` raises.
template <class Call>
std::string
reinstantiation( Call call ) {
    try {
        call();
    } catch ( Kiv::NameInUseException const& exception ) {
        return exception.what();
    }
    return "no NameInUseException";
}

template <class T>
std::string
differs( char const* parameter, T const* given, T const* held ) {
    std::ostringstream text;
    text << "Reinstantiating the pointer interface where constructor parameter attribute _" << parameter
         << " has a different value of " << given << " than the current value of " << held << " not allowed";
    return text.str();
}

TEST_P( HostDirSmTest, AnotherHostUnderTheNameIsRefused ) {
    Ptr<IgmpHost> const other = igmpHostFactory( "host" );
    EXPECT_EQ(
        reinstantiation( [&] { dirSm->igmpHostSmIs( nullptr, "host", other, wheel(), statusDir ); } ),
        differs( "igmpHost", other.get(), &host() )
    );
}

TEST_P( HostDirSmTest, AnotherTimerWheelIsRefused ) {
    Ptr<Lumo::TimerWheel const> const other( new Lumo::TimerWheel );
    EXPECT_EQ(
        reinstantiation( [&] { dirSm->igmpHostSmIs( nullptr, "host", &host(), other, statusDir ); } ),
        differs<Lumo::TimerWheel>( "timerWheel", other.get(), wheel().get() )
    );
}

TEST_P( HostDirSmTest, AnotherStatusDirectoryIsRefused ) {
    Ptr<IgmpHostStatusDir> const other = igmpHostStatusDirFactory( "other" );
    EXPECT_EQ(
        reinstantiation( [&] { dirSm->igmpHostSmIs( nullptr, "host", &host(), wheel(), other ); } ),
        differs( "igmpHostStatusDir", other.get(), statusDir.get() )
    );
}

TEST_P( HostDirSmTest, FirstDifferingParameterIsNamed ) {
    Ptr<IgmpHost> const otherHost = igmpHostFactory( "host" );
    Ptr<Lumo::TimerWheel const> const otherWheel( new Lumo::TimerWheel );
    Ptr<IgmpHostStatusDir> const otherDir = igmpHostStatusDirFactory( "other" );
    EXPECT_EQ(
        reinstantiation( [&] { dirSm->igmpHostSmIs( nullptr, "host", otherHost, otherWheel, otherDir ); } ),
        differs( "igmpHost", otherHost.get(), &host() )
    );
    EXPECT_EQ(
        reinstantiation( [&] { dirSm->igmpHostSmIs( nullptr, "host", &host(), otherWheel, otherDir ); } ),
        differs<Lumo::TimerWheel>( "timerWheel", otherWheel.get(), wheel().get() )
    );
}

TEST_P( HostDirSmTest, ActivityIsTakenEvenWhereAParameterIsRefused ) {
    Ptr<Kiv::ActivityConfig> const activity( new Kiv::ActivityConfig );
    Ptr<IgmpHost> const other = igmpHostFactory( "host" );
    EXPECT_THROW(
        dirSm->igmpHostSmIs( activity, "host", other, wheel(), statusDir ), Kiv::NameInUseException
    );
    EXPECT_EQ( sm().kivFwkActivity(), activity );
    dirSm->igmpHostSmIs( nullptr, "host", &host(), wheel(), statusDir );
    EXPECT_EQ( sm().kivFwkActivity(), nullptr );
}

TEST_P( HostDirSmTest, RemovedMachineIsHandedBack ) {
    Ptr<IgmpHostSm> const machine = dirSm->igmpHostSm( "host" );
    EXPECT_EQ( dirSm->igmpHostSmDel( "nobody" ), nullptr );
    EXPECT_EQ( dirSm->igmpHostSmDel( "host" ), machine );
    EXPECT_EQ( dirSm->igmpHostSms(), 0U );
}

TEST_P( HostDirSmTest, MachinesAreRemovedUnderAnIteratorAndAltogether ) {
    addHost( "b", "10.0.0.2" );
    addHost( "c", "10.0.0.3" );
    dirSm->igmpHostSmDel( dirSm->igmpHostSm().begin() );
    EXPECT_EQ( dirSm->igmpHostSms(), 2U );
    dirSm->igmpHostSmDelAll();
    EXPECT_EQ( dirSm->igmpHostSms(), 0U );
}

TEST_P( HostDirSmTest, NotificationsAreSwitchedForTheRootAndItsReactor ) {
    dirSm->hasNotificationActiveIs( false );
    EXPECT_FALSE( sm().hasNotificationActive() );
    dir->igmpHostIs( "unheard" );
    settle();
    EXPECT_EQ( dirSm->igmpHostSm( "unheard" ), nullptr );
    dirSm->hasNotificationActiveIs( true );
    dir->igmpHostNotify( "unheard" );
    settle();
    EXPECT_NE( dirSm->igmpHostSm( "unheard" ), nullptr );
}

TEST_P( HostDirSmTest, EndOfTheRootDisablesNoHost ) {
    enable();
    exclude( "239.1.1.1" );
    Ptr<IgmpHostStatus> const kept( &status() );
    TraceCapture const trace( "IgmpHost", 9 );
    dirSm = nullptr;
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), kept );
    EXPECT_FALSE( kept->hasNotifiees() );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( HostDirSmTest, EndOfTheRootLeavesNoTimerAndNoReactor ) {
    enable();
    exclude( "239.1.1.1" );
    hearQuery( 100 );
    dirSm = nullptr;
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    EXPECT_FALSE( host().hasNotifiees() );
    EXPECT_FALSE( dir->hasNotifiees() );
}

TEST_P( HostDirSmTest, EndOfTheRootLetsGoOfTheDevices ) {
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    addHost( "untagged", "10.0.0.2", "eth1" ).enabledIs( true );
    settle();
    enable();
    ASSERT_EQ( device().ports() + device( "eth1" ).ports(), 2U );
    dirSm = nullptr;
    EXPECT_EQ( device().ports() + device( "eth1" ).ports(), 0U );
}

TEST_P( HostDirSmTest, HostWhoseMachineCannotBeMadeIsNoMember ) {
    device( "eth1" ).onOpening = [] { Kiv::throwInternalException( "no such port" ); };
    Ptr<IgmpHost> const late = dir->newIgmpHost( "late" );
    late->deviceNameIs( "eth1" );
    late->intfConfigVersionIs( 1 );
    late->enabledIs( true );
    EXPECT_THROW( dirSm->handleIgmpHostDir( "late" ), Kiv::InternalException );
    EXPECT_EQ( dirSm->igmpHostSm( "late" ), nullptr );
    EXPECT_FALSE( late->hasNotifiees() );
    EXPECT_EQ( device( "eth1" ).ports(), 0U );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( HostDirSmTest, HostWhoseMachineCannotBeMadeDoesNotStopTheWriter ) {
    device( "eth1" ).onOpening = [] { Kiv::throwInternalException( "no such port" ); };
    Ptr<IgmpHost> const late = dir->newIgmpHost( "late" );
    late->deviceNameIs( "eth1" );
    late->intfConfigVersionIs( 1 );
    late->enabledIs( true );
    EXPECT_NO_THROW( dir->igmpHostNotify( "late" ) );
    EXPECT_NO_THROW( settle() );
    EXPECT_EQ( dirSm->igmpHostSm( "late" ), nullptr );
}

/// An activity of its own that holds back what it is told, to see who is told through it.
class HostOnItsOwnActivity : public Support::HostTest {
  protected:
    HostOnItsOwnActivity() {
        enable();
        own->activitySm().deferredDeliveryIs( true );
        dirSm->igmpHostSmIs( own, "host", &host(), wheel(), statusDir );
    }
    void runOwn() { own->activitySm().runFor( 0.0 ); }

    Ptr<Kiv::ActivityConfig> const own{ new Kiv::ActivityConfig };
};

TEST_F( HostOnItsOwnActivity, HearsOfItsConfigurationThere ) {
    host().enabledIs( false );
    EXPECT_TRUE( sm().enabled() );
    runOwn();
    EXPECT_FALSE( sm().enabled() );
}

TEST_F( HostOnItsOwnActivity, HearsOfItsStatusThere ) {
    host().unsolicitedReportIntervalIs( 5.0 );
    runOwn();
    status().unsolicitedReportIntervalIs( 7.0 );
    status().igmpVersionIs( igmpVersion1 );
    EXPECT_EQ( status().unsolicitedReportInterval(), 7.0 );
    runOwn();
    EXPECT_EQ( status().unsolicitedReportInterval(), 5.0 );
}

TEST_F( HostOnItsOwnActivity, HearsOfItsPacketsThere ) {
    hearReport( "239.1.1.1" );
    EXPECT_EQ( status().v12ReportReceived(), 0U );
    runOwn();
    EXPECT_EQ( status().v12ReportReceived(), 1U );
}

TEST_F( HostOnItsOwnActivity, HearsOfItsRouterPresentTimersThere ) {
    TraceCapture trace( "IgmpHost", 9 );
    sm().v1RouterPresentTimer()->timeMinIs( Kiv::now() + 1.0 );
    sm().v2RouterPresentTimer()->timeMinIs( Kiv::now() + 1.0 );
    runFor( 2.0 );
    EXPECT_FALSE( trace.contains( "router present timer" ) );
    runOwn();
    EXPECT_TRUE( trace.contains( "for v1 router present timer" ) );
    EXPECT_TRUE( trace.contains( "for v2 router present timer" ) );
}

class HostDirSmInline : public Support::HostTest {};

TEST_F( HostDirSmInline, ReplacedHostGetsANewMachine ) {
    enable();
    dir->igmpHostDel( "host" );
    Ptr<IgmpHost> const replacement = dir->igmpHostIs( "host" );
    EXPECT_EQ( sm().igmpHost(), replacement.get() );
    EXPECT_FALSE( sm().enabled() );
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), nullptr );
}

TEST_F( HostDirSmInline, ReactorSweepsWhenItMovesToAnotherDirectory ) {
    Ptr<IgmpHostDirSm> const machines = igmpHostDirSmFactory( nullptr, dir, statusDir, wheel() );
    machines->igmpHostSmDelAll();
    Ptr<IgmpHostDirSm::KivIgmpHostDir> const reactor(
        new IgmpHostDirSm::KivIgmpHostDir( igmpHostDirFactory( "other" ), machines.get() )
    );
    reactor->notifierIs( dir );
    EXPECT_EQ( machines->igmpHostSms(), 1U );
    reactor->notifierIs( dir ); // a second sweep would end the process
    reactor->notifierIs( nullptr );
    EXPECT_EQ( machines->igmpHostSms(), 1U );
}

TEST_F( HostDirSmInline, ReactorThatIsAZombieOrWasCutSweepsNothing ) {
    Ptr<IgmpHostDirSm> const machines = igmpHostDirSmFactory( nullptr, dir, statusDir, wheel() );
    machines->igmpHostSmDelAll();
    Ptr<IgmpHostDir> const other = igmpHostDirFactory( "other" );
    Ptr<IgmpHostDirSm::KivIgmpHostDir> const zombie(
        new IgmpHostDirSm::KivIgmpHostDir( other, machines.get() )
    );
    zombie->kivDoZombieReactors( true );
    zombie->notifierIs( dir );
    Ptr<IgmpHostDirSm::KivIgmpHostDir> const cut( new IgmpHostDirSm::KivIgmpHostDir( other, machines.get() )
    );
    cut->igmpHostDirSmDel();
    cut->notifierIs( dir );
    cut->onIgmpHost( "host" );
    EXPECT_EQ( machines->igmpHostSms(), 0U );
}

class HostDirSmDeferred : public Support::DeliveryHostTest {
  protected:
    HostDirSmDeferred() : DeliveryHostTest( Delivery::isDeferred ) {}
};

TEST_F( HostDirSmDeferred, HostReplacedWithinOneDeliveryKeepsTheMachineOfTheOldOne ) {
    enable();
    Ptr<IgmpHost> const old( &host() );
    dir->igmpHostDel( "host" );
    Ptr<IgmpHost> const replacement = dir->igmpHostIs( "host" );
    settle();
    EXPECT_EQ( sm().igmpHost(), old.get() );
    EXPECT_TRUE( sm().enabled() );
    EXPECT_NE( dir->igmpHost( "host" ), old );
}

TEST_F( HostDirSmDeferred, HostThatComesAndGoesWithinOneDeliveryIsNeverTakenUp ) {
    TraceCapture const trace( "IgmpHost", 9 );
    dir->igmpHostIs( "fleeting" );
    dir->igmpHostDel( "fleeting" );
    settle();
    EXPECT_EQ( dirSm->igmpHostSms(), 1U );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_F( HostDirSmDeferred, TwoArrivalsWithinOneDeliveryEndTheProcessOnceThereIsAMachine ) {
    dir->igmpHostIs( "a" );
    dir->igmpHostIs( "b" );
    EXPECT_DEATH( settle(), assertionText( "igmpHostSms() == 0" ) );
    dir->igmpHostDel( "b" );
    dirSm->hasNotificationActiveIs( false ); // what waits must not be delivered when the test ends
    dirSm = nullptr;
}

} // namespace
