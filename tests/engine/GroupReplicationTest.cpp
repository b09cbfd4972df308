/// A template spread over its block, by a host's machine or by the helper for controllers from outside.

#include "engine/IgmpHostConfigHelper.h"
#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

constexpr char const* T = "232.1.1.1";
constexpr char const* a = "10.9.9.1";
constexpr char const* b = "10.9.9.2";

/// The groups of a host, in ascending order.
std::vector<std::string>
groupsOf( IgmpHost const& host ) {
    std::vector<IpAddr> groups;
    for ( auto const& record : host.v3group() ) {
        groups.push_back( record.multicastAddr() );
    }
    std::sort( groups.begin(), groups.end() );
    std::vector<std::string> texts;
    for ( IpAddr const& group : groups ) {
        texts.push_back( textOf( group ) );
    }
    return texts;
}

// The steps, on a host that no machine serves.

class GroupReplication : public ::testing::Test {
  protected:
    IgmpV3GroupRecord& templateIs( char const* group, U32 number ) {
        auto const pattern = host->v3groupIs( IpAddr( group ) );
        pattern->filterModeIs( IgmpV3GroupRecord::exclude );
        pattern->versionIs( 7 );
        pattern->replicateIs( true );
        pattern->replicateNumberIs( number );
        return *pattern;
    }
    void replicate( char const* group = T ) { helper->replicateGroup( IpAddr( group ) ); }
    IgmpV3GroupRecord& record( char const* group ) { return *host->v3group( IpAddr( group ) ); }
    SourceNumbers sources( char const* group ) { return numbersOf( *record( group ).source() ); }

    Ptr<IgmpHost> const host = igmpHostFactory( "host" );
    Ptr<IgmpHostConfigHelper> const helper = igmpHostConfigHelperFactory( nullptr, "helper", host );
};

TEST_F( GroupReplication, HelperHoldsWhatItWasMadeWith ) {
    EXPECT_EQ( helper->name(), "helper" );
    EXPECT_EQ( helper->igmpHost(), host );
    EXPECT_EQ( helper->kivFwkActivity(), nullptr );
}

TEST_F( GroupReplication, FillsItsBlockWithCopies ) {
    auto& pattern = templateIs( T, 3 );
    pattern.sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    replicate();
    EXPECT_THAT( groupsOf( *host ), ElementsAre( T, "232.1.1.2", "232.1.1.3" ) );
    for ( char const* const copy : { "232.1.1.2", "232.1.1.3" } ) {
        EXPECT_EQ( record( copy ).filterMode(), IgmpV3GroupRecord::exclude );
        EXPECT_THAT( sources( copy ), ElementsAre( std::pair( a, 1U ) ) );
        EXPECT_EQ( record( copy ).version(), 7U );
        EXPECT_EQ( record( copy ).replicateGroup(), IpAddr( T ) );
    }
}

TEST_F( GroupReplication, CopyIsNoTemplate ) {
    templateIs( T, 2 );
    replicate();
    EXPECT_FALSE( record( "232.1.1.2" ).replicate() );
    EXPECT_EQ( record( "232.1.1.2" ).replicateNumber(), 0U );
}

TEST_F( GroupReplication, TemplateItselfIsNotTouched ) {
    auto& pattern = templateIs( T, 2 );
    replicate();
    EXPECT_EQ( &record( T ), &pattern );
    EXPECT_EQ( pattern.replicateGroup(), IpAddr() );
    EXPECT_EQ( pattern.source(), nullptr );
    EXPECT_EQ( pattern.version(), 7U );
}

TEST_F( GroupReplication, BlockCrossesOctets ) {
    templateIs( "232.1.1.255", 2 );
    replicate( "232.1.1.255" );
    EXPECT_THAT( groupsOf( *host ), ElementsAre( "232.1.1.255", "232.1.2.0" ) );
    templateIs( "232.255.255.255", 3 );
    replicate( "232.255.255.255" );
    EXPECT_THAT( groupsOf( *host ), ElementsAre( "232.255.255.255", "233.0.0.0", "233.0.0.1" ) );
}

