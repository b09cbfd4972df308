#pragma once

#include <iosfwd>

#include "platform/zornet/IgmpCommonHdr.h"

namespace Zornet {

/// The first 8 bytes of a version 3 report (RFC 3376 section 4.2), over the frame's own bytes. The group
/// records follow.
class IgmpV3ReportHdr : public IgmpCommonHdr {
  public:
    U16 reserved() const { return reserved_.value(); }
    U16 numGroupRecords() const { return numGroupRecords_.value(); }

    void reservedIs( U16 value ) { reserved_.valueIs( value ); }
    void numGroupRecordsIs( U16 count ) { numGroupRecords_.valueIs( count ); }

  private:
    NetU16 reserved_;
    NetU16 numGroupRecords_;
};

static_assert( sizeof( IgmpV3ReportHdr ) == 8 && alignof( IgmpV3ReportHdr ) == 1 );

std::ostream& operator<<( std::ostream& out, IgmpV3ReportHdr const& hdr );

} // namespace Zornet
