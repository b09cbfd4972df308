#include "model/IgmpHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"
#include "tests/platform/zornet/RangeMessage.h"

namespace Igmp {

using Bridging::AllowedTrafficDirection;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;

class IgmpHostTest : public ::testing::Test {
  protected:
    static inline IpAddr const group{ "239.1.1.1" };
    static inline IpAddr const otherGroup{ "239.1.1.2" };

    Ptr<IgmpHost> const host = igmpHostFactory( "host" );
    Log log;
    Ptr<HostWatcher> const watcher{ new HostWatcher( host, log ) };
};

TEST_F( IgmpHostTest, IsKnownByItsName ) {
    EXPECT_EQ( host->name(), Kiv::Name( "host" ) );
    EXPECT_EQ( host->fwkKey(), Kiv::Name( "host" ) );
    EXPECT_EQ( host->parent(), nullptr );
}

TEST_F( IgmpHostTest, NewHostAsksForVersion2WithRouterAlertAndIsDisabled ) {
    EXPECT_FALSE( host->enabled() );
    EXPECT_EQ( host->igmpVersion(), igmpVersion2 );
    EXPECT_FALSE( host->igmpVersionForced() );
    EXPECT_TRUE( host->enableRouterAlert() );
    EXPECT_TRUE( host->processV3GroupChange() );
    EXPECT_EQ( host->mtu(), 1514U );
    EXPECT_EQ( host->robustness(), 2U );
    EXPECT_EQ( host->v1RouterPresentTimeout(), 400.0 );
    EXPECT_EQ( host->v2RouterPresentTimeout(), 400.0 );
    EXPECT_EQ( host->v1MaxResponseTime(), 100 );
    EXPECT_EQ( host->unsolicitedReportInterval(), 0.0 );
    EXPECT_FALSE( host->enablePeriodicReport() );
}

TEST_F( IgmpHostTest, NewHostHasNoWayToTheWireAndNoGroups ) {
    EXPECT_EQ( host->configVersion(), 0U );
    EXPECT_EQ( host->intfConfigVersion(), 0U );
    EXPECT_EQ( host->intfId(), Zornet::IntfId() );
    EXPECT_TRUE( host->ns().empty() );
    EXPECT_TRUE( host->deviceName().empty() );
    EXPECT_FALSE( host->tagged() || host->useMux() || host->externalPam() || host->blocked() );
    EXPECT_EQ( host->direction(), AllowedTrafficDirection::both );
    EXPECT_EQ( host->pam(), nullptr );
    EXPECT_EQ( host->v3groups(), 0U );
}

TEST_F( IgmpHostTest, NumbersOfTheDirections ) {
    EXPECT_EQ( static_cast<U32>( AllowedTrafficDirection::both ), 0U );
    EXPECT_EQ( static_cast<U32>( AllowedTrafficDirection::ingress ), 1U );
    EXPECT_EQ( static_cast<U32>( AllowedTrafficDirection::egress ), 2U );
}

TEST_F( IgmpHostTest, ConstantsAreFixedByTheType ) {
    EXPECT_EQ( host->maxResponseTimeTicksPerSec(), 10.0 );
    EXPECT_EQ( host->defaultIgmpV3UnsolicitedReportIntvl(), 1.0 );
    EXPECT_EQ( host->defaultIgmpV1V2UnsolicitedReportIntvl(), 10.0 );
}

TEST_F( IgmpHostTest, ConstantsCannotBeSetThroughTheTable ) {
    for ( char const* name : { "maxResponseTimeTicksPerSec", "defaultIgmpV3UnsolicitedReportIntvl",
                               "defaultIgmpV1V2UnsolicitedReportIntvl" } ) {
        Kiv::Attribute const* const row = Kiv::findAttribute( IgmpHost::attributes(), name );
        ASSERT_NE( row, nullptr ) << name;
        EXPECT_EQ( row->kind, Kiv::AttributeKind::constant ) << name;
        EXPECT_FALSE( row->isWritable() ) << name;
    }
}

TEST_F( IgmpHostTest, PamIsStoredAndToldOf ) {
    Ptr<Zornet::Pam> const pam( new Zornet::Pam( "pam" ) );
    host->pamIs( pam );
    EXPECT_EQ( host->pam(), pam );
    host->pamIs( pam );
    EXPECT_THAT( log, ElementsAre( "pam" ) );
    host->pamIs( nullptr );
    EXPECT_EQ( host->pam(), nullptr );
    EXPECT_THAT( log, ElementsAre( "pam", "pam" ) );
}

TEST_F( IgmpHostTest, NamesOf150BytesAreNamespacesAndOf151AreNot ) {
    Zornet::NamespaceName const longest( Kiv::String8( std::string( 150, 'n' ) ) );
    host->nsIs( longest );
    EXPECT_EQ( host->ns(), longest );
    EXPECT_EQ(
        Zornet::rangeMessage( [] { Zornet::NamespaceName( Kiv::String8( std::string( 151, 'n' ) ) ); } ),
        "NamespaceName::bytes > 150 not allowed"
    );
}

TEST_F( IgmpHostTest, RefusedNamespaceLeavesTheValue ) {
    Kiv::Attribute const& row = *Kiv::findAttribute( IgmpHost::attributes(), "ns" );
    Kiv::attributeTextIs( row, *host, "blue" );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::attributeTextIs( row, *host, std::string( 151, 'n' ) ); } ),
        "NamespaceName::bytes > 150 not allowed"
    );
    EXPECT_EQ( host->ns().name(), Kiv::String8( "blue" ) );
    EXPECT_THAT( log, ElementsAre( "ns" ) );
}

