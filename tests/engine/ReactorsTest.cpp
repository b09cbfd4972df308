/// Which change of a host, its status, its receive side or its timers runs which handlers, and in what order.
/// The handlers are known by what they trace.

#include "engine/host/Reactors.h"

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
using Zornet::IpAddr;

constexpr char const* G = "239.1.1.1";

using Log = std::vector<std::string>;

/// A handler and how its trace begins and ends.
struct Mark {
    char const* begins;
    char const* handler;
    char const* ends = "";
};
constexpr Mark marks[] = {
    { "IgmpHost host enabled", "handleEnabled" },
    { "IgmpHost host disabled, version", "handleEnabled" },
    { "Packet buffer allocated", "template" },
    { " Setting pam to external parameter", "handleIntfConfig" },
    { " External Pam is NULL", "handleIntfConfig" },
    { "Host host igmp version set to", "handleIgmpVersion" },
    { "Host host transition to", "handleV2V3Compatibility" },
    { " host host set to ", "setUnsolicitedReportIntvl", " after configuration " },
    { " host host set to ", "setIntervalValue" },
    { "IgmpHost host handleGroup", "handleV3Group" },
    { "aggregated timer schedule a delay", "handleContinueUnsolicitedReport" },
    { "IgmpHost host blocked. dropping packet ", "handlePamReadable" },
    { "IgmpHost host received query", "handleV12Query" },
    { "for v1 router present timer", "handleV1RouterPresentTimer" },
    { "for v2 router present timer", "handleV2RouterPresentTimer" },
};

/// The handlers that have run, by the traces that begin with these words.
class Handlers : public TraceCapture {
  public:
    Handlers() : TraceCapture( "IgmpHost", 9 ) {}

    Log ran() const {
        Log names;
        for ( std::string const& text : texts() ) {
            for ( Mark const& mark : marks ) {
                if ( text.starts_with( mark.begins ) && text.ends_with( mark.ends ) ) {
                    names.emplace_back( mark.handler );
                    break;
                }
            }
        }
        return names;
    }
};

/// An enabled host with a Pam from outside and two groups, each told of once.
class ReactorsTest : public Support::DeliveryTest {
  protected:
    ReactorsTest() {
        host().externalPamIs( true );
        settle();
        host().pamIs( fed );
        settle();
        enable();
        exclude( G );
        exclude( "239.1.1.2" );
    }

    /// What runs for one change.
    template <class Change>
    Log ranFor( Change change ) {
        Handlers const handlers;
        change();
        settle();
        return handlers.ran();
    }

    Ptr<FedPam> const fed{ new FedPam };
};
INSTANTIATE_DELIVERY_TESTS( ReactorsTest );

TEST_P( ReactorsTest, ConfigVersion ) {
    EXPECT_THAT( ranFor( [&] { host().configVersionIs( 5 ); } ), ElementsAre( "template", "template" ) );
}

TEST_P( ReactorsTest, IntfConfigVersion ) {
    EXPECT_THAT(
        ranFor( [&] { host().intfConfigVersionIs( 5 ); } ),
        ElementsAre( "handleIntfConfig", "template", "template" )
    );
}

TEST_P( ReactorsTest, ExternalPam ) {
    host().externalPamIs( false );
    settle();
    EXPECT_THAT( ranFor( [&] { host().externalPamIs( true ); } ), ElementsAre( "handleIntfConfig" ) );
}

TEST_P( ReactorsTest, Pam ) {
    EXPECT_THAT( ranFor( [&] { host().pamIs( nullptr ); } ), ElementsAre( "handleIntfConfig" ) );
}

TEST_P( ReactorsTest, Enabled ) {
    EXPECT_THAT(
        ranFor( [&] { host().enabledIs( false ); } ), ElementsAre( "handleEnabled", "handleIntfConfig" )
    );
    EXPECT_THAT(
        ranFor( [&] { host().enabledIs( true ); } ),
        ElementsAre(
            "handleEnabled", "template", "template", "handleIntfConfig", "handleIgmpVersion", "handleV3Group",
            "handleV3Group"
        )
    );
}

TEST_P( ReactorsTest, IgmpVersionForced ) {
    EXPECT_THAT( ranFor( [&] { host().igmpVersionForcedIs( true ); } ), ElementsAre( "handleIgmpVersion" ) );
    EXPECT_THAT( ranFor( [&] { host().igmpVersionForcedIs( false ); } ), ElementsAre( "handleIgmpVersion" ) );
}

