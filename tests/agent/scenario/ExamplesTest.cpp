#include <filesystem>

#include "tests/agent/scenario/ScenarioTexts.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// The examples that users begin with: nothing is wrong with them and nothing to be warned of.
TEST( Examples, HaveNeitherErrorsNorWarnings ) {
    std::filesystem::path const folder = std::filesystem::path( Support::sourceFolder() ) / "examples";
    std::size_t scenarios = 0;
    for ( auto const& entry : std::filesystem::recursive_directory_iterator( folder ) ) {
        if ( entry.path().extension() == ".yaml" ) {
            std::string const path = entry.path().string();
            Diagnostics errors;
            Scenario const scenario = readScenario( { &path, 1 }, errors );
            EXPECT_EQ( linesOf( errors ), "" ) << path;
            EXPECT_EQ( linesOf( scenarioWarnings( scenario ) ), "" ) << path;
            ++scenarios;
        }
    }
    EXPECT_GE( scenarios, 4U );
}

} // namespace

} // namespace Agent
