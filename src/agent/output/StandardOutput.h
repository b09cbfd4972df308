#pragma once

#include <streambuf>

namespace Agent {

/// Stands between std::cout and where that writes, as long as it lives, and keeps why something could not be
/// written: when that is noticed at the end, the system has long had other errors.
class StandardOutput : private std::streambuf {
  public:
    StandardOutput();
    ~StandardOutput() override;
    StandardOutput( StandardOutput const& ) = delete;
    StandardOutput& operator=( StandardOutput const& ) = delete;

    /// Writes what still waits. Returns the error number of the first failure, 0 for none.
    int finish();

  private:
    int_type overflow( int_type character ) override;
    std::streamsize xsputn( char const* text, std::streamsize length ) override;
    int sync() override;
    template <class T>
    T kept( T result, bool failed );

    std::streambuf* outer_;
    int error_ = 0;
};

} // namespace Agent
