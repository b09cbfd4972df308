#include "agent/hosts/HostPattern.h"

#include <gmock/gmock.h>

namespace Agent {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HostPattern : public ::testing::Test {
  protected:
    HostPattern() {
        for ( char const* const name : { "rx-10", "rx-2", "tx-1", "rx*" } ) {
            dir_->igmpHostIs( name );
        }
    }

    std::vector<std::string> names( std::string const& pattern ) const {
        std::vector<std::string> names;
        for ( auto const& host : hostsOf( *dir_, pattern ) ) {
            names.emplace_back( host->name().view() );
        }
        return names;
    }

    Kiv::Ptr<Igmp::IgmpHostDir> const dir_ = Igmp::igmpHostDirFactory( "hosts" );
};

TEST_F( HostPattern, NameStandsForItsHost ) {
    EXPECT_THAT( names( "tx-1" ), ElementsAre( "tx-1" ) );
}

TEST_F( HostPattern, PatternStandsForAllThatFitInAReadersOrder ) {
    EXPECT_THAT( names( "rx-*" ), ElementsAre( "rx-2", "rx-10" ) );
    EXPECT_THAT( names( "?x-[12]*" ), ElementsAre( "rx-2", "rx-10", "tx-1" ) );
}

TEST_F( HostPattern, BackslashTakesACharacterAsItIs ) {
    EXPECT_THAT( names( "rx\\*" ), ElementsAre( "rx*" ) );
    EXPECT_THAT( names( "tx-1]" ), IsEmpty() );
}

TEST_F( HostPattern, HostThatBearsThePatternAsItsNameGoesFirst ) {
    EXPECT_THAT( names( "rx*" ), ElementsAre( "rx*" ) );
}

TEST_F( HostPattern, NothingStandsForNothing ) {
    EXPECT_THAT( names( "rx-1" ), IsEmpty() );
    EXPECT_THAT( names( "rx-3*" ), IsEmpty() );
    EXPECT_THAT( names( "rx" ), IsEmpty() );
}

} // namespace

} // namespace Agent
