#include "tests/lab/QuerierTest.h"

#include <random>

// What a querier makes of any bytes that reach it.

namespace Lab {

using Zornet::IgmpMessageType;

class QuerierReceptionTest : public QuerierTest {
  protected:
    QuerierReceptionTest() { start(); }

    QuerierCounters const& counters() const { return querier->counters(); }
    /// A version 3 report whose message `change` has changed, checksums right.
    template <class Change>
    void hearChanged( std::vector<GroupRecord> const& records, Change change ) {
        Bytes message = v3ReportMessage( records );
        change( message );
        checksum( message );
        hear( igmpFrame( host, allV3Routers, message ) );
    }
    GroupRecord excludeG() const { return { Record::MODE_IS_EXCLUDE, G }; }
};

TEST_F( QuerierReceptionTest, CountsRecordsByTypeAndTellsTheLastReporter ) {
    hear( v3Report( host, { excludeG(), { Record::ALLOW_NEW_SOURCES, otherGroup, sources( { 1 } ) } } ) );
    hear( v2Report( otherHost, G ) );
    EXPECT_EQ( counters().groupRecords[2], 1U );
    EXPECT_EQ( counters().groupRecords[5], 1U );
    EXPECT_EQ( querier->lastReporter(), otherHost );
    EXPECT_EQ( group().lastReporter(), otherHost );
    EXPECT_EQ( querier->group( otherGroup )->lastReporter(), host );
}

TEST_F( QuerierReceptionTest, FramesThatWaitAreReadWhenItIsEnabled ) {
    querier->enabledIs( false );
    pam->arrive( v2Report( host, G ), false );
    pam->arrive( v2Report( host, otherGroup ), false );
    querier->enabledIs( true );
    EXPECT_THAT( querier->groups(), ElementsAre( G, otherGroup ) );
}

TEST_F( QuerierReceptionTest, FrameInTwoRegionsIsRead ) {
    Bytes const frame = v2Report( host, G );
    Bytes head( frame.begin(), frame.begin() + 20 );
    Kiv::Ptr<Zornet::Pkt> const pkt = Zornet::pktWithBytes( std::span( frame ).subspan( 20 ) );
    pkt->headIoVecIs( { head.data(), 20 } );
    pam->arrive( pkt );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
}

TEST_F( QuerierReceptionTest, HearsAtOnceWhereTheActivityDefersNotifications ) {
    deferredDeliveryIs( true );
    hear( v2Report( host, G ) );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
}

TEST_F( QuerierReceptionTest, TaggedQuerierHearsAndSpeaksInItsVlan ) {
    QuerierConfig config;
    config.vlanId = Bridging::VlanId( 100 );
    start( config );
    Bytes const message = igmpMessage( IgmpMessageType::v2MembershipReport, 0, G );
    hear( v2Report( host, G ) );
    EXPECT_EQ( state(), "none" );
    Manner manner;
    manner.tag = U16{ 100 };
    hear( igmpFrame( host, G, message, manner ) );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} ); // untagged
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( counters().framesForeign, 2U );
    querier->sendGeneralQuery();
    EXPECT_EQ( IgmpFrame( pam->sent.back().frame, config.vlanId ).verdict(), IgmpFrame::Verdict::good );
}

TEST_F( QuerierReceptionTest, AuxiliaryDataAndWhatFollowsTheRecordsArePassedOver ) {
    GroupRecord withAux = excludeG();
    withAux.auxWords = 3;
    GroupRecord const second{ Record::MODE_IS_INCLUDE, otherGroup, sources( { 1 } ) };
    hearChanged( { withAux, second }, []( Bytes& message ) { message.resize( message.size() + 5 ); } );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_EQ( state( otherGroup ), "INCLUDE (1)" );
}

TEST_F( QuerierReceptionTest, RepeatedSourcesCountOnce ) {
    hear( Record::MODE_IS_INCLUDE, { 2, 1, 2, 2 } );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
}

TEST_F( QuerierReceptionTest, RecordCountThatLiesSpoilsTheWholeReport ) {
    hearChanged( { excludeG() }, []( Bytes& message ) { message[7] = 2; } );
    hearChanged( { excludeG() }, []( Bytes& message ) { message[6] = message[7] = 0xff; } );
    EXPECT_EQ( counters().badIgmpLengths, 2U );
    EXPECT_EQ( counters().v3Reports, 0U );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierReceptionTest, SourceCountThatLiesSpoilsTheWholeReport ) {
    GroupRecord const good{ Record::MODE_IS_EXCLUDE, otherGroup };
    hearChanged( { good, excludeG() }, []( Bytes& message ) { message[19] = 1; } );
    hearChanged( { good, excludeG() }, []( Bytes& message ) { message[18] = message[19] = 0xff; } );
    hearChanged( { good, excludeG() }, []( Bytes& message ) { message[17] = 0xff; } ); // auxiliary data
    EXPECT_EQ( counters().badIgmpLengths, 3U );
    EXPECT_EQ( querier->groupCount(), 0U );
}

