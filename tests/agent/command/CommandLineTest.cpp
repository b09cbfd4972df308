#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char moreHelp[] = "\nRun with --help for more information.\n";

/// Wrong usage: status 2, nothing on the standard output, and that message.
void
expectWrongUsage( std::vector<std::string> const& arguments, std::string const& message ) {
    AgentProcess agent( arguments );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_EQ( agent.written( AgentProcess::output ), "" );
    EXPECT_EQ( agent.written( AgentProcess::errors ), message + moreHelp );
}

TEST( CommandLine, HelpNamesTheVerbs ) {
    AgentProcess agent( { "--help" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::output ), HasSubstr( "Usage: igmphost " ) );
    EXPECT_THAT( agent.written( AgentProcess::output ), HasSubstr( "\n  demo " ) );
    EXPECT_THAT( agent.written( AgentProcess::output ), HasSubstr( "\n  run " ) );
    EXPECT_EQ( agent.written( AgentProcess::errors ), "" );
}

TEST( CommandLine, HelpOfAVerbNamesItsOptions ) {
    AgentProcess demo( { "demo", "--help" } );
    EXPECT_EQ( demo.exitStatus(), 0 );
    for ( char const* const option :
          { "--hosts", "--groups", "--igmp-version", "--vlans", "--duration", "--realtime", "--trace" } ) {
        EXPECT_THAT( demo.written( AgentProcess::output ), HasSubstr( option ) );
    }
    AgentProcess run( { "run", "--help" } );
    EXPECT_EQ( run.exitStatus(), 0 );
    for ( char const* const option : { "SCENARIO", "--duration", "--status", "--trace" } ) {
        EXPECT_THAT( run.written( AgentProcess::output ), HasSubstr( option ) );
    }
}

TEST( CommandLine, SetUidIsRefused ) {
    if ( geteuid() != 0 ) {
        GTEST_SKIP() << "only root can become somebody else";
    }
    for ( char const* const other : { "--ruid=65534", "--rgid=65534" } ) {
        std::vector<std::string> prefix{ "setpriv", other };
        if ( std::string_view( other ).starts_with( "--rgid" ) ) {
            prefix.push_back( "--keep-groups" );
        }
        AgentProcess agent( { "--version" }, prefix );
        EXPECT_EQ( agent.exitStatus(), 1 ) << other;
        EXPECT_EQ(
            agent.written( AgentProcess::errors ),
            "igmphost: error: it does not run set-uid or set-gid; run it as root, or give its file "
            "capabilities\n"
        );
    }
}

TEST( CommandLine, VersionIsThatOfTheProject ) {
    AgentProcess agent( { "--version" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::output ),
        ::testing::MatchesRegex( "igmphost [0-9]+\\.[0-9]+\\.[0-9]+\n" )
    );
}

TEST( CommandLine, VerbIsRequired ) {
    expectWrongUsage( {}, "A subcommand is required" );
}

TEST( CommandLine, UnknownVerbIsToldWithTheNearest ) {
    expectWrongUsage( { "runn", "x.yaml" }, "unknown verb 'runn'; did you mean 'run'?" );
    expectWrongUsage( { "ctl", "/tmp/x", "hots" }, "unknown verb 'hots'; did you mean 'hosts'?" );
    expectWrongUsage(
        { "television" }, "unknown verb 'television'; expected one of check, demo, run, model, query, watch, "
                          "ctl, schema"
    );
}

TEST( CommandLine, OptionThatNeedsAnotherIsNotTakenAlone ) {
    expectWrongUsage( { "run", "x.yaml", "--pcap-limit", "10M" }, "--pcap-limit requires --pcap" );
    expectWrongUsage( { "run", "x.yaml", "--metrics-per-host" }, "--metrics-per-host requires --metrics" );
}

TEST( CommandLine, ValuesThatAreNoneAreRefusedWithWhatWasExpected ) {
    for ( char const* const bytes : { "many", "10X", "1.5" } ) {
        expectWrongUsage(
            { "run", "x.yaml", "--pcap", "x", "--pcap-limit", bytes },
            "--pcap-limit: expected a number of bytes such as 500k, 10M or 1G, found '" +
                std::string( bytes ) + "'"
        );
    }
    expectWrongUsage(
        { "run", "x.yaml", "--log-format", "xml" }, "--log-format: expected text or json, found 'xml'"
    );
}

TEST( CommandLine, UnknownArgumentsAreRefused ) {
    expectWrongUsage( { "demo", "--host", "3" }, "The following arguments were not expected: 3 --host" );
}

TEST( CommandLine, NumbersOutOfRangeAreRefused ) {
    expectWrongUsage( { "demo", "--hosts", "0" }, "--hosts: Value 0 not in range 1 to 1000000" );
    expectWrongUsage( { "demo", "--vlans", "4095" }, "--vlans: Value 4095 not in range 0 to 4094" );
}

TEST( CommandLine, DurationMustBeATimeThatPasses ) {
    expectWrongUsage(
        { "demo", "--duration", "0" }, "--duration: expected a number of seconds above 0, found '0'"
    );
    expectWrongUsage(
        { "run", "x.yaml", "--duration", "inf" },
        "--duration: expected a number of seconds above 0, found 'inf'"
    );
    expectWrongUsage( { "demo", "--duration", "long" }, "--duration: expected a number, found 'long'" );
}

TEST( CommandLine, VersionMustBeOneOfTheProtocol ) {
    expectWrongUsage(
        { "demo", "--igmp-version", "0" }, "--igmp-version: expected an IGMP version, 1 to 3, found '0'"
    );
    expectWrongUsage(
        { "demo", "--igmp-version", "4" }, "--igmp-version: expected an IGMP version: 0 to 3 or "
                                           "igmpVersion1, igmpVersion2, igmpVersion3, found '4'"
    );
}

TEST( CommandLine, TraceHandleMustExist ) {
    expectWrongUsage(
        { "demo", "--trace", "IgmpHst:4" }, "--trace: no trace handle 'IgmpHst'; did you mean 'IgmpHost'?"
    );
}

TEST( CommandLine, ScenarioIsRequired ) {
    expectWrongUsage( { "run" }, "SCENARIO is required" );
}

TEST( CommandLine, ScenarioThatCannotBeReadIsWrongUsage ) {
    AgentProcess agent( { "run", "/nowhere/s.yaml" } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "/nowhere/s.yaml: error: cannot be read: No such file or directory\n"
    );
}

TEST( CommandLine, EveryErrorOfAScenarioIsToldAndNothingIsBegun ) {
    TemporaryFolder const folder;
    std::string const path = folder.fileWith( "s.yaml", "hosts:\n  - name: a\n    mtuu: 1\n    tagged: 7\n" );
    AgentProcess agent( { "run", path, "--status", folder.file( "status" ) } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        path + ":3:5: error: unknown key 'mtuu' in a host; did you mean 'mtu'?\n" + path +
            ":4:13: error: tagged: expected true or false, found '7'\n"
    );
    EXPECT_EQ( folder.files(), 1U );
}

TEST( CommandLine, FilesOfOneScenarioMayNotClash ) {
    TemporaryFolder const folder;
    std::string const a = folder.fileWith( "a.yaml", "hosts: [ { name: rx } ]" );
    std::string const b = folder.fileWith( "b.yaml", "hosts: [ { name: rx } ]" );
    AgentProcess agent( { "run", a, b } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        ::testing::StartsWith( b + ":1:18: error: host 'rx' is there already, in line 1 of " + a + "\n" )
    );
}

} // namespace

} // namespace Agent
