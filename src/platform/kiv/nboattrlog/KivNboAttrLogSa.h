#pragma once

#include "platform/kiv/StreamAdapter.h"
#include "platform/kiv/nboattrlog/Demuxer.h"

namespace Kiv {

namespace NboAttrLog {
class ResyncIn;
} // namespace NboAttrLog

/// One entity on one stream: sends its changes, or marks them where there is no room, and applies what
/// arrives for it. One implementation over the tables of attributes serves every class; a class's own name
/// for it is X::KivNboAttrLogSa. The adapters of a stream form a tree like their entities; each is owned by
/// the one above it and holds its entity.
///
/// Order: what is announced goes before what announces it. Of an entity that has announcing attributes, all
/// other scalars go first, then its children without their announcements, then its own announcements, then
/// those of the children.
class Entity::KivNboAttrLogSa : public StreamAdapter {
  public:
    using FlowOut = NboAttrLog::FlowOut;
    using Demuxer = NboAttrLog::Demuxer;
    using EntityId = NboAttrLog::EntityId;
    using MsgHeader = NboAttrLog::MsgHeader;
    using Operation = NboAttrLog::Operation;
    using PlanRow = NboAttrLog::PlanRow;

    /// The root of a mount, and the child under a row of another one.
    KivNboAttrLogSa( Ptr<Entity> const& entity, Demuxer& demuxer, Name const& mount, bool isWritable );
    KivNboAttrLogSa( Ptr<Entity> const& entity, KivNboAttrLogSa& parent, PlanRow const& place );
    ~KivNboAttrLogSa() override;

    Entity& entity() const { return *const_cast<Entity*>( notifierEntity() ); }
    /// Null until the entity has been announced on the stream, by either side.
    EntityId const& id() const { return id_; }
    bool isAnnounced() const { return !id_.isNull(); }
    /// Deleted here; the peer has still to be told.
    bool isDeleted() const { return isDeleted_; }
    /// The adapter of a member on this stream, or null.
    KivNboAttrLogSa* nboAttrLogAdapter( Entity const& member ) const;
    KivNboAttrLogSa& nboAttrLogAdapterIs( Entity& member, PlanRow const& place );
    void nboAttrLogAdapterDel( KivNboAttrLogSa& child );

    // Local changes.
    void onChange( AttributeId id, std::any const& key ) override;
    void onNotificationException( AttributeId id ) override;
    void doNotification( PlanRow const& row, std::any const& key );
    /// Whether a change may go out at once: there is room, nothing waits before it and nothing is being
    /// applied.
    bool prepareImmediateTransmission( AttributeId id, bool hasNoRoom ) const;
    bool hasSufficientBuffer() const { return demuxer_.owner().hasSufficientBuffer(); }
    bool isReadonlyProxy() const { return !isWritable_; }
    /// Whether a mirror that was read-only may be written after all.
    bool convertedToWritable() const { return isWritable_; }
    [[noreturn]] void doThrowReadOnly( AttributeId id ) const;

    // What waits.
    FlowOut* flowOut() const { return flowOut_.get(); }
    void flowOutIs( std::unique_ptr<FlowOut> flow ) { flowOut_ = std::move( flow ); }
    bool hasDirtyAttributes() const { return flowOut_ && flowOut_->hasDirtyAttributes(); }
    SyncMode syncMode() const { return syncMode_; }
    void syncModeIs( SyncMode mode ) { syncMode_ = mode; }
    /// Everything of the entity is to be sent.
    void sendInFull( SyncMode mode );
    /// Sends all that waits, of the entity and in it. False where the room ended first.
    bool handleFlowOut() { return flowContents() && flowAnnouncements(); }
    /// Sends a scalar as it stands.
    void handleAttrFlowOut( AttributeId id );
    /// Drops the state of a finished full send.
    void freeResyncState();
    void doSerializeOrphan();
    void kivInstantiateSerialize();
    bool kivHandleSerializeColl( PlanRow const& row );
    /// One key of a collection of values: its value, or that it is gone.
    void kivHandleSerializeSing( PlanRow const& row, std::any const& key );
    /// Starts anew under the name that the peer has given: the children's adapters are dropped and made
    /// again, and everything is sent.
    void doRemountSelf( EntityId const& id );

