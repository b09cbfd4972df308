#pragma once

#include <iosfwd>

#include "platform/kiv/String8.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The type byte of an IGMP message (RFC 1112, 2236, 3376). Holds any byte, also one that is not listed.
enum class IgmpMessageType : U8 {
    membershipQuery = 0x11, ///< of every version
    v1MembershipReport = 0x12,
    v2MembershipReport = 0x16,
    v2LeaveGroup = 0x17,
    v3MembershipReport = 0x22,
};

/// The enumerator's name; "IgmpMessageType(%d)" with the number where there is none.
Kiv::String8 stringValue( IgmpMessageType type );
/// The name between single quotes.
Kiv::String8 valueToStrep( IgmpMessageType type );
std::ostream& operator<<( std::ostream& out, IgmpMessageType type );

} // namespace Zornet
