#include "agent/output/Messages.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

constexpr std::string_view ownPrefix = "igmphost: ";

bool
contains( std::string_view line, std::string_view text ) {
    return line.find( text ) != std::string_view::npos;
}

/// By the words that stand in front of what is wrong, behind the command's name or a place in a file.
char const*
levelOf( std::string_view line ) {
    bool const own = line.starts_with( ownPrefix );
    std::string_view const head = own ? line.substr( 0, ownPrefix.size() + 9 ) : line;
    if ( contains( head, ": error: " ) || contains( line, ": assertion failed: " ) ) {
        return "error";
    }
    if ( contains( head, ": warning: " ) ) {
        return "warning";
    }
    return own ? "info" : "trace";
}

/// Without what the level says already.
std::string_view
messageOf( std::string_view line ) {
    for ( std::string_view const prefix : { std::string_view( "igmphost: error: " ),
                                            std::string_view( "igmphost: warning: " ), ownPrefix } ) {
        if ( line.starts_with( prefix ) ) {
            return line.substr( prefix.size() );
        }
    }
    return line;
}

} // namespace

Messages::Messages( LogFormat format, bool quiet )
    : format_( format ), quiet_( quiet ), outer_( std::cerr.rdbuf( this ) ) {}

Messages::~Messages() {
    if ( !line_.empty() ) {
        take( line_ );
    }
    std::cerr.rdbuf( outer_ );
}

Messages::int_type
Messages::overflow( int_type character ) {
    if ( character != traits_type::eof() ) {
        char const text = traits_type::to_char_type( character );
        xsputn( &text, 1 );
    }
    return traits_type::not_eof( character );
}

std::streamsize
Messages::xsputn( char const* text, std::streamsize length ) {
    line_.append( text, static_cast<std::size_t>( length ) );
    std::size_t begin = 0;
    for ( std::size_t end = 0; ( end = line_.find( '\n', begin ) ) != std::string::npos; begin = end + 1 ) {
        take( line_.substr( begin, end - begin ) );
    }
    line_.erase( 0, begin );
    return length;
}

void
Messages::take( std::string const& line ) {
    std::string const level = levelOf( line );
    if ( quiet_ && level == "info" ) {
        return;
    }
    std::string text = line;
    if ( format_ == LogFormat::json ) {
        nlohmann::ordered_json const object{ { "time", Kiv::now() },
                                             { "level", level },
                                             { "message", messageOf( line ) } };
        text = object.dump( -1, ' ', false, nlohmann::ordered_json::error_handler_t::replace );
    }
    if ( display_ ) {
        display_( text );
        return;
    }
    text += '\n';
    outer_->sputn( text.data(), static_cast<std::streamsize>( text.size() ) );
    outer_->pubsync();
}

} // namespace Agent
