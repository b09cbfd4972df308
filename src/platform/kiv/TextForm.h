#pragma once

#include <concepts>

#include "platform/kiv/Ptr.h"
#include "platform/kiv/String8.h"

namespace Kiv {

// The text form of values, as tools outside exchange it, and its readers. A writer is named valueToStrep()
// and a reader sequenceToValue(); each reader accepts what the writer of its type writes, after any blanks,
// and advances its first iterator past what it has read. All failures are RangeExceptions. Further types
// bring their pair of functions in their own namespace.

/// Between single quotes. A quote, a backslash and every byte outside printable ASCII are escaped, so that
/// the form is one line of ASCII whatever the text.
String8 valueToStrep( String8 const& text );
/// In decimal; truth values are true and false.
template <std::integral T>
String8
valueToStrep( T value ) {
    if constexpr ( std::same_as<T, bool> ) {
        return value ? "true" : "false";
    } else {
        return std::to_string( value );
    }
}

void sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, String8* text );
void sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, long long* number );
void sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, double* number );
void sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, bool* truth );
/// An object cannot be made from text: the one pointer that has a text form is the null pointer, `null`.
template <class T>
void sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, Ptr<T>* pointer );

/// Matches `pattern` and advances past it. A blank in the pattern stands for any run of blanks, also an empty
/// one. Blanks are spaces, tabs and line ends.
void needString( String8::IteratorConst& at, String8::IteratorConst const& end, char const* pattern );
/// Raises for what is left of the text after a whole value: "junk at column %lld deserializing %s".
void needEnd( String8::IteratorConst const& at, String8 const& text );
/// Raises `fault` again, with the name of the attribute in whose value it lies in front.
[[noreturn]] void rethrowFromDeserializeAttr( RangeException const& fault, String8& attribute );

template <class T>
void
sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, Ptr<T>* pointer ) {
    needString( at, end, " null" );
    *pointer = nullptr;
}

/// The value that stands at the iterator.
template <class T>
T
deserializeAttr( String8::IteratorConst& at, String8::IteratorConst const& end ) {
    T value{};
    sequenceToValue( at, end, &value );
    return value;
}

/// The value of a whole text. `value` is left alone where the text is not one.
template <class T>
void
strepToValue( String8 const& text, T* value ) {
    String8::IteratorConst at = text.begin();
    T const read = deserializeAttr<T>( at, text.end() );
    needEnd( at, text );
    *value = read;
}

} // namespace Kiv
