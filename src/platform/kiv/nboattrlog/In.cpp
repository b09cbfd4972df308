#include "platform/kiv/nboattrlog/In.h"

#include <bit>
#include <cmath>

namespace Kiv::NboAttrLog {

std::span<U8 const>
In::nextBytes( std::size_t count ) {
    if ( count > bytes_.size() ) {
        throwAttrLogRecordException( "record is too short" );
    }
    std::span<U8 const> const taken = bytes_.first( count );
    bytes_ = bytes_.subspan( count );
    return taken;
}

U64
In::nextNumber( std::size_t width ) {
    U64 value = 0;
    for ( U8 byte : nextBytes( width ) ) {
        value = value << 8 | byte;
    }
    return value;
}

bool
In::nextbool() {
    U8 const value = nextU8();
    if ( value > 1 ) {
        throwAttrLogRecordException( "truth value is neither 0 nor 1" );
    }
    return value == 1;
}

Seconds
In::nextSeconds() {
    auto const value = std::bit_cast<Seconds>( nextNumber( sizeof( Seconds ) ) );
    if ( std::isnan( value ) ) {
        throwAttrLogRecordException( "number is not a number" );
    }
    return value;
}

String8
In::nextString() {
    U32 const length = nextU32();
    if ( length > maxTextBytes ) {
        throwAttrLogRecordException( "text is too long" );
    }
    std::span<U8 const> const text = nextBytes( length );
    return String8( std::string_view( reinterpret_cast<char const*>( text.data() ), text.size() ) );
}

EntityId
In::nextEntityId() {
    U32 const slot = nextU32();
    return { slot, nextU32() };
}

MsgHeader
In::nextHeader() {
    MsgHeader header;
    header.entity = nextEntityId();
    header.attribute = static_cast<AttributeId>( nextU32() );
    header.operation = Operation{ nextU8() };
    header.length = nextU32();
    header.secondWord = nextU32();
    header.secondFlags = nextU8();
    return header;
}

void
In::nextTokenIs( U8 token ) {
    if ( nextU8() != token ) {
        throwAttrLogRecordException( "transaction token is missing" );
    }
}

void
In::endIs() const {
    if ( !bytes_.empty() ) {
        throwAttrLogRecordException( "record is too long" );
    }
}

} // namespace Kiv::NboAttrLog
