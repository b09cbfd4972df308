#pragma once

#include <compare>

#include "platform/kiv/Types.h"

namespace Kiv::NboAttrLog {

/// How the two sides of a stream name one entity: a slot of the table of the side that announced it, and how
/// often that slot has been given out. A slot is reused, a pair never, so that a message which crossed a
/// deletion is told from one that is wrong. The pair of zeros names the stream itself.
struct EntityId {
    static constexpr U32 clientBit = 1U << 31; ///< of the slot: the client gave the name

    U32 slot = 0;
    U32 generation = 0;

    bool isNull() const { return generation == 0; }
    bool isClients() const { return ( slot & clientBit ) != 0; }
    friend auto
    operator<=>( EntityId const& a, EntityId const& b ) = default; // NOLINT(modernize-use-nullptr)
};

} // namespace Kiv::NboAttrLog