    // What arrives.
    bool handlingFlowInFor( AttributeId id ) const;
    bool readOnlyRemoteOk( AttributeId ) const { return false; }
    void handleAttrTransaction( AttributeId id, U8 token ) const;
    /// Applies one arrived message; raises before it has an effect.
    void handleAttrDeserialization( MsgHeader const& header, NboAttrLog::In& payload );
    /// The peer has announced this entity. It holds something already unless it is fresh.
    void announcedAs( EntityId const& id, bool isFresh );

    /// Takes the adapter, and all below it, off the entities and the stream.
    void detach();

  private:
    class FlowInGuard;

    // outgoing
    bool isEcho( AttributeId id, std::string const& key ) const;
    void requireWritable( AttributeId id ) const;
    void handleScalar( PlanRow const& row );
    void handleKey( PlanRow const& row, std::any const& key );
    void handleMember( PlanRow const& row, std::any const& key );
    void handleOrphaned();
    void wait( bool isContent );
    bool flowContents();
    bool flowScalars( U64 rows );
    bool flowDirtyKeys( PlanRow const& row );
    bool flowChild( KivNboAttrLogSa& child );
    bool flowAnnouncements();
    bool flowMembers( PlanRow const& row );
    bool flowValues( PlanRow const& row );
    bool flowMarker( PlanRow const& row );
    void serializeDel( KivNboAttrLogSa& child );
    bool isToBeTold( PlanRow const& row );
    void keyOut( NboAttrLog::Out& out ) const;
    std::string keyBytes() const;
    MsgHeader header( AttributeId id, Operation operation ) const;
    void written( AttributeId id, std::string const& key );
    void silence();
    void idRelease();
    void childrenDel();
    Ptr<Entity> member( PlanRow const& row, std::any const& key ) const;

    // incoming
    PlanRow const& arrivedRow( MsgHeader const& header ) const;
    void checkRemote( PlanRow const& row ) const;
    void applyScalar( PlanRow const& row, NboAttrLog::In& in );
    void applyKey( PlanRow const& row, NboAttrLog::In& in, bool isDel );
    void applyMember( PlanRow const& row, NboAttrLog::In& in );
    void createMember( PlanRow const& row, std::any const& key, EntityId const& id );
    void applyDel( PlanRow const& row, NboAttrLog::In& in );
    void applyMarker( PlanRow const& row );
    void sweepMembers( PlanRow const& row );
    void sweepValues( PlanRow const& row );
    void handleExistingMember( KivNboAttrLogSa& present, EntityId const& id );
    bool hasPriority( PlanRow const& row, std::string const& key ) const;

    Demuxer& demuxer_;
    NboAttrLog::Plan const& plan_;
    PlanRow const* const place_ = nullptr; ///< in the parent; null for a root
    KivNboAttrLogSa* parentAdapter_ = nullptr;
    KivNboAttrLogSa* firstChild_ = nullptr;
    KivNboAttrLogSa* next_ = nullptr;
    KivNboAttrLogSa* previous_ = nullptr;
    EntityId id_;
    SyncMode syncMode_ = SyncMode::changes;
    bool isWritable_;
    bool isAnnouncedHere_ = false; ///< by this side
    bool isDeleted_ = false;
    bool isActive_ = false; ///< the guard: applies an attribute
    std::unique_ptr<FlowOut> flowOut_;
    std::unique_ptr<NboAttrLog::ResyncIn> resyncIn_;
    std::unique_ptr<Name> mount_; ///< of a root
};

} // namespace Kiv
