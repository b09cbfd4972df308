#include "platform/quillog/Trace.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "platform/quillog/BlockTimer.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/TraceCapture.h"

namespace {

using Support::TraceCapture;
using Texts = std::vector<std::string>;

Kiv::TraceHandle handle( "TraceTest" );
Kiv::TraceHandle otherHandle( "TraceTestOther" );

class TraceTest : public Support::SimulatedTest {
  protected:
    TraceTest() { Quillog::ringBuf().clear(); }
    ~TraceTest() override { handle.levelIs( Kiv::TraceHandle::off ); }

    int evaluated() { return ++evaluations_; }
    int evaluations_ = 0;
};

TEST_F( TraceTest, HandleIsOffAtFirst ) {
    EXPECT_EQ( handle.level(), Kiv::TraceHandle::off );
    EXPECT_FALSE( handle.on( 0 ) );
}

TEST_F( TraceTest, HandleTakesItsLevelAndThoseBelow ) {
    handle.levelIs( 5 );
    EXPECT_TRUE( handle.on( 0 ) );
    EXPECT_TRUE( handle.on( 5 ) );
    EXPECT_FALSE( handle.on( 6 ) );
}

TEST_F( TraceTest, StreamedExpressionIsNotEvaluatedWhereTheLevelIsOff ) {
    KIV_TRACE( handle, 0 ) << evaluated();
    handle.levelIs( 4 );
    KIV_TRACE( handle, 5 ) << evaluated();
    EXPECT_EQ( evaluations_, 0 );
    EXPECT_TRUE( Quillog::ringBuf().entries().empty() );
    KIV_TRACE( handle, 4 ) << evaluated();
    EXPECT_EQ( evaluations_, 1 );
}

TEST_F( TraceTest, StatementStandsInABranchWithoutBraces ) {
    handle.levelIs( 0 );
    bool otherwise = false;
    if ( start() < 0.0 )
        KIV_TRACE( handle, 0 ) << evaluated();
    else
        otherwise = true;
    EXPECT_TRUE( otherwise );
    EXPECT_EQ( evaluations_, 0 );
}

TEST_F( TraceTest, MessageGoesToTheRingWithHandleLevelAndTime ) {
    handle.levelIs( 3 );
    runFor( 2.0 );
    KIV_TRACE( handle, 2 ) << " group " << 7 << ' ' << 1.5;
    auto const entries = Quillog::ringBuf().entries();
    ASSERT_EQ( entries.size(), 1U );
    EXPECT_EQ( entries[0].text, " group 7 1.5" );
    EXPECT_STREQ( entries[0].desc.handle, "TraceTest" );
    EXPECT_EQ( entries[0].desc.level, 2 );
    EXPECT_EQ( entries[0].desc.time, 1002.0 );
}

TEST_F( TraceTest, HelperAloneWritesAMessageToo ) {
    Kiv::traceHelper( handle, 1 ) << "always";
    EXPECT_EQ( Quillog::ringBuf().entries().at( 0 ).text, "always" );
}

TEST_F( TraceTest, HandleIsFoundByItsName ) {
    EXPECT_EQ( Kiv::TraceHandle::find( "TraceTest" ), &handle );
    EXPECT_EQ( Kiv::TraceHandle::find( "TraceTestOther" ), &otherHandle );
    EXPECT_EQ( Kiv::TraceHandle::find( "Trace" ), nullptr );
}

TEST_F( TraceTest, EveryHandleIsListed ) {
    int found = 0;
    for ( Kiv::TraceHandle const* at = Kiv::TraceHandle::first(); at; at = at->next() ) {
        found += at == &handle || at == &otherHandle;
    }
    EXPECT_EQ( found, 2 );
}

TEST_F( TraceTest, HandlesHaveLevelsOfTheirOwn ) {
    handle.levelIs( 9 );
    EXPECT_FALSE( otherHandle.on( 0 ) );
}

TEST_F( TraceTest, RingKeepsTheLastMessagesOldestFirst ) {
    Quillog::RingBuf ring( 3 );
    Texts texts;
    for ( char const* text : { "1", "2", "3", "4", "5" } ) {
        ring.add( { "h", 0, 0.0 }, text );
    }
    for ( auto const& entry : ring.entries() ) {
        texts.push_back( entry.text );
    }
    EXPECT_EQ( texts, ( Texts{ "3", "4", "5" } ) );
}

TEST_F( TraceTest, RingThatIsNotFullKeepsAll ) {
    Quillog::RingBuf ring( 3 );
    ring.add( { "h", 0, 0.0 }, "1" );
    ring.add( { "h", 0, 0.0 }, "2" );
    EXPECT_EQ( ring.entries().size(), 2U );
    EXPECT_EQ( ring.entries()[0].text, "1" );
}

TEST_F( TraceTest, ClearedRingStartsAnew ) {
    Quillog::RingBuf ring( 2 );
    for ( char const* text : { "1", "2", "3" } ) {
        ring.add( { "h", 0, 0.0 }, text );
    }
    ring.clear();
    EXPECT_TRUE( ring.entries().empty() );
    ring.add( { "h", 0, 0.0 }, "4" );
    EXPECT_EQ( ring.entries().at( 0 ).text, "4" );
}

TEST_F( TraceTest, FileWritesALineAMessage ) {
    std::ostringstream out;
    Quillog::TraceFile file( out );
    file.message( { "Igmp", 6, 12.5 }, " blocked. dropping packet " );
    EXPECT_EQ( out.str(), "12.500000 Igmp:6  blocked. dropping packet \n" );
}

TEST_F( TraceTest, FileTellsTheTimeWithMicroseconds ) {
    std::ostringstream out;
    Quillog::TraceFile file( out );
    file.message( { "h", 0, 1.8e9 + 0.25 }, "x" );
    EXPECT_EQ( out.str(), "1800000000.250000 h:0 x\n" );
}

TEST_F( TraceTest, SinkGetsEveryMessage ) {
    std::ostringstream out;
    Quillog::TraceFile file( out );
    Quillog::traceSinkIs( &file );
    handle.levelIs( 0 );
    KIV_TRACE( handle, 0 ) << "seen";
    Quillog::traceSinkIs( nullptr );
    KIV_TRACE( handle, 0 ) << "unseen";
    EXPECT_EQ( out.str(), "1000.000000 TraceTest:0 seen\n" );
    EXPECT_EQ( Quillog::ringBuf().entries().size(), 2U );
}

TEST_F( TraceTest, CaptureCollectsAndRestores ) {
    Quillog::TraceSink* const before = Quillog::traceSink();
    {
        TraceCapture capture( "TraceTest", 4 );
        KIV_TRACE( handle, 4 ) << "taken";
        KIV_TRACE( handle, 5 ) << "too deep";
        EXPECT_EQ( capture.texts(), Texts{ "taken" } );
        EXPECT_EQ( capture.levels(), std::vector<int>{ 4 } );
        EXPECT_TRUE( capture.contains( "ake" ) );
        EXPECT_FALSE( capture.contains( "deep" ) );
        capture.clear();
        EXPECT_TRUE( capture.texts().empty() );
    }
    EXPECT_EQ( handle.level(), Kiv::TraceHandle::off );
    EXPECT_EQ( Quillog::traceSink(), before );
}

TEST_F( TraceTest, CaptureOfAnUnknownHandleIsRefused ) {
    EXPECT_THROW( TraceCapture( "Nobody", 1 ), std::invalid_argument );
}

TEST_F( TraceTest, BlockTimerTellsHowLongItsScopeTook ) {
    TraceCapture capture( "TraceTest", 2 );
    {
        Quillog::BlockTimer const timer( handle, 2, "sweep" );
        runFor( 1.5 );
    }
    EXPECT_EQ( capture.texts(), Texts{ "sweep took 1.5 sec" } );
}

TEST_F( TraceTest, BlockTimerIsSilentWhereItBeganOff ) {
    {
        Quillog::BlockTimer const timer( handle, 2, "sweep" );
        handle.levelIs( 2 );
    }
    EXPECT_TRUE( Quillog::ringBuf().entries().empty() );
}

} // namespace
