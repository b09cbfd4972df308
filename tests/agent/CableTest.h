#pragma once

#include <gmock/gmock.h>

#include <memory>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Namespace.h"

namespace Agent {

/// Two namespaces with a cable between them, "near0" to "far0": hosts at the near end, whoever observes them
/// at the far one.
class CableTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
            GTEST_SKIP() << "needs network namespaces: " << reason;
        }
        near_ = std::make_unique<Support::Namespace>( "near" );
        far_ = std::make_unique<Support::Namespace>( "far" );
        vethIs( *near_, "near0", *far_, "far0" );
    }

    /// A file with two hosts, "rx-1" and "rx-2" of 10.0.0.11 and 10.0.0.12, each in `groups` groups from
    /// 239.1.1.1 on. `more` is further lines of the hosts' entry.
    std::string scenario( std::string const& more = "", int groups = 2 ) const {
        return folder_.fileWith(
            "s.yaml", "hosts:\n"
                      "  - name: rx\n"
                      "    count: 2\n"
                      "    ipAddr: 10.0.0.11\n"
                      "    macAddr: 02:00:00:00:00:11\n"
                      "    deviceName: near0\n"
                      "    ns: " +
                          near_->name() + "\n" + more +
                          "    groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude, count: " +
                          std::to_string( groups ) + " } ]\n"
        );
    }
    /// Arguments that name the far end as the device.
    std::vector<std::string> atFarEnd( std::vector<std::string> arguments ) const {
        arguments.insert( arguments.end(), { "far0", "--ns", far_->name() } );
        return arguments;
    }
    static bool hasBegun( AgentProcess& agent ) {
        return agent.waitFor( AgentProcess::errors, "until Ctrl-C\n" );
    }

    TemporaryFolder folder_;
    std::unique_ptr<Support::Namespace> near_;
    std::unique_ptr<Support::Namespace> far_;
};

} // namespace Agent
