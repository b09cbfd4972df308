/// The factories, and the root that an embedder fills in.

#include <gtest/gtest.h>

#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostTestAgentRoot.h"
#include "tests/support/SimulatedTest.h"

namespace Igmp {

namespace {

class Factories : public Support::SimulatedTest {
  protected:
    Ptr<IgmpV3GroupRecord> record() {
        Ptr<IgmpV3GroupRecord> const made = host_->v3groupIs( group_ );
        made->filterModeIs( IgmpV3GroupRecord::exclude );
        return made;
    }

    Zornet::IpAddr const group_{ "239.1.1.1" };
    Ptr<IgmpHost> const host_ = igmpHostFactory( "host" );
    Ptr<IgmpHostDir> const dir_ = igmpHostDirFactory( "hosts" );
    Ptr<IgmpHostStatusDir> const statusDir_ = igmpHostStatusDirFactory( "status" );
};

/// Counts what it is told of any kind.
class RootWatcher : public Kiv::Entity::NotifieeConst {
  public:
    explicit RootWatcher( Ptr<IgmpHostTestAgentRoot> const& root ) : NotifieeConst( root ) {
        isRegisteredNotifieeIs( true );
    }
    bool isGeneric() const override { return true; }
    void onChange( AttributeId, std::any const& ) override { ++told; }

    int told = 0;
};

} // namespace

TEST_F( Factories, EntitiesHaveTheirNames ) {
    EXPECT_EQ( igmpHostFactory( "a" )->name(), Kiv::Name( "a" ) );
    EXPECT_EQ( igmpHostStatusFactory( "a" )->name(), Kiv::Name( "a" ) );
    EXPECT_EQ( dir_->name(), Kiv::Name( "hosts" ) );
    EXPECT_EQ( statusDir_->name(), Kiv::Name( "status" ) );
    EXPECT_EQ( igmpV3GroupRecordFactory( "r", group_ )->multicastAddr(), group_ );
    EXPECT_TRUE( igmpV3HostGroupSourceListFactory()->name().empty() );
}

TEST_F( Factories, RootStartsWithThreeNullPointers ) {
    Ptr<IgmpHostTestAgentRoot> const root = igmpHostTestAgentRootFactory( "root" );
    EXPECT_EQ( root->name(), Kiv::Name( "root" ) );
    EXPECT_FALSE( root->igmpHostDir() );
    EXPECT_FALSE( root->igmpHostStatusDir() );
    EXPECT_FALSE( root->igmpHostDirSm() );
}

TEST_F( Factories, RootCountsAChangeAndTellsNobody ) {
    Ptr<IgmpHostTestAgentRoot> const root = igmpHostTestAgentRootFactory( "root" );
    Ptr<RootWatcher> const watcher( new RootWatcher( root ) );
    root->igmpHostDirIs( dir_ );
    root->igmpHostStatusDirIs( statusDir_ );
    root->igmpHostDirSmIs( igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel() ) );
    EXPECT_EQ( root->modificationCount(), 3U );
    EXPECT_EQ( watcher->told, 0 );
    root->igmpHostDirIs( dir_ );
    EXPECT_EQ( root->modificationCount(), 3U );
}

TEST_F( Factories, RootLetsGoOfTheMachineFirst ) {
    Ptr<IgmpHostTestAgentRoot> root = igmpHostTestAgentRootFactory( "root" );
    Ptr<IgmpHostDir> dir = igmpHostDirFactory( "hosts" );
    root->igmpHostDirIs( dir );
    root->igmpHostStatusDirIs( statusDir_ );
    root->igmpHostDirSmIs( igmpHostDirSmFactory( nullptr, dir, statusDir_, wheel() ) );
    EXPECT_TRUE( dir->hasNotifiees() );
    root = nullptr;
    EXPECT_FALSE( dir->hasNotifiees() );
    EXPECT_EQ( dir->references(), 1U );
}

TEST_F( Factories, MachinesOfAHostAreMade ) {
    Ptr<IgmpHostSm> const sm = igmpHostSmFactory( nullptr, "host", host_, wheel(), statusDir_, nullptr );
    EXPECT_EQ( sm->igmpHost(), host_.get() );
    EXPECT_EQ( igmpHostConfigHelperFactory( nullptr, "host", host_ )->igmpHost(), host_ );
}

TEST_F( Factories, GroupCallbackStandsAloneWithoutAHost ) {
    Ptr<IgmpV3GroupCallbackSm> const sm = igmpV3GroupCallbackSmFactory( nullptr, group_, record() );
    EXPECT_TRUE( sm->initialized() );
    EXPECT_EQ( sm->mcastAddr(), group_ );
    EXPECT_EQ( sm->groupRecord(), host_->v3group( group_ ).get() );
    EXPECT_EQ( sm->igmpHostSm(), nullptr );
    EXPECT_EQ( igmpV3GroupCallbackSmFactory( nullptr, group_, nullptr )->groupRecord(), nullptr );
}

TEST_F( Factories, GroupMachineStandsAloneWithoutStatusAndSender ) {
    record()->versionIs( 1 );
    Ptr<IgmpV3HostGroupSm> const sm = igmpV3HostGroupSmFactory( nullptr, group_, host_ );
    EXPECT_TRUE( sm->initialized() );
    EXPECT_EQ( sm->hostSm(), nullptr );
    sm->process();
    EXPECT_EQ( sm->filterModeTransCount(), 2U );
    EXPECT_EQ( sm->currGroupRecord()->filterMode(), IgmpV3GroupRecord::exclude );
}

TEST_F( Factories, GroupMachineWithoutStatusAdoptsSourcesAndCountsNone ) {
    Ptr<IgmpV3GroupRecord> const wanted = host_->v3groupIs( group_ );
    wanted->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.9.9.1" ), 1 );
    wanted->versionIs( 1 );
    Ptr<IgmpV3HostGroupSm> const sm = igmpV3HostGroupSmFactory( nullptr, group_, host_ );
    sm->process();
    EXPECT_EQ( sm->currGroupRecord()->source()->sourceIps(), 1U );
    wanted->source()->sourceIpDelAll();
    sm->process();
    EXPECT_EQ( sm->currGroupRecord()->source()->sourceIps(), 0U );
    EXPECT_FALSE( sm->isStateChanged() );
}

} // namespace Igmp
