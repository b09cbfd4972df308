#pragma once

#include <gmock/gmock.h>

#include <string>

namespace Zornet {

/// What a process prints that ends on the assertion of that text, and of no longer one.
inline auto
assertionText( std::string const& text ) {
    return ::testing::HasSubstr( "assertion failed: " + text + "\n" );
}

} // namespace Zornet