TEST_P( ReactorsTest, ProcessV3GroupChange ) {
    EXPECT_THAT( ranFor( [&] { host().processV3GroupChangeIs( false ); } ), IsEmpty() );
    EXPECT_THAT(
        ranFor( [&] { host().processV3GroupChangeIs( true ); } ),
        ElementsAre( "handleV3Group", "handleV3Group" )
    );
}

TEST_P( ReactorsTest, OneGroup ) {
    Handlers const handlers;
    host().v3groupIs( IpAddr( "239.1.1.3" ) );
    settle();
    EXPECT_THAT( handlers.ran(), ElementsAre( "handleV3Group" ) );
    EXPECT_TRUE( handlers.contains( "IgmpHost host handleGroup 239.1.1.3" ) );
}

TEST_P( ReactorsTest, NoticeOfAGroup ) {
    Handlers const handlers;
    host().v3groupNotify( IpAddr( G ) );
    settle();
    EXPECT_THAT( handlers.ran(), ElementsAre( "handleV3Group" ) );
    EXPECT_TRUE( handlers.contains( "IgmpHost host handleGroup 239.1.1.1" ) );
}

TEST_P( ReactorsTest, UnsolicitedReportInterval ) {
    EXPECT_THAT(
        ranFor( [&] { host().unsolicitedReportIntervalIs( 5.0 ); } ),
        ElementsAre( "setUnsolicitedReportIntvl" )
    );
    EXPECT_EQ( status().unsolicitedReportInterval(), 5.0 );
}

TEST_P( ReactorsTest, EnablePeriodicReport ) {
    host().unsolicitedReportIntervalIs( 5.0 );
    settle();
    EXPECT_THAT(
        ranFor( [&] { host().enablePeriodicReportIs( true ); } ),
        ElementsAre( "handleContinueUnsolicitedReport" )
    );
    EXPECT_TRUE( status().enablePeriodicReport() );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
    EXPECT_THAT( ranFor( [&] { host().enablePeriodicReportIs( false ); } ), IsEmpty() );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
}

TEST_P( ReactorsTest, AttributesThatAreOnlyReadOnUseRunNothing ) {
    EXPECT_THAT(
        ranFor( [&] {
            host().ipAddrIs( IpAddr( "10.0.0.9" ) );
            host().macAddrIs( Zornet::EthAddr( "02:00:00:00:00:09" ) );
            host().intfIdIs( Zornet::IntfId( "trunk" ) );
            host().nsIs( Zornet::NamespaceName( "blue" ) );
            host().deviceNameIs( "eth7" );
            host().vlanIdIs( 7 );
            host().taggedIs( true );
            host().useMuxIs( true );
            host().enableRouterAlertIs( false );
        } ),
        IsEmpty()
    );
    Handlers const handlers;
    host().blockedIs( true );
    host().directionIs( Bridging::AllowedTrafficDirection::egress );
    host().mtuIs( 600 );
    host().robustnessIs( 7 );
    host().v1RouterPresentTimeoutIs( 7.0 );
    host().v2RouterPresentTimeoutIs( 7.0 );
    host().v1MaxResponseTimeIs( 7 );
    settle();
    EXPECT_THAT( handlers.texts(), IsEmpty() );
}

TEST_P( ReactorsTest, VersionInForce ) {
    EXPECT_THAT(
        ranFor( [&] { status().igmpVersionIs( igmpVersion1 ); } ), ElementsAre( "setIntervalValue" )
    );
}

TEST_P( ReactorsTest, EqualVersionInForceRunsNothing ) {
    status().unsolicitedReportIntervalIs( 3.0 );
    EXPECT_THAT( ranFor( [&] { status().igmpVersionIs( igmpVersion2 ); } ), IsEmpty() );
    EXPECT_EQ( status().unsolicitedReportInterval(), 3.0 );
}

TEST_P( ReactorsTest, ContinueUnsolicitedReport ) {
    status().enablePeriodicReportIs( true );
    EXPECT_THAT(
        ranFor( [&] { status().continueUnsolicitedReportIs( true ); } ),
        ElementsAre( "handleContinueUnsolicitedReport" )
    );
}

