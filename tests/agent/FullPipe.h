#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <string>

#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// A named pipe that is full and that nobody reads: who writes to it waits.
class FullPipe {
  public:
    explicit FullPipe( std::string const& path ) : path_( path ) {
        EXPECT_EQ( mkfifo( path.c_str(), S_IRUSR | S_IWUSR ), 0 );
        ends_ = Zornet::FileDescriptor( open( path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC ) );
        std::array<char, 4096> const part{};
        while ( write( ends_.get(), part.data(), part.size() ) > 0 ) {
        }
    }

    std::string const& path() const { return path_; }
    /// Another descriptor of it, to be closed by the caller.
    int newEnd() const { return open( path_.c_str(), O_WRONLY | O_CLOEXEC ); }

  private:
    std::string const path_;
    Zornet::FileDescriptor ends_;
};

} // namespace Agent
