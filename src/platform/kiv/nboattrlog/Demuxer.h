#pragma once

#include "platform/kiv/nboattrlog/FlowOut.h"
#include "platform/kiv/nboattrlog/PendingWrites.h"
#include "platform/kiv/nboattrlog/SlotTable.h"

namespace Kiv::NboAttrLog {

/// What the adapters of one stream need of it.
class StreamOwner {
  public:
    virtual ~StreamOwner() = default;
    /// Where the next message goes, and the number of the frame that it will be part of.
    virtual Ptr<Out> const& nboAttrLogOut() = 0;
    virtual U32 frameNumber() const = 0;
    /// A message stands in the output.
    virtual void messageDone() = 0;
    virtual bool hasSufficientBuffer() const = 0;
    /// Something waits that could not be sent at once.
    virtual void handleWaiting() = 0;
    /// The stream cannot go on.
    virtual void handleFailure( String8 const& reason ) = 0;
    /// A local change was refused, and stays local.
    virtual void handleRefusal( String8 const& reason ) = 0;
    /// A message about the stream itself.
    virtual void handleControl( MsgHeader const& header, In& payload ) = 0;
    virtual String8 const& peerName() const = 0;
};

/// The entities of one stream: it finds the adapter for what arrives, and knows which adapters have something
/// to send and in which order.
class Demuxer {
  public:
    using Adapter = Entity::KivNboAttrLogSa;

    /// The one thing that is being applied at a time.
    struct FlowIn {
        Adapter* adapter = nullptr;
        AttributeId id = 0;
        std::string key;             ///< of a collection, as on the stream
        bool wasHeard = false;       ///< the change that it makes has been notified
        EntityId arriving;           ///< the name of a member that is being made
        Adapter* deleting = nullptr; ///< the member that is being deleted
    };

    Demuxer( StreamOwner& owner, bool isClient );
    Demuxer( Demuxer const& ) = delete;
    Demuxer& operator=( Demuxer const& ) = delete;
    ~Demuxer();

    StreamOwner& owner() const { return owner_; }
    bool isClient() const { return isClient_; }
    /// Adds the root of a mount. A server's is announced and sent in full; a client's stands for `id`.
    void serve( Name const& mount, Ptr<Entity> const& entity, bool isWritable, bool isComplete );
    void mirror( Name const& mount, Ptr<Entity> const& entity, bool isWritable, EntityId const& id );

    /// One at a time; true while an arrived frame is being applied. Changes wait meanwhile.
    bool isApplying() const { return isApplying_; }
    void isApplyingIs( bool value ) { isApplying_ = value; }
    FlowIn& flowIn() { return flowIn_; }
    /// Applies one message. Raises what is wrong with it, before it has any effect.
    void messageIs( MsgHeader const& header, In& payload );

    bool hasWaiting() const { return !waiting_.isEmpty(); }
    /// Sends what waits while there is room. True when nothing waits any more.
    bool pump();
    static FlowOut& createFlowOut( Adapter& adapter );
    WaitingList& rootsWaiting() { return waiting_; }
    PendingWrites& pendingWrites() { return pendingWrites_; }

    EntityId idNew( Adapter& adapter ) { return ( isClient_ ? clients_ : servers_ ).give( adapter ); }
    SlotTable& table( EntityId const& id ) { return id.isClients() ? clients_ : servers_; }
    /// The table of what the peer announces.
    SlotTable& peerTable() { return isClient_ ? servers_ : clients_; }
    U64 messagesSent() const { return messagesSent_; }
    U64 messagesApplied() const { return messagesApplied_; }
    void messageSent();

  private:
    StreamOwner& owner_;
    bool const isClient_;
    bool isApplying_ = false;
    FlowIn flowIn_;
    SlotTable servers_;
    SlotTable clients_;
    PendingWrites pendingWrites_;
    WaitingList waiting_;
    std::vector<Ptr<Adapter>> roots_;
    U64 messagesSent_ = 0;
    U64 messagesApplied_ = 0;
};

} // namespace Kiv::NboAttrLog
