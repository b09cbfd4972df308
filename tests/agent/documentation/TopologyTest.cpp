/// The containerlab topology of the examples, without containerlab: what it says is held together, and its
/// receivers run in a namespace that gets its links later, as a node of kind linux does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/documentation/HelpPages.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

class Topology : public ::testing::Test {
  protected:
    Topology()
        : topology_( YAML::Load( sourceFile( "examples/containerlab/receivers.clab.yml" ) )["topology"] ) {}

    YAML::Node receivers() const { return topology_["nodes"]["receivers"]; }
    /// The ends of all links, each as node and device.
    std::vector<std::pair<std::string, std::string>> ends() const {
        std::vector<std::pair<std::string, std::string>> found;
        for ( YAML::Node const& link : topology_["links"] ) {
            for ( YAML::Node const& end : link["endpoints"] ) {
                std::string const text = end.as<std::string>();
                std::size_t const colon = text.find( ':' );
                found.emplace_back( text.substr( 0, colon ), text.substr( colon + 1 ) );
            }
        }
        return found;
    }
    /// The words of the receivers' command, with the file that is bound into the node by where it lies here.
    std::vector<std::string> command() const {
        std::string const bind = receivers()["binds"][0].as<std::string>();
        std::smatch parts;
        EXPECT_TRUE( std::regex_match( bind, parts, std::regex( "([^:]+):([^:]+):ro" ) ) ) << bind;
        std::string const here = Support::sourceFolder() + "/examples/containerlab/" + parts[1].str();
        EXPECT_TRUE( std::filesystem::exists( here ) );
        std::istringstream words( receivers()["cmd"].as<std::string>() );
        std::vector<std::string> found( std::istream_iterator<std::string>( words ), {} );
        EXPECT_THAT( found, ::testing::Contains( parts[2].str() ) );
        std::replace( found.begin(), found.end(), parts[2].str(), here );
        return found;
    }

    YAML::Node const topology_;
};

TEST_F( Topology, LinksJoinItsOwnNodesAndEachDeviceOnce ) {
    std::set<std::pair<std::string, std::string>> once;
    for ( auto const& end : ends() ) {
        EXPECT_TRUE( topology_["nodes"][end.first] ) << end.first;
        EXPECT_TRUE( once.insert( end ).second ) << end.first << ":" << end.second;
    }
    EXPECT_EQ( once.size(), 6U );
}

TEST_F( Topology, ReceiversTakeUpTheirLinksWhenThoseAreThere ) {
    EXPECT_EQ( receivers()["kind"].as<std::string>(), "linux" );
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    Support::Namespace const node( "node" );
    AgentProcess agent( command(), { "ip", "netns", "exec", node.name() } );
    for ( auto const& [name, device] : ends() ) {
        if ( name == "receivers" ) {
            ASSERT_TRUE( agent.waitFor(
                AgentProcess::errors, "device " + device + ": no such device; waiting for it\n"
            ) );
        }
    }
    for ( auto const& [name, device] : ends() ) {
        if ( name == "receivers" ) {
            vethIs( node, device, node, "far-" + device );
            EXPECT_TRUE( agent.waitFor( AgentProcess::errors, "device " + device + ": running\n" ) )
                << device;
        }
    }
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::output ), ::testing::HasSubstr( "\"crowd-1000\"" ) );
}

} // namespace

} // namespace Agent
