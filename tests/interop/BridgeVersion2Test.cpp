#include "tests/interop/BridgeTest.h"

namespace {

using namespace Igmp;
using Interop::IgmpHost;
using Interop::IgmpV3GroupRecord;
using Interop::Memberships;
using ::testing::Contains;
using ::testing::IsEmpty;
using Zornet::IpAddr;

/// A querier of version 2 that asks every second and forgets after three.
class BridgeVersion2 : public Interop::BridgeTest {
  protected:
    BridgeVersion2() : BridgeTest( 2, { 100, 50, 20, 300 } ) {}

    static constexpr auto exclude = IgmpV3GroupRecord::exclude;
};

TEST_F( BridgeVersion2, KeepsWhatVersion1And2HostsJoinedThroughTenQueryRounds ) {
    IgmpHost& first = addHost( "h1", igmpVersion2 );
    IgmpHost& second = addHost( "h1", igmpVersion2 );
    IgmpHost& third = addHost( "h2", igmpVersion2 );
    join( first, "239.1.1.1", exclude );
    join( second, "239.1.1.1", exclude );
    join( second, "239.1.1.2", exclude );
    join( third, "239.1.1.3", exclude );
    join( addHost( "h1", igmpVersion1 ), "239.1.1.4", exclude );
    join( addHost( "h2", igmpVersion1 ), "239.1.1.5", exclude );
    Memberships const onFirst{ { "239.1.1.1", {} }, { "239.1.1.2", {} }, { "239.1.1.4", {} } };
    Memberships const onSecond{ { "239.1.1.3", {} }, { "239.1.1.5", {} } };
    ASSERT_EQ( awaitTable( "p1", onFirst, 5.0 ), onFirst );
    ASSERT_EQ( awaitTable( "p2", onSecond, 5.0 ), onSecond );
    unsigned const queries = queriesSent( "p1" );
    EXPECT_THAT( deviations( "p1", onFirst, 10.5 ), IsEmpty() );
    EXPECT_EQ( bridgeTable( "p2" ), onSecond );
    EXPECT_GE( queriesSent( "p1" ) - queries, 10U );
    EXPECT_GE( status( first ).v2GeneralQueryReceived(), 10U );
}

TEST_F( BridgeVersion2, ALeaveIsSeenAndEndsTheMembership ) {
    IgmpHost& host = addHost( "h1", igmpVersion2 );
    join( host, "239.1.1.1", exclude );
    join( host, "239.1.1.2", exclude );
    Memberships const both{ { "239.1.1.1", {} }, { "239.1.1.2", {} } };
    ASSERT_EQ( awaitTable( "p1", both, 5.0 ), both );
    host.v3groupDel( IpAddr( "239.1.1.1" ) );
    Memberships const one{ { "239.1.1.2", {} } };
    EXPECT_EQ( awaitTable( "p1", one, 2.0 ), one );
    EXPECT_EQ( status( host ).v2LeavesSent(), 1U );
    EXPECT_THAT( reports(), Contains( "10.0.0.1|224.0.0.2|0x17|239.1.1.1" ) );
}

TEST_F( BridgeVersion2, AForeignReportSuppressesTheAnswer ) {
    IgmpHost& host = addHost( "h1", igmpVersion2 );
    host.v2RouterPresentTimeoutIs( 400.0 );
    join( host, "239.1.1.1", exclude );
    live( 3.0 );
    U32 const reports = status( host ).v2ReportsSent();
    // The same report from the far side after every query, before this host's own answer can be due.
    std::string const script = "python3 - <<'END'\n"
                               "import socket, time\n"
                               "s = socket.socket(socket.AF_PACKET, socket.SOCK_RAW)\n"
                               "s.bind(('p1', 0x0800))\n"
                               "frame = bytes.fromhex('01005e010101020000000099080046000020000000000102'\n"
                               "                      '2ad50a000001ef010101940400001600f9fcef010101')\n"
                               "for i in range(400):\n"
                               "    s.send(frame)\n"
                               "    time.sleep(0.01)\n"
                               "END";
    FILE* const injector = popen( ( "ip netns exec " + bridge().name() + " " + script ).c_str(), "r" );
    Kiv::defaultActivity()->activitySm().runUntil(
        [&] { return status( host ).v12ReportReceived() > 10; }, 5.0
    );
    U32 const whenHeard = status( host ).v2ReportsSent();
    live( 3.0 );
    EXPECT_LE( whenHeard - reports, 2U );
    EXPECT_EQ( status( host ).v2ReportsSent(), whenHeard );
    EXPECT_GE( status( host ).v2GeneralQueryReceived(), 3U );
    pclose( injector );
}

} // namespace
