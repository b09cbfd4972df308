#include "lab/QuerierConfig.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/kiv/Exception.h"

namespace Lab {

class QuerierConfigTest : public ::testing::Test {
  protected:
    /// The message with which the configuration is refused after `change`; empty where it is not.
    static std::string refusal( std::function<void( QuerierConfig& )> const& change ) {
        QuerierConfig config;
        change( config );
        try {
            config.check();
        } catch ( Kiv::RangeException const& exception ) {
            return exception.what();
        }
        return "";
    }
};

TEST_F( QuerierConfigTest, DefaultsAreThoseOfTheRfc ) {
    QuerierConfig const config;
    config.check();
    EXPECT_EQ( config.startupQueryInterval(), 31.25 );
    EXPECT_EQ( config.startupQueryCount(), 2U );
    EXPECT_EQ( config.lastMemberQueryCount(), 2U );
    EXPECT_EQ( config.groupMembershipInterval(), 260.0 );
    EXPECT_EQ( config.olderHostPresentInterval(), 260.0 );
    EXPECT_EQ( config.otherQuerierPresentInterval(), 255.0 );
    EXPECT_EQ( config.lastMemberQueryTime(), 2.0 );
}

TEST_F( QuerierConfigTest, SetValuesStandInPlaceOfDerivedOnes ) {
    QuerierConfig config;
    config.startupQueryIntervalSet = 5.0;
    config.startupQueryCountSet = 4;
    config.lastMemberQueryCountSet = 3;
    EXPECT_EQ( config.startupQueryInterval(), 5.0 );
    EXPECT_EQ( config.startupQueryCount(), 4U );
    EXPECT_EQ( config.lastMemberQueryTime(), 3.0 );
}

TEST_F( QuerierConfigTest, RefusesAVersionThatDoesNotExist ) {
    std::string const text = "QuerierConfig::version: expected an IGMP version from 1 to 3, found ";
    EXPECT_EQ( refusal( []( auto& c ) { c.version = 0; } ), text + "0" );
    EXPECT_EQ( refusal( []( auto& c ) { c.version = 4; } ), text + "4" );
}

TEST_F( QuerierConfigTest, RefusesAnAddressThatIsNotUnicast ) {
    std::string const text = "QuerierConfig::ipAddr: expected a unicast address, found ";
    EXPECT_EQ( refusal( []( auto& c ) { c.ipAddr = IpAddr(); } ), text + "0.0.0.0" );
    EXPECT_EQ( refusal( []( auto& c ) { c.ipAddr = IpAddr( "224.0.0.1" ); } ), text + "224.0.0.1" );
}

TEST_F( QuerierConfigTest, RefusesAnMtuThatIpDoesNotKnow ) {
    EXPECT_NE( refusal( []( auto& c ) { c.mtu = 67; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.mtu = 65536; } ), "" );
    EXPECT_EQ( refusal( []( auto& c ) { c.mtu = 68; } ), "" );
}

TEST_F( QuerierConfigTest, RefusesCountsOfZero ) {
    EXPECT_NE( refusal( []( auto& c ) { c.robustness = 0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.startupQueryCountSet = 0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.lastMemberQueryCountSet = 0; } ), "" );
}

TEST_F( QuerierConfigTest, RefusesIntervalsThatAreNotAboveZero ) {
    EXPECT_NE( refusal( []( auto& c ) { c.queryInterval = 0.0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.queryInterval = Kiv::never; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.startupQueryIntervalSet = 0.0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.lastMemberQueryInterval = 0.0; } ), "" );
}

TEST_F( QuerierConfigTest, RefusesAResponseIntervalNotBelowTheQueryInterval ) {
    EXPECT_NE( refusal( []( auto& c ) { c.queryResponseInterval = 125.0; } ), "" );
}

TEST_F( QuerierConfigTest, RefusesTimesThatAVersion2QueryCannotTell ) {
    EXPECT_EQ( refusal( []( auto& c ) { c.queryResponseInterval = 26.0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.version = 2, c.queryResponseInterval = 26.0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.version = 2, c.queryResponseInterval = 0.0; } ), "" );
    EXPECT_NE( refusal( []( auto& c ) { c.version = 2, c.lastMemberQueryInterval = 26.0; } ), "" );
}

TEST_F( QuerierConfigTest, RefusesTimesThatNoQueryCanTell ) {
    auto const tooLong = []( auto& c ) { c.queryInterval = 9999.0, c.queryResponseInterval = 3174.5; };
    EXPECT_NE( refusal( tooLong ), "" );
}

} // namespace Lab
