#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiv/Types.h"

namespace Quillog {

/// What is known of a trace message beside its text.
struct MsgDesc {
    char const* handle;
    int level;
    Kiv::Seconds time;
};

/// Where trace messages go beside the ring. Trace has no effect on behaviour: a sink only looks.
class TraceSink {
  public:
    virtual ~TraceSink() = default;
    virtual void message( MsgDesc const& desc, std::string_view text ) = 0;
};

/// A sink that writes one line a message to a stream, which must outlive it.
class TraceFile : public TraceSink {
  public:
    explicit TraceFile( std::ostream& out ) : out_( out ) {}
    void message( MsgDesc const& desc, std::string_view text ) override;

  private:
    std::ostream& out_;
};

/// The last messages of the process, oldest first; an old one goes when a new one needs its place.
class RingBuf {
  public:
    struct Entry {
        MsgDesc desc;
        std::string text;
    };

    explicit RingBuf( std::size_t capacity ) : capacity_( capacity ) {}
    void add( MsgDesc const& desc, std::string_view text );
    std::vector<Entry> entries() const;
    void clear();

  private:
    std::size_t capacity_;
    std::size_t next_ = 0;
    std::vector<Entry> entries_;
};

/// The process's ring of messages.
RingBuf& ringBuf();

/// The sink in force; null for none. The caller keeps it alive.
TraceSink* traceSink();
void traceSinkIs( TraceSink* sink );

/// Puts a finished message into the ring and hands it to the sink.
void record( MsgDesc const& desc, std::string_view text );

} // namespace Quillog

namespace Kiv {

/// A named source of trace messages with a level up to which they are taken. Off, it costs its users one
/// comparison.
class TraceHandle {
  public:
    static constexpr int off = -1;

    explicit TraceHandle( char const* name );

    char const* name() const { return name_; }
    bool on( int level ) const { return level <= level_; }
    int level() const { return level_; }
    void levelIs( int level ) { level_ = level; }

    /// The handle of that name, or null.
    static TraceHandle* find( std::string_view name );
    static TraceHandle const* first() { return handles_; }
    TraceHandle const* next() const { return next_; }

  private:
    static TraceHandle* handles_;

    char const* name_;
    int level_ = off;
    TraceHandle* next_;
};

/// One message in the making. It goes to the ring and the sink when the statement ends.
class TraceLine {
  public:
    TraceLine( TraceHandle const& handle, int level ) : handle_( handle ), level_( level ) {}
    TraceLine( TraceLine const& ) = delete;
    TraceLine& operator=( TraceLine const& ) = delete;
    ~TraceLine();

    template <class T>
    TraceLine& operator<<( T const& value ) {
        text_ << value;
        return *this;
    }

  private:
    TraceHandle const& handle_;
    int level_;
    std::ostringstream text_;
};

TraceLine traceHelper( TraceHandle const& handle, int level );

} // namespace Kiv

/// KIV_TRACE( handle, level ) << …; evaluates what is streamed only when the handle takes that level.
#define KIV_TRACE( handle, level )   \
    if ( !( handle ).on( level ) ) { \
    } else                           \
        Kiv::traceHelper( handle, level )
