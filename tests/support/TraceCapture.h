#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/quillog/Trace.h"

namespace Support {

/// Collects the trace messages of its scope. It turns one handle on up to a level and stands in the place of
/// the sink in force; both are as before when it goes.
class TraceCapture : public Quillog::TraceSink {
  public:
    /// Raises std::invalid_argument where there is no handle of that name.
    TraceCapture( std::string_view handle, int level );
    ~TraceCapture() override;
    TraceCapture( TraceCapture const& ) = delete;
    TraceCapture& operator=( TraceCapture const& ) = delete;

    std::vector<std::string> const& texts() const { return texts_; }
    std::vector<int> const& levels() const { return levels_; }
    /// True where one of the texts has `part` in it.
    bool contains( std::string_view part ) const;
    void clear();

    void message( Quillog::MsgDesc const& desc, std::string_view text ) override;

  private:
    Kiv::TraceHandle& handle_;
    int outerLevel_;
    Quillog::TraceSink* outerSink_;
    std::vector<std::string> texts_;
    std::vector<int> levels_;
};

} // namespace Support
