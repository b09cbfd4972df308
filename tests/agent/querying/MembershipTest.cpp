#include "agent/querying/Membership.h"

#include <gmock/gmock.h>

#include <sstream>

namespace Agent {

namespace {

using Igmp::IgmpV3GroupRecord;
using Lab::FilterMode;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using Zornet::IpAddr;

IpAddr const a( "10.0.0.1" );
IpAddr const b( "10.0.0.2" );
IpAddr const c( "10.0.0.3" );
IpAddr const G( "239.1.1.1" );
IpAddr const H( "239.1.1.2" );

Want
include( Lab::SourceSet const& sources ) {
    return { FilterMode::include, sources };
}

Want
exclude( Lab::SourceSet const& sources ) {
    return { FilterMode::exclude, sources };
}

TEST( Want, TwoIncludesWantWhatEitherWants ) {
    EXPECT_EQ( include( { a, b } ) + include( { b, c } ), include( { a, b, c } ) );
}

TEST( Want, TwoExcludesBlockWhatBothBlock ) {
    EXPECT_EQ( exclude( { a, b } ) + exclude( { b, c } ), exclude( { b } ) );
}

TEST( Want, IncludeTakesSourcesOffAnExcludeFromEitherSide ) {
    EXPECT_EQ( include( { a } ) + exclude( { a, b } ), exclude( { b } ) );
    EXPECT_EQ( exclude( { a, b } ) + include( { a } ), exclude( { b } ) );
}

TEST( Want, IsWrittenAsModeAndSources ) {
    std::ostringstream out;
    out << exclude( { a } ) << ' ' << include( { b } );
    EXPECT_EQ( out.str(), "EXCLUDE {10.0.0.1} INCLUDE {10.0.0.2}" );
}

/// A host with a group in that mode and those sources.
Kiv::Ptr<Igmp::IgmpHost>
hostWith(
    Igmp::IgmpVersion version, IgmpV3GroupRecord::FilterMode mode, std::vector<IpAddr> const& sources
) {
    Kiv::Ptr<Igmp::IgmpHost> const host = Igmp::igmpHostFactory( "host" );
    host->igmpVersionIs( version );
    Kiv::Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( G );
    record->filterModeIs( mode );
    for ( IpAddr const& source : sources ) {
        record->sourceIs()->sourceIpIs( source, 1 );
    }
    return host;
}

Membership
wantedBy( std::initializer_list<Kiv::Ptr<Igmp::IgmpHost>> hosts ) {
    Membership membership;
    for ( auto const& host : hosts ) {
        addWanted( *host, membership );
    }
    return membership;
}

TEST( Membership, HostOfVersion3WantsItsModeAndSources ) {
    auto const host = hostWith( Igmp::igmpVersion3, IgmpV3GroupRecord::include, { a, b } );
    EXPECT_THAT( wantedBy( { host } ), ElementsAre( Pair( G, include( { a, b } ) ) ) );
}

TEST( Membership, HostOfAnOlderVersionWantsEverySource ) {
    auto const host = hostWith( Igmp::igmpVersion2, IgmpV3GroupRecord::include, { a } );
    EXPECT_THAT( wantedBy( { host } ), ElementsAre( Pair( G, exclude( {} ) ) ) );
}

TEST( Membership, GroupThatIsNotJoinedIsNotWanted ) {
    EXPECT_THAT( wantedBy( { hostWith( Igmp::igmpVersion3, IgmpV3GroupRecord::include, {} ) } ), IsEmpty() );
}

TEST( Membership, HostsOfAGroupWantTogether ) {
    auto const one = hostWith( Igmp::igmpVersion3, IgmpV3GroupRecord::include, { a } );
    auto const two = hostWith( Igmp::igmpVersion3, IgmpV3GroupRecord::exclude, { a, b } );
    EXPECT_THAT( wantedBy( { one, two } ), ElementsAre( Pair( G, exclude( { b } ) ) ) );
}

TEST( Membership, EqualOnesDoNotDiffer ) {
    Membership const membership{ { G, exclude( { a } ) }, { H, include( { b } ) } };
    EXPECT_THAT( differences( membership, membership ), IsEmpty() );
    EXPECT_THAT( differences( {}, {} ), IsEmpty() );
}

TEST( Membership, GroupThatWasNotLearnedDiffers ) {
    EXPECT_THAT(
        differences( { { G, exclude( {} ) } }, {} ),
        ElementsAre( "239.1.1.1: configured is EXCLUDE {}, learned is nothing" )
    );
}

TEST( Membership, GroupThatNobodyWantsDiffers ) {
    EXPECT_THAT(
        differences( {}, { { G, include( { a } ) } } ),
        ElementsAre( "239.1.1.1: configured is nothing, learned is INCLUDE {10.0.0.1}" )
    );
}

TEST( Membership, OtherModeOrSourcesDiffer ) {
    EXPECT_THAT(
        differences(
            { { G, exclude( { a } ) }, { H, exclude( {} ) } },
            { { G, exclude( { b } ) }, { H, include( {} ) } }
        ),
        ElementsAre(
            "239.1.1.1: configured is EXCLUDE {10.0.0.1}, learned is EXCLUDE {10.0.0.2}",
            "239.1.1.2: configured is EXCLUDE {}, learned is INCLUDE {}"
        )
    );
}

} // namespace

} // namespace Agent
