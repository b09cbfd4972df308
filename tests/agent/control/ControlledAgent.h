#pragma once

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "agent/run/Privileges.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"

namespace Agent {

using Json = nlohmann::json;

/// What a command has said, and how it ended.
struct Told {
    int status;
    std::string output;
    std::string errors;
};

inline Told
toldBy( std::vector<std::string> const& arguments, std::vector<std::string> const& prefix = {} ) {
    AgentProcess command( arguments, prefix );
    int const status = command.exitStatus();
    return { status, command.written( AgentProcess::output ), command.written( AgentProcess::errors ) };
}

/// The real command as an agent without a scenario, and the real command as its controller. Its hosts are on
/// a device that does not exist: they do all that hosts do, and nobody hears it.
class ControlledAgent : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const missing = missingPrivilege( {} ); !missing.empty() ) {
            GTEST_SKIP() << missing;
        }
        agent_ = std::make_unique<AgentProcess>( std::vector<std::string>{ "run", "--control", path_ } );
        ASSERT_TRUE( agent_->waitFor( AgentProcess::errors, "until Ctrl-C\n" ) );
    }

    Told ctl( std::vector<std::string> arguments, std::vector<std::string> const& prefix = {} ) const {
        arguments.insert( arguments.begin(), { "ctl", path_ } );
        return toldBy( arguments, prefix );
    }
    /// What it prints. The test fails where it fails or complains.
    std::string output( std::vector<std::string> const& arguments ) const {
        Told const told = ctl( arguments );
        EXPECT_EQ( told.errors, "" );
        EXPECT_EQ( told.status, 0 );
        return told.output;
    }
    Json json( std::vector<std::string> arguments ) const {
        arguments.emplace_back( "--json" );
        return Json::parse( output( arguments ), nullptr, false );
    }
    /// Expects a complaint, and nothing else.
    void
    expectComplaint( std::vector<std::string> const& arguments, int status, std::string const& text ) const {
        Told const told = ctl( arguments );
        EXPECT_EQ( told.errors, "igmphost: error: " + text + "\n" );
        EXPECT_EQ( told.output, "" );
        EXPECT_EQ( told.status, status );
    }
    /// Three hosts rx-1 to rx-3 that nothing is to be said of.
    std::string addHosts( std::vector<std::string> const& more = {} ) const {
        std::vector<std::string> words = { "add",
                                           "rx",
                                           "--count",
                                           "3",
                                           "ipAddr=10.0.0.1",
                                           "macAddr=02:00:00:00:00:01",
                                           "deviceName=none0",
                                           "igmpVersion=3" };
        words.insert( words.end(), more.begin(), more.end() );
        return output( words );
    }

    TemporaryFolder folder_;
    std::string const path_ = folder_.file( "control" );
    std::unique_ptr<AgentProcess> agent_;
};

} // namespace Agent
