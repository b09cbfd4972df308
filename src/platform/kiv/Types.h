#pragma once

#include <cstdint>
#include <limits>

namespace Kiv {

/// Integers of a stated width; the wire, the attributes and their wrap-around depend on it.
using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
using S16 = std::int16_t;
using S32 = std::int32_t;

/// A time or a span in seconds. Positive infinity means never.
using Seconds = double;

inline constexpr Seconds never = std::numeric_limits<double>::infinity();

/// True for a time that will come: anything up to the largest finite double.
constexpr bool
isFinite( Seconds t ) {
    return t <= std::numeric_limits<double>::max();
}

/// Number of one attribute of a type. Entities count from 258, state machines from 130, values from 2.
using AttributeId = S32;

inline constexpr AttributeId attrFwkKey = 0;
inline constexpr AttributeId attrTime = 150; ///< behind onTime() of a timer
inline constexpr AttributeId attrHasAttrLogInterface = 154;
inline constexpr AttributeId attrParent = 156; ///< of an entity

} // namespace Kiv
