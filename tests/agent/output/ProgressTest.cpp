#include "agent/output/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Agent {

namespace {

std::string
shown( bool terminal, std::initializer_list<Kiv::Seconds> times ) {
    std::ostringstream out;
    {
        Progress progress( out, terminal, 600.0, " simulated" );
        for ( Kiv::Seconds const passed : times ) {
            progress.passedIs( passed );
        }
    }
    return out.str();
}

TEST( Progress, ElsewhereThanOnATerminalEachTenthIsALine ) {
    EXPECT_EQ(
        shown( false, { 6, 59, 60, 66, 120, 600 } ),
        "60 of 600 s simulated\n120 of 600 s simulated\n600 of 600 s "
        "simulated\n"
    );
}

TEST( Progress, OnATerminalABarMovesInItsLine ) {
    EXPECT_EQ(
        shown( true, { 300 } ),
        "\r[####################....................] 50 %  300 of 600 s simulated\x1b[K\n"
    );
}

TEST( Progress, FullBarIsFull ) {
    EXPECT_EQ(
        shown( true, { 601 } ),
        "\r[########################################] 100 %  601 of 600 s simulated\x1b[K\n"
    );
}

TEST( Progress, NothingIsShownWhereNothingHasPassed ) {
    EXPECT_EQ( shown( true, {} ), "" );
    EXPECT_EQ( shown( false, {} ), "" );
}

} // namespace

} // namespace Agent
