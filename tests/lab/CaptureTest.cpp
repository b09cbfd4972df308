#include "lab/Capture.h"

#include <sstream>

#include "tests/lab/WireTest.h"
#include "tests/platform/zornet/Hex.h"

namespace Lab {

class CaptureTest : public WireTest {
  protected:
    CaptureTest() { lan().captureIs( &capture ); }

    std::string pcapHex( PcapResolution resolution = PcapResolution::microseconds ) const {
        std::ostringstream out;
        capture.writePcap( out, resolution );
        std::string const bytes = out.str();
        return Zornet::hex( { reinterpret_cast<U8 const*>( bytes.data() ), bytes.size() } );
    }
    static std::string const microsecondHeader;

    Capture capture;
};

std::string const CaptureTest::microsecondHeader = "d4c3b2a1"
                                                   "02000400"
                                                   "00000000"
                                                   "00000000"
                                                   "00000400"
                                                   "01000000";

TEST_F( CaptureTest, KeepsBytesTimeAndSender ) {
    runFor( 2.0 );
    Bytes const sent = v2Report( IpAddr( "10.0.0.1" ), IpAddr( "239.1.1.1" ) );
    b->send( sent );
    ASSERT_EQ( capture.count(), 1U );
    WireFrame const frame = capture.frame( 0 );
    EXPECT_TRUE( std::equal( frame.bytes.begin(), frame.bytes.end(), sent.begin(), sent.end() ) );
    EXPECT_EQ( frame.time, start() + 2.0 );
    EXPECT_EQ( frame.device, "b" );
    EXPECT_FALSE( frame.lost );
    EXPECT_EQ( capture.bytes(), sent.size() );
}

TEST_F( CaptureTest, SeesFramesInTheOrderOfSending ) {
    lan().impairmentIs( { .delay = 1.0 } );
    a->send( "x" );
    runFor( 0.5 );
    c->send( "y" );
    ASSERT_EQ( capture.count(), 2U );
    EXPECT_EQ( capture.frame( 0 ).bytes.back(), 'x' );
    EXPECT_EQ( capture.frame( 1 ).bytes.back(), 'y' );
}

TEST_F( CaptureTest, SeesLostFramesAndSaysSo ) {
    lan().impairmentIs( { .loss = 1.0 } );
    a->send( "x" );
    ASSERT_EQ( capture.count(), 1U );
    EXPECT_TRUE( capture.frame( 0 ).lost );
}

TEST_F( CaptureTest, SeesADuplicateOnce ) {
    lan().impairmentIs( { .duplication = 1.0 } );
    a->send( "x" );
    settle();
    EXPECT_EQ( capture.count(), 1U );
}

TEST_F( CaptureTest, TellsFramesByTheirSender ) {
    wire.attach( ns( "blue" ), "a", "lan" );
    auto const blue = node( "a", "blue" );
    a->send( "x" );
    blue->send( "y" );
    a->send( "z" );
    EXPECT_EQ( capture.framesFrom( "a" ).size(), 2U );
    ASSERT_EQ( capture.framesFrom( "blue/a" ).size(), 1U );
    EXPECT_EQ( capture.framesFrom( "blue/a" )[0].bytes.back(), 'y' );
    EXPECT_THAT( capture.framesFrom( "b" ), IsEmpty() );
}

TEST_F( CaptureTest, DoesNotSeeOtherSegments ) {
    wire.attach( ns(), "d", "other" );
    node( "d" )->send( "x" );
    EXPECT_TRUE( capture.empty() );
}

TEST_F( CaptureTest, SeesNothingMoreOnceItIsTakenOff ) {
    a->send( "x" );
    lan().captureIs( nullptr );
    a->send( "y" );
    EXPECT_EQ( capture.count(), 1U );
}

TEST_F( CaptureTest, ForgetsWhenItIsCleared ) {
    a->send( "x" );
    capture.clear();
    a->send( "yz" );
    EXPECT_EQ( capture.count(), 2U );
    EXPECT_EQ( capture.bytes(), 28U );
    EXPECT_EQ( capture.frame( 0 ).bytes.back(), 'y' );
}

TEST_F( CaptureTest, FrameThatIsNotThereIsAnError ) {
    EXPECT_THROW( capture.frame( 0 ), std::out_of_range );
}

TEST_F( CaptureTest, EmptyCaptureIsAFileHeader ) {
    EXPECT_EQ( pcapHex(), microsecondHeader );
}

TEST_F( CaptureTest, WritesFramesWithMicroseconds ) {
    runFor( 0.25 ); // 1000.25 seconds: e8030000 and 90d00300
    a->send( "x" );
    EXPECT_EQ(
        pcapHex(), microsecondHeader + "e8030000"
                                       "90d00300"
                                       "0e000000"
                                       "0e000000"
                                       "00000000000000000000000000"
                                       "78"
    );
}

TEST_F( CaptureTest, WritesFramesWithNanoseconds ) {
    runFor( 0.25 );
    a->send( "x" );
    std::string const bytes = pcapHex( PcapResolution::nanoseconds );
    EXPECT_EQ( bytes.substr( 0, 8 ), "4d3cb2a1" );
    EXPECT_EQ(
        bytes.substr( 48, 16 ), "e8030000"
                                "80b2e60e"
    );
}

TEST_F( CaptureTest, TimeThatRoundsUpCarriesIntoTheSecond ) {
    Bytes const bytes( 14 );
    capture.frameIs( { 4.9999999, "a", bytes } );
    EXPECT_EQ(
        pcapHex().substr( 48, 16 ), "05000000"
                                    "00000000"
    );
}

} // namespace Lab