TEST_F( QuerierReceptionTest, ReportCutAnywhereHasNoEffect ) {
    std::vector<int> const numbers{ 1, 2 };
    Bytes const message = v3ReportMessage( { { Record::MODE_IS_INCLUDE, G, sources( numbers ) } } );
    for ( std::size_t length = 0; length < message.size(); ++length ) {
        Bytes part( message.begin(), message.begin() + static_cast<std::ptrdiff_t>( length ) );
        if ( length >= 4 ) {
            checksum( part );
        }
        hear( igmpFrame( host, allV3Routers, part ) );
    }
    EXPECT_EQ( counters().badIgmpLengths, message.size() );
    EXPECT_EQ( querier->groupCount(), 0U );
}

TEST_F( QuerierReceptionTest, ReportWithoutRecordsIsAReport ) {
    hear( v3Report( host, {} ) );
    EXPECT_EQ( counters().v3Reports, 1U );
    EXPECT_EQ( counters().malformed(), 0U );
}

TEST_F( QuerierReceptionTest, RecordOfAnUnknownTypeIsPassedOver ) {
    hear(
        v3Report( host, { { Record( 7 ), G }, { Record( 0 ), G }, { Record::MODE_IS_EXCLUDE, otherGroup } } )
    );
    EXPECT_EQ( state(), "none" );
    EXPECT_EQ( state( otherGroup ), "EXCLUDE (, )" );
    EXPECT_EQ( counters().groupRecords[0], 2U );
}

TEST_F( QuerierReceptionTest, RecordOfAnUnknownTypeReportsNothing ) {
    hear( Record::MODE_IS_EXCLUDE, {}, host );
    hear( Record( 7 ), {}, otherHost );
    EXPECT_EQ( group().lastReporter(), host );
}

TEST_F( QuerierReceptionTest, MessageOfAnUnknownTypeIsPassedOver ) {
    hear( igmpFrame( host, G, igmpMessage( IgmpMessageType( 0x30 ), 0, G ) ) );
    EXPECT_EQ( counters().unknownTypes, 1U );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierReceptionTest, GroupsThatNobodyCanJoin ) {
    for ( char const* address : { "10.1.1.1", "224.0.0.1", "0.0.0.0", "240.0.0.1" } ) {
        IpAddr const group( address );
        hear( v1Report( host, group ) );
        hear( v2Report( host, group ) );
        hear( v2Leave( host, group ) );
        hear( v3Report( host, { { Record::MODE_IS_EXCLUDE, group } } ) );
    }
    EXPECT_EQ( querier->groupCount(), 0U );
    EXPECT_EQ( counters().badGroups, 16U );
    EXPECT_EQ( counters().v2Reports, 0U );
}

TEST_F( QuerierReceptionTest, QueriesOfNineToElevenBytesAndThoseWhoseCountLies ) {
    Bytes const query = v3QueryMessage( G, sources( { 1 } ), 10, false, 2, 125 );
    for ( std::size_t length = 9; length < query.size(); ++length ) {
        Bytes part( query.begin(), query.begin() + static_cast<std::ptrdiff_t>( length ) );
        checksum( part );
        hear( igmpFrame( IpAddr( "10.0.0.250" ), G, part ) );
    }
    EXPECT_EQ( counters().badIgmpLengths, 7U );
    EXPECT_EQ( counters().v3Queries, 0U );
}

TEST_F( QuerierReceptionTest, CountsQueriesByVersion ) {
    IpAddr const other( "10.0.0.250" );
    hear( igmpFrame( other, allSystems, igmpMessage( IgmpMessageType::membershipQuery, 0, IpAddr() ) ) );
    hear( igmpFrame( other, allSystems, igmpMessage( IgmpMessageType::membershipQuery, 100, IpAddr() ) ) );
    hear( igmpFrame( other, allSystems, v3QueryMessage( IpAddr(), {}, 100, false, 2, 125 ) ) );
    EXPECT_EQ( counters().v1Queries, 1U );
    EXPECT_EQ( counters().v2Queries, 1U );
    EXPECT_EQ( counters().v3Queries, 1U );
}