TEST_P( ReactorsTest, OtherAttributesOfTheStatusRunNothing ) {
    Handlers const handlers;
    for ( Kiv::Attribute const& row : IgmpHostStatus::attributes() ) {
        if ( row.id != IgmpHostStatus::attrIgmpVersion &&
             row.id != IgmpHostStatus::attrContinueUnsolicitedReport ) {
            Kiv::attributeTextIs( row, status(), row.type->form == Kiv::ValueForm::boolean ? "true" : "77" );
        }
    }
    settle();
    EXPECT_THAT( handlers.texts(), IsEmpty() );
}

TEST_P( ReactorsTest, ReadableCount ) {
    host().blockedIs( true );
    EXPECT_THAT( ranFor( [&] { fed->readableCountInc( 1 ); } ), ElementsAre( "handlePamReadable" ) );
}

TEST_P( ReactorsTest, OtherAttributesOfThePamRunNothing ) {
    host().blockedIs( true );
    EXPECT_THAT(
        ranFor( [&] {
            fed->writableCountInc( 1 );
            fed->txDropsInc( 1 );
            fed->txErrorsInc( 1 );
            fed->rxErrorsInc( 1 );
        } ),
        IsEmpty()
    );
}

TEST_P( ReactorsTest, RouterPresentTimers ) {
    sm().v1RouterPresentTimer()->timeMinIs( Kiv::now() + 50.0 );
    sm().v2RouterPresentTimer()->timeMinIs( Kiv::now() + 60.0 );
    Handlers const handlers;
    runFor( 100.0 );
    EXPECT_THAT(
        handlers.ran(), ElementsAre(
                            "handleV1RouterPresentTimer", "handleV2V3Compatibility",
                            "handleV2RouterPresentTimer", "handleV2V3Compatibility"
                        )
    );
}

TEST_P( ReactorsTest, FirstPamIsNotReadFrom ) {
    host().pamIs( nullptr );
    settle();
    Ptr<FedPam> const fresh( new FedPam );
    fresh->place( Support::tightPkt( Lab::v2Report( IpAddr( "10.0.0.7" ), IpAddr( "239.9.9.9" ) ) ) );
    host().pamIs( fresh );
    settle();
    EXPECT_EQ( fresh->waiting(), 1U );
}

TEST_P( ReactorsTest, MoveFromOnePamToAnotherReadsOnce ) {
    Ptr<FedPam> const fresh( new FedPam );
    for ( int i = 0; i < 2; ++i ) {
        fresh->place( Support::tightPkt( Lab::v2Report( IpAddr( "10.0.0.7" ), IpAddr( "239.9.9.9" ) ) ) );
    }
    host().pamIs( fresh );
    settle();
    EXPECT_EQ( fresh->waiting(), 1U );
    EXPECT_EQ( status().v12ReportReceived(), 1U );
}

TEST_P( ReactorsTest, OldPamIsHeardNoMore ) {
    host().pamIs( new FedPam );
    settle();
    host().blockedIs( true );
    EXPECT_THAT( ranFor( [&] { fed->readableCountInc( 1 ); } ), IsEmpty() );
    EXPECT_FALSE( fed->hasNotifiees() );
}

TEST_P( ReactorsTest, FirstStatusRunsNothing ) {
    sm().igmpHostStatusIs( nullptr );
    Ptr<IgmpHostStatus> const other = igmpHostStatusFactory( "other" );
    other->enablePeriodicReportIs( true );
    other->continueUnsolicitedReportIs( true );
    EXPECT_THAT( ranFor( [&] { sm().igmpHostStatusIs( other ); } ), IsEmpty() );
}

TEST_P( ReactorsTest, MoveFromOneStatusToAnotherRunsItsHandlers ) {
    Ptr<IgmpHostStatus> const other = igmpHostStatusFactory( "other" );
    other->enablePeriodicReportIs( true );
    other->continueUnsolicitedReportIs( true );
    EXPECT_THAT(
        ranFor( [&] { sm().igmpHostStatusIs( other ); } ),
        ElementsAre( "handleContinueUnsolicitedReport", "setIntervalValue" )
    );
    EXPECT_EQ( sm().igmpHostStatus(), other.get() );
    EXPECT_THAT( ranFor( [&] { sm().igmpHostStatusIs( other ); } ), IsEmpty() );
}

/// The reactors by themselves, beside those of the machine. They deliver inline.
class BoundReactors : public Support::HostTest {
  protected:
    BoundReactors() {
        host().externalPamIs( true );
        host().pamIs( fed );
        host().enablePeriodicReportIs( true );
        host().unsolicitedReportIntervalIs( 5.0 );
        enable( igmpVersion3 );
        exclude( G );
    }
    template <class Reactor, class Notifier>
    Ptr<Reactor> reactorOn( Ptr<Notifier> const& notifier ) {
        return new Reactor( notifier, &sm() );
    }

