#pragma once

#include "platform/zornet/Eth8021QTagControl.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

/// The 4 bytes that follow an EthHdr of type `ethType8021Q`, over the frame's own bytes.
class Eth8021QHdr {
  public:
    Eth8021QTagControl tagControl() const { return tagControl_.value(); }
    U16 typeOrLen() const { return typeOrLen_.value(); }

    void tagControlIs( Eth8021QTagControl tag ) { tagControl_.valueIs( tag.value() ); }
    void typeOrLenIs( U16 typeOrLen ) { typeOrLen_.valueIs( typeOrLen ); }

  private:
    NetU16 tagControl_;
    NetU16 typeOrLen_;
};

static_assert( sizeof( Eth8021QHdr ) == 4 && alignof( Eth8021QHdr ) == 1 );

} // namespace Zornet
