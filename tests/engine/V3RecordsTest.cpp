/// The records of a version 3 report, and the packet around them. Nothing here is notified, so delivery does
/// not matter.

#include <cstring>

#include "engine/V3Report.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/PktManager.h"
#include "tests/engine/V3Test.h"
#include "tests/platform/zornet/Hex.h"

namespace {

using namespace Igmp;
using Lab::Bytes;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::assertionText;
using Zornet::IpAddr;
using Zornet::Pkt;

constexpr char const* G = "239.1.1.1";
constexpr char const* a = "10.9.9.1";
constexpr char const* b = "10.9.9.2";
constexpr char const* c = "10.9.9.3";

Ptr<IgmpV3HostGroupSourceList>
listOf( std::vector<char const*> const& sources ) {
    auto const list = igmpV3HostGroupSourceListFactory();
    for ( char const* source : sources ) {
        list->sourceIpIs( IpAddr( source ), 1 );
    }
    return list;
}

std::vector<std::string>
inOrder( IgmpV3HostGroupSourceList const& list ) {
    std::vector<std::string> sources;
    for ( auto const& source : list.sourceIp() ) {
        sources.push_back( textOf( source.key ) );
    }
    return sources;
}

// The working record.

TEST( V3ReportProcessInfo, IsFreshWithItsDefaults ) {
    auto const info = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    EXPECT_FALSE( info->useBookMark() );
    EXPECT_EQ( info->bookMarkSourceIp(), IpAddr() );
    EXPECT_EQ( info->responseDelayRemaining(), 0.0 );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_TRUE( info->recordComplete() );
    EXPECT_FALSE( info->scheduleTimer() );
}

TEST( V3ReportProcessInfo, ResetKeepsTheDelayAlone ) {
    auto const info = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    info->useBookMarkIs( true );
    info->bookMarkSourceIpIs( IpAddr( a ) );
    info->responseDelayRemainingIs( 3.5 );
    info->numGroupsInc( 4 );
    info->recordCompleteIs( false );
    info->scheduleTimerIs( true );
    info->resetValues();
    EXPECT_FALSE( info->useBookMark() );
    EXPECT_EQ( info->bookMarkSourceIp(), IpAddr() );
    EXPECT_EQ( info->responseDelayRemaining(), 3.5 );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_TRUE( info->recordComplete() );
    EXPECT_FALSE( info->scheduleTimer() );
}

// One record in a given room.

class V3Record : public ::testing::Test {
  protected:
    static constexpr U8 type = 5;

    /// Makes the window so many bytes long, full of bytes that nobody wrote.
    void roomIs( U32 bytes ) {
        pkt = Zornet::globalPktManager()->newPkt();
        pkt->newSharedHeadData( 4 + bytes );
        std::memset( pkt->front(), 0xee, 4 + bytes );
        pkt->beginOffsetIs( 4 );
    }
    void fill( Ptr<IgmpV3HostGroupSourceList> const& sources ) {
        fillV3ReportGroupRecord( pkt, type, IpAddr( G ), sources, info, host );
    }
    /// What was written: from the first byte of the room to the window.
    Bytes written() { return Bytes( pkt->front() + 4, pkt->front() + pkt->beginOffset() ); }
    std::vector<std::string> writtenSources() {
        Bytes const bytes = written();
        auto const* const hdr = reinterpret_cast<Zornet::IgmpReportGroupRecordHeader const*>( bytes.data() );
        std::vector<std::string> sources;
        for ( U16 i = 0; i < hdr->numSources(); ++i ) {
            sources.push_back( textOf( hdr->source( i ) ) );
        }
        return sources;
    }

