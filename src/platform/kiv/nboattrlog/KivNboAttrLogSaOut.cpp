#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"
#include "platform/kiv/nboattrlog/ResyncIn.h"

namespace Kiv {

using NboAttrLog::Out;
using NboAttrLog::RowForm;
using Sa = Entity::KivNboAttrLogSa;

Sa::MsgHeader
Sa::header( AttributeId id, Operation operation ) const {
    MsgHeader header;
    header.entity = id_;
    header.attribute = id;
    header.operation = operation;
    return header;
}

/// Called for every message that has been written: until the server has applied it, what the server says of
/// the same thing is older.
void
Sa::written( AttributeId id, std::string const& key ) {
    if ( demuxer_.isClient() ) {
        demuxer_.pendingWrites().add( id_, id, key, demuxer_.owner().frameNumber() );
    }
    demuxer_.messageSent();
}

void
Sa::handleAttrFlowOut( AttributeId id ) {
    PlanRow const& row = *plan_.find( id );
    if ( flowOut_ && !isToBeTold( row ) ) {
        return;
    }
    Out& out = *demuxer_.owner().nboAttrLogOut();
    Out::Record record( out, header( id, Operation::value ) );
    row.attribute->type->out( out, row.attribute->read( entity() ) );
    record.finish();
    written( id, {} );
}

/// Clears the mark. False for a default that the peer has anyway.
bool
Sa::isToBeTold( PlanRow const& row ) {
    unsigned const index = plan_.index( row );
    flowOut_->kivIsDirtyIs( index, false );
    if ( flowOut_->isUntold( index ) && row.isAtDefault( entity() ) ) {
        return false;
    }
    flowOut_->isToldIs( index );
    return true;
}

void
Sa::kivHandleSerializeSing( PlanRow const& row, std::any const& key ) {
    Attribute const& at = *row.attribute;
    Out& out = *demuxer_.owner().nboAttrLogOut();
    Ptr<PtrInterface> const present = at.collection->find( entity(), key );
    Out::Record record( out, header( at.id, present ? Operation::value : Operation::del ) );
    at.keyType->out( out, key );
    std::string keyBytes;
    if ( demuxer_.isClient() ) {
        keyBytes.assign( record.payload().begin(), record.payload().end() );
    }
    if ( present ) {
        at.collection->valueType->out( out, at.collection->value( *present ) );
    }
    record.finish();
    written( at.id, keyBytes );
}

void
Sa::keyOut( Out& out ) const {
    if ( place_->form == RowForm::members ) {
        place_->attribute->keyType->out( out, plan_.keyRow()->read( entity() ) );
    }
}

std::string
Sa::keyBytes() const {
    Out out;
    keyOut( out );
    return std::string( out.bytes().begin(), out.bytes().end() );
}

/// Announces the entity under a name of this side.
void
Sa::kivInstantiateSerialize() {
    if ( !parentAdapter_ ) {
        doSerializeOrphan();
        return;
    }
    Out& out = *demuxer_.owner().nboAttrLogOut();
    Out::Record record( out, parentAdapter_->header( place_->attribute->id, Operation::member ) );
    id_ = demuxer_.idNew( *this );
    out.nextEntityIdIs( id_ );
    keyOut( out );
    record.finish();
    isAnnouncedHere_ = true;
    parentAdapter_->written( place_->attribute->id, demuxer_.isClient() ? keyBytes() : std::string() );
}

void
Sa::doSerializeOrphan() {
    Out& out = *demuxer_.owner().nboAttrLogOut();
    MsgHeader orphan;
    orphan.operation = Operation::orphan;
    orphan.secondFlags = isWritable_ ? NboAttrLog::mountWritable : U8{ 0 };
    Out::Record record( out, orphan );
    id_ = demuxer_.idNew( *this );
    out.nextEntityIdIs( id_ );
    out.nextStringIs( mount_->string() );
    out.nextStringIs( entity().fwkType()->name() );
    record.finish();
    demuxer_.messageSent();
}

void
Sa::serializeDel( KivNboAttrLogSa& child ) {
    Out& out = *demuxer_.owner().nboAttrLogOut();
    Out::Record record( out, header( child.place_->attribute->id, Operation::del ) );
    out.nextEntityIdIs( child.id_ );
    child.keyOut( out );
    record.finish();
    demuxer_.messageSent();
}

void
Sa::doRemountSelf( EntityId const& id ) {
    childrenDel();
    idRelease();
    announcedAs( id, true );
    isAnnouncedHere_ = false;
    sendInFull( SyncMode::complete );
    demuxer_.owner().handleWaiting();
}

bool
Sa::flowContents() {
    if ( !isAnnounced() ) {
        if ( !hasSufficientBuffer() ) {
            return false;
        }
        kivInstantiateSerialize();
    }
    if ( !flowScalars( plan_.contents() ) ) {
        return false;
    }
    for ( PlanRow const& row : plan_.rows() ) {
        if ( row.form == RowForm::values && !flowDirtyKeys( row ) ) {
            return false;
        }
    }
    while ( FlowOut* const first = flowOut_->waiting.head() ) {
        if ( !flowChild( first->adapter() ) ) {
            return false;
        }
    }
    for ( PlanRow const& row : plan_.rows() ) {
        if ( !flowOut_->kivHasSynced( plan_.index( row ) ) && !kivHandleSerializeColl( row ) ) {
            return false;
        }
    }
    return true;
}

bool
Sa::flowScalars( U64 rows ) {
    while ( U64 const dirty = flowOut_->kivDirtyBitSet0() & rows ) {
        if ( !hasSufficientBuffer() ) {
            return false;
        }
        auto const first = static_cast<std::size_t>( std::countr_zero( dirty ) );
        handleAttrFlowOut( plan_.rows()[first].attribute->id );
    }
    return true;
}

bool
Sa::flowDirtyKeys( PlanRow const& row ) {
    unsigned const index = plan_.index( row );
    while ( flowOut_->hasDirtyKeys( index ) ) {
        if ( !hasSufficientBuffer() ) {
            return false;
        }
        std::string const key = flowOut_->firstDirtyKey( index );
        NboAttrLog::In in( { reinterpret_cast<U8 const*>( key.data() ), key.size() } );
        flowOut_->kivIsDirtyDel( index, key );
        kivHandleSerializeSing( row, row.attribute->keyType->in( in ) );
    }
    return true;
}

/// Everything that waits in a child, but for announcements that come behind this entity's own.
bool
Sa::flowChild( KivNboAttrLogSa& child ) {
    if ( child.isDeleted_ ) {
        if ( !hasSufficientBuffer() ) {
            return false;
        }
        serializeDel( child );
        nboAttrLogAdapterDel( child );
        return true;
    }
    if ( !child.flowContents() ) {
        return false;
    }
    if ( plan_.announcements() != 0 ) {
        if ( child.flowOut_->hasAnnouncements( child.plan_ ) ) {
            child.flowOut_->listIs( &flowOut_->announcing );
            return true;
        }
    } else if ( !child.flowAnnouncements() ) {
        return false;
    }
    child.freeResyncState();
    return true;
}

bool
Sa::flowAnnouncements() {
    if ( !flowScalars( plan_.announcements() ) ) {
        return false;
    }
    while ( FlowOut* const first = flowOut_->announcing.head() ) {
        KivNboAttrLogSa& child = first->adapter();
        if ( !child.flowAnnouncements() ) {
            return false;
        }
        child.freeResyncState();
    }
    return true;
}

void
Sa::freeResyncState() {
    for ( PlanRow const& row : plan_.rows() ) {
        if ( row.form == RowForm::members || row.form == RowForm::child ) {
            invariant( !flowOut_->hasBookmark( plan_.index( row ) ), "!rsc->bookmark()" );
        } else if ( row.form == RowForm::values ) {
            invariant( !flowOut_->hasBookmark( plan_.index( row ) ), "!rsc->valueIter()" );
        }
    }
    flowOut_.reset();
    syncModeIs( SyncMode::changes );
}

bool
Sa::kivHandleSerializeColl( PlanRow const& row ) {
    bool const isThrough = row.form == RowForm::values ? flowValues( row ) : flowMembers( row );
    if ( !isThrough || !flowMarker( row ) ) {
        return false;
    }
    flowOut_->bookmarkDel( plan_.index( row ) );
    flowOut_->kivHasSyncedIs( plan_.index( row ), true );
    return true;
}

bool
Sa::flowValues( PlanRow const& row ) {
    CollectionOps const& ops = *row.attribute->collection;
    auto& at = flowOut_->bookmark( plan_.index( row ) );
    for ( at = at ? std::move( at ) : ops.begin( entity() ); at->isAtMember(); at->next() ) {
        if ( !hasSufficientBuffer() ) {
            return false;
        }
        kivHandleSerializeSing( row, at->key() );
    }
    return true;
}

bool
Sa::flowMembers( PlanRow const& row ) {
    auto const flowMember = [&]( Entity& present ) {
        if ( nboAttrLogAdapter( present ) ) {
            return true;
        }
        KivNboAttrLogSa& child = nboAttrLogAdapterIs( present, row );
        child.sendInFull( syncMode_ );
        return flowChild( child );
    };
    if ( row.form == RowForm::child ) {
        Ptr<Entity> const present = member( row, {} );
        return !present || flowMember( *present );
    }
    CollectionOps const& ops = *row.attribute->collection;
    auto& at = flowOut_->bookmark( plan_.index( row ) );
    for ( at = at ? std::move( at ) : ops.begin( entity() ); at->isAtMember(); at->next() ) {
        if ( !hasSufficientBuffer() || !flowMember( static_cast<Entity&>( *at->member() ) ) ) {
            return false;
        }
    }
    return true;
}

/// Ends a full send. What the peer holds beyond it is gone here; a fresh peer holds nothing, and needs no end
/// of what is empty.
bool
Sa::flowMarker( PlanRow const& row ) {
    bool const isEmpty = row.form == RowForm::child || row.attribute->collection->count( entity() ) == 0;
    if ( isEmpty && syncMode_ == SyncMode::fresh && parentAdapter_ ) {
        return true;
    }
    if ( !hasSufficientBuffer() ) {
        return false;
    }
    Out& out = *demuxer_.owner().nboAttrLogOut();
    Out::Record record( out, header( -row.attribute->id, Operation::value ) );
    record.finish();
    demuxer_.messageSent();
    return true;
}

} // namespace Kiv
