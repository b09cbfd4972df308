#include <gtest/gtest.h>

#include <sstream>

#include "agent/command/Model.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/documentation/HelpPages.h"

namespace Agent {

/// Where this fails: scripts/build, and build/debug/bin/igmphost model >docs/reference.md.
TEST( ReferencePage, IsWhatTheModelIsWrittenAs ) {
    std::ostringstream printed;
    writeModel( printed );
    EXPECT_EQ( sourceFile( "docs/reference.md" ), printed.str() );
}

TEST( ReferencePage, IsWhatTheCommandPrints ) {
    AgentProcess command( { "model" } );
    EXPECT_EQ( command.exitStatus(), 0 );
    EXPECT_EQ( command.written( AgentProcess::output ), sourceFile( "docs/reference.md" ) );
    EXPECT_EQ( command.written( AgentProcess::errors ), "" );
}

} // namespace Agent
