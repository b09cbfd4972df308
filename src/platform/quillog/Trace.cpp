#include "platform/quillog/Trace.h"

#include <iomanip>
#include <ostream>

#include "platform/kiv/Clock.h"

namespace Quillog {

namespace {

TraceSink* sinkInForce = nullptr;

} // namespace

void
TraceFile::message( MsgDesc const& desc, std::string_view text ) {
    std::ostringstream time;
    time << std::fixed << std::setprecision( 6 ) << desc.time;
    out_ << time.str() << ' ' << desc.handle << ':' << desc.level << ' ' << text << '\n' << std::flush;
}

void
RingBuf::add( MsgDesc const& desc, std::string_view text ) {
    if ( entries_.size() < capacity_ ) {
        entries_.push_back( { desc, std::string( text ) } );
        return;
    }
    entries_[next_].desc = desc;
    entries_[next_].text = text;
    next_ = ( next_ + 1 ) % capacity_;
}

std::vector<RingBuf::Entry>
RingBuf::entries() const {
    std::vector<Entry> ordered( entries_.begin() + static_cast<std::ptrdiff_t>( next_ ), entries_.end() );
    ordered.insert(
        ordered.end(), entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>( next_ )
    );
    return ordered;
}

void
RingBuf::clear() {
    entries_.clear();
    next_ = 0;
}

RingBuf&
ringBuf() {
    static RingBuf ring( 4096 );
    return ring;
}

TraceSink*
traceSink() {
    return sinkInForce;
}

void
traceSinkIs( TraceSink* sink ) {
    sinkInForce = sink;
}

void
record( MsgDesc const& desc, std::string_view text ) {
    ringBuf().add( desc, text );
    if ( sinkInForce ) {
        sinkInForce->message( desc, text );
    }
}

} // namespace Quillog

namespace Kiv {

TraceHandle* TraceHandle::handles_ = nullptr;

TraceHandle::TraceHandle( char const* name ) : name_( name ), next_( handles_ ) {
    handles_ = this;
}

TraceHandle*
TraceHandle::find( std::string_view name ) {
    for ( TraceHandle* at = handles_; at; at = at->next_ ) {
        if ( name == at->name_ ) {
            return at;
        }
    }
    return nullptr;
}

TraceLine::~TraceLine() {
    Quillog::record( { handle_.name(), level_, now() }, text_.str() );
}

TraceLine
traceHelper( TraceHandle const& handle, int level ) {
    return TraceLine( handle, level );
}

} // namespace Kiv
