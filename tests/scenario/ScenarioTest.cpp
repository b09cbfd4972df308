#include "tests/scenario/ScenarioTest.h"

#include <sstream>

namespace Agent {

ScenarioTest::ScenarioTest( Seconds start ) : SimulatedTest( start ) {}

void
ScenarioTest::querierIs( Zornet::U8 version ) {
    Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( "router" );
    pam->deviceOpenIs( true );
    Lab::QuerierConfig config;
    config.version = version;
    querier_ = std::make_unique<Lab::Querier>( config, pam, wheel() );
    querier_->enabledIs( true );
}

void
ScenarioTest::hostsAre( std::string const& text ) {
    Diagnostics errors;
    Scenario const scenario = readScenarioText( "scenario", text, errors );
    std::ostringstream told;
    errors.print( told, scenario.files, "error" );
    ASSERT_EQ( told.str(), "" );
    loadHosts( scenario, emulation_.hostDir() );
    startHosts( scenario, emulation_.hostDir() );
}

void
ScenarioTest::join(
    std::string const& name, char const* group, Igmp::IgmpV3GroupRecord::FilterMode mode,
    std::vector<char const*> const& sources
) {
    Kiv::Ptr<Igmp::IgmpV3GroupRecord> const record = host( name ).v3groupIs( IpAddr( group ) );
    record->filterModeIs( mode );
    record->sourceIs()->sourceIpDelAll();
    for ( char const* const source : sources ) {
        record->sourceIs()->sourceIpIs( IpAddr( source ), 1 );
    }
    record->versionIs( record->version() + 1 );
}

std::vector<std::string>
ScenarioTest::faults() const {
    Membership configured;
    for ( Igmp::IgmpHost const& host : emulation_.hostDir().igmpHost() ) {
        if ( host.enabled() ) {
            addWanted( host, configured );
        }
    }
    return differences( configured, learnedMembership( *querier_ ) );
}

void
ScenarioTest::loseFramesInEveryOtherRound( double probability ) {
    std::bernoulli_distribution lost( probability );
    Seconds const firstRound = start() + startupQueryInterval;
    lan().dropIs( [this, lost, firstRound]( Lab::WireFrame const& frame ) mutable {
        auto const round = static_cast<long>( std::floor( ( frame.time - firstRound ) / queryInterval ) );
        return round % 2 == 1 && lost( random_ );
    } );
}

} // namespace Agent
