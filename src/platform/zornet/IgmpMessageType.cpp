#include "platform/zornet/IgmpMessageType.h"

#include <ostream>

#include "platform/kiv/EnumText.h"

namespace Zornet {

namespace {

constexpr Kiv::EnumName<IgmpMessageType> names[] = {
    { IgmpMessageType::membershipQuery, "membershipQuery" },
    { IgmpMessageType::v1MembershipReport, "v1MembershipReport" },
    { IgmpMessageType::v2MembershipReport, "v2MembershipReport" },
    { IgmpMessageType::v2LeaveGroup, "v2LeaveGroup" },
    { IgmpMessageType::v3MembershipReport, "v3MembershipReport" },
};

} // namespace

Kiv::String8
stringValue( IgmpMessageType type ) {
    return enumText( names, "IgmpMessageType", type );
}

Kiv::String8
valueToStrep( IgmpMessageType type ) {
    return "'" + stringValue( type ) + "'";
}

std::ostream&
operator<<( std::ostream& out, IgmpMessageType type ) {
    return out << stringValue( type );
}

} // namespace Zornet
