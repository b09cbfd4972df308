#include "agent/output/TraceConsole.h"

#include <algorithm>
#include <charconv>
#include <ostream>
#include <stdexcept>

#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

/// The handle of the devices, and the levels up to which it tells of trouble and of what else becomes of
/// them.
constexpr std::string_view deviceHandle = "Device";
constexpr int troubleLevel = 1;
constexpr int eventLevel = 3;
/// The handle of the control socket; up to that level it tells who is refused.
constexpr std::string_view controlHandle = "Control";

std::vector<std::string_view>
handleNames() {
    std::vector<std::string_view> names;
    for ( auto const* handle = Kiv::TraceHandle::first(); handle; handle = handle->next() ) {
        names.emplace_back( handle->name() );
    }
    std::sort( names.begin(), names.end() );
    return names;
}

} // namespace

TraceRequest
traceRequest( std::string const& text ) {
    std::size_t const colon = text.rfind( ':' );
    std::string const name = text.substr( 0, colon );
    std::string_view const number =
        colon == std::string::npos ? std::string_view() : std::string_view( text ).substr( colon + 1 );
    int level = 0;
    auto const [end, error] = std::from_chars( number.data(), number.data() + number.size(), level );
    if ( number.empty() || error != std::errc() || end != number.data() + number.size() || level < 0 ) {
        throw std::invalid_argument( "expected HANDLE:LEVEL such as IgmpHost:4, found '" + text + "'" );
    }
    Kiv::TraceHandle* const handle = Kiv::TraceHandle::find( name );
    if ( !handle ) {
        throw std::invalid_argument( "no trace handle '" + name + "'" + suggestion( name, handleNames() ) );
    }
    return { handle, level };
}

TraceConsole::TraceConsole( std::ostream& out, std::vector<TraceRequest> const& requests )
    : out_( out ), file_( out ), outerSink_( Quillog::traceSink() ) {
    if ( Kiv::TraceHandle* const devices = Kiv::TraceHandle::find( deviceHandle ) ) {
        levelIs( *devices, eventLevel );
    }
    if ( Kiv::TraceHandle* const control = Kiv::TraceHandle::find( controlHandle ) ) {
        levelIs( *control, troubleLevel );
    }
    for ( auto const& [handle, level] : requests ) {
        levelIs( *handle, std::max( level, handle->level() ) );
    }
    Quillog::traceSinkIs( this );
}

TraceConsole::~TraceConsole() {
    Quillog::traceSinkIs( outerSink_ );
    for ( auto const& [handle, level] : outerLevels_ ) {
        handle->levelIs( level );
    }
}

void
TraceConsole::levelIs( Kiv::TraceHandle& handle, int level ) {
    outerLevels_.emplace( &handle, handle.level() );
    handle.levelIs( level );
}

void
TraceConsole::message( Quillog::MsgDesc const& desc, std::string_view text ) {
    if ( desc.handle == controlHandle && desc.level <= troubleLevel ) {
        out_ << "igmphost: control: " << text << std::endl;
    } else if ( desc.handle != deviceHandle || desc.level > eventLevel ) {
        file_.message( desc, text );
    } else if ( desc.level > troubleLevel ) {
        out_ << "igmphost: device " << text << std::endl;
    } else {
        out_ << "igmphost: error: device " << text << "; waiting for it" << std::endl;
    }
}

} // namespace Agent