TEST_F( IgmpHostTest, ScalarsTakeEveryValueOfTheirWidth ) {
    host->vlanIdIs( 65535 );
    host->mtuIs( 0 );
    host->robustnessIs( 0xffffffff );
    host->v1MaxResponseTimeIs( 0 );
    EXPECT_EQ( host->vlanId(), 65535 );
    EXPECT_EQ( host->mtu(), 0U );
    EXPECT_EQ( host->robustness(), 0xffffffffU );
    EXPECT_EQ( host->v1MaxResponseTime(), 0 );
}

TEST_F( IgmpHostTest, GroupIsMadeOnDemandUnderItsAddressAndToldOfOnce ) {
    Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( group );
    EXPECT_EQ( record->multicastAddr(), group );
    EXPECT_EQ( record->name(), Kiv::Name( "239.1.1.1" ) );
    EXPECT_EQ( record->parent(), host.get() );
    EXPECT_EQ( record->parentAttrId(), 277 );
    EXPECT_EQ( host->v3group( group ), record );
    EXPECT_THAT( log, ElementsAre( "v3group 239.1.1.1" ) );
}

TEST_F( IgmpHostTest, GroupThatIsThereIsGivenAgainAndNobodyHearsOfIt ) {
    Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( group );
    log.clear();
    U32 const before = host->modificationCount();
    EXPECT_EQ( host->v3groupIs( group ), record );
    EXPECT_THAT( log, IsEmpty() );
    EXPECT_EQ( host->modificationCount(), before );
}

TEST_F( IgmpHostTest, LowerFormMakesAGroupUntold ) {
    Ptr<IgmpV3GroupRecord> const record = host->newV3group( group );
    EXPECT_EQ( host->v3group( group ), record );
    EXPECT_EQ( record->parent(), host.get() );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( IgmpHostTest, DeletedGroupIsToldOfAndHasNoParent ) {
    Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( group );
    log.clear();
    host->v3groupDel( group );
    EXPECT_EQ( host->v3group( group ), nullptr );
    EXPECT_EQ( record->parent(), nullptr );
    EXPECT_THAT( log, ElementsAre( "v3group 239.1.1.1" ) );
}

TEST_F( IgmpHostTest, DeletingAnAbsentGroupChangesNothing ) {
    host->v3groupIs( group );
    log.clear();
    host->v3groupDel( otherGroup );
    EXPECT_EQ( host->v3groups(), 1U );
    EXPECT_THAT( log, IsEmpty() );
}

TEST_F( IgmpHostTest, GroupsAreDeletedUnderAnIterator ) {
    host->v3groupIs( group );
    host->v3groupIs( otherGroup );
    log.clear();
    for ( auto at = host->v3group().begin(); at; ++at ) {
        host->v3groupDel( at );
    }
    EXPECT_EQ( host->v3groups(), 0U );
    EXPECT_THAT( log, ::testing::UnorderedElementsAre( "v3group 239.1.1.1", "v3group 239.1.1.2" ) );
}

TEST_F( IgmpHostTest, DeletingAllGroupsTellsOfEach ) {
    host->v3groupIs( group );
    host->v3groupIs( otherGroup );
    log.clear();
    host->v3groupDelAll();
    EXPECT_EQ( host->v3groups(), 0U );
    EXPECT_THAT( log, ::testing::UnorderedElementsAre( "v3group 239.1.1.1", "v3group 239.1.1.2" ) );
}

TEST_F( IgmpHostTest, GroupCanBeToldOfWithoutAChange ) {
    U32 const before = host->modificationCount();
    host->v3groupNotify( group );
    EXPECT_EQ( host->modificationCount(), before );
    EXPECT_EQ( host->v3groups(), 0U );
    EXPECT_THAT( log, ElementsAre( "v3group 239.1.1.1" ) );
}

TEST_F( IgmpHostTest, GroupThatOutlivesItsHostHasNoParent ) {
    Ptr<IgmpV3GroupRecord> record;
    {
        Ptr<IgmpHost> const shortLived = igmpHostFactory( "short-lived" );
        record = shortLived->v3groupIs( group );
    }
    EXPECT_EQ( record->parent(), nullptr );
}

} // namespace Igmp
