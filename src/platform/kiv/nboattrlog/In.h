#pragma once

#include <span>

#include "platform/kiv/nboattrlog/Exceptions.h"
#include "platform/kiv/nboattrlog/MsgHeader.h"

namespace Kiv {

/// Marks the constructor of a value that reads it from a stream.
struct StreamBogon {};

namespace NboAttrLog {

/// Reads values in network byte order from bytes that it does not own. Every reader raises
/// AttrLogRecordException where the bytes end too soon or are no such value.
class In {
  public:
    explicit In( std::span<U8 const> bytes ) : bytes_( bytes ) {}

    std::size_t bytesLeft() const { return bytes_.size(); }
    /// Takes the next `count` bytes.
    std::span<U8 const> nextBytes( std::size_t count );
    U8 nextU8() { return nextBytes( 1 )[0]; }
    U16 nextU16() { return static_cast<U16>( nextNumber( 2 ) ); }
    U32 nextU32() { return static_cast<U32>( nextNumber( 4 ) ); }
    /// Zero or one.
    bool nextbool();
    /// Any number but NaN.
    Seconds nextSeconds();
    /// Four bytes of length, then that many bytes.
    String8 nextString();
    EntityId nextEntityId();
    MsgHeader nextHeader();
    void nextTokenIs( U8 token );
    /// Raises unless everything has been read.
    void endIs() const;

  private:
    U64 nextNumber( std::size_t width );

    std::span<U8 const> bytes_;
};

} // namespace NboAttrLog
} // namespace Kiv
