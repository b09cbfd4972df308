#include "platform/kiv/nboattrlog/Demuxer.h"

#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"

namespace Kiv::NboAttrLog {

Demuxer::Demuxer( StreamOwner& owner, bool isClient )
    : owner_( owner ), isClient_( isClient ), servers_( false, !isClient ), clients_( true, isClient ) {}

Demuxer::~Demuxer() {
    for ( Ptr<Adapter> const& root : roots_ ) {
        root->detach();
    }
}

void
Demuxer::serve( Name const& mount, Ptr<Entity> const& entity, bool isWritable, bool isComplete ) {
    Ptr<Adapter> const root( new Adapter( entity, *this, mount, isWritable ) );
    roots_.push_back( root );
    root->isRegisteredNotifieeIs( true );
    root->sendInFull( isComplete ? StreamAdapter::SyncMode::complete : StreamAdapter::SyncMode::fresh );
}

void
Demuxer::mirror( Name const& mount, Ptr<Entity> const& entity, bool isWritable, EntityId const& id ) {
    peerTable().checkFresh( id );
    Ptr<Adapter> const root( new Adapter( entity, *this, mount, isWritable ) );
    roots_.push_back( root );
    root->isRegisteredNotifieeIs( true );
    root->announcedAs( id, false );
}

void
Demuxer::messageIs( MsgHeader const& header, In& payload ) {
    ++messagesApplied_;
    if ( header.entity.isNull() ) {
        owner_.handleControl( header, payload );
        return;
    }
    Ptr<Adapter> const adapter = table( header.entity ).find( header.entity );
    if ( adapter && ( !adapter->isDeleted() || header.operation == Operation::del ) ) {
        adapter->handleAttrTransaction( header.attribute, tokenBegin );
        adapter->handleAttrDeserialization( header, payload );
        adapter->handleAttrTransaction( header.attribute, tokenEnd );
    } else if ( header.operation == Operation::member ) {
        peerTable().arrive( payload.nextEntityId(), nullptr ); // in something that is gone here
    }
}

FlowOut&
Demuxer::createFlowOut( Adapter& adapter ) {
    if ( !adapter.flowOut() ) {
        adapter.flowOutIs( std::make_unique<FlowOut>( adapter ) );
    }
    return *adapter.flowOut();
}

bool
Demuxer::pump() {
    while ( FlowOut* const flow = waiting_.head() ) {
        Adapter& root = flow->adapter();
        if ( !root.handleFlowOut() ) {
            return false;
        }
        root.freeResyncState();
    }
    return true;
}

void
Demuxer::messageSent() {
    ++messagesSent_;
    owner_.messageDone();
}

} // namespace Kiv::NboAttrLog
