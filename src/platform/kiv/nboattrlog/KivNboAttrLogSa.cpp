#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"

#include "platform/kiv/nboattrlog/ResyncIn.h"

namespace Kiv {

using NboAttrLog::RowForm;
using Sa = Entity::KivNboAttrLogSa;

Sa::KivNboAttrLogSa( Ptr<Entity> const& entity, Demuxer& demuxer, Name const& mount, bool isWritable )
    : StreamAdapter( entity ),
      demuxer_( demuxer ),
      plan_( NboAttrLog::Plan::of( *entity->fwkType() ) ),
      isWritable_( isWritable ),
      mount_( std::make_unique<Name>( mount ) ) {}

Sa::KivNboAttrLogSa( Ptr<Entity> const& entity, KivNboAttrLogSa& parent, PlanRow const& place )
    : StreamAdapter( entity ),
      demuxer_( parent.demuxer_ ),
      plan_( parent.plan_.childPlan( place ) ),
      place_( &place ),
      isWritable_( parent.isWritable_ ) {}

Sa::~KivNboAttrLogSa() = default;

Sa*
Sa::nboAttrLogAdapter( Entity const& member ) const {
    return static_cast<Sa*>( member.streamAdapter( [this]( Reactor& reactor ) {
        return &static_cast<Sa&>( reactor ).demuxer_ == &demuxer_;
    } ) );
}

Sa&
Sa::nboAttrLogAdapterIs( Entity& member, PlanRow const& place ) {
    auto* const child = new Sa( &member, *this, place );
    child->referencesInc();
    child->parentAdapter_ = this;
    child->next_ = firstChild_;
    if ( firstChild_ ) {
        firstChild_->previous_ = child;
    }
    firstChild_ = child;
    child->isRegisteredNotifieeIs( true );
    return *child;
}

void
Sa::nboAttrLogAdapterDel( KivNboAttrLogSa& child ) {
    ( child.previous_ ? child.previous_->next_ : firstChild_ ) = child.next_;
    if ( child.next_ ) {
        child.next_->previous_ = child.previous_;
    }
    child.parentAdapter_ = child.next_ = child.previous_ = nullptr;
    child.detach();
    child.referencesDec();
}

void
Sa::childrenDel() {
    while ( firstChild_ ) {
        nboAttrLogAdapterDel( *firstChild_ );
    }
}

void
Sa::detach() {
    isRegisteredNotifieeIs( false );
    isDeleted_ = true;
    childrenDel();
    idRelease();
    flowOut_.reset();
    resyncIn_.reset();
}

void
Sa::idRelease() {
    if ( isAnnounced() ) {
        demuxer_.table( id_ ).release( id_ );
        id_ = {};
    }
}

/// Nothing in a deleted entity is of interest any more, but its names stay taken until the peer knows.
void
Sa::silence() {
    isRegisteredNotifieeIs( false );
    isDeleted_ = true;
    for ( KivNboAttrLogSa* child = firstChild_; child; child = child->next_ ) {
        child->silence();
    }
}

Ptr<Entity>
Sa::member( PlanRow const& row, std::any const& key ) const {
    Attribute const& at = *row.attribute;
    Ptr<PtrInterface> const found =
        row.form == RowForm::child ? at.pointer->read( entity() ) : at.collection->find( entity(), key );
    return static_cast<Entity*>( found.get() );
}

void
Sa::onChange( AttributeId id, std::any const& key ) {
    if ( id == attrParent ) {
        handleOrphaned();
    } else if ( PlanRow const* const row = plan_.find( id ); row && !isDeleted_ ) {
        doNotification( *row, key );
    }
}

void
Sa::doNotification( PlanRow const& row, std::any const& key ) {
    switch ( row.form ) {
    case RowForm::none: break;
    case RowForm::scalar: handleScalar( row ); break;
    case RowForm::values: handleKey( row, key ); break;
    case RowForm::members:
    case RowForm::child: handleMember( row, key ); break;
    }
}

/// A change that a mirror must not make stays where it was made; anything else ends the stream.
void
Sa::onNotificationException( AttributeId id ) {
    try {
        throw;
    } catch ( RangeException const& refused ) {
        demuxer_.owner().handleRefusal( refused.message() );
    } catch ( std::exception const& failure ) {
        demuxer_.owner().handleFailure( failure.what() );
    }
    handleNotificationException( id );
}

void
Sa::doThrowReadOnly( AttributeId id ) const {
    PlanRow const* const row = plan_.find( id );
    throwRangeException(
        String8( "attempting to modify a read-only mirror: " ) + ( row ? row->attribute->name : "parent" )
    );
}

void
Sa::requireWritable( AttributeId id ) const {
    if ( demuxer_.isClient() && isReadonlyProxy() && !convertedToWritable() ) {
        doThrowReadOnly( id );
    }
}

bool
Sa::prepareImmediateTransmission( AttributeId, bool hasNoRoom ) const {
    return !hasNoRoom && !demuxer_.isApplying() && !demuxer_.hasWaiting();
}

bool
Sa::handlingFlowInFor( AttributeId id ) const {
    return demuxer_.flowIn().adapter == this && demuxer_.flowIn().id == id;
}

/// True once for the change that an arrived message makes. A further change of the same attribute, by a
/// reactor, is one that the peer does not know.
bool
Sa::isEcho( AttributeId id, std::string const& key ) const {
    Demuxer::FlowIn& flowIn = demuxer_.flowIn();
    return handlingFlowInFor( id ) && flowIn.key == key && !std::exchange( flowIn.wasHeard, true );
}

void
Sa::handleScalar( PlanRow const& row ) {
    AttributeId const id = row.attribute->id;
    if ( isEcho( id, {} ) ) {
        return;
    }
    requireWritable( id );
    if ( prepareImmediateTransmission( id, !hasSufficientBuffer() ) ) {
        handleAttrFlowOut( id );
        return;
    }
    Demuxer::createFlowOut( *this ).kivIsDirtyIs( plan_.index( row ), true );
    wait( !row.attribute->announces );
    demuxer_.owner().handleWaiting();
}

void
Sa::handleKey( PlanRow const& row, std::any const& key ) {
    AttributeId const id = row.attribute->id;
    std::string const keyBytes = NboAttrLog::bytesOf( *row.attribute->keyType, key );
    if ( isEcho( id, keyBytes ) ) {
        return;
    }
    requireWritable( id );
    if ( prepareImmediateTransmission( id, !hasSufficientBuffer() ) ) {
        kivHandleSerializeSing( row, key );
        return;
    }
    Demuxer::createFlowOut( *this ).kivIsDirtyIs( plan_.index( row ), keyBytes );
    wait( true );
    demuxer_.owner().handleWaiting();
}

/// Only arrivals are heard of here; a member that goes tells its own adapter.
void
Sa::handleMember( PlanRow const& row, std::any const& key ) {
    AttributeId const id = row.attribute->id;
    Ptr<Entity> const present = member( row, key );
    if ( !present || nboAttrLogAdapter( *present ) ) {
        return;
    }
    Demuxer::FlowIn& flowIn = demuxer_.flowIn();
    if ( handlingFlowInFor( id ) && !flowIn.arriving.isNull() ) {
        nboAttrLogAdapterIs( *present, row ).announcedAs( std::exchange( flowIn.arriving, {} ), true );
        return;
    }
    requireWritable( id );
    bool const isAtOnce = prepareImmediateTransmission( id, !hasSufficientBuffer() );
    bool const mayBeHeld =
        syncMode_ == SyncMode::complete && flowOut_ && !flowOut_->kivHasSynced( plan_.index( row ) );
    nboAttrLogAdapterIs( *present, row ).sendInFull( mayBeHeld ? SyncMode::complete : SyncMode::fresh );
    if ( isAtOnce ) {
        demuxer_.pump();
    }
    demuxer_.owner().handleWaiting();
}

void
Sa::handleOrphaned() {
    if ( !parentAdapter_ || isDeleted_ ) {
        return;
    }
    if ( demuxer_.flowIn().deleting == this || !isAnnounced() ) {
        parentAdapter_->nboAttrLogAdapterDel( *this );
        return;
    }
    requireWritable( place_->attribute->id );
    bool const isAtOnce = prepareImmediateTransmission( place_->attribute->id, !hasSufficientBuffer() );
    silence();
    wait( true );
    if ( isAtOnce ) {
        demuxer_.pump();
    }
    demuxer_.owner().handleWaiting();
}

/// Enters this adapter among those that have something to send, and those above it.
void
Sa::wait( bool isContent ) {
    FlowOut& flow = Demuxer::createFlowOut( *this );
    NboAttrLog::WaitingList& list =
        parentAdapter_ ? Demuxer::createFlowOut( *parentAdapter_ ).waiting : demuxer_.rootsWaiting();
    if ( flow.list() == &list || ( flow.list() && !isContent ) ) {
        return;
    }
    flow.listIs( &list );
    if ( parentAdapter_ ) {
        parentAdapter_->wait( true );
    }
}

void
Sa::sendInFull( SyncMode mode ) {
    syncModeIs( mode );
    FlowOut& flow = Demuxer::createFlowOut( *this );
    flow.kivDirtyBitSet0Is( plan_.scalars() );
    flow.untoldIs( mode == SyncMode::fresh ? plan_.scalars() : 0 );
    flow.unsyncedIs( plan_.structures() );
    flow.collectionsDel();
    wait( true );
}

} // namespace Kiv
