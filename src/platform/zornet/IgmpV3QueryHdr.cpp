#include "platform/zornet/IgmpV3QueryHdr.h"

#include <ostream>

#include "platform/zornet/IgmpFloatCode.h"

namespace Zornet {

Kiv::Seconds
IgmpV3QueryHdr::maxResponseSeconds() const {
    return igmpFloatDecode( maxResponseCode() ) / 10.0;
}

Kiv::Seconds
IgmpV3QueryHdr::queryIntervalSeconds() const {
    return igmpFloatDecode( queryIntervalCode() );
}

void
IgmpV3QueryHdr::suppressRouterProcessingIs( bool value ) {
    U8 const others = static_cast<U8>( flagsAndRobustness_.value() & ~suppressFlag );
    flagsAndRobustness_.valueIs( value ? others | suppressFlag : others );
}

void
IgmpV3QueryHdr::querierRobustnessIs( U8 robustness ) {
    U8 const others = static_cast<U8>( flagsAndRobustness_.value() & ~robustnessMask );
    flagsAndRobustness_.valueIs( static_cast<U8>( others | ( robustness & robustnessMask ) ) );
}

std::ostream&
operator<<( std::ostream& out, IgmpV3QueryHdr const& hdr ) {
    return out << static_cast<IgmpV12Hdr const&>( hdr ) << " robustness " << +hdr.querierRobustness()
               << " interval " << hdr.queryIntervalSeconds() << " sources " << hdr.numSources();
}

} // namespace Zornet
