#include "agent/output/Messages.h"

#include <gmock/gmock.h>

#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace Agent {

namespace {

using ::testing::ElementsAre;

class MessagesTest : public ::testing::Test {
  protected:
    MessagesTest() : outer_( std::cerr.rdbuf( out_.rdbuf() ) ) {}
    ~MessagesTest() override { std::cerr.rdbuf( outer_ ); }

    /// What becomes of a text on std::cerr.
    std::string passed( std::string const& text, LogFormat format = LogFormat::text, bool quiet = false ) {
        {
            Messages const messages( format, quiet );
            std::cerr << text;
        }
        return out_.str();
    }
    std::string level( std::string const& line ) {
        out_.str( "" );
        return nlohmann::json::parse( passed( line + "\n", LogFormat::json ) )["level"];
    }

    std::ostringstream out_;
    std::streambuf* outer_;
};

TEST_F( MessagesTest, TextPassesAsItIs ) {
    EXPECT_EQ( passed( "igmphost: a\nx: error: b\n" ), "igmphost: a\nx: error: b\n" );
}

TEST_F( MessagesTest, LineThatIsNotEndedPassesInTheEnd ) {
    EXPECT_EQ( passed( "igmphost: a" ), "igmphost: a\n" );
}

TEST_F( MessagesTest, QuietLeavesErrorsAndWarnings ) {
    EXPECT_EQ(
        passed(
            "igmphost: told\nigmphost: error: e\ns.yaml:1:2: warning: w\nigmphost: a: b\n", LogFormat::text,
            true
        ),
        "igmphost: error: e\ns.yaml:1:2: warning: w\n"
    );
}

TEST_F( MessagesTest, JsonHasALevelByTheWordsInFront ) {
    EXPECT_EQ( level( "igmphost: 3 hosts" ), "info" );
    EXPECT_EQ( level( "igmphost: error: no" ), "error" );
    EXPECT_EQ( level( "igmphost: warning: hm" ), "warning" );
    EXPECT_EQ( level( "igmphost: told of: error: in passing" ), "info" );
    EXPECT_EQ( level( "s.yaml:3:5: error: unknown key" ), "error" );
    EXPECT_EQ( level( "s.yaml:3:5: warning: mtu" ), "warning" );
    EXPECT_EQ( level( "1000.000000 IgmpHost:4 text" ), "trace" );
}

TEST_F( MessagesTest, JsonMessageLeavesOutWhatTheLevelSays ) {
    auto const json = nlohmann::json::parse( passed( "igmphost: error: no \"x\"\n", LogFormat::json ) );
    EXPECT_EQ( json["message"], "no \"x\"" );
    EXPECT_GT( json["time"], 0.0 );
}

TEST_F( MessagesTest, DisplayTakesTheLines ) {
    std::vector<std::string> shown;
    {
        Messages messages( LogFormat::text, false );
        messages.displayIs( [&]( std::string const& line ) { shown.push_back( line ); } );
        std::cerr << "igmphost: a" << std::endl;
        messages.displayIs( nullptr );
        std::cerr << "igmphost: b" << std::endl;
    }
    EXPECT_THAT( shown, ElementsAre( "igmphost: a" ) );
    EXPECT_EQ( out_.str(), "igmphost: b\n" );
}

} // namespace

} // namespace Agent