    Ptr<IgmpHost> const host = igmpHostFactory( "host" );
    Ptr<IgmpV3ReportProcessInfo> const info = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    Ptr<Pkt> pkt;
};

TEST_F( V3Record, NeedsRoomForASourceEvenWithoutOne ) {
    roomIs( 11 );
    fill( nullptr );
    EXPECT_THAT( written(), IsEmpty() );
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_FALSE( info->useBookMark() );
}

TEST_F( V3Record, WithoutSourcesIsAHeader ) {
    roomIs( 12 );
    fill( nullptr );
    EXPECT_EQ( written(), ( Bytes{ 5, 0, 0, 0, 239, 1, 1, 1 } ) );
    EXPECT_TRUE( info->recordComplete() );
    EXPECT_EQ( info->numGroups(), 1U );
}

TEST_F( V3Record, OfAnEmptyListIsAHeader ) {
    roomIs( 12 );
    fill( listOf( {} ) );
    EXPECT_EQ( written(), ( Bytes{ 5, 0, 0, 0, 239, 1, 1, 1 } ) );
}

TEST_F( V3Record, NamesItsSource ) {
    roomIs( 12 );
    TraceCapture trace( "IgmpHost", 9 );
    fill( listOf( { a } ) );
    EXPECT_EQ( written(), ( Bytes{ 5, 0, 0, 1, 239, 1, 1, 1, 10, 9, 9, 1 } ) );
    EXPECT_TRUE( info->recordComplete() );
    EXPECT_FALSE( info->useBookMark() );
    EXPECT_THAT( trace.texts(), ElementsAre( "Adding 10.9.9.1 to the packet" ) );
}

TEST_F( V3Record, IsCutWhereTheRoomEnds ) {
    roomIs( 12 );
    auto const list = listOf( { a, b } );
    fill( list );
    auto const order = inOrder( *list );
    EXPECT_THAT( writtenSources(), ElementsAre( order[0] ) );
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_TRUE( info->useBookMark() );
    EXPECT_EQ( textOf( info->bookMarkSourceIp() ), order[1] );
    EXPECT_EQ( info->numGroups(), 1U );
    EXPECT_EQ( pkt->offsetBytes(), 0U );
}

TEST_F( V3Record, NamesItsSourcesInTheOrderOfTheList ) {
    roomIs( 20 );
    auto const list = listOf( { a, b, c } );
    fill( list );
    EXPECT_EQ( writtenSources(), inOrder( *list ) );
    EXPECT_TRUE( info->recordComplete() );
}

TEST_F( V3Record, BeginsAtTheBookmark ) {
    roomIs( 100 );
    auto const list = listOf( { a, b, c } );
    auto const order = inOrder( *list );
    info->useBookMarkIs( true );
    info->bookMarkSourceIpIs( IpAddr( order[1] ) );
    fill( list );
    EXPECT_THAT( writtenSources(), ElementsAre( order[1], order[2] ) );
    EXPECT_TRUE( info->useBookMark() );
}

TEST_F( V3Record, BeginsBehindABookmarkThatHasGone ) {
    roomIs( 100 );
    auto const list = listOf( { a, b, c } );
    auto const order = inOrder( *list );
    info->useBookMarkIs( true );
    info->bookMarkSourceIpIs( IpAddr( order[1] ) );
    list->sourceIpDel( IpAddr( order[1] ) );
    fill( list );
    EXPECT_THAT( writtenSources(), ElementsAre( order[2] ) );
}

TEST_F( V3Record, FollowsTheOneBefore ) {
    roomIs( 100 );
    fill( nullptr );
    fill( listOf( { a } ) );
    EXPECT_EQ( written(), ( Bytes{ 5, 0, 0, 0, 239, 1, 1, 1, 5, 0, 0, 1, 239, 1, 1, 1, 10, 9, 9, 1 } ) );
    EXPECT_EQ( info->numGroups(), 2U );
}

// The current state.

class V3CurrentRecord : public V3Record {
  protected:
    V3CurrentRecord() { roomIs( 100 ); }
    void modeIs( unsigned mode ) {
        record->filterModeIs( static_cast<IgmpV3GroupRecord::FilterMode>( mode ) );
    }
    void sourceIs( char const* source ) { record->sourceIs()->sourceIpIs( IpAddr( source ), 1 ); }
    Bytes populated() {
        populateGroupRecord( record, pkt, info, host );
        return written();
    }
    Ptr<IgmpV3GroupRecord> const record = igmpV3GroupRecordFactory( "record", IpAddr( G ) );
};

TEST_F( V3CurrentRecord, OfAnIncludeGroupNamesItsSources ) {
    sourceIs( a );
    EXPECT_EQ( populated(), ( Bytes{ 1, 0, 0, 1, 239, 1, 1, 1, 10, 9, 9, 1 } ) );
}

TEST_F( V3CurrentRecord, OfAnIncludeGroupWithoutSourcesIsNothing ) {
    EXPECT_THAT( populated(), IsEmpty() );
    record->sourceIs();
    EXPECT_THAT( populated(), IsEmpty() );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_TRUE( info->recordComplete() );
}

TEST_F( V3CurrentRecord, OfAnExcludeGroupIsThereWithoutSources ) {
    modeIs( 2 );
    EXPECT_EQ( populated(), ( Bytes{ 2, 0, 0, 0, 239, 1, 1, 1 } ) );
}

TEST_F( V3CurrentRecord, OfAnExcludeGroupNamesItsSources ) {
    modeIs( 2 );
    sourceIs( a );
    EXPECT_EQ( populated(), ( Bytes{ 2, 0, 0, 1, 239, 1, 1, 1, 10, 9, 9, 1 } ) );
}

TEST_F( V3CurrentRecord, OfAnyOtherModeIsNothing ) {
    sourceIs( a );
    for ( unsigned const mode : { 0U, 3U, 4U, 255U } ) {
        modeIs( mode );
        EXPECT_THAT( populated(), IsEmpty() );
    }
    EXPECT_TRUE( info->recordComplete() );
}

// The packet.

class V3ReportPacket : public Support::HostTest {
  protected:
    Bytes bytes() {
        Bytes frame( sm().v3ReportPkt()->bytes() );
        sm().v3ReportPkt()->copyTo( frame.data() );
        return frame;
    }
    void close() { closeReportPkt( sm(), sm().v3ReportPkt(), *info ); }
    void fill( U8 type, char const* group, std::vector<char const*> const& sources = {} ) {
        fillV3ReportGroupRecord(
            sm().v3ReportPkt(), type, IpAddr( group ), listOf( sources ), info, Ptr<IgmpHost>( &host() )
        );
    }
    Ptr<IgmpV3ReportProcessInfo> const info = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
};

TEST_F( V3ReportPacket, OpensTheHostsOnePacketToTheMtu ) {
    enable( igmpVersion3 );
    auto const pkt = openReportPkt( sm() );
    EXPECT_EQ( pkt, sm().v3ReportPkt() );
    EXPECT_EQ( pkt->bytes(), 1514U );
    EXPECT_EQ( pkt->beginOffset(), 46U );
    EXPECT_EQ( pkt->offsetBytes(), 1514U - 46U );
}

TEST_F( V3ReportPacket, OpensTaggedAndWithoutRouterAlert ) {
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    host().enableRouterAlertIs( false );
    host().mtuIs( 200 );
    enable( igmpVersion3 );
    auto const pkt = openReportPkt( sm() );
    EXPECT_EQ( pkt->beginOffset(), 46U );
    EXPECT_EQ( pkt->offsetBytes(), 200U - 46U );
}

TEST_F( V3ReportPacket, OfAnotherLengthThanTheMtuEndsTheProcess ) {
    enable( igmpVersion3 );
    U8 head[4] = {};
    sm().v3ReportPkt()->headIoVecIs( { head, sizeof head } );
    EXPECT_DEATH(
        openReportPkt( sm() ),
        assertionText( "pkt->beginOffset() + pkt->offsetBytes() + pkt->endOffset() == igmpHostSm()->mtu()" )
    );
}

TEST_F( V3ReportPacket, ClosesBehindItsLastRecord ) {
    enable( igmpVersion3 );
    openReportPkt( sm() );
    fill( 4, G );
    close();
    EXPECT_EQ(
        Zornet::hex( bytes() ), "01005e000016020000000001080046000028000000000102"
                                "3ab90a000001e0000016940400002200e9fb0000000104000000ef010101"
    );
    EXPECT_EQ( sm().v3ReportPkt()->beginOffset(), 14U );
}

TEST_F( V3ReportPacket, ClosesOverSeveralRecords ) {
    enable( igmpVersion3 );
    openReportPkt( sm() );
    fill( 4, G );
    fill( 5, "232.1.1.1", { a, b } );
    close();
    std::string const head = Zornet::ungrouped(
        "01005e000016 020000000001 0800 46000038000000000102 3aa9 0a000001e0000016 94040000 2200d5e000000002"
        "04000000ef010101 05000002e8010101"
    );
    EXPECT_THAT(
        Zornet::hex( bytes() ), ::testing::AnyOf( head + "0a0909010a090902", head + "0a0909020a090901" )
    );
}

TEST_F( V3ReportPacket, ClosesWithoutARecordToo ) {
    enable( igmpVersion3 );
    openReportPkt( sm() );
    close();
    EXPECT_EQ( bytes(), Lab::v3Report( IpAddr( "10.0.0.1" ), {} ) );
}

TEST_F( V3ReportPacket, WritesTheCountOfItsRecordsIn16Bits ) {
    enable( igmpVersion3 );
    openReportPkt( sm() );
    info->numGroupsInc( 65538 );
    close();
    EXPECT_EQ( bytes()[44] << 8 | bytes()[45], 2 );
}

TEST_F( V3ReportPacket, ServesOneReportAfterAnother ) {
    enable( igmpVersion3 );
    openReportPkt( sm() );
    fill( 5, "232.1.1.1", { a, b, c } );
    close();
    info->resetValues();
    openReportPkt( sm() );
    fill( 2, G );
    close();
    EXPECT_EQ(
        bytes(), Lab::v3Report( IpAddr( "10.0.0.1" ), { { Lab::Record::MODE_IS_EXCLUDE, IpAddr( G ) } } )
    );
}

TEST_F( V3ReportPacket, HoldsARecordAsLongAsTheLongestFrame ) {
    host().mtuIs( 65535 );
    enable( igmpVersion3 );
    auto const sources = igmpV3HostGroupSourceListFactory();
    for ( U32 i = 0; i < 16'380; ++i ) {
        sources->sourceIpIs( IpAddr::fromHost( 0x0a000000 + i ), 1 );
    }
    auto const pkt = openReportPkt( sm() );
    fillV3ReportGroupRecord( pkt, 1, IpAddr( G ), sources, info, Ptr<IgmpHost>( &host() ) );
    close();
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_EQ( pkt->bytes(), 46U + 8 + 4 * 16'370 );
    EXPECT_EQ( bytes()[48] << 8 | bytes()[49], 16'370 );
    EXPECT_EQ( bytes()[16] << 8 | bytes()[17], static_cast<int>( pkt->bytes() ) - 14 );
}

// What a group owes.

class V3GroupRecords : public V3ReportPacket {
  protected:
    static constexpr auto include = IgmpV3GroupRecord::include;
    static constexpr auto exclude = IgmpV3GroupRecord::exclude;

    V3GroupRecords() {
        host().processV3GroupChangeIs( false ); // the test alone moves the machine
        enable( igmpVersion3 );
    }
    IgmpV3HostAggregatedSenderSm& sender() { return *sm().aggregatedSenderSm(); }
    IgmpV3HostGroupSm& machine() {
        return *sender().v3GroupSmIs(
            nullptr, IpAddr( G ), Ptr<IgmpHost>( &host() ), Ptr<IgmpHostStatus>( &status() )
        );
    }
    bool hasMachine() { return sender().v3GroupSm( IpAddr( G ) ) != nullptr; }
    IgmpV3GroupRecord&
    want( IgmpV3GroupRecord::FilterMode mode, std::vector<char const*> const& sources = {} ) {
        auto const record = host().v3groupIs( IpAddr( G ) );
        record->filterModeIs( mode );
        for ( char const* source : sources ) {
            record->sourceIs()->sourceIpIs( IpAddr( source ), 1 );
        }
        record->versionIs( record->version() + 1 );
        return *record;
    }
    void owesModeChange( U32 count = 2 ) { machine().filterModeTransCountIs( count ); }
    void owesAdded( char const* source, U8 count = 2 ) {
        machine().addedSourceTransCount()->sourceIpIs( IpAddr( source ), count );
    }
    void owesDeleted( char const* source, U8 count = 2 ) {
        machine().deletedSourceTransCount()->sourceIpIs( IpAddr( source ), count );
    }
    SourceNumbers added() { return numbersOf( *machine().addedSourceTransCount() ); }
    SourceNumbers deleted() { return numbersOf( *machine().deletedSourceTransCount() ); }

    /// Opens a packet with so much room.
    void open( U32 room = 1000 ) {
        host().mtuIs( 46 + room );
        sm().pktInitialize();
        openReportPkt( sm() );
    }
    void construct() { machine().doGroupRecordPktConstruct( sm().v3ReportPkt(), info ); }
    void modeChange( IgmpV3GroupRecord& record ) {
        machine().constructModeChangeRecord( Ptr<IgmpV3GroupRecord>( &record ), sm().v3ReportPkt(), info );
    }
    void sourceChange( IgmpV3GroupRecord& record ) {
        machine().constructSourceChangeRecord( Ptr<IgmpV3GroupRecord>( &record ), sm().v3ReportPkt(), info );
    }
    std::string closed() {
        close();
        return Support::describe( bytes() );
    }
    std::string closedSorted() {
        close();
        return sortedRecords( bytes() );
    }
};

// A change of mode.

TEST_F( V3GroupRecords, ChangeToExcludeModeNamesTheWantedSources ) {
    auto& record = want( exclude, { a, b } );
    owesModeChange();
    owesAdded( a );
    owesDeleted( c, 1 );
    open();
    modeChange( record );
    EXPECT_EQ( closedSorted(), "TO_EX 239.1.1.1 {10.9.9.1 10.9.9.2}" );
    EXPECT_EQ( machine().filterModeTransCount(), 1U );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( deleted(), IsEmpty() );
}

TEST_F( V3GroupRecords, ChangeToIncludeModeNamesTheWantedSources ) {
    auto& record = want( include, { a } );
    owesModeChange();
    open();
    modeChange( record );
    EXPECT_EQ( closed(), "v3report TO_IN 239.1.1.1 {10.9.9.1}" );
}

TEST_F( V3GroupRecords, ChangeOfModeNeedsRoomForASourceEvenWithoutOne ) {
    auto& record = want( exclude );
    owesModeChange();
    open( 11 );
    modeChange( record );
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_EQ( machine().filterModeTransCount(), 2U );
}

TEST_F( V3GroupRecords, ChangeOfModeThatJustFitsAnEmptyPacketIsWritten ) {
    auto& record = want( exclude, { a, b, c } );
    owesModeChange();
    open( 20 );
    modeChange( record );
    EXPECT_EQ( closedSorted(), "TO_EX 239.1.1.1 {10.9.9.1 10.9.9.2 10.9.9.3}" );
    EXPECT_EQ( machine().filterModeTransCount(), 1U );
}

TEST_F( V3GroupRecords, ChangeOfModeTooLongForAnEmptyPacketIsNotBegun ) {
    auto& record = want( exclude, { a, b, c } );
    owesModeChange();
    open( 19 );
    modeChange( record );
    EXPECT_EQ( info->numGroups(), 0U );
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_FALSE( info->useBookMark() );
    EXPECT_EQ( machine().filterModeTransCount(), 2U );
    EXPECT_EQ( closed(), "v3report" );
}

TEST_F( V3GroupRecords, ChangeOfModeTooLongBehindOthersIsCutAndDoesNotCount ) {
    auto& record = want( exclude, { a, b, c } );
    owesModeChange();
    owesAdded( a );
    open( 27 );
    fill( 2, "239.9.9.9" );
    modeChange( record );
    auto const order = inOrder( *record.source() );
    EXPECT_EQ( closed(), "v3report IS_EX 239.9.9.9 {}, TO_EX 239.1.1.1 {" + order[0] + " " + order[1] + "}" );
    EXPECT_EQ( info->numGroups(), 2U );
    EXPECT_FALSE( info->recordComplete() );
    EXPECT_EQ( machine().filterModeTransCount(), 2U );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 2U ) ) );
}