    Ptr<FedPam> const fed{ new FedPam };
    Ptr<IgmpHost> const otherHost = igmpHostFactory( "other" );
};

TEST_F( BoundReactors, HostReactorRunsAllHandlersInOrderWhenItMoves ) {
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    status().igmpVersionIs( igmpVersion2 );
    status().unsolicitedReportIntervalIs( 9.0 );
    Handlers const handlers;
    reactor->notifierIs( Ptr<IgmpHost>( &host() ) );
    EXPECT_THAT(
        handlers.ran(), ElementsAre(
                            "handleIntfConfig",
                            "setIntervalValue", // of changeIgmpVersion, through the status
                            "setUnsolicitedReportIntvl",
                            // handleEnablePeriodicReport finds its work done
                            "handleEnabled", "template", "template", "handleIntfConfig", "handleIgmpVersion",
                            "handleV3Group", "handleV3Group", "handleIgmpVersion", "template", "template"
                        )
    );
}

TEST_F( BoundReactors, HostReactorTakesPeriodicReportingOverBeforeItEnables ) {
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    status().enablePeriodicReportIs( false );
    status().continueUnsolicitedReportIs( false );
    Handlers const handlers;
    reactor->notifierIs( Ptr<IgmpHost>( &host() ) );
    Log const ran = handlers.ran();
    auto const periodic = std::ranges::find( ran, "handleContinueUnsolicitedReport" );
    ASSERT_NE( periodic, ran.end() );
    EXPECT_EQ( *( periodic - 1 ), "setUnsolicitedReportIntvl" );
    EXPECT_EQ( *( periodic + 1 ), "handleEnabled" );
}

TEST_F( BoundReactors, ReactorThatIsMadeOrMovedToItsOwnNotifierOrToNoneRunsNothing ) {
    Handlers const handlers;
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    reactor->notifierIs( otherHost );
    reactor->notifierIs( nullptr );
    EXPECT_THAT( handlers.texts(), IsEmpty() );
}

TEST_F( BoundReactors, TimerReactorsRunTheirHandlersWhenTheyMove ) {
    Ptr<Lumo::TimerWheel const> const otherWheel( new Lumo::TimerWheel );
    auto const v1 = reactorOn<IgmpHostSm::KivV1RouterPresentTimer>( otherWheel );
    auto const v2 = reactorOn<IgmpHostSm::KivV2RouterPresentTimer>( otherWheel );
    Handlers const handlers;
    v1->notifierIs( wheel() );
    v2->notifierIs( wheel() );
    EXPECT_THAT(
        handlers.ran(), ElementsAre(
                            "handleV1RouterPresentTimer", "handleV2V3Compatibility",
                            "handleV2RouterPresentTimer", "handleV2V3Compatibility"
                        )
    );
}

TEST_F( BoundReactors, ZombieRunsNothing ) {
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    reactor->kivDoZombieReactors( true );
    Handlers const handlers;
    reactor->onConfigVersion();
    reactor->onIntfConfigVersion();
    reactor->onEnabled();
    reactor->onV3group( IpAddr( G ) );
    reactor->onV3group();
    reactor->notifierIs( Ptr<IgmpHost>( &host() ) );
    EXPECT_THAT( handlers.texts(), IsEmpty() );
}

TEST_F( BoundReactors, ReactorCutFromItsMachineRunsNothing ) {
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    reactor->igmpHostSmDel();
    Handlers const handlers;
    reactor->onIntfConfigVersion();
    reactor->onV3group( IpAddr( G ) );
    reactor->notifierIs( Ptr<IgmpHost>( &host() ) );
    EXPECT_THAT( handlers.texts(), IsEmpty() );
}

TEST_F( BoundReactors, SecondHandlerIsSkippedForAReactorThatTheFirstMadeAZombie ) {
    host().externalPamIs( false );
    auto const reactor = reactorOn<IgmpHostSm::KivIgmpHost>( otherHost );
    U32 const templates = status().numPacketInitialized();
    device().onOpening = [&] { reactor->kivDoZombieReactors( true ); };
    reactor->onIntfConfigVersion(); // reopens the device, and would build the templates
    device().onOpening = nullptr;
    EXPECT_EQ( status().numPacketInitialized(), templates );
}

