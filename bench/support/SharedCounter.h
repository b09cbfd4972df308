#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <new>
#include <stdexcept>

namespace Bench {

/// A number that this process and those which it forks share.
class SharedCounter {
  public:
    SharedCounter()
        : page_( mmap(
              nullptr, sizeof( std::size_t ), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0
          ) ) {
        if ( page_ == MAP_FAILED ) {
            throw std::bad_alloc();
        }
    }
    ~SharedCounter() { munmap( page_, sizeof( std::size_t ) ); }
    SharedCounter( SharedCounter const& ) = delete;
    SharedCounter& operator=( SharedCounter const& ) = delete;

    std::size_t volatile& value() const { return *static_cast<std::size_t volatile*>( page_ ); }

  private:
    void* const page_;
};

} // namespace Bench
