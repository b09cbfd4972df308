#include "agent/hosts/HostRegrets.h"

#include <gmock/gmock.h>

namespace Agent {

namespace {

using Igmp::IgmpHost;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NewRegrets : public ::testing::Test {
  protected:
    NewRegrets() { host_->igmpVersionIs( Igmp::igmpVersion3 ); }

    /// What a change of one attribute brings about; those that end the process are marked with a "!".
    std::vector<std::string> regretsOf( Kiv::AttributeId id, char const* text ) const {
        Settings changes( IgmpHost::attributes() );
        changes.settingIs( id, text );
        std::vector<std::string> texts;
        for ( Diagnostic const& regret : newRegrets( hostSpecOf( *host_ ), hostSpecOf( *host_, changes ) ) ) {
            texts.push_back( ( regret.endsProcess ? "!" : "" ) + regret.text );
        }
        return texts;
    }

    Kiv::Ptr<IgmpHost> const host_ = Igmp::igmpHostFactory( "rx" );
};

TEST_F( NewRegrets, ChangeThatNothingIsToBeSaidOfHasNone ) {
    EXPECT_THAT( regretsOf( IgmpHost::attrMtu, "1400" ), IsEmpty() );
}

TEST_F( NewRegrets, WhatWasRegrettableBeforeIsNotTold ) {
    host_->robustnessIs( 0 );
    EXPECT_THAT( regretsOf( IgmpHost::attrRobustness, "0" ), IsEmpty() );
    EXPECT_THAT( regretsOf( IgmpHost::attrMtu, "1400" ), IsEmpty() );
}

TEST_F( NewRegrets, WhatEndsTheProcessIsMarked ) {
    EXPECT_THAT(
        regretsOf( IgmpHost::attrRobustness, "0" ),
        ElementsAre( "!robustness: 0 ends the process when sources change in version 3" )
    );
}

TEST_F( NewRegrets, ChangeIsJudgedBesideWhatStands ) {
    host_->taggedIs( true );
    host_->mtuIs( 62 );
    EXPECT_THAT( regretsOf( IgmpHost::attrEnableRouterAlert, "false" ), IsEmpty() );
    EXPECT_EQ( regretsOf( IgmpHost::attrMtu, "61" ).size(), 1U );
    host_->enableRouterAlertIs( false );
    EXPECT_THAT( regretsOf( IgmpHost::attrMtu, "61" ), IsEmpty() );
}

TEST_F( NewRegrets, GroupsOfTheHostCount ) {
    EXPECT_THAT( regretsOf( IgmpHost::attrProcessV3GroupChange, "false" ), IsEmpty() );
    host_->v3groupIs( Zornet::IpAddr::fromHost( 0xef010101 ) );
    EXPECT_EQ( regretsOf( IgmpHost::attrProcessV3GroupChange, "false" ).size(), 1U );
}

TEST_F( NewRegrets, SourcesOfTheHostCount ) {
    auto const record = host_->v3groupIs( Zornet::IpAddr::fromHost( 0xef010101 ) );
    record->sourceIs()->sourceIpIs( Zornet::IpAddr::fromHost( 0x0a000001 ), 1 );
    EXPECT_THAT(
        regretsOf( IgmpHost::attrIgmpVersion, "2" ),
        ElementsAre(
            "group 239.1.1.1: before version 3 a host joins a group for every source; sources have no effect"
        )
    );
}

} // namespace

} // namespace Agent
