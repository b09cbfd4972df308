#pragma once

#include "platform/kiv/nboattrlog/In.h"
#include "platform/kiv/nboattrlog/Out.h"

namespace Kiv {

/// The bytes of one replicated stream: a greeting, then frames of messages, over a non-blocking socket, with
/// bounded buffers both ways. A frame has a number of its own and says up to which frame of the other side
/// everything has been applied when it was written.
class MsgChannel {
  public:
    static constexpr std::size_t greetingBytes = 12;
    static constexpr std::size_t frameHeaderBytes = 12;
    static constexpr std::size_t maxFrameBytes = 64 * 1024;  ///< without its header
    static constexpr std::size_t fullFrameBytes = 24 * 1024; ///< a frame of this length is closed
    static constexpr U16 version = 1;

    struct Frame {
        U32 number;
        std::span<U8 const> content; ///< until the next call
    };

    /// Takes over the descriptor.
    MsgChannel( int descriptor, bool isClient, std::size_t outputLimit, std::size_t inputLimit );
    MsgChannel( MsgChannel const& ) = delete;
    MsgChannel& operator=( MsgChannel const& ) = delete;
    ~MsgChannel();

    int descriptor() const { return descriptor_; }
    void close();

    // Output.
    /// Where messages are written; opens a frame.
    Ptr<NboAttrLog::Out> const& out();
    /// Of the open frame, or of the next.
    U32 frameNumber() const { return lastFrame_ + 1; }
    bool isFrameFull() const { return isFrameOpen_ && openBytes() >= fullFrameBytes; }
    bool hasOpenMessages() const { return isFrameOpen_ && openBytes() != 0; }
    void frameClose();
    /// A frame without messages, where the other side has to be told how far its own were applied.
    void acknowledge();
    bool hasSufficientBuffer() const { return outputBytes() < outputLimit_; }
    std::size_t outputBytes() const { return out_->size() - sent_; }
    /// Closes the frame and hands over what the socket takes. Failures show when the channel is read.
    void flush();
    /// The other side has applied everything that was written.
    bool isAcknowledged() const { return static_cast<S32>( lastWithMessages_ - acknowledged_ ) <= 0; }
    U32 acknowledged() const { return acknowledged_; }

    // Input.
    /// Takes in what has arrived. False when nothing will come any more.
    bool receive();
    /// The next whole frame, if there is one. Raises AttrLogRecordException for what is no greeting or frame.
    bool next( Frame& frame );
    void appliedIs( Frame const& frame );
    /// The stream has ended in the middle of something.
    bool isCut() const { return inEnd_ != inBegin_ || !isGreeted_; }

    U64 bytesReceived() const { return bytesReceived_; }
    U64 bytesSent() const { return bytesSent_; }

  private:
    std::size_t openBytes() const { return out_->size() - frameAt_ - frameHeaderBytes; }
    std::span<U8 const> input() const { return { in_.data() + inBegin_, inEnd_ - inBegin_ }; }
    bool takeGreeting();
    void checkFrame( U32 length, U32 number, U32 acknowledged ) const;

    int descriptor_;
    bool const isClient_;
    std::size_t const outputLimit_;
    Ptr<NboAttrLog::Out> const out_;
    std::size_t sent_ = 0;    ///< bytes of out_ that the socket has taken
    std::size_t frameAt_ = 0; ///< of the open frame
    bool isFrameOpen_ = false;
    bool isBroken_ = false; ///< the socket takes nothing any more
    U32 lastFrame_ = 0;
    U32 lastWithMessages_ = 0;
    U32 acknowledged_ = 0; ///< by the other side
    std::vector<U8> in_;
    std::size_t inBegin_ = 0;
    std::size_t inEnd_ = 0;
    bool isGreeted_ = false;
    U32 lastArrived_ = 0;
    U32 applied_ = 0;
    bool owesAcknowledgement_ = false;
    U64 bytesReceived_ = 0;
    U64 bytesSent_ = 0;
};

} // namespace Kiv