TEST_F( V3GroupRecords, ChangeOfModeAfterACutRecordDoesNotCount ) {
    auto& record = want( exclude );
    owesModeChange();
    open();
    info->recordCompleteIs( false );
    modeChange( record );
    EXPECT_EQ( closed(), "v3report TO_EX 239.1.1.1 {}" );
    EXPECT_EQ( machine().filterModeTransCount(), 2U );
}

TEST_F( V3GroupRecords, ChangeOfModeToNeitherOfTwoEndsTheProcess ) {
    auto& record = want( static_cast<IgmpV3GroupRecord::FilterMode>( 3 ) );
    owesModeChange();
    open();
    EXPECT_DEATH( modeChange( record ), assertionText( "0" ) );
}

TEST_F( V3GroupRecords, ChangeOfModeWithoutRoomDoesNotLookAtTheMode ) {
    auto& record = want( static_cast<IgmpV3GroupRecord::FilterMode>( 3 ), { a, b } );
    owesModeChange();
    open( 12 );
    modeChange( record );
    EXPECT_FALSE( info->recordComplete() );
}

TEST_F( V3GroupRecords, ChangeOfModeThatIsNotOwedEndsTheProcess ) {
    auto& record = want( exclude );
    open();
    EXPECT_DEATH( modeChange( record ), assertionText( "filterModeTransCount() > 0" ) );
}

