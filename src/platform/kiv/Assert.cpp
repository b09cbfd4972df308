#include "platform/kiv/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Kiv {

void
assertionFailed( char const* text, char const* file, int line ) {
    std::fprintf( stderr, "%s:%d: assertion failed: %s\n", file, line, text );
    std::fflush( stderr );
    std::abort();
}

} // namespace Kiv
