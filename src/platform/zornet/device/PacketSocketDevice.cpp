#include "platform/zornet/device/PacketSocketDevice.h"

#include <cerrno>
#include <cstring>

#include "platform/kiv/Clock.h"
#include "platform/quillog/Trace.h"
#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/device/NamespaceEntry.h"

namespace Zornet {

namespace {

Kiv::TraceHandle deviceTrace( "Device" );
constexpr int problemLevel = 1;
constexpr int progressLevel = 3;

/// How long a full queue of the link is left to drain. The kernel does not tell when it has.
constexpr Kiv::Seconds queueDrainTime = 100e-6;

/// How long frames are heard in one turn of the loop. However fast they come, timers have theirs in between.
constexpr Kiv::Seconds receiveTime = 1e-3;

std::string
problemOf( LinkState const& state ) {
    if ( state.error != 0 ) {
        return std::string( "cannot watch its namespace: " ) + std::strerror( state.error );
    }
    return state.index == 0 ? "no such device" : "device is down";
}

} // namespace

PacketSocketDevice::PacketSocketDevice(
    NamespaceName const& ns, Kiv::String8 const& name, Kiv::Ptr<LinkMonitor> const& links,
    Kiv::Ptr<Kiv::ActivityConfig> const& activity
)
    : Device( ns, name, false ), links_( links ), activity_( activity ) {}

PacketSocketDevice::~PacketSocketDevice() {
    leave();
}

// The link.

void
PacketSocketDevice::handleFirstPort() {
    if ( !watching_ ) {
        watching_ = true;
        handleLink( links_->watchIs( name(), this ) );
    }
}

void
PacketSocketDevice::handleNoPort() {
    flush();
}

void
PacketSocketDevice::handleLink( LinkState const& state ) {
    if ( socket_ && !( state.up && state.index == socket_->linkIndex() ) ) {
        stop();
    }
    if ( !state.up ) {
        problemIs( problemOf( state ) );
    } else if ( !socket_ ) {
        start( state );
    }
    flush();
}

void
PacketSocketDevice::start( LinkState const& state ) {
    NamespaceEntry const entry( ns() );
    socket_ = entry.error() == 0 ? PacketSocket::open( state.index ) : nullptr;
    if ( !socket_ ) {
        int const error = entry.error() != 0 ? entry.error() : errno;
        problemIs( std::string( "cannot open a packet socket: " ) + std::strerror( error ) );
        return;
    }
    batch_ = std::make_unique<SendBatch>();
    burst_ = std::make_unique<Burst>();
    activity().ioHandlerIs( socket_->receiver(), EPOLLIN, this );
    problemIs( "" );
    runningIs( true );
}

void
PacketSocketDevice::stop() {
    while ( sendingThread_ && sendingThread_->underWay() != 0 ) {
        settle( 0 ); // which may tell of an error, and whoever hears of it may send more, or close the device
    }
    if ( !socket_ ) {
        return;
    }
    hindranceIs( Hindrance::none );
    activity().ioHandlerDel( socket_->receiver() );
    sendingThread_ = nullptr;
    burst_ = nullptr;
    socket_ = nullptr;
    std::unique_ptr<SendBatch> const waiting = std::move( batch_ );
    runningIs( false );
    lose( *waiting );
}

void
PacketSocketDevice::leave() {
    stop();
    if ( turnEndAsked_ ) {
        activity().turnEndDel( this );
        turnEndAsked_ = false;
    }
    if ( watching_ ) {
        watching_ = false;
        links_->watchDel( name() );
    }
    problem_.reset();
}

/// Tells once of what keeps the device from running; the empty text says that nothing does.
void
PacketSocketDevice::problemIs( std::string const& problem ) {
    if ( problem == problem_ ) {
        return;
    }
    problem_ = problem;
    int const level = problem.empty() ? progressLevel : problemLevel;
    KIV_TRACE( deviceTrace, level ) << name() << ( ns().empty() ? "" : " in " ) << ns() << ": "
                                    << ( problem.empty() ? "running" : problem );
}

// Reception.

void
PacketSocketDevice::handleIo( Kiv::U32 events ) {
    Kiv::Ptr<Device> const self( this );
    if ( ( events & EPOLLERR ) != 0 && socket_ ) {
        int const error = socket_->takeError();
        KIV_TRACE( deviceTrace, progressLevel ) << name() << ": " << std::strerror( error );
    }
    if ( ( events & EPOLLOUT ) != 0 && hindrance_ == Hindrance::socketFull ) {
        hindranceIs( Hindrance::none );
        flush();
    }
    if ( ( events & EPOLLIN ) != 0 && socket_ ) {
        receive();
    }
}

/// The socket, and its ring with it, outlives a reader that closes the device.
void
PacketSocketDevice::receive() {
    Kiv::Ptr<PacketSocket> const socket = socket_;
    socket->receive( [this]( std::span<U8 const> frame ) { deliver( frame ); }, receiveTime );
    if ( U32 const lost = socket->takeLostFrames() ) {
        rxErrorsInc( lost );
    }
}

// Transmission.

bool
PacketSocketDevice::send( EthDevPam const& sender, std::span<U8 const> frame ) {
    if ( !socket_ || !store( sender, frame ) ) {
        return false;
    }
    if ( hindrance_ != Hindrance::none ) {
        return true;
    }
    if ( !turnEndAsked_ ) {
        turnEndAsked_ = true;
        activity().turnEndIs( this );
    }
    if ( batch_->outsideBursts() >= Burst::capacity ) {
        sendFullBurst();
    }
    return true;
}

/// What the thread has sent makes room.
bool
PacketSocketDevice::store( EthDevPam const& sender, std::span<U8 const> frame ) {
    U64 const number = portNumber( sender );
    if ( batch_->push( number, frame ) ) {
        return true;
    }
    settle( 0 );
    return socket_ && batch_->push( number, frame );
}

void
PacketSocketDevice::sendFullBurst() {
    if ( !sendingThread_ ) {
        sendingThread_ = SendingThread::make( socket_ );
    }
    if ( !sendingThread_ ) {
        flush();
        return;
    }
    if ( sendingThread_->underWay() == SendingThread::depth ) {
        settle( SendingThread::depth / 2 );
    }
    if ( sendingThread_ && hindrance_ == Hindrance::none ) {
        batch_->fill( sendingThread_->next() );
        sendingThread_->give();
    }
}

void
PacketSocketDevice::handleTurnEnd() {
    turnEndAsked_ = false;
    flush();
}

std::size_t
PacketSocketDevice::expire( Kiv::Seconds now ) {
    if ( now < retryTime_ ) {
        return 0;
    }
    hindranceIs( Hindrance::none );
    flush();
    return 1;
}

void
PacketSocketDevice::flush() {
    if ( hindrance_ == Hindrance::none ) {
        sendWaiting();
    }
    if ( ports() == 0 && ( !socket_ || batch_->empty() ) ) {
        leave();
    }
}

/// Whoever hears of an error meanwhile may send more, through the thread too, and may close the device.
void
PacketSocketDevice::sendWaiting() {
    while ( socket_ && !batch_->empty() && hindrance_ == Hindrance::none ) {
        if ( sendingThread_ && sendingThread_->underWay() != 0 ) {
            settle( 0 );
            continue;
        }
        batch_->fill( *burst_ );
        burst_->send( *socket_ );
        account( *burst_ );
        if ( int const refusal = burst_->refusal() ) {
            handleRefusal( refusal );
        }
    }
}

/// Takes back what the thread has tried, until that many bursts are under way at most.
void
PacketSocketDevice::settle( unsigned most ) {
    int refusal = 0;
    while ( sendingThread_ && sendingThread_->underWay() > most ) {
        Burst const& burst = sendingThread_->tried();
        account( burst );
        if ( burst.refusal() != 0 ) {
            refusal = burst.refusal();
            most = 0;
        }
        sendingThread_->takeBack();
    }
    if ( refusal != 0 ) {
        handleRefusal( refusal );
    }
}

void
PacketSocketDevice::account( Burst const& burst ) {
    for ( iovec const& frame : burst.sent() ) {
        tellSent( { static_cast<U8 const*>( frame.iov_base ), frame.iov_len } );
    }
    batch_->pop( burst.sent().size() );
}

/// The oldest frame was not taken. It waits where there was no room for it. It also waits while the link is
/// down: the link may be up again already, and if it is not, the monitor will say so. Otherwise it is at
/// fault itself, and goes.
void
PacketSocketDevice::handleRefusal( int error ) {
    batch_->emptyBursts();
    switch ( error ) {
    case EAGAIN: return hindranceIs( Hindrance::socketFull );
    case ENETDOWN:
    case ENOBUFS: return hindranceIs( Hindrance::queueFull );
    default: break;
    }
    Kiv::Ptr<EthDevPam> const sender = port( batch_->oldestSender() );
    batch_->pop( 1 );
    tellSendLosses( 1 );
    if ( sender ) {
        sender->txErrorsInc( 1 );
    }
}

void
PacketSocketDevice::hindranceIs( Hindrance hindrance ) {
    if ( hindrance == hindrance_ ) {
        return;
    }
    if ( hindrance_ == Hindrance::socketFull ) {
        activity().ioHandlerDel( socket_->sender() );
    } else if ( hindrance_ == Hindrance::queueFull ) {
        retryTime_ = Kiv::never;
        activity().deadlineSourceDel( this );
    }
    hindrance_ = hindrance;
    if ( hindrance == Hindrance::socketFull ) {
        activity().ioHandlerIs( socket_->sender(), EPOLLOUT, this );
    } else if ( hindrance == Hindrance::queueFull ) {
        retryTime_ = Kiv::now() + queueDrainTime;
        activity().deadlineSourceIs( this );
    }
}

/// Each frame counts where it came from.
void
PacketSocketDevice::lose( SendBatch& waiting ) {
    tellSendLosses( waiting.size() );
    for ( ; !waiting.empty(); waiting.pop( 1 ) ) {
        if ( Kiv::Ptr<EthDevPam> const sender = port( waiting.oldestSender() ) ) {
            sender->txDropsInc( 1 );
        }
    }
}

} // namespace Zornet