TEST_F( GroupReplication, NumberOf1LeavesTheTemplateAlone ) {
    templateIs( T, 1 );
    host->v3groupIs( IpAddr( "232.1.1.2" ) );
    replicate();
    EXPECT_THAT( groupsOf( *host ), ElementsAre( T ) );
}

TEST_F( GroupReplication, NumberOf0LeavesTheTemplateAlone ) {
    templateIs( T, 0 );
    host->v3groupIs( IpAddr( "232.1.1.2" ) );
    replicate();
    EXPECT_THAT( groupsOf( *host ), ElementsAre( T ) );
}

TEST_F( GroupReplication, DeletesEveryGroupOutsideTheBlock ) {
    templateIs( T, 2 );
    for ( char const* const group : { "239.1.1.1", "232.1.1.0", "232.1.1.3", "224.0.0.5" } ) {
        host->v3groupIs( IpAddr( group ) );
    }
    replicate();
    EXPECT_THAT( groupsOf( *host ), ElementsAre( T, "232.1.1.2" ) );
}

TEST_F( GroupReplication, MissingTemplateDoesNothing ) {
    host->v3groupIs( IpAddr( "239.1.1.1" ) );
    replicate();
    EXPECT_THAT( groupsOf( *host ), ElementsAre( "239.1.1.1" ) );
}

TEST_F( GroupReplication, AskedOutrightItNeedsNoReplicateFlag ) {
    templateIs( T, 2 ).replicateIs( false );
    replicate();
    EXPECT_THAT( groupsOf( *host ), SizeIs( 2 ) );
}

TEST_F( GroupReplication, AddressesNeedNotBeMulticast ) {
    templateIs( "10.0.0.255", 2 );
    replicate( "10.0.0.255" );
    EXPECT_THAT( groupsOf( *host ), ElementsAre( "10.0.0.255", "10.0.1.0" ) );
}

TEST_F( GroupReplication, BlockMayEndAtTheHighestAddress ) {
    templateIs( "255.255.255.254", 2 );
    replicate( "255.255.255.254" );
    EXPECT_THAT( groupsOf( *host ), ElementsAre( "255.255.255.254", "255.255.255.255" ) );
}

TEST_F( GroupReplication, BlockThatWrapsDeletesEveryGroupAndMakesNone ) {
    templateIs( "255.255.255.254", 4 );
    host->v3groupIs( IpAddr( "0.0.0.1" ) );
    host->v3groupIs( IpAddr( "0.0.0.2" ) );
    host->v3groupIs( IpAddr( "239.1.1.1" ) );
    replicate( "255.255.255.254" );
    EXPECT_THAT( groupsOf( *host ), IsEmpty() );
}

TEST_F( GroupReplication, SourceThatTheTemplateHasLostStaysInTheCopy ) {
    auto& pattern = templateIs( T, 2 );
    pattern.sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    replicate();
    pattern.source()->sourceIpDel( IpAddr( a ) );
    pattern.source()->sourceIpIs( IpAddr( b ), 1 );
    replicate();
    EXPECT_THAT( sources( "232.1.1.2" ), ElementsAre( std::pair( a, 1U ), std::pair( b, 1U ) ) );
}

TEST_F( GroupReplication, SourceOfAnyNumberBecomesAMember ) {
    templateIs( T, 2 ).sourceIs()->sourceIpIs( IpAddr( a ), 9 );
    replicate();
    EXPECT_THAT( sources( "232.1.1.2" ), ElementsAre( std::pair( a, 1U ) ) );
}

