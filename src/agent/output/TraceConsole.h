#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "platform/quillog/Trace.h"

namespace Agent {

/// A wish to see the messages of a trace handle up to a level.
struct TraceRequest {
    Kiv::TraceHandle* handle;
    int level;
};

/// From "HANDLE:LEVEL". Raises std::invalid_argument that says what was expected.
TraceRequest traceRequest( std::string const& text );

/// Shows what was asked for, a line a message, and besides, in words for everyone, what becomes of devices.
/// Handles are as before when it goes.
class TraceConsole : public Quillog::TraceSink {
  public:
    TraceConsole( std::ostream& out, std::vector<TraceRequest> const& requests );
    ~TraceConsole() override;
    TraceConsole( TraceConsole const& ) = delete;
    TraceConsole& operator=( TraceConsole const& ) = delete;

    void message( Quillog::MsgDesc const& desc, std::string_view text ) override;

  private:
    void levelIs( Kiv::TraceHandle& handle, int level );

    std::ostream& out_;
    Quillog::TraceFile file_;
    Quillog::TraceSink* const outerSink_;
    std::map<Kiv::TraceHandle*, int> outerLevels_;
};

} // namespace Agent
