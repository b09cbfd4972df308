#include "platform/kiv/nboattrlog/Out.h"

#include <bit>

#include "platform/kiv/nboattrlog/Exceptions.h"

namespace Kiv::NboAttrLog {

namespace {

constexpr std::size_t lengthAt = 13; ///< of the payload's length in a header

} // namespace

void
Out::headDel( std::size_t count ) {
    bytes_.erase( bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>( count ) );
}

void
Out::nextNumberIs( U64 value, unsigned width ) {
    U8 bytes[8];
    for ( unsigned i = width; i-- > 0; value >>= 8 ) {
        bytes[i] = static_cast<U8>( value );
    }
    nextBytesIs( { bytes, width } );
}

void
Out::nextSecondsIs( Seconds value ) {
    nextNumberIs( std::bit_cast<U64>( value ), sizeof( Seconds ) );
}

void
Out::nextStringIs( String8 const& text ) {
    if ( text.bytes() > maxTextBytes ) {
        throwAttrLogRecordException( "text is too long" );
    }
    nextU32Is( text.bytes() );
    nextBytesIs( { reinterpret_cast<U8 const*>( text.charPtr() ), text.bytes() } );
}

void
Out::nextEntityIdIs( EntityId const& id ) {
    nextU32Is( id.slot );
    nextU32Is( id.generation );
}

void
Out::nextHeaderIs( MsgHeader const& header ) {
    std::size_t const at = bytes_.size();
    bytes_.resize( at + MsgHeader::bytes );
    u32Is( at, header.entity.slot );
    u32Is( at + 4, header.entity.generation );
    u32Is( at + 8, static_cast<U32>( header.attribute ) );
    bytes_[at + 12] = static_cast<U8>( header.operation );
    u32Is( at + lengthAt, header.length );
    u32Is( at + 17, header.secondWord );
    bytes_[at + 21] = header.secondFlags;
}

void
Out::u32Is( std::size_t at, U32 value ) {
    for ( std::size_t i = 4; i-- > 0; value >>= 8 ) {
        bytes_[at + i] = static_cast<U8>( value );
    }
}

Out::Record::Record( Out& out, MsgHeader const& header ) : out_( out ), at_( out.size() ) {
    out_.nextHeaderIs( header );
    out_.nextU8Is( tokenBegin );
}

Out::Record::~Record() {
    if ( !isFinished_ ) {
        out_.sizeIs( at_ );
    }
}

std::span<U8 const>
Out::Record::payload() const {
    return out_.bytes().subspan( at_ + MsgHeader::bytes + 1 );
}

void
Out::Record::finish() {
    out_.u32Is( at_ + lengthAt, static_cast<U32>( payload().size() ) );
    out_.nextU8Is( tokenEnd );
    isFinished_ = true;
}

} // namespace Kiv::NboAttrLog
