#pragma once

#include "platform/zornet/EthAddr.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

inline constexpr U16 ethTypeIp = 0x0800;
inline constexpr U16 ethType8021Q = 0x8100;

/// The 14 bytes at the front of an Ethernet frame, over the frame's own bytes.
class EthHdr {
  public:
    EthAddr const& dst() const { return dst_; }
    EthAddr const& src() const { return src_; }
    U16 typeOrLen() const { return typeOrLen_.value(); }

    void dstIs( EthAddr const& addr ) { dst_ = addr; }
    void srcIs( EthAddr const& addr ) { src_ = addr; }
    void typeOrLenIs( U16 typeOrLen ) { typeOrLen_.valueIs( typeOrLen ); }

  private:
    EthAddr dst_;
    EthAddr src_;
    NetU16 typeOrLen_;
};

static_assert( sizeof( EthHdr ) == 14 && alignof( EthHdr ) == 1 );

} // namespace Zornet
