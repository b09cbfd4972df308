#pragma once

#include <iosfwd>

#include "platform/zornet/IgmpV3GroupRecordType.h"
#include "platform/zornet/IpAddr.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

/// The first 8 bytes of a group record of a version 3 report (RFC 3376 section 4.2), over the frame's own
/// bytes. The sources follow it, then auxiliary data.
class IgmpReportGroupRecordHeader {
  public:
    IgmpV3GroupRecordType recordType() const { return IgmpV3GroupRecordType{ recordType_.value() }; }
    /// In words of 4 bytes.
    U8 auxDataLen() const { return auxDataLen_.value(); }
    U16 numSources() const { return numSources_.value(); }
    IpAddr const& mcastAddr() const { return mcastAddr_; }
    /// The record must hold more than `i` sources.
    IpAddr const& source( U16 i ) const { return reinterpret_cast<IpAddr const*>( this + 1 )[i]; }
    /// Length of the record with the sources and the auxiliary data that it counts; the next record begins
    /// there.
    U32 recordBytes() const {
        return static_cast<U32>( sizeof *this + numSources() * sizeof( IpAddr ) ) + auxDataLen() * 4U;
    }

    void recordTypeIs( IgmpV3GroupRecordType type ) { recordType_.valueIs( static_cast<U8>( type ) ); }
    void auxDataLenIs( U8 words ) { auxDataLen_.valueIs( words ); }
    void numSourcesIs( U16 count ) { numSources_.valueIs( count ); }
    void mcastAddrIs( IpAddr const& group ) { mcastAddr_ = group; }
    /// The record must have room for more than `i` sources.
    void sourceIs( U16 i, IpAddr const& addr ) { reinterpret_cast<IpAddr*>( this + 1 )[i] = addr; }

  private:
    NetU8 recordType_;
    NetU8 auxDataLen_;
    NetU16 numSources_;
    IpAddr mcastAddr_;
};

static_assert( sizeof( IgmpReportGroupRecordHeader ) == 8 && alignof( IgmpReportGroupRecordHeader ) == 1 );

std::ostream& operator<<( std::ostream& out, IgmpReportGroupRecordHeader const& record );

} // namespace Zornet
