#include "agent/output/StandardOutput.h"

#include <cerrno>
#include <iostream>

namespace Agent {

StandardOutput::StandardOutput() : outer_( std::cout.rdbuf( this ) ) {}

StandardOutput::~StandardOutput() {
    std::cout.rdbuf( outer_ );
}

int
StandardOutput::finish() {
    std::cout.flush();
    return error_;
}

template <class T>
T
StandardOutput::kept( T result, bool failed ) {
    if ( failed && error_ == 0 ) {
        error_ = errno != 0 ? errno : EIO;
    }
    return result;
}

StandardOutput::int_type
StandardOutput::overflow( int_type character ) {
    if ( traits_type::eq_int_type( character, traits_type::eof() ) ) {
        return traits_type::not_eof( character );
    }
    errno = 0;
    int_type const result = outer_->sputc( traits_type::to_char_type( character ) );
    return kept( result, traits_type::eq_int_type( result, traits_type::eof() ) );
}

std::streamsize
StandardOutput::xsputn( char const* text, std::streamsize length ) {
    errno = 0;
    std::streamsize const written = outer_->sputn( text, length );
    return kept( written, written != length );
}

int
StandardOutput::sync() {
    errno = 0;
    int const result = outer_->pubsync();
    return kept( result, result != 0 );
}

} // namespace Agent