TEST_F( GroupReplication, TemplateWithoutAListLeavesTheCopysAlone ) {
    templateIs( T, 3 );
    host->v3groupIs( IpAddr( "232.1.1.2" ) )->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    replicate();
    EXPECT_THAT( sources( "232.1.1.2" ), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_EQ( record( "232.1.1.3" ).source(), nullptr );
}

TEST_F( GroupReplication, EmptyListOfATemplateGivesTheCopyOne ) {
    templateIs( T, 2 ).sourceIs();
    replicate();
    ASSERT_NE( record( "232.1.1.2" ).source(), nullptr );
    EXPECT_THAT( sources( "232.1.1.2" ), IsEmpty() );
}

TEST_F( GroupReplication, RecordInsideTheBlockIsTakenOver ) {
    templateIs( T, 2 );
    auto const inside = host->v3groupIs( IpAddr( "232.1.1.2" ) );
    inside->versionIs( 100 );
    replicate();
    EXPECT_EQ( &record( "232.1.1.2" ), inside.get() );
    EXPECT_EQ( inside->filterMode(), IgmpV3GroupRecord::exclude );
    EXPECT_EQ( inside->version(), 7U );
    EXPECT_EQ( inside->replicateGroup(), IpAddr( T ) );
}

TEST_F( GroupReplication, SaysWhatItSpreads ) {
    templateIs( T, 3 );
    TraceCapture trace( "IgmpHost", 9 );
    replicate();
    EXPECT_THAT(
        trace.texts(),
        ElementsAre(
            " host host group 232.1.1.1", "Replicating group 232.1.1.2", "Replicating group 232.1.1.3"
        )
    );
}

/// Whatever version moves: the record must be whole by then.
class RecordAtItsVersion : public IgmpV3GroupRecord::Notifiee {
  public:
    explicit RecordAtItsVersion( Ptr<IgmpV3GroupRecord> const& record ) : Notifiee( record ) {
        isRegisteredNotifieeIs( true );
    }
    void onVersion() override {
        mode = notifier()->filterMode();
        sources = numbersOf( *notifier()->source() );
        replicateGroup = notifier()->replicateGroup();
    }
    IgmpV3GroupRecord::FilterMode mode{};
    SourceNumbers sources;
    IpAddr replicateGroup;
};

TEST_F( GroupReplication, VersionMovesLast ) {
    templateIs( T, 2 ).sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    auto const copy = host->v3groupIs( IpAddr( "232.1.1.2" ) );
    Ptr<RecordAtItsVersion> const reader( new RecordAtItsVersion( copy ) );
    replicate();
    EXPECT_EQ( reader->mode, IgmpV3GroupRecord::exclude );
    EXPECT_THAT( reader->sources, ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_EQ( reader->replicateGroup, IpAddr( T ) );
    reader->isRegisteredNotifieeIs( false );
}

// By the machine of a host.

class HostReplication : public V3Test {
  protected:
    static constexpr char const* copy = "232.1.1.2";

    IgmpV3GroupRecord& templateIs( U32 number, char const* group = S ) {
        auto const pattern = host().v3groupIs( IpAddr( group ) );
        pattern->filterModeIs( IgmpV3GroupRecord::exclude );
        pattern->replicateIs( true );
        pattern->replicateNumberIs( number );
        raise( *pattern );
        settle();
        return *pattern;
    }
};

INSTANTIATE_DELIVERY_TESTS( HostReplication );

TEST_P( HostReplication, CopiesAreReportedAsTheTemplateIs ) {
    setRobustness( 1 );
    enable( igmpVersion3 );
    templateIs( 3 );
    runFor( 5.0 );
    std::string all;
    for ( std::string const& records : takeRecords() ) {
        all += records + ", ";
    }
    EXPECT_THAT( all, HasSubstr( "TO_EX 232.1.1.1 {}" ) );
    EXPECT_THAT( all, HasSubstr( "TO_EX 232.1.1.2 {}" ) );
    EXPECT_THAT( all, HasSubstr( "TO_EX 232.1.1.3 {}" ) );
}

TEST_P( HostReplication, UnrelatedGroupIsLeft ) {
    exclude( G );
    enableAndRest();
    templateIs( 2 );
    EXPECT_THAT( groupsOf( host() ), ElementsAre( S, copy ) );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords().back(), HasSubstr( "TO_IN 239.1.1.1 {}" ) );
}

TEST_P( HostReplication, WithoutTheFlagNothingIsSpread ) {
    enable( igmpVersion3 );
    exclude( G );
    exclude( S ).replicateNumberIs( 5 );
    raiseAndSettle( S );
    EXPECT_THAT( groupsOf( host() ), ElementsAre( S, G ) );
}

TEST_P( HostReplication, ChangeOfTheTemplateReachesTheCopies ) {
    templateIs( 2 );
    enableAndRest();
    addSources( S, { a } );
    runFor( 5.0 );
    EXPECT_EQ( takeRecords().back(), "BLOCK 232.1.1.1 {10.9.9.1}, BLOCK 232.1.1.2 {10.9.9.1}" );
}

TEST_P( HostReplication, ChangeThatIsNotRaisedStaysOutOfTheReportsOfTheCopies ) {
    auto& pattern = templateIs( 2 );
    enableAndRest();
    pattern.sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    sm().replicateV3Group( IpAddr( S ) );
    settle();
    runFor( 5.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_THAT( numbersOf( *record( copy ).source() ), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( numbersOf( *groupSm( copy ).currGroupRecord()->source() ), IsEmpty() );
}

TEST_P( HostReplication, ChangeOfACopyReplicatesNothing ) {
    templateIs( 2 );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    addSources( copy, { a } );
    EXPECT_FALSE( trace.contains( "Replicating group" ) );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 232.1.1.2 {10.9.9.1}" ) );
}

TEST_P( HostReplication, LowerNumberLeavesTheCopiesAboveTheEnd ) {
    auto& pattern = templateIs( 4 );
    enableAndRest();
    pattern.replicateNumberIs( 2 );
    raiseAndSettle( S );
    EXPECT_THAT( groupsOf( host() ), ElementsAre( S, copy ) );
    runFor( 5.0 );
    EXPECT_EQ( takeRecords().back(), "TO_IN 232.1.1.3 {}, TO_IN 232.1.1.4 {}" );
    EXPECT_EQ( sender().v3GroupSms(), 2U );
}

TEST_P( HostReplication, TemplateOfVersion0IsSpreadToo ) {
    enable( igmpVersion3 );
    auto const pattern = host().v3groupIs( IpAddr( S ) );
    pattern->replicateIs( true );
    pattern->replicateNumberIs( 2 );
    host().v3groupNotify( IpAddr( S ) );
    settle();
    EXPECT_THAT( groupsOf( host() ), ElementsAre( S, copy ) );
    EXPECT_EQ( record( copy ).version(), 0U );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( HostReplication, OfTwoTemplatesTheLastWins ) {
    enable( igmpVersion3 );
    templateIs( 2 );
    templateIs( 2, "239.1.1.1" );
    EXPECT_THAT( groupsOf( host() ), ElementsAre( "239.1.1.1", "239.1.1.2" ) );
}

TEST_P( HostReplication, BlockThatWrapsLeavesEveryGroup ) {
    exclude( G );
    enableAndRest();
    templateIs( 4, "255.255.255.254" );
    EXPECT_EQ( host().v3groups(), 0U );
    runFor( 5.0 );
    EXPECT_EQ( sender().v3GroupSms(), 0U );
    EXPECT_THAT( takeRecords().back(), HasSubstr( "TO_IN 239.1.1.1 {}" ) );
}

TEST_P( HostReplication, DisabledHostSpreadsNothing ) {
    templateIs( 3 );
    sm().replicateV3Group( IpAddr( S ) );
    EXPECT_THAT( groupsOf( host() ), ElementsAre( S ) );
    enable( igmpVersion3 );
    EXPECT_THAT( groupsOf( host() ), SizeIs( 3 ) );
}

} // namespace
