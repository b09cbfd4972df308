/// What one adapter keeps of its entity while a stream goes on, and what must never be left of it.

#include "platform/kiv/nboattrlog/ResyncIn.h"
#include "tests/model/replication/ReplicationTest.h"
#include "tests/platform/zornet/AssertionText.h"

namespace Igmp {

namespace {

using Kiv::AttributeId;
using Kiv::NboAttrLog::Plan;
using Kiv::NboAttrLog::PlanRow;
using Zornet::assertionText;

class Adapter : public ReplicationTest {
  protected:
    Adapter() {
        list_ = served_.host( "rx" ).v3groupIs( IpAddr( "239.1.1.1" ) )->sourceIs();
        list_->sourceIpIs( IpAddr( "10.9.9.1" ), 1 );
        exchange( link_ );
    }

    static PlanRow const& row( Kiv::Entity const& entity, AttributeId id ) {
        return *Plan::of( *entity.fwkType() ).find( id );
    }
    /// Leaves a walk over a collection where a full send would have ended it.
    static Kiv::Entity::KivNboAttrLogSa& leaveBookmark( Kiv::Entity& entity, AttributeId id ) {
        auto& adapter = adapterOf( entity );
        unsigned const index = Plan::of( *entity.fwkType() ).index( row( entity, id ) );
        Kiv::NboAttrLog::Demuxer::createFlowOut( adapter ).bookmark( index ) =
            row( entity, id ).attribute->collection->begin( entity );
        return adapter;
    }

    Ptr<IgmpV3HostGroupSourceList> list_;
    Link link_{ served_, mirror_ };
};

TEST_F( Adapter, AFullSendLeavesNoBookmarkInACollectionOfEntities ) {
    auto& adapter = leaveBookmark( *served_.hosts, IgmpHostDir::attrIgmpHost );
    EXPECT_DEATH( adapter.freeResyncState(), assertionText( "!rsc->bookmark()" ) );
}

TEST_F( Adapter, AFullSendLeavesNoIteratorInACollectionOfValues ) {
    auto& adapter = leaveBookmark( *list_, IgmpV3HostGroupSourceList::attrSourceIp );
    EXPECT_DEATH( adapter.freeResyncState(), assertionText( "!rsc->valueIter()" ) );
}

TEST_F( Adapter, TheEndOfAnArrivedCollectionLeavesNoIterator ) {
    Kiv::NboAttrLog::ResyncIn resync( 1 );
    resync.iterIs(
        row( *list_, IgmpV3HostGroupSourceList::attrSourceIp ).attribute->collection->begin( *list_ )
    );
    EXPECT_DEATH( resync.endIs( 0 ), assertionText( "!rrc->iter()" ) );
    resync.iterIs( nullptr );
    resync.endIs( 0 );
    EXPECT_TRUE( resync.isThrough() );
}

TEST_F( Adapter, AStateIsKeptOnlyWhileSomethingWaits ) {
    EXPECT_FALSE( adapterOf( *served_.hosts ).flowOut() );
    EXPECT_FALSE( adapterOf( *list_ ).flowOut() );
}

TEST_F( Adapter, OneAttributeIsAppliedAtATime ) {
    std::string text;
    Ptr<Kiv::GenericIfAdapter> const nested( new Kiv::GenericIfAdapter(
        served_.hosts->igmpHost( "rx" ),
        [&]( AttributeId, auto const& ) {
            Kiv::NboAttrLog::In in( {} );
            try {
                adapterOf( served_.host( "rx" ) ).handleAttrDeserialization( {}, in );
            } catch ( Kiv::InternalException const& raised ) {
                text = raised.what();
            }
        }
    ) );
    mirror_.host( "rx" ).mtuIs( 999 );
    exchange( link_ );
    EXPECT_EQ( text, "entity reactor is already active" );
}

TEST_F( Adapter, OnlyTheTokensOfATransactionAreTaken ) {
    auto const& adapter = adapterOf( *list_ );
    EXPECT_NO_THROW( adapter.handleAttrTransaction( 278, 1 ) );
    EXPECT_NO_THROW( adapter.handleAttrTransaction( 278, 3 ) );
    EXPECT_THROW( adapter.handleAttrTransaction( 278, 2 ), Kiv::AttrLogRecordException );
}

} // namespace

} // namespace Igmp
