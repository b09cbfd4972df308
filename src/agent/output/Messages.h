#pragma once

#include <functional>
#include <streambuf>
#include <string>

namespace Agent {

enum class LogFormat { text, json };

/// What the command says on the standard error while it runs. It stands between std::cerr and where that
/// goes, as long as it lives, and works on whole lines: drops what is merely told where it is to be quiet,
/// turns a line into a JSON object with `time`, `level` ("info", "warning", "error", "trace") and `message`
/// where that is asked for, and shows the lines elsewhere where somebody shows them.
class Messages : private std::streambuf {
  public:
    using Display = std::function<void( std::string const& line )>;

    Messages( LogFormat format, bool quiet );
    ~Messages() override;
    Messages( Messages const& ) = delete;
    Messages& operator=( Messages const& ) = delete;

    /// Shows the lines from now on, in place of the standard error; null for nobody.
    void displayIs( Display display ) { display_ = std::move( display ); }

  private:
    int_type overflow( int_type character ) override;
    std::streamsize xsputn( char const* text, std::streamsize length ) override;
    void take( std::string const& line );

    LogFormat const format_;
    bool const quiet_;
    std::streambuf* const outer_;
    std::string line_; ///< begun
    Display display_;
};

} // namespace Agent
