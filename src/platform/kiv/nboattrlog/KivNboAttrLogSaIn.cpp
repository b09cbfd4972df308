#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"
#include "platform/kiv/nboattrlog/ResyncIn.h"

namespace Kiv {

using NboAttrLog::In;
using NboAttrLog::ResyncIn;
using NboAttrLog::RowForm;
using Sa = Entity::KivNboAttrLogSa;

namespace {

std::string
keyBytesOf( NboAttrLog::PlanRow const& row, std::any const& key ) {
    return row.form == RowForm::child ? std::string() : NboAttrLog::bytesOf( *row.attribute->keyType, key );
}

} // namespace

/// Held while one message is applied: the adapter's guard, and what is being applied.
class Sa::FlowInGuard {
  public:
    FlowInGuard( KivNboAttrLogSa& adapter, AttributeId id ) : adapter_( &adapter ) {
        if ( adapter.isActive_ ) {
            throwInternalException( "entity reactor is already active" );
        }
        adapter.isActive_ = true;
        adapter.demuxer_.flowIn() = { &adapter, id, {}, false, {}, nullptr };
    }
    FlowInGuard( FlowInGuard const& ) = delete;
    FlowInGuard& operator=( FlowInGuard const& ) = delete;
    ~FlowInGuard() {
        adapter_->isActive_ = false;
        adapter_->demuxer_.flowIn() = {};
    }

