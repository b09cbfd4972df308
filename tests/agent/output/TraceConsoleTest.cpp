#include "agent/output/TraceConsole.h"

#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>

namespace Agent {

namespace {

using ::testing::ThrowsMessage;

Kiv::TraceHandle probe( "ConsoleProbe" );

class TraceConsoleTest : public ::testing::Test {
  protected:
    /// What is shown of a message to a console with these requests.
    std::string
    shown( std::vector<TraceRequest> const& requests, Kiv::TraceHandle const& handle, int level ) {
        TraceConsole const console( out_, requests );
        KIV_TRACE( handle, level ) << "text";
        return out_.str();
    }
    static Kiv::TraceHandle& device() { return *Kiv::TraceHandle::find( "Device" ); }

    std::ostringstream out_;
};

TEST_F( TraceConsoleTest, NothingIsShownUnasked ) {
    EXPECT_EQ( shown( {}, probe, 0 ), "" );
}

TEST_F( TraceConsoleTest, HandleIsShownUpToItsLevel ) {
    std::string const text = shown( { { &probe, 4 } }, probe, 4 );
    EXPECT_TRUE( text.ends_with( " ConsoleProbe:4 text\n" ) ) << text;
    EXPECT_EQ( shown( { { &probe, 4 } }, probe, 5 ), text );
}

TEST_F( TraceConsoleTest, HighestOfSeveralLevelsCounts ) {
    EXPECT_NE( shown( { { &probe, 4 }, { &probe, 2 } }, probe, 4 ), "" );
}

TEST_F( TraceConsoleTest, TroubleWithADeviceIsShownAlways ) {
    EXPECT_EQ( shown( {}, device(), 1 ), "igmphost: error: device text; waiting for it\n" );
}

TEST_F( TraceConsoleTest, EventOfADeviceIsShownAlways ) {
    EXPECT_EQ( shown( {}, device(), 3 ), "igmphost: device text\n" );
}

TEST_F( TraceConsoleTest, EndPutsLevelsAndSinkBack ) {
    Quillog::TraceSink* const before = Quillog::traceSink();
    shown( { { &probe, 4 } }, probe, 4 );
    EXPECT_EQ( probe.level(), Kiv::TraceHandle::off );
    EXPECT_EQ( device().level(), Kiv::TraceHandle::off );
    EXPECT_EQ( Quillog::traceSink(), before );
}

TEST( TraceRequest, NamesAHandleAndALevel ) {
    TraceRequest const request = traceRequest( "ConsoleProbe:7" );
    EXPECT_EQ( request.handle, &probe );
    EXPECT_EQ( request.level, 7 );
}

TEST( TraceRequest, WithoutALevelIsRefused ) {
    for ( std::string const text :
          { "ConsoleProbe", "ConsoleProbe:", "ConsoleProbe:x", "ConsoleProbe:-1", "" } ) {
        EXPECT_THAT(
            [&] { traceRequest( text ); },
            ThrowsMessage<std::invalid_argument>(
                "expected HANDLE:LEVEL such as IgmpHost:4, found '" + text + "'"
            )
        );
    }
}

TEST( TraceRequest, UnknownHandleIsRefusedWithTheNearestOne ) {
    EXPECT_THAT(
        [] { traceRequest( "IgmpHosts:4" ); }, ThrowsMessage<std::invalid_argument>( std::string(
                                                   "no trace handle 'IgmpHosts'; did you mean 'IgmpHost'?"
                                               ) )
    );
}

} // namespace

} // namespace Agent
