#pragma once

#include <iosfwd>

#include "platform/zornet/IgmpV12Hdr.h"

namespace Zornet {

/// The first 12 bytes of a version 3 query (RFC 3376 section 4.1), over the frame's own bytes. The sources
/// follow it: a well-formed query is exactly as long as `messageBytes()` says.
class IgmpV3QueryHdr : public IgmpV12Hdr {
  public:
    /// Decoded from the floating-point form of the Max Resp Code.
    Kiv::Seconds maxResponseSeconds() const;
    /// Decoded from the floating-point form of the QQIC.
    Kiv::Seconds queryIntervalSeconds() const;
    /// The S flag: routers are not to update their timers.
    bool suppressRouterProcessing() const { return ( flagsAndRobustness_.value() & suppressFlag ) != 0; }
    /// QRV, 0 to 7; 0 stands for more than 7.
    U8 querierRobustness() const { return flagsAndRobustness_.value() & robustnessMask; }
    U8 queryIntervalCode() const { return queryIntervalCode_.value(); }
    U16 numSources() const { return numSources_.value(); }
    /// The message must hold more than `i` sources.
    IpAddr const& source( U16 i ) const { return reinterpret_cast<IpAddr const*>( this + 1 )[i]; }
    /// Length of the message with the sources that it counts.
    U32 messageBytes() const { return static_cast<U32>( sizeof *this + numSources() * sizeof( IpAddr ) ); }

    void suppressRouterProcessingIs( bool value );
    /// Takes the low three bits.
    void querierRobustnessIs( U8 robustness );
    void queryIntervalCodeIs( U8 code ) { queryIntervalCode_.valueIs( code ); }
    void numSourcesIs( U16 count ) { numSources_.valueIs( count ); }
    /// The message must have room for more than `i` sources.
    void sourceIs( U16 i, IpAddr const& addr ) { reinterpret_cast<IpAddr*>( this + 1 )[i] = addr; }

  private:
    static constexpr U8 suppressFlag = 0x08;
    static constexpr U8 robustnessMask = 0x07;

    NetU8 flagsAndRobustness_;
    NetU8 queryIntervalCode_;
    NetU16 numSources_;
};

static_assert( sizeof( IgmpV3QueryHdr ) == 12 && alignof( IgmpV3QueryHdr ) == 1 );

std::ostream& operator<<( std::ostream& out, IgmpV3QueryHdr const& hdr );

} // namespace Zornet
