#include <gmock/gmock.h>

#include <memory>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Namespace.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;

/// The real command on a cable between two namespaces, held to what a scenario expects.
class ExpectRun : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
            GTEST_SKIP() << "needs network namespaces: " << reason;
        }
        near_ = std::make_unique<Support::Namespace>( "expect-near" );
        far_ = std::make_unique<Support::Namespace>( "expect-far" );
        vethIs( *near_, "near0", *far_, "far0" );
    }

    /// A file with a version 2 host on the near end in 239.1.1.1.
    std::string scenario( std::string const& more ) {
        return folder_.fileWith(
            "s.yaml",
            "hosts:\n  - { name: rx, ipAddr: 10.0.0.11, macAddr: 02:00:00:00:00:11, deviceName: near0, ns: " +
                near_->name() + ", groups: 239.1.1.1 }\n" + more
        );
    }

    TemporaryFolder folder_;
    std::unique_ptr<Support::Namespace> near_;
    std::unique_ptr<Support::Namespace> far_;
};

TEST_F( ExpectRun, WhatIsMetIsSuccess ) {
    AgentProcess agent( { "run", scenario( "expect: [ { v2ReportsSent: '>= 1' } ]\n" ), "--duration", "0.02" }
    );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: 1 of 1 expectations met\n" ) );
}

TEST_F( ExpectRun, WhatIsNotMetIsAnExitStatusOfItsOwnAndAFailureForOthersToRead ) {
    std::string const report = folder_.file( "report.xml" );
    AgentProcess agent(
        { "run",
          scenario( "expect:\n  - { name: nine <reports>, v2ReportsSent: 9 }\n  - { igmpVersion: 2 }\n" ),
          "--duration", "0.02", "--junit", report }
    );
    EXPECT_EQ( agent.exitStatus(), 3 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "s.yaml:4: not met: rx: v2ReportsSent: expected 9, found 1\n" )
    );
    std::string const program = "import sys, xml.etree.ElementTree as t; "
                                "print([(c.get(\"name\"), [f.get(\"message\") for f in c]) "
                                "for c in t.parse(sys.argv[1]).getroot()[0]])";
    EXPECT_EQ(
        Support::outputOf( "python3 -c '" + program + "' " + report ),
        "[('nine <reports>', ['rx: v2ReportsSent: expected 9, found 1']), ('line 5', [])]\n"
    );
}

TEST_F( ExpectRun, ReportCanGoToTheOutput ) {
    AgentProcess agent( { "run", scenario( "expect: [ { igmpVersion: 2 } ]\n" ), "--duration", "0.02",
                          "--junit", "-" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::output ), HasSubstr( "tests=\"1\" failures=\"0\"" ) );
}

TEST_F( ExpectRun, ReportThatCannotBeWrittenIsToldBeforeAnythingBegins ) {
    AgentProcess agent( { "run", scenario( "expect: [ { igmpVersion: 2 } ]\n" ), "--duration", "0.02",
                          "--junit", folder_.file( "none/report" ) } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: cannot write " + folder_.file( "none/report" ) + ": No such file or directory\n"
    );
}

TEST_F( ExpectRun, ReportThatFindsNoRoomIsAFailure ) {
    AgentProcess agent( { "run", scenario( "expect: [ { igmpVersion: 2 } ]\n" ), "--duration", "0.02",
                          "--junit", "/dev/full" } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "igmphost: error: the outcome is not written: cannot write /dev/full: No space left on "
                   "device\n" )
    );
}

TEST_F( ExpectRun, WhatIsExpectedWronglyIsAScenarioThatIsWrong ) {
    AgentProcess agent( { "run", scenario( "expect: [ { v2ReportSent: 1 } ]\n" ), "--duration", "0.02" } );
    EXPECT_EQ( agent.exitStatus(), 2 );
}

TEST_F( ExpectRun, BridgeIsAskedForWhatItHasLearned ) {
    far_->ip( "link add br0 type bridge mcast_snooping 1 mcast_igmp_version 2" );
    far_->ip( "link set far0 master br0" );
    far_->ip( "link set br0 up" );
    std::string const bridge = "bridge: { device: br0, ns: " + far_->name();
    AgentProcess agent( { "run", scenario(
                                     "expect:\n"
                                     "  - { at: 0, within: 20, " +
                                     bridge + ", port: far0, joined: 239.1.1.1 } }\n  - { at: 0, " + bridge +
                                     ", joined: 239.8.8.8 } }\n"
                                 ) } );
    EXPECT_EQ( agent.exitStatus(), 3 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "s.yaml:5: not met: bridge br0: 239.8.8.8: expected a member, found none\n" )
    );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: 1 of 2 expectations met\n" ) );
}

TEST_F( ExpectRun, QuerierOfTheScenarioLearnsTheGroups ) {
    AgentProcess agent(
        { "run", scenario(
                     "querier: { device: far0, ns: " + far_->name() +
                     ", igmpVersion: 2 }\n"
                     "expect: [ { at: 0, within: 20, querier: { joined: 239.1.1.1, groupCount: 1 } } ]\n"
                 ) }
    );
    EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
}

} // namespace

} // namespace Agent
