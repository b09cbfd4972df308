#include <sstream>

#include "lab/Querier.h"
#include "tests/lab/WireTest.h"

// The querier and the wire together: a querier on a device of its own, and nodes that answer its general
// queries.

namespace Lab {

class QuerierOnWireTest : public WireTest {
  protected:
    using WireTest::WireTest;

    inline static IpAddr const groupOfA{ "239.1.1.1" };
    inline static IpAddr const groupOfB{ "239.1.1.2" };

    /// An open access object on a further device of the segment.
    Kiv::Ptr<Zornet::EthDevPam> device( char const* name ) {
        wire.attach( ns(), name, "lan" );
        Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( name );
        pam->deviceOpenIs( true );
        return pam;
    }
    std::unique_ptr<Querier> querier( char const* ipAddr ) {
        QuerierConfig config;
        config.ipAddr = IpAddr( ipAddr );
        config.electionEnabled = true;
        auto made = std::make_unique<Querier>( config, device( ipAddr ), wheel() );
        made->enabledIs( true );
        return made;
    }
    /// The node reports the group when it hears a frame of the querier.
    static void answer( WireNode& node, char const* from, IpAddr const& group ) {
        node.reaction = [&node, from, group] {
            IgmpFrame const heard( node.frames.back(), {} );
            if ( heard.v12().messageType() == Zornet::IgmpMessageType::membershipQuery ) {
                node.send( v3Report( IpAddr( from ), { { Record::MODE_IS_EXCLUDE, group } } ) );
            }
        };
    }
};

TEST_F( QuerierOnWireTest, LearnsWhatTheNodesReport ) {
    answer( *a, "10.0.0.1", groupOfA );
    answer( *b, "10.0.0.2", groupOfB );
    auto const router = querier( "10.0.0.254" );
    runFor( 1.0 );
    EXPECT_THAT( router->groups(), ElementsAre( groupOfA, groupOfB ) );
    EXPECT_EQ( router->counters().malformed(), 0U );
    EXPECT_EQ( router->counters().misaddressed, 0U );
}

TEST_F( QuerierOnWireTest, KeepsMembershipsForHoursAndForgetsASilentNode ) {
    answer( *a, "10.0.0.1", groupOfA );
    answer( *b, "10.0.0.2", groupOfB );
    auto const router = querier( "10.0.0.254" );
    runFor( 7200.0 );
    EXPECT_EQ( router->groupCount(), 2U );
    wire.linkUpIs( ns(), "b", false );
    runFor( 260.0 );
    EXPECT_THAT( router->groups(), ElementsAre( groupOfA ) );
}

TEST_F( QuerierOnWireTest, OneLostQueryIsBorneAndTwoAreNot ) {
    answer( *a, "10.0.0.1", groupOfA );
    auto const router = querier( "10.0.0.254" );
    runFor( 100.0 );
    int queriesToLose = 1;
    lan().dropIs( [&]( WireFrame const& ) { return queriesToLose-- > 0; } );
    runFor( 300.0 );
    EXPECT_EQ( router->groupCount(), 1U );
    queriesToLose = 2;
    runFor( 250.0 );
    EXPECT_EQ( router->groupCount(), 0U );
}

TEST_F( QuerierOnWireTest, LowerAddressAsksAndBothLearn ) {
    answer( *a, "10.0.0.1", groupOfA );
    auto const higher = querier( "10.0.0.254" );
    auto const lower = querier( "10.0.0.250" );
    runFor( 3600.0 );
    EXPECT_TRUE( lower->isQuerier() );
    EXPECT_FALSE( higher->isQuerier() );
    EXPECT_EQ( higher->counters().generalQueriesSent, 1U );
    EXPECT_THAT( lower->groups(), ElementsAre( groupOfA ) );
    EXPECT_THAT( higher->groups(), ElementsAre( groupOfA ) );
}

TEST_F( QuerierOnWireTest, HigherAddressTakesOverFromASilentOne ) {
    auto const higher = querier( "10.0.0.254" );
    auto const lower = querier( "10.0.0.250" );
    runFor( 100.0 );
    wire.linkUpIs( ns(), "10.0.0.250", false );
    runFor( 255.0 );
    EXPECT_TRUE( higher->isQuerier() );
    wire.linkUpIs( ns(), "10.0.0.250", true );
    runFor( 125.0 );
    EXPECT_FALSE( higher->isQuerier() );
}

/// The capture of an hour with two queriers and every impairment.
class CaptureOfARun : public QuerierOnWireTest {
  public:
    explicit CaptureOfARun( Zornet::U64 seed ) : QuerierOnWireTest( seed ) {
        Capture capture;
        lan().captureIs( &capture );
        lan().impairmentIs(
            { .loss = 0.1, .duplication = 0.1, .reordering = 0.1, .delay = 1e-3, .jitter = 1e-2 }
        );
        answer( *a, "10.0.0.1", groupOfA );
        answer( *b, "10.0.0.2", groupOfB );
        auto const higher = querier( "10.0.0.254" );
        auto const lower = querier( "10.0.0.250" );
        runFor( 3600.0 );
        std::ostringstream out;
        capture.writePcap( out );
        pcap = out.str();
        frames = capture.count();
        lan().captureIs( nullptr );
    }
    void TestBody() override {}

    std::string pcap;
    std::size_t frames = 0;
};

TEST( RunTest, OneSeedGivesIdenticalCaptures ) {
    std::string const first = CaptureOfARun( 3 ).pcap;
    CaptureOfARun const second( 3 );
    EXPECT_GT( second.frames, 50U );
    EXPECT_EQ( first, second.pcap );
}

TEST( RunTest, AnotherSeedGivesAnotherCapture ) {
    std::string const first = CaptureOfARun( 3 ).pcap;
    EXPECT_NE( first, CaptureOfARun( 4 ).pcap );
}

} // namespace Lab
