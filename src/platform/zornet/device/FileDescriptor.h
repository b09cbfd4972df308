#pragma once

#include <unistd.h>

#include <utility>

namespace Zornet {

/// An open file descriptor, or none (-1), that is closed with its owner.
class FileDescriptor {
  public:
    explicit FileDescriptor( int descriptor = -1 ) : descriptor_( descriptor ) {}
    FileDescriptor( FileDescriptor&& other ) noexcept
        : descriptor_( std::exchange( other.descriptor_, -1 ) ) {}
    FileDescriptor& operator=( FileDescriptor&& other ) noexcept {
        std::swap( descriptor_, other.descriptor_ );
        return *this;
    }
    ~FileDescriptor() {
        if ( descriptor_ >= 0 ) {
            close( descriptor_ );
        }
    }

    int get() const { return descriptor_; }
    /// Gives the descriptor up to the caller.
    int release() { return std::exchange( descriptor_, -1 ); }
    explicit operator bool() const { return descriptor_ >= 0; }

  private:
    int descriptor_;
};

} // namespace Zornet
