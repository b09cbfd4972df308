#include "platform/kiv/Exception.h"

namespace Kiv {

Exception::IdBitArray Expect::current_;

Expect::Expect( Exception::Id id ) : outer_( current_ ) {
    current_.set( id );
}

namespace {

template <class E>
[[noreturn]] void
raise( String8 const& text ) {
    throw E( text, Expect::current(), Expect::current().any() );
}

} // namespace

void
throwRangeException( char const* text ) {
    raise<RangeException>( text );
}

void
throwRangeException( String8 const& text ) {
    raise<RangeException>( text );
}

void
throwInternalException( char const* text ) {
    raise<InternalException>( text );
}

void
throwInternalException( String8 const& text ) {
    raise<InternalException>( text );
}

void
throwNameInUseException( String8 const& text ) {
    raise<NameInUseException>( text );
}

} // namespace Kiv
