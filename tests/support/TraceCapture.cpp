#include "tests/support/TraceCapture.h"

#include <algorithm>
#include <stdexcept>

namespace Support {

namespace {

Kiv::TraceHandle&
handleOf( std::string_view name ) {
    if ( Kiv::TraceHandle* const handle = Kiv::TraceHandle::find( name ) ) {
        return *handle;
    }
    throw std::invalid_argument( "no trace handle '" + std::string( name ) + "'" );
}

} // namespace

TraceCapture::TraceCapture( std::string_view handle, int level )
    : handle_( handleOf( handle ) ), outerLevel_( handle_.level() ), outerSink_( Quillog::traceSink() ) {
    handle_.levelIs( level );
    Quillog::traceSinkIs( this );
}

TraceCapture::~TraceCapture() {
    Quillog::traceSinkIs( outerSink_ );
    handle_.levelIs( outerLevel_ );
}

bool
TraceCapture::contains( std::string_view part ) const {
    return std::any_of( texts_.begin(), texts_.end(), [part]( std::string const& text ) {
        return text.find( part ) != std::string::npos;
    } );
}

void
TraceCapture::clear() {
    texts_.clear();
    levels_.clear();
}

void
TraceCapture::message( Quillog::MsgDesc const& desc, std::string_view text ) {
    texts_.emplace_back( text );
    levels_.push_back( desc.level );
}

} // namespace Support
