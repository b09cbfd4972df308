#pragma once

namespace Kiv {

/// Ends the process over a broken invariant, after printing `text`, `file` and `line` on standard error.
[[noreturn]] void assertionFailed( char const* text, char const* file, int line );

/// Ends the process unless `holds`. The text is passed, not taken from the source, because it is part of the
/// interface: users and tests look for it.
inline void
invariant( bool holds, char const* text, char const* file = __builtin_FILE(), int line = __builtin_LINE() ) {
    if ( !holds ) [[unlikely]] {
        assertionFailed( text, file, line );
    }
}

} // namespace Kiv
