#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/agent/CableTest.h"

namespace Agent {

namespace {

using ::testing::Each;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

class CaptureFile : public CableTest {
  protected:
    /// One line a frame that tshark finds in the capture: type, VLAN, source, group.
    std::vector<std::string> dissected() const {
        std::string const text = Support::outputOf(
            "( tshark -n -r " + capture() +
            " -o ip.check_checksum:TRUE -Y igmp -T fields -E separator='|' -e igmp.type -e vlan.id -e ip.src "
            "-e igmp.maddr -e igmp.checksum.status 2>/dev/null )"
        );
        std::istringstream in( text );
        std::vector<std::string> lines;
        for ( std::string line; std::getline( in, line ); ) {
            lines.push_back( line );
        }
        return lines;
    }
    std::string capture() const { return folder_.file( "capture.pcap" ); }
    std::vector<std::string> run( std::vector<std::string> const& more, std::string const& hosts = "" ) {
        std::vector<std::string> arguments{ "run", scenario( hosts ), "--pcap", capture() };
        arguments.insert( arguments.end(), more.begin(), more.end() );
        return arguments;
    }
};

TEST_F( CaptureFile, HoldsWhatWasSentWithItsTagsWhileTheHostsRun ) {
    AgentProcess hosts( run( {}, "    tagged: true\n    vlanId: 7\n" ) );
    ASSERT_TRUE( hasBegun( hosts ) );
    std::vector<std::string> lines;
    for ( int i = 0; lines.size() < 4 && i < 50; ++i ) {
        lines = dissected();
    }
    ASSERT_GE( lines.size(), 4U );
    EXPECT_THAT( lines, Each( StartsWith( "0x16|7|10.0.0.1" ) ) );
    EXPECT_THAT( lines, Each( EndsWith( "|1" ) ) );
    hosts.signal( SIGTERM );
    EXPECT_EQ( hosts.exitStatus(), 0 );
}

TEST_F( CaptureFile, HoldsWhatWasReceived ) {
    AgentProcess hosts( run( {} ) );
    ASSERT_TRUE( hasBegun( hosts ) );
    AgentProcess query( atFarEnd( { "query", "--once", "--igmp-version", "2", "--response-time", "0.1",
                                    "--address", "10.0.0.99" } ) );
    EXPECT_EQ( query.exitStatus(), 0 );
    hosts.signal( SIGTERM );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_THAT( dissected(), ::testing::Contains( StartsWith( "0x11||10.0.0.99|0.0.0.0" ) ) );
}

/// A querier of the scenario's own has its device in the same process.
TEST_F( CaptureFile, HoldsEachFrameOnceThoughBothEndsOfTheCableAreHere ) {
    std::string const querier =
        folder_.fileWith( "q.yaml", "querier: { device: far0, ns: " + far_->name() + ", igmpVersion: 2 }\n" );
    for ( char const* const where : { "--quiet", "--simulate" } ) {
        AgentProcess hosts( run( { querier, where, "--duration", "0.3", "--status-interval", "10" } ) );
        EXPECT_EQ( hosts.exitStatus(), 0 ) << hosts.written( AgentProcess::errors );
        nlohmann::json const status = nlohmann::json::parse( hosts.written( AgentProcess::output ) );
        nlohmann::json const& device = status["devices"][near_->name() + "/near0"];
        std::size_t const frames =
            device["framesSent"].get<std::size_t>() + device["framesReceived"].get<std::size_t>();
        EXPECT_GE( frames, 4U );
        EXPECT_THAT( dissected(), SizeIs( frames ) ) << where;
    }
}

TEST_F( CaptureFile, LimitEndsTheCaptureAndNotTheHosts ) {
    AgentProcess hosts( run( { "--pcap-limit", "200", "--duration", "0.1" } ) );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_THAT(
        hosts.written( AgentProcess::errors ),
        HasSubstr( "igmphost: the capture ends: " + capture() + " is as long as it may be, with 2 frames\n" )
    );
    EXPECT_LE( std::filesystem::file_size( capture() ), 200U );
    EXPECT_THAT( dissected(), SizeIs( 2 ) );
}

TEST_F( CaptureFile, EndOfACaptureLeavesTheStandardOutputOpen ) {
    AgentProcess hosts( { "run", scenario(), "--pcap", "-", "--pcap-limit", "200" } );
    ASSERT_TRUE( hosts.waitFor( AgentProcess::errors, "igmphost: the capture ends: " ) );
    EXPECT_TRUE( std::filesystem::is_symlink( "/proc/" + std::to_string( hosts.id() ) + "/fd/1" ) );
    hosts.signal( SIGTERM );
    EXPECT_EQ( hosts.exitStatus(), 0 );
}

TEST_F( CaptureFile, FullDiskEndsTheCaptureAndNotTheHosts ) {
    AgentProcess hosts( { "run", scenario(), "--pcap", "/dev/full" } );
    ASSERT_TRUE( hosts.waitFor(
        AgentProcess::errors, "igmphost: error: the capture ends: cannot write /dev/full: No space left on "
                              "device; the hosts go on\n"
    ) );
    ASSERT_TRUE( hasBegun( hosts ) );
    hosts.signal( SIGTERM );
    EXPECT_EQ( hosts.exitStatus(), 1 );
    EXPECT_THAT( hosts.written( AgentProcess::errors ), HasSubstr( "sent " ) );
}

TEST_F( CaptureFile, DiskThatFillsUpLeavesAFileThatCanBeRead ) {
    // Counts of executed lines, where they are taken, do not fit either: they go where nobody reads them.
    std::vector<std::string> const smallDisk{ "env", "GCOV_PREFIX=" + folder_.file( "counts" ), "sh",
                                              "-c",  "ulimit -f 1; trap '' XFSZ; exec \"$@\"",  "sh" };
    AgentProcess hosts( { "run", scenario( "", 50 ), "--pcap", capture(), "--duration", "0.1" }, smallDisk );
    EXPECT_EQ( hosts.exitStatus(), 1 );
    EXPECT_THAT( hosts.written( AgentProcess::errors ), HasSubstr( ": File too large; the hosts go on\n" ) );
    EXPECT_THAT( dissected(), ::testing::Not( ::testing::IsEmpty() ) );
}

/// What stands before the capture, of whoever opened the output, is kept too.
TEST_F( CaptureFile, FullDiskBehindTheStandardOutputEndsTheCaptureAndNotTheHosts ) {
    std::string const before( 300, '#' );
    std::vector<std::string> const smallDisk{ "env",
                                              "GCOV_PREFIX=" + folder_.file( "counts" ),
                                              "sh",
                                              "-c",
                                              "ulimit -f 1; trap '' XFSZ; exec \"$@\" >>" +
                                                  folder_.fileWith( "out", before ),
                                              "sh" };
    AgentProcess hosts( { "run", scenario( "", 50 ), "--pcap", "-", "--duration", "0.1" }, smallDisk );
    EXPECT_EQ( hosts.exitStatus(), 1 );
    EXPECT_THAT(
        hosts.written( AgentProcess::errors ),
        HasSubstr( "igmphost: error: the capture ends: cannot write -: File too large; the hosts go on\n" )
    );
    EXPECT_THAT( hosts.written( AgentProcess::errors ), HasSubstr( "; sent 100 messages" ) );
    EXPECT_THAT( folder_.contents( "out" ), StartsWith( before ) );
    EXPECT_THAT( folder_.contents( "out" ), SizeIs( 512 ) );
}

TEST_F( CaptureFile, FileThatCannotBeMadeIsToldBeforeAnythingBegins ) {
    AgentProcess hosts( { "run", scenario(), "--pcap", folder_.file( "none/x" ) } );
    EXPECT_EQ( hosts.exitStatus(), 1 );
    EXPECT_EQ(
        hosts.written( AgentProcess::errors ),
        "igmphost: error: cannot write " + folder_.file( "none/x" ) + ": No such file or directory\n"
    );
}

} // namespace

} // namespace Agent