// A change of sources.

TEST_F( V3GroupRecords, SourceChangesOfAnIncludeGroupAllowAndBlock ) {
    auto& record = want( include, { a, b } );
    owesAdded( a );
    owesDeleted( c );
    open();
    sourceChange( record );
    EXPECT_EQ( closed(), "v3report ALLOW 239.1.1.1 {10.9.9.1}, BLOCK 239.1.1.1 {10.9.9.3}" );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( c, 1U ) ) );
}

TEST_F( V3GroupRecords, SourceChangesOfAnExcludeGroupBlockAndAllow ) {
    auto& record = want( exclude, { a, b } );
    owesAdded( a, 1 );
    owesDeleted( c, 1 );
    open();
    sourceChange( record );
    EXPECT_EQ( closed(), "v3report BLOCK 239.1.1.1 {10.9.9.1}, ALLOW 239.1.1.1 {10.9.9.3}" );
    EXPECT_FALSE( machine().isStateChanged() );
}

TEST_F( V3GroupRecords, OneSideOfASourceChangeIsOneRecord ) {
    auto& record = want( include );
    owesDeleted( a );
    open();
    sourceChange( record );
    EXPECT_EQ( closed(), "v3report BLOCK 239.1.1.1 {10.9.9.1}" );
}

TEST_F( V3GroupRecords, CutSourceChangeIsFreeAndItsBookmarkMovesTheSecondRecord ) {
    auto& record = want( include );
    auto const order = inOrder( *listOf( { a, b, c } ) );
    owesAdded( order[0].c_str() );
    owesAdded( order[1].c_str() );
    owesDeleted( order[0].c_str() );
    owesDeleted( order[2].c_str() );
    open( 100 );
    // Room for one source in the first record; the second gets more behind the test's back.
    sm().v3ReportPkt()->endOffsetIs( 88 );
    fillV3ReportGroupRecord(
        sm().v3ReportPkt(), 5, IpAddr( G ), machine().addedSourceTransCount(), info, Ptr<IgmpHost>( &host() )
    );
    sm().v3ReportPkt()->endOffsetIs( 0 );
    machine().addedSourceTransCount()->sourceIpDelAll();
    sourceChange( record );
    EXPECT_EQ( closed(), "v3report ALLOW 239.1.1.1 {" + order[0] + "}, BLOCK 239.1.1.1 {" + order[2] + "}" );
    EXPECT_THAT( deleted(), SizeIs( 2 ) );
    EXPECT_FALSE( info->recordComplete() );
}

