#include "platform/kiv/Connection.h"

#include <algorithm>

#include "platform/kiv/MsgChannel.h"
#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"
#include "platform/quillog/Trace.h"

namespace Kiv {

namespace {

using NboAttrLog::In;
using NboAttrLog::MsgHeader;
using NboAttrLog::Operation;
using NboAttrLog::Out;

TraceHandle replicationTrace( "Replication" );

} // namespace

/// What a connection consists of while it is open, and the little that is left of it afterwards.
class Connection::Stream : private NboAttrLog::StreamOwner, private IoHandler, private TurnEndHandler {
  public:
    Stream(
        Connection& connection, int descriptor, Role role, std::vector<Mount> const& mounts,
        String8 const& peerName, Ptr<ActivityConfig> const& activity
    );
    ~Stream() override;

    void end( String8 const& reason );
    bool isOpen() const { return !isEnded_; }
    bool isSettled() const;
    bool isWritable( Name const& mount ) const;
    Counters const& counters();
    std::size_t outputBytes() const { return channel_.outputBytes(); }

    Role const role_;
    String8 const peerName_;
    String8 endReason_;
    bool isSynchronised_ = false;
    std::function<void( String8 const& reason )> onEnd_;
    std::function<void()> onSynchronised_;
    std::function<void()> onSettled_;

  private:
    struct Mounted {
        Mount mount;
        bool isMounted = false;
        bool isAskedAsNew = false; ///< by a client: the mirror holds nothing
    };

    Ptr<Out> const& nboAttrLogOut() override { return channel_.out(); }
    U32 frameNumber() const override { return channel_.frameNumber(); }
    void messageDone() override;
    bool hasSufficientBuffer() const override { return !isEnded_ && channel_.hasSufficientBuffer(); }
    void handleWaiting() override { askForTurnEnd(); }
    void handleFailure( String8 const& reason ) override;
    void handleRefusal( String8 const& reason ) override;
    void handleControl( MsgHeader const& header, In& payload ) override;
    String8 const& peerName() const override { return peerName_; }

    void handleIo( U32 events ) override;
    void handleTurnEnd() override;

    void askForTurnEnd();
    void watch( U32 events );
    void takeInput();
    void apply( MsgChannel::Frame const& frame );
    void sendOutput();
    void askForMounts();
    void tellSynchronised();
    void tellEnd();
    void tellUser();
    void handleMount( In& payload, bool isComplete );
    void handleOrphan( In& payload, bool isWritable );
    void handleSynchronised( In& payload );
    Mounted& mount( String8 const& name );
    void finish();

