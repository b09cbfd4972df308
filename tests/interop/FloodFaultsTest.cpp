/// Frames that come faster than anybody can read them.

#include <iostream>

#include "tests/interop/FaultTest.h"

namespace Interop {

namespace {

using Igmp::IgmpVersion;

class FloodFaults : public FaultTest {
  protected:
    static constexpr unsigned count = 20;
    static constexpr unsigned many = 50;

    void floodIs( Bytes const& frame, double perSecond = Support::Flood::unlimited ) {
        withoutProcessor_ = timeWithoutProcessor();
        began_ = Support::wallClock();
        flood_ = std::make_unique<Support::Flood>( far_, "far0", frame, perSecond );
    }
    /// Ends it, lets the hosts read what waits, and returns how many frames there were.
    U64 stopFlood() {
        U64 const frames = flood_->stop();
        ended_ = Support::wallClock();
        flood_.reset(); // with its socket
        if ( std::getenv( "IGMPHOST_FAULT_SECONDS" ) ) {
            std::cout << "    " << static_cast<U64>( static_cast<double>( frames ) / ( ended_ - began_ ) )
                      << " frames a second, " << pam( 0 ).rxErrors() << " of " << frames << " lost\n";
        }
        return frames;
    }
    /// Each frame was heard by each host, by `heard`, or lost on the way and counted.
    void expectEachHeardOrCounted( U64 frames, std::function<U64( IgmpHostStatus const& )> const& heard ) {
        for ( std::size_t i = 0; i < hosts(); ++i ) {
            eventually( [&] { return heard( status( i ) ) + pam( i ).rxErrors() >= frames; } );
            EXPECT_EQ( heard( status( i ) ) + pam( i ).rxErrors(), frames ) << "host " << i;
        }
    }
    /// While queries never end, every host sends an answer in every response time.
    void expectEveryHostInEveryResponseTime() {
        Seconds const most = responseTime + tolerance + timeWithoutProcessor() - withoutProcessor_;
        std::map<IpAddr, double> last;
        for ( Support::Arrival const& answer : heard_ ) {
            auto const [at, isFirst] = last.try_emplace( answer.source(), began_ );
            EXPECT_LE( answer.time - at->second, most ) << answer.source();
            at->second = answer.time;
        }
        ASSERT_EQ( last.size(), hosts() );
        for ( auto const& [source, time] : last ) {
            EXPECT_LE( ended_ - time, most ) << source;
        }
    }

  private:
    std::unique_ptr<Support::Flood> flood_;
    Seconds withoutProcessor_ = 0.0;
    double began_ = 0.0;
    double ended_ = 0.0;
};

class FloodFaultsOf : public FloodFaults, public ::testing::WithParamInterface<IgmpVersion> {
  protected:
    static Bytes reportOfAnother( IpAddr const& addr ) {
        IpAddr const other( "10.0.200.1" );
        return GetParam() == Igmp::igmpVersion3
                   ? Lab::v3Report( other, { { Lab::Record::MODE_IS_EXCLUDE, addr } } )
                   : Lab::v2Report( other, addr );
    }
    static U64 reportsHeard( IgmpHostStatus const& status ) {
        return status.v12ReportReceived() + status.v3ReportReceived();
    }
};

INSTANTIATE_TEST_SUITE_P(
    Version, FloodFaultsOf, ::testing::Values( Igmp::igmpVersion2, Igmp::igmpVersion3 ),
    []( auto const& instance ) { return std::to_string( instance.param ); }
);

TEST_P( FloodFaultsOf, DataOfJoinedGroupsReachesNobodyAndDelaysNothing ) {
    hostsAre( count, GetParam() );
    floodIs( Lab::dataFrame( IpAddr( "10.0.200.1" ), group ), 500'000.0 );
    U64 asked = 0;
    for ( Seconds const end = Kiv::now() + faultTime(); Kiv::now() < end; ++asked ) {
        ASSERT_NO_FATAL_FAILURE( expectAnswersInTime() );
    }
    EXPECT_GT( stopFlood(), 0U );
    EXPECT_EQ( pam( 0 ).readableCount(), asked );
    EXPECT_EQ( pam( 0 ).rxErrors(), 0U );
    expectNothingLostUncounted( 0 );
}

TEST_P( FloodFaultsOf, QueriesAreAnsweredInTimeAndCounted ) {
    hostsAre( many, GetParam() );
    hear();
    heard_.clear();
    U64 const before = reportsSent();
    floodIs( query() );
    live( faultTime() );
    U64 const frames = stopFlood();
    expectEachHeardOrCounted( frames, []( IgmpHostStatus const& status ) {
        return status.v2GeneralQueryReceived() + status.v3GeneralQueryReceived();
    } );
    hear();
    expectEveryHostInEveryResponseTime();
    ASSERT_TRUE( eventually( [&] { return !isAnswering(); } ) );
    hear();
    EXPECT_EQ( heard_.size(), reportsSent() - before );
}

TEST_P( FloodFaultsOf, ReportsOfOthersDelayNoAnswerWhileThereIsProcessorLeft ) {
    hostsAre( count, GetParam() );
    floodIs( reportOfAnother( IpAddr( "239.9.9.9" ) ), 5'000.0 );
    U64 asked = 0;
    for ( Seconds const end = Kiv::now() + faultTime(); Kiv::now() < end; ++asked ) {
        ASSERT_NO_FATAL_FAILURE( expectAnswersInTime() );
    }
    expectEachHeardOrCounted( stopFlood(), reportsHeard );
    EXPECT_EQ( pam( 0 ).rxErrors(), 0U );
    expectNothingLostUncounted( 0 );
}

TEST_P( FloodFaultsOf, ReportsOfOthersThatNobodyCanReadAreCounted ) {
    hostsAre( count, GetParam() );
    floodIs( reportOfAnother( group ), Support::Flood::unlimited );
    live( faultTime() );
    expectEachHeardOrCounted( stopFlood(), reportsHeard );
    expectAnswersInTime();
    expectNothingLostUncounted( 0 );
}

} // namespace

} // namespace Interop
