#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/agent/CableTest.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

class Watch : public CableTest {};

TEST_F( Watch, PrintsWhatArrivesUntilCtrlC ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario( "    tagged: true\n    vlanId: 7\n" ), "--duration", "0.1" } );
    EXPECT_TRUE(
        watch.waitFor( AgentProcess::output, " 02:00:00:00:00:11 10.0.0.11 vlan 7 v2 report 239.1.1.1\n" )
    );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    watch.signal( SIGINT );
    EXPECT_EQ( watch.exitStatus(), 0 );
    EXPECT_THAT( watch.written( AgentProcess::errors ), ::testing::EndsWith( "messages\n" ) );
}

TEST_F( Watch, SeesWhatThisMachineSendsOnTheDevice ) {
    AgentProcess watch( { "watch", "near0", "--ns", near_->name(), "--json", "--count", "4" } );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario( "    tagged: true\n    vlanId: 7\n" ) } );
    EXPECT_EQ( watch.exitStatus(), 0 );
    std::istringstream lines( watch.written( AgentProcess::output ) );
    std::string text;
    std::size_t count = 0;
    for ( ; std::getline( lines, text ); ++count ) {
        Json const message = Json::parse( text );
        EXPECT_EQ( message["vlans"], Json::array( { 7 } ) );
        EXPECT_EQ( message["kind"], "report" );
    }
    EXPECT_EQ( count, 4U );
    EXPECT_THAT( watch.written( AgentProcess::errors ), HasSubstr( "igmphost: 4 messages\n" ) );
}

TEST_F( Watch, DurationEndsIt ) {
    AgentProcess watch( atFarEnd( { "watch", "--duration", "0.05" } ) );
    EXPECT_EQ( watch.exitStatus(), 0 );
}

TEST_F( Watch, DeviceThatGoesEndsIt ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    near_->ip( "link del near0" );
    EXPECT_EQ( watch.exitStatus(), 1 );
    EXPECT_THAT( watch.written( AgentProcess::errors ), HasSubstr( "igmphost: error: far0: " ) );
}

TEST_F( Watch, MissingDeviceIsNamed ) {
    AgentProcess watch( { "watch", "far9", "--ns", far_->name() } );
    EXPECT_EQ( watch.exitStatus(), 1 );
    EXPECT_EQ(
        watch.written( AgentProcess::errors ),
        "igmphost: error: no such device: far9 in " + far_->name() + "\n"
    );
}

} // namespace

} // namespace Agent
