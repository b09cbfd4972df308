#include <sstream>

#include "tests/scenario/ScenarioTest.h"

namespace Agent {

namespace {

constexpr Seconds oneStart = 1000.0;

/// One simulated scenario from beginning to end, on a wire with everything that chance can do to frames.
class Rehearsal : public ScenarioTest {
  public:
    explicit Rehearsal( Seconds start, Igmp::IgmpVersion version ) : ScenarioTest( start ) {
        lan().captureIs( &capture_ );
        Lab::Impairment impairment;
        impairment.loss = 0.05;
        impairment.duplication = 0.05;
        impairment.reordering = 0.05;
        impairment.delay = 0.002;
        impairment.jitter = 0.01;
        lan().impairmentIs( impairment );
        querierIs( 3 );
        hostsAre( text( version ) );
    }
    /// The capture of two hours.
    std::string run() {
        runFor( hour );
        leave( "a-2", "239.1.1.1" );
        join( "b", "239.1.1.7", Igmp::IgmpV3GroupRecord::include, { "10.9.0.1" } );
        runFor( hour );
        std::ostringstream pcap;
        capture_.writePcap( pcap, Lab::PcapResolution::nanoseconds );
        return pcap.str();
    }
    void TestBody() override {}

  private:
    static std::string text( Igmp::IgmpVersion version ) {
        std::string const common =
            ", igmpVersion: " + std::to_string( version ) +
            ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude, count: 5 } ] }\n";
        return "hosts:\n"
               "  - { name: a, count: 9, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0" +
               common + "  - { name: b, ipAddr: 10.0.1.1, macAddr: '02:00:00:00:01:01', deviceName: eth1" +
               common;
    }

    Lab::Capture capture_;
};

std::string
captureOf( Seconds start, Igmp::IgmpVersion version ) {
    return Rehearsal( start, version ).run();
}

class Repeatability : public ::testing::TestWithParam<Igmp::IgmpVersion> {};

TEST_P( Repeatability, TwoRunsOfOneScenarioGiveIdenticalCaptures ) {
    std::string const first = captureOf( oneStart, GetParam() );
    EXPECT_GT( first.size(), 10000U );
    EXPECT_TRUE( first == captureOf( oneStart, GetParam() ) );
}

TEST_P( Repeatability, OtherStartGivesOtherDelays ) {
    std::string const first = captureOf( oneStart, GetParam() );
    EXPECT_NE( first.size(), captureOf( oneStart + 7.0, GetParam() ).size() );
}

INSTANTIATE_TEST_SUITE_P(
    Version, Repeatability, ::testing::Values( Igmp::igmpVersion1, Igmp::igmpVersion2, Igmp::igmpVersion3 )
);

} // namespace

} // namespace Agent
