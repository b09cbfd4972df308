#include "agent/hosts/Generations.h"

#include <gmock/gmock.h>

#include "agent/scenario/reading/SettingReader.h"
#include "platform/kiv/GenericIf.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Generations : public ::testing::Test {
  protected:
    /// Sets attributes and returns the names of those that changed, in order.
    std::vector<std::string> changesOn( std::vector<std::pair<Kiv::AttributeId, char const*>> const& texts ) {
        Settings settings( IgmpHost::attributes() );
        for ( auto const& [id, text] : texts ) {
            settings.settingIs( id, text );
        }
        std::vector<std::string> changes;
        Kiv::Ptr<Kiv::GenericIfAdapter> const reactor( new Kiv::GenericIfAdapter(
            Kiv::Ptr<Kiv::Entity const>( host_.get() ),
            [&]( Kiv::AttributeId id, Kiv::GenericValue const& ) {
                changes.emplace_back( IgmpHost::_fwkType()->row( id )->name );
            }
        ) );
        raised_ = setHost( *host_, settings, step_ ).size();
        return changes;
    }

    Kiv::Ptr<IgmpHost> const host_ = Igmp::igmpHostFactory( "rx" );
    Kiv::U32 step_ = 1;
    std::size_t raised_ = 0;
};

TEST_F( Generations, WhatGoesIntoPacketsNeedsConfigVersion ) {
    for ( Kiv::AttributeId const id : { IgmpHost::attrIpAddr, IgmpHost::attrMacAddr, IgmpHost::attrMtu,
                                        IgmpHost::attrEnableRouterAlert } ) {
        ASSERT_NE( generationOf( id ), nullptr );
        EXPECT_EQ( generationOf( id )->id, IgmpHost::attrConfigVersion ) << id;
    }
}

TEST_F( Generations, WhatBindsNeedsIntfConfigVersion ) {
    for ( Kiv::AttributeId const id : { IgmpHost::attrIntfId, IgmpHost::attrNs, IgmpHost::attrDeviceName,
                                        IgmpHost::attrVlanId, IgmpHost::attrTagged, IgmpHost::attrUseMux } ) {
        ASSERT_NE( generationOf( id ), nullptr );
        EXPECT_EQ( generationOf( id )->id, IgmpHost::attrIntfConfigVersion ) << id;
    }
}

TEST_F( Generations, TheRestActsAtOnce ) {
    EXPECT_THAT( changesOn( { { IgmpHost::attrBlocked, "true" } } ), ElementsAre( "blocked" ) );
    EXPECT_EQ( raised_, 0U );
}

/// An attribute that is added to the host has to be put on one side or the other.
TEST_F( Generations, AttributesThatActAtOnceAreKnown ) {
    std::vector<std::string> names;
    for ( Kiv::Attribute const* const row : settableHostAttributes() ) {
        if ( !generationOf( row->id ) ) {
            names.emplace_back( row->name );
        }
    }
    EXPECT_THAT(
        names,
        ElementsAre(
            "configVersion", "intfConfigVersion", "blocked", "direction", "enabled", "igmpVersion",
            "igmpVersionForced", "processV3GroupChange", "robustness", "v1RouterPresentTimeout",
            "v2RouterPresentTimeout", "v1MaxResponseTime", "unsolicitedReportInterval", "enablePeriodicReport"
        )
    );
}

TEST_F( Generations, CounterIsRaisedOnceAndAfterAllThatNeedsIt ) {
    EXPECT_THAT(
        changesOn( { { IgmpHost::attrMtu, "1400" }, { IgmpHost::attrIpAddr, "10.0.0.1" } } ),
        ElementsAre( "mtu", "ipAddr", "configVersion" )
    );
    EXPECT_EQ( raised_, 1U );
}

TEST_F( Generations, HostIsEnabledWhenEverythingElseIsInPlace ) {
    EXPECT_THAT(
        changesOn( { { IgmpHost::attrEnabled, "true" },
                     { IgmpHost::attrDeviceName, "eth0" },
                     { IgmpHost::attrMtu, "1400" } } ),
        ElementsAre( "deviceName", "mtu", "configVersion", "intfConfigVersion", "enabled" )
    );
}

TEST_F( Generations, CounterThatIsSetIsNotRaisedBesides ) {
    changesOn( { { IgmpHost::attrMtu, "1400" }, { IgmpHost::attrConfigVersion, "7" } } );
    EXPECT_EQ( host_->configVersion(), 7U );
    EXPECT_EQ( raised_, 0U );
}

TEST_F( Generations, CounterMovesForAValueThatIsThereAlready ) {
    EXPECT_THAT( changesOn( { { IgmpHost::attrMtu, "1514" } } ), ElementsAre( "configVersion" ) );
}

TEST_F( Generations, CounterNeverArrivesAtZero ) {
    EXPECT_EQ( nextGeneration( 0xffffffff ), 1U );
    EXPECT_EQ( nextGeneration( 0xfffffffe, 2 ), 1U );
    EXPECT_EQ( nextGeneration( 0 ), 1U );
    EXPECT_EQ( nextGeneration( 1 ), 2U );
}

TEST_F( Generations, CounterMovesByTheStepOfItsWriter ) {
    step_ = 40;
    changesOn( { { IgmpHost::attrMtu, "1400" } } );
    EXPECT_EQ( host_->configVersion(), 40U );
}

} // namespace

} // namespace Agent