    Connection& connection_;
    Ptr<ActivityConfig> const activity_;
    ActivitySm& loop_;
    MsgChannel channel_;
    std::unique_ptr<NboAttrLog::Demuxer> demuxer_;
    std::vector<Mounted> mounts_;
    Counters counters_;
    String8 failure_;
    U32 watched_ = 0;
    bool isEnded_ = false;
    bool isFinished_ = false;
    bool isTurnEndAsked_ = false;
    bool isSynchronisedTold_ = false;
    bool wasUnsettled_ = false;
};

Connection::Stream::Stream(
    Connection& connection, int descriptor, Role role, std::vector<Mount> const& mounts,
    String8 const& peerName, Ptr<ActivityConfig> const& activity
)
    : role_( role ),
      peerName_( peerName ),
      connection_( connection ),
      activity_( activity ),
      loop_( *kivActivitySmFor( activity.get() ) ),
      channel_( descriptor, role == Role::client, outputLimit, inputLimit ),
      demuxer_(
          std::make_unique<NboAttrLog::Demuxer>( static_cast<StreamOwner&>( *this ), role == Role::client )
      ) {
    for ( Mount const& mount : mounts ) {
        validPtr( mount.entity );
        mounts_.push_back( { mount } );
    }
    if ( role_ == Role::client ) {
        askForMounts();
    }
    watch( EPOLLIN );
    askForTurnEnd();
}

Connection::Stream::~Stream() {
    finish();
    if ( isTurnEndAsked_ ) {
        loop_.turnEndDel( this );
    }
}

/// Lets go of the socket and of every entity.
void
Connection::Stream::finish() {
    watch( 0 );
    channel_.close();
    counters();
    demuxer_.reset();
}

void
Connection::Stream::watch( U32 events ) {
    if ( events == watched_ || channel_.descriptor() < 0 ) {
        return;
    }
    watched_ = events;
    if ( events == 0 ) {
        loop_.ioHandlerDel( channel_.descriptor() );
    } else if ( !loop_.ioHandlerIs( channel_.descriptor(), events, this ) ) {
        handleFailure( "descriptor cannot be waited for" );
    }
}

void
Connection::Stream::askForTurnEnd() {
    if ( !isTurnEndAsked_ ) {
        isTurnEndAsked_ = true;
        loop_.turnEndIs( this );
    }
}

void
Connection::Stream::messageDone() {
    wasUnsettled_ = true;
    if ( channel_.isFrameFull() ) {
        channel_.flush();
    }
    askForTurnEnd();
}

/// From within a mutator: the end comes with the end of the turn.
void
Connection::Stream::handleFailure( String8 const& reason ) {
    failure_ = failure_.empty() ? reason : failure_;
    askForTurnEnd();
}

void
Connection::Stream::handleRefusal( String8 const& reason ) {
    KIV_TRACE( replicationTrace, 1 ) << "replication with " << peerName_ << ": " << reason;
}

void
Connection::Stream::handleIo( U32 events ) {
    if ( isEnded_ || demuxer_->isApplying() ) {
        return; // the loop runs within a reactor that something applied has called
    }
    Ptr<Connection> const self( &connection_ );
    if ( ( events & ~U32{ EPOLLOUT } ) != 0 ) {
        takeInput();
    }
    askForTurnEnd();
}

void
Connection::Stream::takeInput() {
    try {
        bool const isAlive = channel_.receive();
        for ( MsgChannel::Frame frame{}; !isEnded_ && channel_.next( frame ); ) {
            apply( frame );
        }
        if ( !isAlive && !isEnded_ ) {
            end( channel_.isCut() ? "peer closed the stream in the middle of a frame"
                                  : "peer closed the stream" );
        }
    } catch ( std::exception const& wrong ) {
        end( wrong.what() );
    }
}

void
Connection::Stream::apply( MsgChannel::Frame const& frame ) {
    struct Applying {
        explicit Applying( NboAttrLog::Demuxer& demuxer ) : demuxer_( demuxer ) {
            demuxer_.isApplyingIs( true );
        }
        ~Applying() { demuxer_.isApplyingIs( false ); }
        NboAttrLog::Demuxer& demuxer_;
    };

    channel_.frameClose(); // what was written before does not know this frame
    demuxer_->pendingWrites().appliedIs( channel_.acknowledged() );
    Applying const applying( *demuxer_ );
    for ( In in( frame.content ); in.bytesLeft() != 0 && !isEnded_; ) {
        MsgHeader const header = in.nextHeader();
        in.nextTokenIs( NboAttrLog::tokenBegin );
        if ( header.length > NboAttrLog::maxPayloadBytes ) {
            throwAttrLogRecordException( "message is too long" );
        }
        In payload( in.nextBytes( header.length ) );
        in.nextTokenIs( NboAttrLog::tokenEnd );
        demuxer_->messageIs( header, payload );
    }
    channel_.appliedIs( frame );
}

void
Connection::Stream::handleTurnEnd() {
    isTurnEndAsked_ = false;
    Ptr<Connection> const self( &connection_ );
    if ( demuxer_ && demuxer_->isApplying() ) {
        askForTurnEnd();
        return;
    }
    if ( !failure_.empty() ) {
        end( failure_ );
    }
    if ( isEnded_ ) {
        tellEnd();
        return;
    }
    try {
        sendOutput();
    } catch ( std::exception const& wrong ) {
        end( wrong.what() );
    }
    tellUser();
}

void
Connection::Stream::sendOutput() {
    if ( demuxer_->pump() && role_ == Role::server && !isSynchronised_ ) {
        tellSynchronised();
    }
    channel_.acknowledge();
    channel_.flush();
    bool const hasMore = channel_.outputBytes() != 0 || demuxer_->hasWaiting();
    watch( hasMore ? EPOLLIN | EPOLLOUT : EPOLLIN );
}

void
Connection::Stream::tellUser() {
    if ( isSynchronised_ && !std::exchange( isSynchronisedTold_, true ) && onSynchronised_ ) {
        std::function<void()> const told = onSynchronised_; // may be replaced while it runs
        told();
    }
    if ( wasUnsettled_ && isSettled() ) {
        wasUnsettled_ = false;
        if ( std::function<void()> const told = onSettled_ ) {
            told();
        }
    }
}

void
Connection::Stream::end( String8 const& reason ) {
    if ( isEnded_ ) {
        return;
    }
    KIV_TRACE( replicationTrace, 1 ) << "replication with " << peerName_ << " ends: " << reason;
    if ( channel_.hasSufficientBuffer() && reason.bytes() <= NboAttrLog::maxTextBytes ) {
        MsgHeader header;
        header.operation = Operation::end;
        Out::Record record( *channel_.out(), header );
        channel_.out()->nextStringIs( reason );
        record.finish();
    }
    channel_.flush();
    isEnded_ = true;
    endReason_ = reason;
    watch( 0 );
    channel_.close();
    askForTurnEnd();
}

void
Connection::Stream::tellEnd() {
    if ( std::exchange( isFinished_, true ) ) {
        return;
    }
    finish();
    if ( std::function<void( String8 const& )> const told = std::exchange( onEnd_, nullptr ) ) {
        told( endReason_ );
    }
}

bool
Connection::Stream::isSettled() const {
    return !isEnded_ && !demuxer_->hasWaiting() && !channel_.hasOpenMessages() && channel_.isAcknowledged();
}

bool
Connection::Stream::isWritable( Name const& name ) const {
    return std::any_of( mounts_.begin(), mounts_.end(), [&]( Mounted const& one ) {
        return one.mount.name == name && one.isMounted && one.mount.isWritable;
    } );
}

Connection::Counters const&
Connection::Stream::counters() {
    if ( demuxer_ ) {
        counters_ = { channel_.bytesReceived(), channel_.bytesSent(), demuxer_->messagesApplied(),
                      demuxer_->messagesSent() };
    }
    return counters_;
}

void
Connection::Stream::askForMounts() {
    for ( Mounted& one : mounts_ ) {
        Entity const& mirror = *one.mount.entity;
        MsgHeader header;
        header.operation = Operation::mount;
        one.isAskedAsNew = NboAttrLog::Plan::of( *mirror.fwkType() ).isPristine( mirror );
        header.secondFlags = one.isAskedAsNew ? U8{ 0 } : NboAttrLog::mountComplete;
        Out::Record record( *channel_.out(), header );
        channel_.out()->nextStringIs( one.mount.name.string() );
        record.finish();
    }
}

void
Connection::Stream::tellSynchronised() {
    bool const isAsked =
        std::any_of( mounts_.begin(), mounts_.end(), []( Mounted const& one ) { return one.isMounted; } );
    if ( isAsked ) {
        MsgHeader header;
        header.operation = Operation::synchronised;
        Out::Record( *channel_.out(), header ).finish();
        isSynchronised_ = true;
    }
}

Connection::Stream::Mounted&
Connection::Stream::mount( String8 const& name ) {
    auto const at = std::find_if( mounts_.begin(), mounts_.end(), [&]( Mounted const& one ) {
        return one.mount.name.string() == name;
    } );
    if ( at == mounts_.end() ) {
        throwAttrLogRecordException( "there is no mount " + name );
    }
    if ( at->isMounted ) {
        throwAttrLogRecordException( "mount " + name + " is asked for twice" );
    }
    return *at;
}

void
Connection::Stream::handleControl( MsgHeader const& header, In& payload ) {
    bool const isClient = role_ == Role::client;
    if ( header.operation == Operation::end ) {
        end( "peer: " + payload.nextString() );
    } else if ( header.operation == Operation::mount && !isClient ) {
        handleMount( payload, ( header.secondFlags & NboAttrLog::mountComplete ) != 0 );
    } else if ( header.operation == Operation::orphan && isClient ) {
        handleOrphan( payload, ( header.secondFlags & NboAttrLog::mountWritable ) != 0 );
    } else if ( header.operation == Operation::synchronised && isClient ) {
        handleSynchronised( payload );
    } else {
        throwAttrLogRecordException( "unknown message about the stream" );
    }
}

void
Connection::Stream::handleMount( In& payload, bool isComplete ) {
    Mounted& asked = mount( payload.nextString() );
    payload.endIs();
    asked.isMounted = true;
    isSynchronised_ = false;
    demuxer_->serve( asked.mount.name, asked.mount.entity, asked.mount.isWritable, isComplete );
}

void
Connection::Stream::handleSynchronised( In& payload ) {
    payload.endIs();
    for ( Mounted const& one : mounts_ ) {
        if ( !one.isMounted ) {
            throwAttrLogRecordException( "mount " + one.mount.name.string() + " has not been told" );
        }
    }
    isSynchronised_ = true;
}

void
Connection::Stream::handleOrphan( In& payload, bool isWritable ) {
    NboAttrLog::EntityId const id = payload.nextEntityId();
    Mounted& told = mount( payload.nextString() );
    String8 const type = payload.nextString();
    payload.endIs();
    if ( type != told.mount.entity->fwkType()->name() ) {
        throwAttrLogRecordException( "mount " + told.mount.name.string() + " is of class " + type );
    }
    if ( told.isAskedAsNew ) { // what was put there meanwhile goes like any other change without a stream
        NboAttrLog::Plan::of( *told.mount.entity->fwkType() ).clear( *told.mount.entity );
    }
    demuxer_->mirror( told.mount.name, told.mount.entity, isWritable, id );
    told.isMounted = true;
    told.mount.isWritable = isWritable;
}

Connection::Connection(
    int descriptor, Role role, std::vector<Mount> const& mounts, String8 const& peerName,
    Ptr<ActivityConfig> const& activity
)
    : stream_( std::make_unique<Stream>( *this, descriptor, role, mounts, peerName, activity ) ) {}

Connection::~Connection() = default;

void
Connection::onEndIs( std::function<void( String8 const& )> const& callback ) {
    stream_->onEnd_ = callback;
}

void
Connection::onSynchronisedIs( std::function<void()> const& callback ) {
    stream_->onSynchronised_ = callback;
}

void
Connection::onSettledIs( std::function<void()> const& callback ) {
    stream_->onSettled_ = callback;
}

bool
Connection::isOpen() const {
    return stream_->isOpen();
}

String8 const&
Connection::endReason() const {
    return stream_->endReason_;
}

bool
Connection::isSynchronised() const {
    return stream_->isSynchronised_;
}

bool
Connection::isSettled() const {
    return stream_->isSettled();
}

bool
Connection::isWritable( Name const& mount ) const {
    return stream_->isWritable( mount );
}

void
Connection::end( String8 const& reason ) {
    stream_->end( reason );
}

Connection::Role
Connection::role() const {
    return stream_->role_;
}

String8 const&
Connection::peerName() const {
    return stream_->peerName_;
}

Connection::Counters const&
Connection::counters() const {
    return stream_->counters();
}

std::size_t
Connection::outputBytes() const {
    return stream_->outputBytes();
}

} // namespace Kiv
