#include "platform/kiv/MsgChannel.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Kiv {

namespace {

constexpr U8 magic[] = { 'K', 'i', 'v', 'N', 'b', 'o', '\r', '\n' };
constexpr std::size_t compactAt = 64 * 1024;

} // namespace

MsgChannel::MsgChannel( int descriptor, bool isClient, std::size_t outputLimit, std::size_t inputLimit )
    : descriptor_( descriptor ),
      isClient_( isClient ),
      outputLimit_( outputLimit ),
      out_( new NboAttrLog::Out ),
      in_( inputLimit ) {
    fcntl( descriptor_, F_SETFL, fcntl( descriptor_, F_GETFL ) | O_NONBLOCK );
    out_->nextBytesIs( magic );
    out_->nextU16Is( version );
    out_->nextU8Is( isClient ? 1 : 0 );
    out_->nextU8Is( 0 );
}

MsgChannel::~MsgChannel() {
    close();
}

void
MsgChannel::close() {
    if ( descriptor_ >= 0 ) {
        ::close( descriptor_ );
        descriptor_ = -1;
    }
}

Ptr<NboAttrLog::Out> const&
MsgChannel::out() {
    if ( !isFrameOpen_ ) {
        isFrameOpen_ = true;
        frameAt_ = out_->size();
        out_->sizeIs( frameAt_ + frameHeaderBytes );
    }
    return out_;
}

void
MsgChannel::frameClose() {
    if ( !isFrameOpen_ ) {
        return;
    }
    isFrameOpen_ = false;
    if ( openBytes() == 0 && !owesAcknowledgement_ ) {
        out_->sizeIs( frameAt_ );
        return;
    }
    ++lastFrame_;
    if ( openBytes() != 0 ) {
        lastWithMessages_ = lastFrame_;
    }
    out_->u32Is( frameAt_, static_cast<U32>( openBytes() ) );
    out_->u32Is( frameAt_ + 4, lastFrame_ );
    out_->u32Is( frameAt_ + 8, applied_ );
    owesAcknowledgement_ = false;
}

void
MsgChannel::acknowledge() {
    if ( owesAcknowledgement_ && hasSufficientBuffer() ) {
        out();
        frameClose();
    }
}

void
MsgChannel::flush() {
    frameClose();
    while ( outputBytes() != 0 && !isBroken_ && descriptor_ >= 0 ) {
        ssize_t const taken =
            send( descriptor_, out_->bytes().data() + sent_, outputBytes(), MSG_NOSIGNAL | MSG_DONTWAIT );
        if ( taken < 0 ) {
            isBroken_ = errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR && errno != ENOBUFS;
            break;
        }
        sent_ += static_cast<std::size_t>( taken );
        bytesSent_ += static_cast<U64>( taken );
    }
    if ( outputBytes() == 0 || isBroken_ ) {
        out_->sizeIs( 0 );
        sent_ = 0;
    } else if ( sent_ >= compactAt ) {
        out_->headDel( sent_ );
        sent_ = 0;
    }
}

bool
MsgChannel::receive() {
    std::copy(
        in_.begin() + static_cast<std::ptrdiff_t>( inBegin_ ),
        in_.begin() + static_cast<std::ptrdiff_t>( inEnd_ ), in_.begin()
    );
    inEnd_ -= inBegin_;
    inBegin_ = 0;
    ssize_t const got = recv( descriptor_, in_.data() + inEnd_, in_.size() - inEnd_, MSG_DONTWAIT );
    if ( got > 0 ) {
        inEnd_ += static_cast<std::size_t>( got );
        bytesReceived_ += static_cast<U64>( got );
        return true;
    }
    return got < 0 && ( errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR );
}

bool
MsgChannel::takeGreeting() {
    std::span<U8 const> const bytes = input();
    std::size_t const known = std::min( bytes.size(), std::size( magic ) );
    if ( !std::equal( bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>( known ), magic ) ) {
        throwAttrLogRecordException( "peer does not speak this protocol" );
    }
    if ( bytes.size() < greetingBytes ) {
        return false;
    }
    NboAttrLog::In in( bytes.subspan( std::size( magic ) ) );
    U16 const theirs = in.nextU16();
    if ( theirs != version ) {
        throwAttrLogRecordException(
            "peer speaks version " + std::to_string( theirs ) + ", and not " + std::to_string( version )
        );
    }
    if ( in.nextU8() != ( isClient_ ? 0 : 1 ) || in.nextU8() != 0 ) {
        throwAttrLogRecordException( "peer has the wrong role" );
    }
    inBegin_ += greetingBytes;
    isGreeted_ = true;
    return true;
}

void
MsgChannel::checkFrame( U32 length, U32 number, U32 acknowledged ) const {
    if ( length > maxFrameBytes ) {
        throwAttrLogRecordException( "frame is too long" );
    }
    if ( number != lastArrived_ + 1 ) {
        throwAttrLogRecordException( "frame is out of order" );
    }
    if ( acknowledged - acknowledged_ > lastFrame_ - acknowledged_ ) {
        throwAttrLogRecordException( "frame acknowledges what was never sent" );
    }
}

bool
MsgChannel::next( Frame& frame ) {
    if ( !isGreeted_ && !takeGreeting() ) {
        return false;
    }
    if ( input().size() < frameHeaderBytes ) {
        return false;
    }
    NboAttrLog::In in( input() );
    U32 const length = in.nextU32();
    U32 const number = in.nextU32();
    U32 const acknowledged = in.nextU32();
    checkFrame( length, number, acknowledged );
    if ( in.bytesLeft() < length ) {
        return false;
    }
    frame = { number, in.nextBytes( length ) };
    inBegin_ += frameHeaderBytes + length;
    lastArrived_ = number;
    acknowledged_ = acknowledged;
    return true;
}

void
MsgChannel::appliedIs( Frame const& frame ) {
    applied_ = frame.number;
    owesAcknowledgement_ |= !frame.content.empty();
}

} // namespace Kiv