TEST_F( BoundReactors, WriteOfTheVersionPutsItInForceBeforeTheQueriersAreForgotten ) {
    host().enablePeriodicReportIs( false );
    sm().v1RouterPresentTimer()->timeMinIs( Kiv::now() + 100.0 );
    Handlers const handlers;
    host().igmpVersionIs( igmpVersion1 );
    EXPECT_THAT( handlers.ran(), ElementsAre( "setIntervalValue", "handleIgmpVersion" ) );
    EXPECT_FALSE( Kiv::isFinite( sm().v1RouterPresentTimer()->timeMin() ) );
}

class ReactorsDeferred : public Support::DeliveryHostTest {
  protected:
    ReactorsDeferred() : DeliveryHostTest( Delivery::isDeferred ) {
        host().externalPamIs( true );
        settle();
        enable();
        exclude( G );
        exclude( "239.1.1.2" );
    }
};

TEST_F( ReactorsDeferred, SeveralAttributesAreToldOfInTheOrderOfTheirDeclaration ) {
    host().enablePeriodicReportIs( true );
    host().unsolicitedReportIntervalIs( 5.0 );
    host().v3groupNotify( IpAddr( G ) );
    host().igmpVersionForcedIs( true );
    Handlers const handlers;
    settle();
    Log const expected = {
        "template",
        "template", // configVersion
        "handleIntfConfig",
        "template",
        "template",         // intfConfigVersion
        "handleIntfConfig", // externalPam
        "handleIntfConfig", // pam
        "handleEnabled",
        "template",
        "template",
        "handleIntfConfig",
        "handleIgmpVersion",
        "handleV3Group",
        "handleV3Group",     // enabled
        "handleIgmpVersion", // igmpVersion
        "handleIgmpVersion", // igmpVersionForced
        "handleV3Group",
        "handleV3Group",                   // processV3GroupChange
        "handleV3Group",                   // v3group, the key that waits
        "setUnsolicitedReportIntvl",       // unsolicitedReportInterval
        "handleContinueUnsolicitedReport", // of the status, after all of the host's
        "handleV2RouterPresentTimer",      // which a periodic host of version 2 sets to now
    };
    EXPECT_EQ( handlers.ran(), expected );
}

TEST_F( ReactorsDeferred, SeveralGroupsAreToldOfAsOneSweep ) {
    exclude( "239.1.1.3" );
    host().v3groupNotify( IpAddr( G ) );
    host().v3groupNotify( IpAddr( "239.1.1.2" ) );
    Handlers const handlers;
    settle();
    EXPECT_THAT( handlers.ran(), ElementsAre( "handleV3Group", "handleV3Group", "handleV3Group" ) );
}

TEST_F( ReactorsDeferred, OneGroupThatChangesTwiceIsToldOfOnce ) {
    host().v3groupNotify( IpAddr( G ) );
    host().v3groupNotify( IpAddr( G ) );
    Handlers const handlers;
    settle();
    EXPECT_THAT( handlers.ran(), ElementsAre( "handleV3Group" ) );
}

TEST_F( ReactorsDeferred, SeveralAttributesOfTheStatusAreToldOfInOrder ) {
    status().enablePeriodicReportIs( true );
    status().continueUnsolicitedReportIs( true );
    status().igmpVersionIs( igmpVersion1 );
    Handlers const handlers;
    settle();
    EXPECT_THAT( handlers.ran(), ElementsAre( "setIntervalValue", "handleContinueUnsolicitedReport" ) );
}

TEST_F( ReactorsDeferred, SwitchOffAndOnWithinOneDeliveryIsAnotherEnabling ) {
    host().enabledIs( false );
    host().enabledIs( true );
    Handlers const handlers;
    settle();
    EXPECT_THAT( handlers.ran(), ::testing::Contains( "handleEnabled" ).Times( 1 ) );
    EXPECT_EQ( status().numPacketInitialized(), 4U );
}

TEST_F( ReactorsDeferred, ChangeThatWaitsWhenTheHostGoesIsNotDelivered ) {
    host().configVersionIs( 7 );
    dir->igmpHostDel( "host" );
    Handlers const handlers;
    settle();
    EXPECT_EQ( dirSm->igmpHostSm( "host" ), nullptr );
    EXPECT_EQ( handlers.ran().front(), "template" ) << "what was written first is told first";
}

} // namespace
