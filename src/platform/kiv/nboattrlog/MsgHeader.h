#pragma once

#include "platform/kiv/nboattrlog/EntityId.h"

namespace Kiv::NboAttrLog {

/// What a message does; the first flag byte of its header.
enum class Operation : U8 {
    value = 0,        ///< a scalar; with a negative attribute number the end of that collection's full send
    member = 1,       ///< a member of a collection, or the one child, exists
    del = 2,          ///< it exists no more
    orphan = 3,       ///< a mount's root, under its name
    mount = 4,        ///< asks for a mount
    synchronised = 5, ///< every mount has been told in full
    end = 6,          ///< the sender ends the stream, with a reason
};

/// Stands before every message. The two fields that are not named by the operation are zero.
struct MsgHeader {
    static constexpr std::size_t bytes = 22;

    EntityId entity;
    AttributeId attribute = 0;
    Operation operation = Operation::value;
    U32 length = 0; ///< of the payload, in bytes
    U32 secondWord = 0;
    U8 secondFlags = 0;
};

/// The transaction tokens around a payload.
inline constexpr U8 tokenBegin = 1;
inline constexpr U8 tokenEnd = 3;

/// Bits of secondFlags.
inline constexpr U8 mountWritable = 1; ///< of an orphan: the receiver may change it
inline constexpr U8 mountComplete = 1; ///< of a mount: values are to be told even where they are defaults

/// Bounds that both sides keep to, in bytes.
inline constexpr U32 maxTextBytes = 16 * 1024;
inline constexpr U32 maxPayloadBytes = 2 * maxTextBytes;
inline constexpr U32 maxSlots = 1U << 24; ///< entities that one side may have announced at a time

} // namespace Kiv::NboAttrLog
