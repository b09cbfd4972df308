#pragma once

#include <algorithm>
#include <concepts>

#include "platform/kiv/String8.h"
#include "platform/kiv/nboattrlog/In.h"
#include "platform/kiv/nboattrlog/Out.h"

namespace Kiv {

template <class T>
struct ValueTraits;

namespace NboAttrLog {

/// The form of a value on a stream. It follows from what the type is: a number has its width, an enumerator
/// is its number, an address its bytes, a name its text.
template <class T>
void
valueOut( Out& out, T const& value ) {
    if constexpr ( std::is_same_v<T, bool> ) {
        out.nextboolIs( value );
    } else if constexpr ( std::is_same_v<T, double> ) {
        out.nextSecondsIs( value );
    } else if constexpr ( std::is_same_v<T, U8> ) {
        out.nextU8Is( value );
    } else if constexpr ( std::is_same_v<T, U16> ) {
        out.nextU16Is( value );
    } else if constexpr ( std::is_same_v<T, U32> ) {
        out.nextU32Is( value );
    } else if constexpr ( std::is_enum_v<T> ) {
        valueOut( out, static_cast<std::underlying_type_t<T>>( value ) );
    } else if constexpr ( std::is_same_v<T, String8> ) {
        out.nextStringIs( value );
    } else if constexpr ( std::is_same_v<T, Name> ) {
        out.nextStringIs( value.string() );
    } else if constexpr ( requires { value.bytes(); } ) {
        out.nextBytesIs( value.bytes() );
    } else if constexpr ( requires { value.name(); } ) {
        out.nextStringIs( value.name() );
    } else {
        valueOut( out, value.value() );
    }
}

template <class T>
T
valueIn( In& in ) {
    if constexpr ( std::is_same_v<T, bool> ) {
        return in.nextbool();
    } else if constexpr ( std::is_same_v<T, double> ) {
        return in.nextSeconds();
    } else if constexpr ( std::is_same_v<T, U8> ) {
        return in.nextU8();
    } else if constexpr ( std::is_same_v<T, U16> ) {
        return in.nextU16();
    } else if constexpr ( std::is_same_v<T, U32> ) {
        return in.nextU32();
    } else if constexpr ( std::is_enum_v<T> && requires { ValueTraits<T>::fromNumber( 0U ); } ) {
        return ValueTraits<T>::fromNumber( valueIn<std::underlying_type_t<T>>( in ) );
    } else if constexpr ( std::is_enum_v<T> ) {
        return T{ valueIn<std::underlying_type_t<T>>( in ) };
    } else if constexpr ( requires { T::fromHost( 0U ); } ) {
        return T::fromHost( in.nextU32() );
    } else if constexpr ( requires( T const& value ) { value.bytes().front(); } ) {
        auto bytes = T().bytes();
        std::span<U8 const> const arrived = in.nextBytes( bytes.size() );
        std::copy( arrived.begin(), arrived.end(), bytes.begin() );
        return T( bytes );
    } else if constexpr ( std::is_constructible_v<T, String8> ) {
        return T( in.nextString() );
    } else {
        return T( valueIn<decltype( std::declval<T const&>().value() )>( in ) );
    }
}

} // namespace NboAttrLog
} // namespace Kiv
