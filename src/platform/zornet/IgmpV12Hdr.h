#pragma once

#include <iosfwd>

#include "platform/zornet/IgmpCommonHdr.h"
#include "platform/zornet/IpAddr.h"

namespace Zornet {

/// A whole IGMP message of version 1 or 2, and the first 8 bytes of a version 3 query: 8 bytes over the
/// frame's own.
class IgmpV12Hdr : public IgmpCommonHdr {
  public:
    /// The maximum response time of a query in tenths of a second; 0 from a version 1 querier.
    U8 maxResponseCode() const { return unused(); }
    Kiv::Seconds maxResponseSeconds() const { return maxResponseCode() / 10.0; }
    IpAddr const& groupAddress() const { return groupAddress_; }

    void maxResponseCodeIs( U8 code ) { unusedIs( code ); }
    void groupAddressIs( IpAddr const& group ) { groupAddress_ = group; }

  private:
    IpAddr groupAddress_;
};

static_assert( sizeof( IgmpV12Hdr ) == 8 && alignof( IgmpV12Hdr ) == 1 );

std::ostream& operator<<( std::ostream& out, IgmpV12Hdr const& hdr );

} // namespace Zornet