  private:
    Ptr<KivNboAttrLogSa> const adapter_;
};

void
Sa::announcedAs( EntityId const& id, bool isFresh ) {
    demuxer_.peerTable().arrive( id, this );
    id_ = id;
    if ( !isFresh ) {
        resyncIn_ = std::make_unique<ResyncIn>( plan_.structures() );
    }
}

void
Sa::handleAttrTransaction( AttributeId id, U8 token ) const {
    if ( token != NboAttrLog::tokenBegin && token != NboAttrLog::tokenEnd ) {
        throwAttrLogRecordException( "unknown transaction token for attribute " + std::to_string( id ) );
    }
}

Sa::PlanRow const&
Sa::arrivedRow( MsgHeader const& header ) const {
    bool const isMarker = header.attribute < 0 && header.attribute != std::numeric_limits<AttributeId>::min();
    PlanRow const* const row = plan_.find( isMarker ? -header.attribute : header.attribute );
    if ( !row || row->form == RowForm::none ) {
        throwAttrLogRecordException(
            "attribute " + std::to_string( header.attribute ) + " of " + entity().fwkType()->name() +
            " is not replicated"
        );
    }
    return *row;
}

void
Sa::checkRemote( PlanRow const& row ) const {
    if ( !demuxer_.isClient() && isReadonlyProxy() && !readOnlyRemoteOk( row.attribute->id ) ) {
        throwRangeException(
            String8( "write-update from readonly proxy: " ) + row.attribute->name +
            " peerName: " + demuxer_.owner().peerName()
        );
    }
}

void
Sa::handleAttrDeserialization( MsgHeader const& header, In& in ) {
    FlowInGuard const guard( *this, header.attribute );
    PlanRow const& row = arrivedRow( header );
    checkRemote( row );
    bool const holdsEntities = row.form == RowForm::members || row.form == RowForm::child;
    if ( header.attribute < 0 && header.operation == Operation::value && row.form != RowForm::scalar ) {
        in.endIs();
        applyMarker( row );
    } else if ( header.attribute < 0 ) {
        throwAttrLogRecordException( "end of something that is no collection" );
    } else if ( header.operation == Operation::value && row.form == RowForm::scalar ) {
        applyScalar( row, in );
    } else if ( header.operation == Operation::value && row.form == RowForm::values ) {
        applyKey( row, in, false );
    } else if ( header.operation == Operation::del && row.form == RowForm::values ) {
        applyKey( row, in, true );
    } else if ( header.operation == Operation::member && holdsEntities ) {
        applyMember( row, in );
    } else if ( header.operation == Operation::del && holdsEntities ) {
        applyDel( row, in );
    } else {
        throwAttrLogRecordException( String8( "operation does not fit attribute " ) + row.attribute->name );
    }
}

/// Whether what a client has written, or is about to write, is newer than what arrives.
bool
Sa::hasPriority( PlanRow const& row, std::string const& key ) const {
    if ( !demuxer_.isClient() ) {
        return false;
    }
    unsigned const index = plan_.index( row );
    bool const isWaiting = flowOut_ && ( row.form == RowForm::scalar ? flowOut_->kivIsDirty( index )
                                                                     : flowOut_->kivIsDirty( index, key ) );
    return isWaiting || demuxer_.pendingWrites().has( id_, row.attribute->id, key );
}

void
Sa::applyScalar( PlanRow const& row, In& in ) {
    std::any const value = row.attribute->type->in( in );
    in.endIs();
    if ( hasPriority( row, {} ) ) {
        return;
    }
    if ( flowOut_ ) {
        flowOut_->kivIsDirtyIs( plan_.index( row ), false );
        flowOut_->isToldIs( plan_.index( row ) );
    }
    row.attribute->write( entity(), value );
}

void
Sa::applyKey( PlanRow const& row, In& in, bool isDel ) {
    Attribute const& at = *row.attribute;
    std::any const key = at.keyType->in( in );
    std::any const value = isDel ? std::any() : at.collection->valueType->in( in );
    in.endIs();
    std::string const keyBytes = NboAttrLog::bytesOf( *at.keyType, key );
    if ( resyncIn_ && !isDel && resyncIn_->isAwaited( plan_.index( row ) ) ) {
        resyncIn_->seen[plan_.index( row )].insert( keyBytes );
    }
    if ( hasPriority( row, keyBytes ) ) {
        return;
    }
    if ( flowOut_ ) {
        flowOut_->kivIsDirtyDel( plan_.index( row ), keyBytes );
    }
    demuxer_.flowIn().key = keyBytes;
    if ( isDel ) {
        at.collection->del( entity(), key );
    } else {
        at.collection->create( entity(), key, value );
    }
}

void
Sa::applyMember( PlanRow const& row, In& in ) {
    EntityId const id = in.nextEntityId();
    demuxer_.peerTable().checkFresh( id );
    std::any const key = row.form == RowForm::members ? row.attribute->keyType->in( in ) : std::any();
    in.endIs();
    if ( demuxer_.isClient() && !demuxer_.pendingWrites().isEmpty() &&
         hasPriority( row, keyBytesOf( row, key ) ) ) {
        demuxer_.peerTable().arrive( id, nullptr ); // its own announcement is under way, see below
        return;
    }
    Ptr<Entity> const present = member( row, key );
    KivNboAttrLogSa* const adapter = present ? nboAttrLogAdapter( *present ) : nullptr;
    if ( adapter ) {
        handleExistingMember( *adapter, id );
    } else if ( present ) {
        KivNboAttrLogSa& child = nboAttrLogAdapterIs( *present, row );
        child.announcedAs( id, !demuxer_.isClient() );
        if ( !demuxer_.isClient() ) {
            child.sendInFull( SyncMode::complete );
        }
    } else {
        createMember( row, key, id );
    }
}

/// Both sides have made the same member at the same time. The client's name holds; the server tells it again
/// in full under that name, and the client takes no notice of the other one.
void
Sa::handleExistingMember( KivNboAttrLogSa& present, EntityId const& id ) {
    if ( !demuxer_.isClient() ) {
        present.doRemountSelf( id );
        return;
    }
    if ( present.isAnnounced() && !present.isAnnouncedHere_ ) {
        throwAttrLogRecordException( "member is announced twice" );
    }
    demuxer_.peerTable().arrive( id, nullptr );
}

/// The collection's own notification makes the adapter, before any other reactor hears of the member.
void
Sa::createMember( PlanRow const& row, std::any const& key, EntityId const& id ) {
    demuxer_.flowIn().arriving = id;
    if ( row.form == RowForm::child ) {
        row.attribute->pointer->create( entity() );
    } else {
        row.attribute->collection->create( entity(), key, {} );
    }
    if ( demuxer_.flowIn().arriving == id ) { // nobody told of it
        demuxer_.flowIn().arriving = {};
        demuxer_.peerTable().arrive( id, nullptr );
    }
}

void
Sa::applyDel( PlanRow const& row, In& in ) {
    EntityId const id = in.nextEntityId();
    Ptr<KivNboAttrLogSa> const child = demuxer_.table( id ).find( id );
    std::any const key = row.form == RowForm::members ? row.attribute->keyType->in( in ) : std::any();
    in.endIs();
    if ( !child ) {
        return;
    }
    if ( child->parentAdapter_ != this || child->place_ != &row ) {
        throwAttrLogRecordException( "deleted member is another entity's" );
    }
    if ( child->keyBytes() != keyBytesOf( row, key ) ) {
        throwAttrLogRecordException( "deleted member has another key" );
    }
    bool const isPresent = !child->isDeleted_ && member( row, key ).get() == &child->entity();
    demuxer_.flowIn().deleting = child.get();
    if ( isPresent && row.form == RowForm::child ) {
        row.attribute->pointer->del( entity() );
    } else if ( isPresent ) {
        row.attribute->collection->del( entity(), key );
    }
    if ( child->parentAdapter_ ) {
        nboAttrLogAdapterDel( *child );
    }
}

void
Sa::applyMarker( PlanRow const& row ) {
    if ( !resyncIn_ || !resyncIn_->isAwaited( plan_.index( row ) ) ) {
        return;
    }
    demuxer_.flowIn().id = row.attribute->id;
    if ( row.form == RowForm::values ) {
        sweepValues( row );
    } else {
        sweepMembers( row );
    }
    if ( resyncIn_ ) {
        resyncIn_->endIs( plan_.index( row ) );
    }
    if ( resyncIn_ && resyncIn_->isThrough() ) {
        resyncIn_.reset();
    }
}

/// Deletes what the full send did not name. A member that it did has an adapter on this stream.
void
Sa::sweepMembers( PlanRow const& row ) {
    if ( row.form == RowForm::child ) {
        Ptr<Entity> const present = member( row, {} );
        if ( present && !nboAttrLogAdapter( *present ) ) {
            row.attribute->pointer->del( entity() );
        }
        return;
    }
    CollectionOps const& ops = *row.attribute->collection;
    resyncIn_->iterIs( ops.begin( entity() ) );
    while ( resyncIn_ && resyncIn_->iter()->isAtMember() ) {
        Ptr<PtrInterface> const present = resyncIn_->iter()->member();
        if ( !nboAttrLogAdapter( static_cast<Entity&>( *present ) ) ) {
            ops.del( entity(), resyncIn_->iter()->key() );
        }
        if ( resyncIn_ ) {
            resyncIn_->iter()->next();
        }
    }
    if ( resyncIn_ ) {
        resyncIn_->iterIs( nullptr );
    }
}

void
Sa::sweepValues( PlanRow const& row ) {
    CollectionOps const& ops = *row.attribute->collection;
    std::set<std::string> const seen = std::move( resyncIn_->seen[plan_.index( row )] );
    resyncIn_->iterIs( ops.begin( entity() ) );
    while ( resyncIn_ && resyncIn_->iter()->isAtMember() ) {
        std::any const key = resyncIn_->iter()->key();
        std::string const keyBytes = NboAttrLog::bytesOf( *row.attribute->keyType, key );
        if ( seen.count( keyBytes ) == 0 && !hasPriority( row, keyBytes ) ) {
            demuxer_.flowIn().key = keyBytes;
            demuxer_.flowIn().wasHeard = false;
            ops.del( entity(), key );
        }
        if ( resyncIn_ ) {
            resyncIn_->iter()->next();
        }
    }
    if ( resyncIn_ ) {
        resyncIn_->iterIs( nullptr );
    }
}

} // namespace Kiv
