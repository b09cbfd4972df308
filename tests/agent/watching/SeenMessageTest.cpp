#include "agent/watching/SeenMessage.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/Frames.h"

namespace Agent {

namespace {

using Lab::Bytes;
using Lab::igmpFrame;
using Lab::igmpMessage;
using Record = Zornet::IgmpV3GroupRecordType;
using Type = Zornet::IgmpMessageType;
using Zornet::IpAddr;

IpAddr const host( "10.0.0.1" );
IpAddr const router( "10.0.0.254" );
IpAddr const allSystems( "224.0.0.1" );
IpAddr const G( "239.1.1.1" );
IpAddr const H( "232.1.1.1" );

SeenMessage
seen( Bytes const& frame ) {
    return SeenMessage( 1000.5, frame );
}

/// The line without the time and the source's Ethernet address.
std::string
line( Bytes const& frame ) {
    std::ostringstream out;
    out << seen( frame );
    constexpr std::size_t before = std::string_view( "00:00:00.000 02:00:00:00:00:01 " ).size();
    return out.str().substr( before );
}

Bytes
query( Zornet::U8 code, IpAddr const& group ) {
    return igmpFrame( router, allSystems, igmpMessage( Type::membershipQuery, code, group ) );
}

TEST( SeenMessage, BeginsWithTimeAndSender ) {
    std::ostringstream out;
    out << seen( Lab::v2Report( host, G ) );
    EXPECT_THAT(
        out.str(),
        ::testing::MatchesRegex( "[0-9]+:[0-9]+:40\\.500 [0-9a-f:]+ 10\\.0\\.0\\.1 v2 report 239\\.1\\.1\\.1"
        )
    );
}

TEST( SeenMessage, MessagesOfVersions1And2NameTheirGroup ) {
    EXPECT_EQ( line( Lab::v1Report( host, G ) ), "10.0.0.1 v1 report 239.1.1.1" );
    EXPECT_EQ( line( Lab::v2Leave( host, G ) ), "10.0.0.1 v2 leave 239.1.1.1" );
}

TEST( SeenMessage, QueriesTellTheResponseTime ) {
    EXPECT_EQ( line( query( 0, IpAddr() ) ), "10.0.0.254 v1 general query within 0 s" );
    EXPECT_EQ( line( query( 100, IpAddr() ) ), "10.0.0.254 v2 general query within 10 s" );
    EXPECT_EQ( line( query( 5, G ) ), "10.0.0.254 v2 group query 239.1.1.1 within 0.5 s" );
}

TEST( SeenMessage, Version3QueryTellsAllItHas ) {
    Bytes const general = Lab::v3QueryMessage( IpAddr(), {}, 100, false, 2, 125 );
    EXPECT_EQ(
        line( igmpFrame( router, allSystems, general ) ),
        "10.0.0.254 v3 general query within 10 s, every 125 s, robustness 2"
    );
    Bytes const sources = Lab::v3QueryMessage( G, { IpAddr( "10.1.1.1" ) }, 10, true, 2, 125 );
    EXPECT_EQ(
        line( igmpFrame( router, G, sources ) ),
        "10.0.0.254 v3 source query 239.1.1.1 {10.1.1.1} within 1 s, "
        "every 125 s, robustness 2, suppress"
    );
}

TEST( SeenMessage, Version3ReportListsItsRecords ) {
    Bytes const frame = Lab::v3Report(
        host, { { Record::CHANGE_TO_EXCLUDE_MODE, G },
                { Record::ALLOW_NEW_SOURCES, H, { IpAddr( "10.1.1.1" ), IpAddr( "10.1.1.2" ) }, 1 },
                { Record{ 9 }, G } }
    );
    EXPECT_EQ(
        line( frame ),
        "10.0.0.1 v3 report TO_EX 239.1.1.1, ALLOW 232.1.1.1 {10.1.1.1, 10.1.1.2}, TYPE_9 239.1.1.1"
    );
}

TEST( SeenMessage, TagsAreShown ) {
    Bytes const frame =
        igmpFrame( host, G, igmpMessage( Type::v2MembershipReport, 0, G ), { .tag = Zornet::U16{ 0xa007 } } );
    EXPECT_EQ( line( frame ), "10.0.0.1 vlan 7 v2 report 239.1.1.1" );
    Bytes doubled = frame;
    doubled.insert( doubled.begin() + 12, { 0x88, 0xa8, 0x00, 0x64 } );
    EXPECT_EQ( line( doubled ), "10.0.0.1 vlan 100 vlan 7 v2 report 239.1.1.1" );
}

TEST( SeenMessage, FaultsStandBehind ) {
    Bytes frame = Lab::v2Report( host, G );
    frame.back() ^= 1;
    EXPECT_EQ( line( frame ), "10.0.0.1 v2 report 239.1.1.0 [wrong IGMP checksum]" );
    frame = Lab::v2Report( host, G );
    frame[24] ^= 1;
    EXPECT_EQ( line( frame ), "10.0.0.1 v2 report 239.1.1.1 [wrong IP checksum]" );
    frame = igmpFrame( host, G, igmpMessage( Type::v2MembershipReport, 0, G ), { .ttl = 64 } );
    EXPECT_EQ( line( frame ), "10.0.0.1 v2 report 239.1.1.1 [TTL 64]" );
}

TEST( SeenMessage, UnknownTypeIsNamedByNumber ) {
    EXPECT_EQ( line( igmpFrame( host, G, igmpMessage( Type{ 0x13 }, 0, G ) ) ), "10.0.0.1 type 0x13" );
}

TEST( SeenMessage, RecordsThatAreCutShortAreAFault ) {
    Bytes message = Lab::v3ReportMessage( { { Record::MODE_IS_EXCLUDE, G } } );
    message[7] = 2;
    Lab::checksum( message );
    EXPECT_EQ(
        line( igmpFrame( host, IpAddr( "224.0.0.22" ), message ) ),
        "10.0.0.1 v3 report IS_EX 239.1.1.1 [records cut short]"
    );
}

TEST( SeenMessage, AnyCutOfAFrameIsReadWithoutHarm ) {
    Bytes const whole = Lab::v3Report( host, { { Record::MODE_IS_INCLUDE, G, { host, router } } } );
    for ( std::size_t bytes = 0; bytes < whole.size(); ++bytes ) {
        Bytes const part( whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>( bytes ) );
        EXPECT_FALSE( seen( part ).faults().empty() ) << bytes;
    }
    EXPECT_TRUE( seen( whole ).faults().empty() );
}

TEST( SeenMessage, JsonHasTheSame ) {
    auto const json = seen( Lab::v3Report( host, { { Record::BLOCK_OLD_SOURCES, G, { router } } } ) ).json();
    EXPECT_EQ( json["time"], 1000.5 );
    EXPECT_EQ( json["src"], "10.0.0.1" );
    EXPECT_EQ( json["dst"], "224.0.0.22" );
    EXPECT_EQ( json["kind"], "report" );
    EXPECT_EQ( json["igmpVersion"], 3 );
    EXPECT_EQ( json["groups"][0]["group"], "239.1.1.1" );
    EXPECT_EQ( json["groups"][0]["recordType"], "BLOCK_OLD_SOURCES" );
    EXPECT_EQ( json["groups"][0]["sources"][0], "10.0.0.254" );
    EXPECT_TRUE( json["faults"].empty() );
    EXPECT_FALSE( json.contains( "maxResponse" ) );
    EXPECT_EQ( seen( query( 100, IpAddr() ) ).json()["maxResponse"], 10.0 );
}

} // namespace

} // namespace Agent
