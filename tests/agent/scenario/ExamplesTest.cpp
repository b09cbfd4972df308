#include <filesystem>

#include "agent/checking/ScenarioSummary.h"
#include "agent/run/Emulation.h"
#include "agent/scenario/ScenarioLoader.h"
#include "tests/agent/scenario/ScenarioTexts.h"
#include "tests/support/HostTest.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// The examples that users begin with, all on devices that keep what they are given to send.
class Examples : public Support::SimulatedTest {
  protected:
    Examples() : SimulatedTest( 0.0 ) {
        std::filesystem::path const folder = std::filesystem::path( Support::sourceFolder() ) / "examples";
        for ( auto const& entry : std::filesystem::recursive_directory_iterator( folder ) ) {
            if ( entry.path().extension() == ".yaml" ) {
                paths_.push_back( entry.path().string() );
            }
        }
    }

    static Scenario read( std::string const& path ) {
        Diagnostics errors;
        Scenario scenario = readScenario( { &path, 1 }, errors );
        EXPECT_EQ( linesOf( scenario.files, errors ), "" );
        return scenario;
    }

    std::vector<std::string> paths_;
};

TEST_F( Examples, HaveNeitherErrorsNorWarnings ) {
    for ( std::string const& path : paths_ ) {
        Scenario const scenario = read( path );
        EXPECT_EQ( linesOf( scenario.files, scenarioWarnings( scenario ) ), "" );
    }
    EXPECT_GE( paths_.size(), 10U );
}

/// And so what is said beforehand of the first reports comes true.
TEST_F( Examples, StartWithTheReportsThatTheSummaryTellsOf ) {
    for ( std::string const& path : paths_ ) {
        Scenario const scenario = read( path );
        Support::RecordingProvider provider( 0.0 );
        Zornet::DeviceProviderScope const scope( provider );
        Emulation emulation( wheel() );
        loadHosts( scenario, emulation.hostDir() );
        startHosts( scenario, emulation.hostDir() );
        settle();
        ScenarioSummary const summary = summaryOf( scenario );
        std::size_t sent = 0;
        for ( auto const& [device, hosts] : summary.devices ) {
            sent += provider.recording( device.name.c_str(), device.ns.c_str() ).sent.size();
        }
        EXPECT_EQ( sent, summary.firstReports ) << path;
    }
}

} // namespace

} // namespace Agent
