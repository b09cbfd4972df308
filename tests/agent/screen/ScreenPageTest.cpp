#include "agent/screen/ScreenPage.h"

#include <gmock/gmock.h>

namespace Agent {

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

RunView
someView() {
    RunView view;
    view.time = 1000.0;
    view.elapsed = 3661.0;
    view.hosts = 100000;
    view.account.hosts = 99990;
    view.account.hostsByVersion = { 0, 1, 99000, 989 };
    view.account.groups = 1000000;
    view.timersArmed = 1234;
    view.devices["blue/veth1"] = { { 12, 34567, 0, 8 }, 1.0, 1100.4 };
    view.all = view.devices["blue/veth1"];
    return view;
}

std::vector<std::string>
page( RunView const& view, std::deque<std::string> const& messages = {}, std::size_t rows = 24 ) {
    return screenPage( "s.yaml", view, messages, { rows, 80 } );
}

TEST( ScreenPage, ShowsHostsGroupsTimersAndFrames ) {
    EXPECT_THAT(
        page( someView() ),
        ElementsAre(
            "igmphost  s.yaml  1:01:01", "", "hosts   100,000   v1 1   v2 99,000   v3 989   disabled 10",
            "groups  1,000,000", "timers  1,234 armed", "told    0 reports, 0 leaves; heard 0 queries", "",
            "frames                           out        /s            in        /s      lost",
            "blue/veth1                    34,567     1,100            12         1         8", ""
        )
    );
}

TEST( ScreenPage, DurationHasABar ) {
    RunView view = someView();
    view.duration = 7322.0;
    std::vector<std::string> const lines = page( view );
    EXPECT_EQ( lines[0], "igmphost  s.yaml  1:01:01 of 2:02:02" );
    EXPECT_EQ( lines[1], "[" + std::string( 30, '#' ) + std::string( 30, '.' ) + "] 50 %" );
    view.elapsed = 9000.0;
    EXPECT_EQ( page( view )[1], "[" + std::string( 60, '#' ) + "] 100 %" );
}

TEST( ScreenPage, StartUpHasABarOfHostsAndGroups ) {
    StartUpProgress const progress{ "made", 1, 4, 499999, 999996 };
    EXPECT_THAT(
        startUpPage( "s.yaml", progress, { "a", "b", "c" }, { 7, 80 } ),
        ElementsAre(
            "igmphost  s.yaml  start-up", "[" + std::string( 30, '#' ) + std::string( 30, '.' ) + "] 50 %",
            "", "1 of 4 hosts made, 499,999 of 999,996 groups", "", "b", "c"
        )
    );
}

TEST( ScreenPage, NextEventIsThereWhereThereIsOne ) {
    RunView view = someView();
    EXPECT_THAT( page( view ), Not( Contains( StartsWith( "next" ) ) ) );
    view.next = NextEvent{ 1003.25, "join rx-*" };
    EXPECT_THAT( page( view ), Contains( "next    in 3.2 s: join rx-*" ) );
}

TEST( ScreenPage, SeveralDevicesHaveASum ) {
    RunView view = someView();
    view.devices["veth2"] = {};
    EXPECT_THAT( page( view ), Contains( StartsWith( "all   " ) ) );
}

TEST( ScreenPage, LastMessagesStandAtTheBottom ) {
    std::vector<std::string> const lines = page( someView(), { "a", "b", "c" }, 12 );
    EXPECT_THAT( lines, SizeIs( 12 ) );
    EXPECT_EQ( lines[10], "b" );
    EXPECT_EQ( lines[11], "c" );
}

TEST( ScreenPage, FitsAnyScreen ) {
    for ( std::size_t size : { 0U, 1U, 5U, 11U } ) {
        RunView view = someView();
        view.duration = 7200.0;
        auto const lines = screenPage( "s.yaml", view, { "a long message" }, { size, size } );
        EXPECT_LE( lines.size(), size );
        EXPECT_THAT( lines, Each( SizeIs( ::testing::Le( size ) ) ) );
    }
}

} // namespace

} // namespace Agent
