#pragma once

#include <span>
#include <vector>

#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"
#include "platform/kiv/nboattrlog/MsgHeader.h"

namespace Kiv {

class String8;

namespace NboAttrLog {

/// Collects values in network byte order.
class Out : public PtrInterface {
  public:
    class Record;

    std::span<U8 const> bytes() const { return bytes_; }
    std::size_t size() const { return bytes_.size(); }
    /// Drops what was written from byte `size` on, or the first `count` bytes.
    void sizeIs( std::size_t size ) { bytes_.resize( size ); }
    void headDel( std::size_t count );

    void nextBytesIs( std::span<U8 const> bytes ) {
        bytes_.insert( bytes_.end(), bytes.begin(), bytes.end() );
    }
    void nextU8Is( U8 value ) { bytes_.push_back( value ); }
    void nextU16Is( U16 value ) { nextNumberIs( value, 2 ); }
    void nextU32Is( U32 value ) { nextNumberIs( value, 4 ); }
    void nextboolIs( bool value ) { nextU8Is( value ? 1 : 0 ); }
    void nextSecondsIs( Seconds value );
    /// Raises AttrLogRecordException for a text that no stream may carry.
    void nextStringIs( String8 const& text );
    void nextEntityIdIs( EntityId const& id );
    void nextHeaderIs( MsgHeader const& header );
    /// Writes a number over four bytes that stand already.
    void u32Is( std::size_t at, U32 value );

  private:
    void nextNumberIs( U64 value, unsigned width );

    std::vector<U8> bytes_;
};

/// One message in the making: its header and opening token, then what the caller writes, then the closing
/// token. One that is not finished leaves nothing behind.
class Out::Record {
  public:
    Record( Out& out, MsgHeader const& header );
    Record( Record const& ) = delete;
    Record& operator=( Record const& ) = delete;
    ~Record();

    std::span<U8 const> payload() const;
    void finish();

  private:
    Out& out_;
    std::size_t const at_;
    bool isFinished_ = false;
};

} // namespace NboAttrLog
} // namespace Kiv
