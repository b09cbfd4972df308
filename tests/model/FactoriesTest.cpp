/// The factories, and the root that an embedder fills in.

#include <gtest/gtest.h>

#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostTestAgentRoot.h"
#include "platform/kiv/Type.h"
#include "tests/platform/zornet/RangeMessage.h"
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

/// An activity of machines that notes, when the last machine lets go of it, who holds the directory then.
class LastHeld : public Kiv::ActivityConfig {
  public:
    LastHeld( Ptr<IgmpHostDir> const& dir, U32& holders ) : dir_( dir.get() ), holders_( holders ) {}
    ~LastHeld() override { holders_ = dir_->references(); }

  private:
    IgmpHostDir const* const dir_;
    U32& holders_;
};

template <class T>
void
expectNullTextForm() {
    SCOPED_TRACE( T::_fwkType()->name() );
    Ptr<T> pointer;
    Kiv::strepToValue( " null", &pointer );
    EXPECT_FALSE( pointer );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( "'host'", &pointer ); } ),
        "expected \" null\" at column 0"
    );
    EXPECT_EQ(
        Zornet::rangeMessage( [&] { Kiv::strepToValue( "null null", &pointer ); } ),
        "junk at column 4 deserializing null null"
    );
}

template <class... Ts>
void
expectNullTextForms() {
    ( expectNullTextForm<Ts>(), ... );
}

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

TEST_F( Factories, WhatIsMadeBelongsToItsMakerAlone ) {
    EXPECT_EQ( igmpHostFactory( "a" )->references(), 1U );
    EXPECT_EQ( igmpHostStatusFactory( "a" )->references(), 1U );
    EXPECT_EQ( dir_->references(), 1U );
    EXPECT_EQ( statusDir_->references(), 1U );
    EXPECT_EQ( igmpV3GroupRecordFactory( "r", group_ )->references(), 1U );
    EXPECT_EQ( igmpV3HostGroupSourceListFactory()->references(), 1U );
    EXPECT_EQ( igmpHostTestAgentRootFactory( "root" )->references(), 1U );
    EXPECT_EQ( igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel() )->references(), 1U );
    EXPECT_EQ( igmpHostConfigHelperFactory( nullptr, "host", host_ )->references(), 1U );
}

TEST_F( Factories, RecordHasTheNameThatItIsGiven ) {
    Ptr<IgmpV3GroupRecord> const record = igmpV3GroupRecordFactory( "r", group_ );
    EXPECT_EQ( record->name(), Kiv::Name( "r" ) );
    EXPECT_EQ( record->fwkKey(), group_ );
}

TEST_F( Factories, PointersToEverythingThatIsHeldHaveATextForm ) {
    expectNullTextForms<
        IgmpV3HostGroupSourceList, IgmpV3GroupRecord, IgmpHost, IgmpHostDir, IgmpHostStatus,
        IgmpHostStatusDir, IgmpHostTestAgentRoot>();
    expectNullTextForms<
        IgmpV3ReportProcessInfo, IgmpHostGroupTimerSm, IgmpV3HostGeneralQueryTimerSm,
        IgmpV3HostGroupQueryTimerSm, IgmpV3GroupCallbackSm, IgmpV3HostGroupSm, IgmpV3HostAggregatedSenderSm,
        IgmpHostSm, IgmpHostDirSm, IgmpHostConfigHelper>();
    expectNullTextForms<
        Zornet::VlanPam, Zornet::VTaggingInnerPamSm, Zornet::VlanTaggingPam, Zornet::VlanPktMultiplexer,
        Zornet::VlanPamMultiplexer>();
    Ptr<IgmpHost> held = host_;
    Kiv::strepToValue( "null", &held );
    EXPECT_FALSE( held );
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

TEST_F( Factories, RootHoldsTheDirectoriesUntilTheMachineIsGone ) {
    U32 holders = 0;
    Ptr<IgmpHostTestAgentRoot> root = igmpHostTestAgentRootFactory( "root" );
    root->igmpHostDirIs( dir_ );
    root->igmpHostStatusDirIs( statusDir_ );
    root->igmpHostDirSmIs( igmpHostDirSmFactory( new LastHeld( dir_, holders ), dir_, statusDir_, wheel() ) );
    root = nullptr;
    EXPECT_EQ( holders, 2U ); // the test and the root
    EXPECT_EQ( dir_->references(), 1U );
    EXPECT_EQ( statusDir_->references(), 1U );
}

TEST_F( Factories, DirectoryMachineServesWhatItIsGiven ) {
    Ptr<Kiv::ActivityConfig> const activity( new Kiv::ActivityConfig );
    Ptr<IgmpHostDirSm> const sm = igmpHostDirSmFactory( activity, dir_, statusDir_, wheel() );
    EXPECT_EQ( sm->kivFwkActivity(), activity );
    EXPECT_EQ( sm->igmpHostDir(), dir_.get() );
    EXPECT_EQ( sm->igmpHostStatusDir(), statusDir_ );
    EXPECT_EQ( sm->timerWheel(), wheel() );
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
