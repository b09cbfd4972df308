#include "agent/scenario/WorkProgress.h"

#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char scenario[] = "hosts: [ { name: a }, { name: b } ]\nevents: [ { at: 1, disable: } ]\n";

TEST( WorkProgress, TellsWhatIsDoneOnALineThatItTakesAway ) {
    std::ostringstream out;
    {
        WorkProgress const progress( out, 0.0 );
        scenarioOf( scenario );
        EXPECT_THAT( out.str(), StartsWith( "\rigmphost: 0 of 2 entries of hosts read\x1b[K" ) );
    }
    EXPECT_THAT( out.str(), ::testing::EndsWith( "\x1b[K\r\x1b[K" ) );
    EXPECT_EQ( out.str().find( '\n' ), std::string::npos );
}

TEST( WorkProgress, OfEachPartOfTheWork ) {
    std::string told;
    auto const tell = [&told]( auto const& work ) {
        std::ostringstream out;
        WorkProgress const progress( out, 0.0 );
        work();
        told += out.str();
    };
    Scenario const read = scenarioOf( scenario );
    tell( [&] { scenarioWarnings( read ); } );
    EXPECT_THAT( told, HasSubstr( "\rigmphost: 0 of 2 entries of hosts looked at\x1b[K" ) );
    tell( [&] { scenarioOf( "events: [ { at: 1, add: { name: a } } ]\n" ); } );
    EXPECT_THAT( told, HasSubstr( "\rigmphost: 0 of 1 events read\x1b[K" ) );
}

TEST( WorkProgress, SaysNothingOfWhatTakesNoWhile ) {
    std::ostringstream out;
    {
        WorkProgress const progress( out, 3600.0 );
        scenarioOf( scenario );
    }
    scenarioOf( scenario ); // and nobody wants to know
    EXPECT_EQ( out.str(), "" );
}

} // namespace

} // namespace Agent