TEST_F( V3GroupRecords, SecondRecordIsTriedAfterACutFirst ) {
    auto& record = want( include );
    owesAdded( a );
    owesAdded( b );
    owesDeleted( c );
    open( 12 );
    sourceChange( record );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 2U ), std::pair( b, 2U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( c, 2U ) ) );
    EXPECT_EQ( info->numGroups(), 1U );
}

TEST_F( V3GroupRecords, CompleteFirstRecordCountsThoughTheSecondIsCut ) {
    auto& record = want( include );
    owesAdded( a );
    owesDeleted( b );
    owesDeleted( c );
    open( 24 );
    sourceChange( record );
    EXPECT_THAT( added(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( deleted(), ElementsAre( std::pair( b, 2U ), std::pair( c, 2U ) ) );
}

TEST_F( V3GroupRecords, SourceChangeOfNeitherModeEndsTheProcess ) {
    auto& record = want( static_cast<IgmpV3GroupRecord::FilterMode>( 0 ) );
    open();
    owesAdded( a );
    EXPECT_DEATH( sourceChange( record ), assertionText( "0" ) );
    machine().addedSourceTransCount()->sourceIpDelAll();
    owesDeleted( a );
    EXPECT_DEATH( sourceChange( record ), assertionText( "0" ) );
}

TEST_F( V3GroupRecords, SourceCountOf0EndsTheProcess ) {
    auto& record = want( include, { a } );
    owesAdded( a, 0 );
    open();
    EXPECT_DEATH( sourceChange( record ), assertionText( "*sourceIter > 0" ) );
}

// The choice among them.

TEST_F( V3GroupRecords, ChangeOfModeGoesBeforeSourceChanges ) {
    want( exclude, { a } );
    owesModeChange();
    owesAdded( a );
    TraceCapture trace( "IgmpHost", 9 );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report TO_EX 239.1.1.1 {10.9.9.1}" );
    EXPECT_THAT( trace.texts(), Contains( "Added sourceIps=1 Deleted sourceIps=0 FilterModeTransCount=1" ) );
}

TEST_F( V3GroupRecords, SourceChangesGoBeforeTheCurrentState ) {
    want( exclude, { a } );
    owesDeleted( b, 1 );
    status().continueUnsolicitedReportIs( true );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report ALLOW 239.1.1.1 {10.9.9.2}" );
}

TEST_F( V3GroupRecords, CurrentStateGoesOutWhileReportsContinue ) {
    want( exclude, { a } );
    status().continueUnsolicitedReportIs( true );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report IS_EX 239.1.1.1 {10.9.9.1}" );
    EXPECT_TRUE( info->scheduleTimer() );
}

TEST_F( V3GroupRecords, GroupThatOwesNothingAddsNothing ) {
    want( exclude, { a } );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report" );
    EXPECT_FALSE( info->scheduleTimer() );
    EXPECT_TRUE( hasMachine() );
}

TEST_F( V3GroupRecords, LaterReportIsWantedWhileAnythingIsOwed ) {
    want( exclude, { a } );
    owesModeChange( 2 );
    open();
    construct();
    EXPECT_TRUE( info->scheduleTimer() );
    info->resetValues();
    construct();
    EXPECT_FALSE( info->scheduleTimer() );
    owesAdded( a );
    construct();
    EXPECT_TRUE( info->scheduleTimer() );
    construct();
    EXPECT_TRUE( info->scheduleTimer() ); // never cleared
    info->resetValues();
    owesDeleted( a );
    construct();
    EXPECT_TRUE( info->scheduleTimer() );
}

TEST_F( V3GroupRecords, CutRecordWantsALaterReport ) {
    want( exclude, { a, b } );
    owesModeChange( 1 );
    open( 12 );
    construct();
    EXPECT_TRUE( info->scheduleTimer() );
}

// Leaving.

TEST_F( V3GroupRecords, LeavingExcludeGroupChangesToIncludeModeWithoutSources ) {
    want( exclude, { a } );
    machine().process();
    host().v3groupDel( IpAddr( G ) );
    machine().process();
    open();
    construct();
    EXPECT_EQ( closed(), "v3report TO_IN 239.1.1.1 {}" );
    EXPECT_TRUE( hasMachine() );
}

TEST_F( V3GroupRecords, LeavingGroupGoesWithItsLastRecord ) {
    owesModeChange( 1 );
    TraceCapture trace( "IgmpHost", 9 );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report TO_IN 239.1.1.1 {}" );
    EXPECT_FALSE( hasMachine() );
    EXPECT_THAT( trace.texts(), Contains( "v3GroupSm 239.1.1.1 is now removed" ) );
    EXPECT_FALSE( info->scheduleTimer() );
}

TEST_F( V3GroupRecords, LeavingGroupStaysWithoutARecordWhileReportsContinue ) {
    machine();
    status().continueUnsolicitedReportIs( true );
    open();
    construct();
    EXPECT_EQ( closed(), "v3report" );
    EXPECT_TRUE( hasMachine() );
    EXPECT_TRUE( info->scheduleTimer() );
}

TEST_F( V3GroupRecords, CurrentRecordOfALeavingGroupIsNothing ) {
    open();
    machine().constructCurrentRecord( machine().groupRecordOnLeave(), sm().v3ReportPkt(), info );
    EXPECT_EQ( info->numGroups(), 0U );
}

} // namespace
