#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

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
    EXPECT_EQ( agent.written( AgentProcess::errors ), "igmphost: error: " + message + moreHelp );
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
    expectWrongUsage(
        {}, "a verb is missing; expected one of check, demo, run, model, query, watch, ctl, schema"
    );
}

TEST( CommandLine, UnknownOptionIsToldWhereTheVerbIsMissingToo ) {
    expectWrongUsage(
        { "--bogus" }, "unknown option '--bogus', and a verb is missing; expected one of check, demo, run, "
                       "model, query, watch, ctl, schema"
    );
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
    for ( char const* const bytes : { "many", "10X", "1.5", "23" } ) {
        expectWrongUsage(
            { "run", "x.yaml", "--pcap", "x", "--pcap-limit", bytes },
            "--pcap-limit: expected a number of bytes, 24 for the header of the file or more, such as 500k, "
            "10M or 1G, found '" +
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

TEST( CommandLine, NumbersAreWholeAndInTheirRange ) {
    std::string const most = std::string( 20, '9' );
    for ( std::string const number : { "0", "1.5", "x", "-1", most.c_str() } ) {
        std::string const found = ", found '" + number + "'";
        expectWrongUsage(
            { "demo", "--hosts", number }, "--hosts: expected a whole number from 1 to 1000000" + found
        );
        expectWrongUsage(
            { "watch", "lo", "--count", number }, "--count: expected a whole number from 1" + found
        );
        expectWrongUsage(
            { "query", "lo", "--robustness", number },
            "--robustness: expected a whole number from 1 to 255" + found
        );
        expectWrongUsage(
            { "query", "lo", "--vlan", number }, "--vlan: expected a whole number from 1 to 4094" + found
        );
        expectWrongUsage(
            { "ctl", "/tmp/x", "watch", "--count", number }, "--count: expected a whole number from 1" + found
        );
    }
    expectWrongUsage(
        { "demo", "--vlans", "4095" }, "--vlans: expected a whole number from 0 to 4094, found '4095'"
    );
    expectWrongUsage(
        { "run", "x.yaml", "--seed", "x" }, "--seed: expected a whole number from 0, found 'x'"
    );
}

TEST( CommandLine, DurationMustBeATimeThatPasses ) {
    expectWrongUsage(
        { "demo", "--duration", "0" }, "--duration: expected a number of seconds above 0, found '0'"
    );
    expectWrongUsage(
        { "run", "x.yaml", "--duration", "inf" },
        "--duration: expected a number of seconds above 0, found 'inf'"
    );
    expectWrongUsage(
        { "demo", "--duration", "long" }, "--duration: expected a number of seconds above 0, found 'long'"
    );
}

TEST( CommandLine, VersionMustBeOneOfTheProtocol ) {
    expectWrongUsage(
        { "demo", "--igmp-version", "0" }, "--igmp-version: expected an IGMP version, 1 to 3, found '0'"
    );
    expectWrongUsage(
        { "demo", "--igmp-version", "4" }, "--igmp-version: expected an IGMP version, 1 to 3, found '4'"
    );
}

TEST( CommandLine, TraceHandleMustExist ) {
    expectWrongUsage(
        { "demo", "--trace", "IgmpHst:4" }, "--trace: no trace handle 'IgmpHst'; did you mean 'IgmpHost'?"
    );
}

TEST( CommandLine, StandardOutputThatCannotBeWrittenIsAFailure ) {
    TemporaryFolder const folder;
    std::string const path = folder.fileWith( "s.yaml", "hosts: [ { name: a } ]\nduration: 1\n" );
    std::vector<std::vector<std::string>> const commands{
        { "--help" },        { "--version" },
        { "run", "--help" }, { "schema" },
        { "model" },         { "demo", "--hosts", "2", "--duration", "1" },
        { "check", path },   { "check", "--json", path }
    };
    for ( std::vector<std::string> const& arguments : commands ) {
        AgentProcess agent( arguments, { "sh", "-c", "exec \"$@\" >/dev/full", "sh" } );
        EXPECT_EQ( agent.exitStatus(), 1 ) << arguments[0];
        EXPECT_THAT(
            agent.written( AgentProcess::errors ),
            ::testing::EndsWith(
                "igmphost: error: cannot write the standard output: No space left on device\n"
            )
        ) << arguments[0];
    }
}

TEST( CommandLine, OutputsThatGoToOnePlaceAreRefused ) {
    TemporaryFolder const folder;
    std::string const file = folder.file( "z" );
    std::filesystem::create_hard_link( folder.fileWith( "a", "" ), folder.file( "b" ) );
    auto const expectRefused = []( std::vector<std::string> options, std::string const& message ) {
        options.insert( options.begin(), { "run", "--simulate", "/nowhere.yaml" } );
        AgentProcess agent( options );
        EXPECT_EQ( agent.exitStatus(), 2 );
        EXPECT_EQ( agent.written( AgentProcess::errors ), "igmphost: error: " + message + "\n" );
    };
    std::string const stdoutClash = " cannot both go to the standard output";
    expectRefused( { "--pcap", file, "--status", file }, "--pcap and --status cannot both go to " + file );
    expectRefused(
        { "--status", file, "--junit", folder.file( "./z" ) },
        "--status and --junit cannot both go to " + folder.file( "./z" )
    );
    expectRefused(
        { "--junit", folder.file( "a" ), "--pcap", folder.file( "b" ) },
        "--pcap and --junit cannot both go to " + folder.file( "a" )
    );
    expectRefused( { "--pcap", "-", "--junit", "-" }, "--pcap and --junit" + stdoutClash );
    expectRefused(
        { "--pcap", "-", "--pcap-limit", "300", "--status", "-" }, "--pcap and --status" + stdoutClash
    );
    expectRefused(
        { "--status", "-", "--status-interval", "1" }, "--status and --status-interval" + stdoutClash
    );
    std::string const path = folder.fileWith( "s.yaml", "hosts: [ { name: a } ]\nduration: 1\n" );
    AgentProcess nowhere( { "run", "--simulate", path, "--status", "/dev/null", "--junit", "/dev/null" } );
    EXPECT_EQ( nowhere.exitStatus(), 0 );
}

TEST( CommandLine, OutputsDoNotReplaceTheScenario ) {
    TemporaryFolder const folder;
    std::string const text = "hosts: [ { name: a } ]\nduration: 1\n";
    std::string const path = folder.fileWith( "s.yaml", text );
    std::string const other = folder.fileWith( "more.yaml", "seed: 1\n" );
    for ( char const* const option : { "--status", "--pcap", "--junit" } ) {
        AgentProcess agent( { "run", "--simulate", other, path, option, folder.file( "./s.yaml" ) } );
        EXPECT_EQ( agent.exitStatus(), 2 );
        EXPECT_EQ(
            agent.written( AgentProcess::errors ),
            "igmphost: error: " + std::string( option ) + " cannot go to the scenario itself, " + path + "\n"
        );
    }
    EXPECT_EQ( folder.contents( "s.yaml" ), text );
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