TEST_F( QuerierReceptionTest, CountsEachFaultOfAFrame ) {
    Bytes const good = v2Report( host, G );
    auto const changed = [&]( std::size_t at, U8 value, bool fix ) {
        Bytes frame = good;
        frame[at] = value;
        if ( fix ) {
            fixIpChecksum( frame, 24 );
        }
        return frame;
    };
    hear( Bytes( good.begin(), good.begin() + 30 ) );
    hear( changed( 14, 0x56, true ) );
    hear( changed( 22, 2, false ) );
    hear( changed( 20, 0x20, true ) );
    hear( igmpFrame( host, G, Bytes{ 0x16, 0, 0, 0 } ) );
    hear( changed( 45, 0xff, false ) );
    EXPECT_EQ( counters().truncatedFrames, 1U );
    EXPECT_EQ( counters().badIpHeaders, 1U );
    EXPECT_EQ( counters().badIpChecksums, 1U );
    EXPECT_EQ( counters().fragments, 1U );
    EXPECT_EQ( counters().badIgmpLengths, 1U );
    EXPECT_EQ( counters().badIgmpChecksums, 1U );
    EXPECT_EQ( counters().malformed(), 6U );
    EXPECT_EQ( counters().framesHeard, 6U );
    EXPECT_EQ( querier->groupCount(), 0U );
}

TEST_F( QuerierReceptionTest, ReportsAsTheRfcsHaveThemSentAreFaultless ) {
    hear( v1Report( host, G ) );
    hear( v2Report( host, G ) );
    hear( v2Leave( host, G ) );
    hear( v3Report( host, { excludeG() } ) );
    EXPECT_EQ( counters().misaddressed, 0U );
    EXPECT_EQ( counters().wrongTtls, 0U );
    EXPECT_EQ( counters().withoutRouterAlert, 0U );
}

TEST_F( QuerierReceptionTest, BadMannersAreCountedAndForgiven ) {
    Bytes const message = igmpMessage( IgmpMessageType::v2MembershipReport, 0, G );
    IpAddr const sameEthernetAddress( "225.1.1.1" );
    hear( igmpFrame( host, sameEthernetAddress, message ) );
    hear( igmpFrame( host, G, message, { .ethDst = EthAddr( "02:00:00:00:00:fe" ) } ) );
    hear( igmpFrame( host, G, message, { .ttl = 64 } ) );
    hear( igmpFrame( host, G, message, { .routerAlert = false } ) );
    EXPECT_EQ( counters().misaddressed, 2U );
    EXPECT_EQ( counters().wrongTtls, 1U );
    EXPECT_EQ( counters().withoutRouterAlert, 1U );
    EXPECT_EQ( counters().v2Reports, 4U );
}

TEST_F( QuerierReceptionTest, Version1ReportNeedsNoRouterAlert ) {
    Bytes const message = igmpMessage( IgmpMessageType::v1MembershipReport, 0, G );
    hear( igmpFrame( host, G, message, { .routerAlert = false } ) );
    EXPECT_EQ( counters().withoutRouterAlert, 0U );
}

TEST_F( QuerierReceptionTest, RandomBytesDoNoHarm ) {
    std::mt19937 random( 1 );
    std::vector<Bytes> const seeds{
        v2Report( host, G ),
        v3Report( host, { { Record::CHANGE_TO_EXCLUDE_MODE, G, sources( { 1, 2, 3 } ) }, excludeG() } ),
        igmpFrame( host, G, v3QueryMessage( G, sources( { 1, 2 } ), 10, false, 2, 125 ) ),
    };
    for ( int round = 0; round < 20000; ++round ) {
        Bytes frame = seeds[random() % seeds.size()];
        for ( auto changes = random() % 4; changes != 0; --changes ) {
            frame[14 + random() % ( frame.size() - 14 )] = static_cast<U8>( random() );
        }
        frame.resize( random() % 8 ? frame.size() : random() % frame.size() );
        Bytes message( frame.size() > 38 ? frame.begin() + 38 : frame.end(), frame.end() );
        if ( message.size() >= 4 ) { // past the checksums
            checksum( message );
            frame = igmpFrame( host, G, message );
        }
        hear( frame );
        runFor( 0.01 );
    }
    EXPECT_EQ( counters().framesHeard, 20000U );
    EXPECT_GT( counters().malformed(), 100U );
    EXPECT_GT( counters().v3Reports, 100U );
}

} // namespace Lab
