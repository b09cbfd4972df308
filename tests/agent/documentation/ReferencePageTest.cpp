#include <gtest/gtest.h>

#include <sstream>

#include "agent/command/Model.h"
#include "tests/agent/documentation/HelpPages.h"

namespace Agent {

/// Where this fails: scripts/build, and build/debug/bin/igmphost model >docs/reference.md.
TEST( ReferencePage, IsWhatTheCommandPrints ) {
    std::ostringstream printed;
    writeModel( printed );
    EXPECT_EQ( sourceFile( "docs/reference.md" ), printed.str() );
}

} // namespace Agent
