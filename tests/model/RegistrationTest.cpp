/// What the library makes known of its types, at load and to introspection.

#include "model/Registration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/Registration.h"
#include "model/IgmpHostDir.h"
#include "platform/kiv/IntrospectionReactor.h"
#include "vlan/Registration.h"

namespace Igmp {

namespace {

using Kiv::String8;
using Kiv::Type;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr char const* names[] = {
    "Igmp::IgmpVersion",
    "Igmp::TimerState",
    "Igmp::IgmpV3HostGroupSourceList",
    "Igmp::IgmpV3GroupRecord",
    "Igmp::IgmpHostIntfConfig",
    "Igmp::IgmpHost",
    "Igmp::IgmpHostDir",
    "Igmp::IgmpHostStatus",
    "Igmp::IgmpHostStatusDir",
    "Igmp::IgmpV3ReportProcessInfo",
    "Igmp::IgmpHostGroupTimerSm",
    "Igmp::IgmpV3HostGeneralQueryTimerSm",
    "Igmp::IgmpV3HostGroupQueryTimerSm",
    "Igmp::IgmpV3GroupCallbackSm",
    "Igmp::IgmpV3HostGroupSm",
    "Igmp::IgmpV3HostAggregatedSenderSm",
    "Igmp::IgmpHostSm",
    "Igmp::IgmpHostDirSm",
    "Igmp::IgmpHostConfigHelper",
    "Igmp::IgmpHostTestAgentRoot",
    "Zornet::VlanPam",
    "Zornet::VTaggingInnerPamSm",
    "Zornet::VlanTaggingPam",
    "Zornet::VlanPktMultiplexer",
    "Zornet::VlanPamMultiplexer",
};

std::vector<std::string>
namesOf( std::vector<Type*> const& types ) {
    std::vector<std::string> all;
    for ( Type const* type : types ) {
        all.emplace_back( type->name() );
    }
    return all;
}

void
registerEverything() {
    kivInitIgmpHost();
    kivInitIgmpHostSm();
    Zornet::kivInitVlanTaggingPam();
}

/// Everything has been declared.
class Registration : public ::testing::Test {
  protected:
    Registration() {
        Kiv::IntrospectionReactor::global()->hasActiveIntrospectionIs( true );
        registerEverything();
    }

    static Kiv::KivAttr const& attr( char const* type, char const* name ) {
        return *Type::find( type )->attr( name );
    }
    static std::vector<std::string> attributeNames( char const* type ) {
        std::vector<std::string> all;
        for ( Kiv::Attribute const& row : Type::find( type )->attributes() ) {
            all.emplace_back( row.name );
        }
        return all;
    }
};

} // namespace

TEST_F( Registration, UnitsAreLoadedInTheirOrder ) {
    EXPECT_THAT( namesOf( Type::types() ), ElementsAreArray( names ) );
}

TEST_F( Registration, TypesAreDeclaredInTheirOrder ) {
    EXPECT_THAT( namesOf( Kiv::IntrospectionReactor::global()->types() ), ElementsAreArray( names ) );
}

TEST_F( Registration, SecondCallAfterSuccessDoesNothing ) {
    registerEverything();
    EXPECT_EQ( Kiv::IntrospectionReactor::global()->types().size(), std::size( names ) );
    EXPECT_EQ( Type::find( "Igmp::IgmpHost" )->arguments().size(), 1U );
}

TEST_F( Registration, EveryRowOfEveryTableIsDeclaredWithItsNumber ) {
    for ( Type const* type : Type::types() ) {
        for ( Kiv::Attribute const& row : type->attributes() ) {
            SCOPED_TRACE( std::string( type->name() ) + "::" + row.name );
            ASSERT_TRUE( type->attr( row.name ) );
            EXPECT_TRUE( type->attr( row.name )->isDeclared() );
            EXPECT_EQ( type->attr( row.name )->id(), row.id );
            EXPECT_FALSE( type->attr( row.name )->typeName().empty() );
        }
    }
}

TEST_F( Registration, FlagWordsFollowTheKindOfAttribute ) {
    struct Expected {
        char const* type;
        char const* name;
        U32 first;
        U32 second;
    };
    for ( Expected const& one : {
              Expected{ "Igmp::IgmpVersion", "igmpVersion3", 0x20001, 0x40200400 },
              Expected{ "Igmp::IgmpHost", "kivHasAttrLogInterface", 0x22001, 0x400 },
              Expected{ "Igmp::IgmpHost", "mtu", 0x220143, 0x1000400 },
              Expected{ "Igmp::IgmpHostIntfConfig", "vlanId", 0x220109, 0x40000400 },
              Expected{ "Igmp::IgmpV3GroupRecord", "multicastAddr", 0x220109, 0x40000400 },
              Expected{ "Igmp::IgmpHost", "maxResponseTimeTicksPerSec", 0x220001, 0x40000410 },
              Expected{ "Igmp::IgmpHost", "fwkKey", 0x200001, 0x400 },
              Expected{ "Igmp::IgmpHost", "pam", 0x8220143, 0x400 },
              Expected{ "Igmp::IgmpV3HostGroupSourceList", "sourceIp", 0x1a20143, 0x1000400 },
              Expected{ "Igmp::IgmpV3GroupRecord", "source", 0x8220143, 0x11000400 },
              Expected{ "Igmp::IgmpHost", "v3group", 0x9a20143, 0x11000400 },
          } ) {
        EXPECT_EQ( attr( one.type, one.name ).flags(), one.first ) << one.name;
        EXPECT_EQ( attr( one.type, one.name ).introspectionFlags(), one.second ) << one.name;
    }
}

TEST_F( Registration, EntitiesDeclareWhatTheyInheritAndTheirKey ) {
    EXPECT_EQ( attr( "Igmp::IgmpHostDir", "kivHasAttrLogInterface" ).id(), 154 );
    EXPECT_EQ( attr( "Igmp::IgmpHost", "fwkKey" ).id(), 0 );
    EXPECT_EQ( attr( "Igmp::IgmpHost", "fwkKey" ).typeName(), String8( "Kiv::Name" ) );
    EXPECT_EQ( attr( "Igmp::IgmpV3GroupRecord", "fwkKey" ).typeName(), String8( "Zornet::IpAddr" ) );
    EXPECT_FALSE( Type::find( "Igmp::IgmpHostDir" )->attr( "fwkKey" ) );
    EXPECT_FALSE( attr( "Igmp::IgmpHostSm", "kivHasAttrLogInterface" ).isDeclared() );
}

TEST_F( Registration, EnumeratorsHaveTheirNumberAsId ) {
    AttributeId id = 0;
    for ( char const* const name :
          { "igmpVersionUnknown", "igmpVersion1", "igmpVersion2", "igmpVersion3" } ) {
        EXPECT_EQ( attr( "Igmp::IgmpVersion", name ).id(), id++ ) << name;
        EXPECT_EQ( attr( "Igmp::IgmpVersion", name ).typeName(), String8( "Igmp::IgmpVersion" ) ) << name;
    }
    id = 0;
    for ( char const* const name : { "timerDisabled", "timerRunning", "timerExpired" } ) {
        EXPECT_EQ( attr( "Igmp::TimerState", name ).id(), id++ ) << name;
    }
}

TEST_F( Registration, KeyOfTheMultiplexersHasANameOfItsOwn ) {
    EXPECT_EQ(
        attr( "Igmp::IgmpHostDirSm", "multiplexerDir" ).keyTypeName(), String8( "multiplexerDir_Intf" )
    );
    EXPECT_EQ(
        attr( "Igmp::IgmpHostDirSm", "multiplexerRefCount" ).keyTypeName(), String8( "Zornet::IntfId" )
    );
}

TEST_F( Registration, CollectionsNameTheirKeysAndMembers ) {
    Kiv::KivAttr const& groups = attr( "Igmp::IgmpHost", "v3group" );
    EXPECT_EQ( groups.typeName(), String8( "Igmp::IgmpV3GroupRecord" ) );
    EXPECT_EQ( groups.keyTypeName(), String8( "Zornet::IpAddr" ) );
    EXPECT_EQ( attr( "Igmp::IgmpV3HostGroupSourceList", "sourceIp" ).typeName(), String8( "U8" ) );
}

TEST_F( Registration, ConstructorArgumentsAreNamedWithTheirTypes ) {
    auto const arguments = []( char const* type ) {
        std::vector<std::string> all;
        for ( Type::Argument const& one : Type::find( type )->arguments() ) {
            all.push_back( std::string( one.name.view() ) + " " + one.type.charPtr() );
        }
        return all;
    };
    for ( char const* const named : { "Igmp::IgmpHost", "Igmp::IgmpHostDir", "Igmp::IgmpHostStatus",
                                      "Igmp::IgmpHostStatusDir", "Igmp::IgmpHostTestAgentRoot" } ) {
        EXPECT_THAT( arguments( named ), ElementsAre( "name Kiv::Name" ) ) << named;
    }
    EXPECT_THAT( arguments( "Igmp::IgmpVersion" ), ElementsAre() );
    EXPECT_THAT( arguments( "Igmp::IgmpV3HostGroupSourceList" ), ElementsAre() );
    EXPECT_THAT(
        arguments( "Igmp::IgmpV3GroupRecord" ),
        ElementsAre( "name Kiv::Name", "multicastAddr Zornet::IpAddr" )
    );
    EXPECT_THAT(
        arguments( "Igmp::IgmpHostIntfConfig" ),
        ElementsAre(
            "intfId Zornet::IntfId", "deviceName Kiv::String", "vlanId U16", "tagged bool", "useMux bool"
        )
    );
}

TEST_F( Registration, TypesSayWhatTheyAre ) {
    EXPECT_TRUE( Type::find( "Igmp::IgmpHost" )->isEntity() );
    EXPECT_FALSE( Type::find( "Igmp::IgmpHost" )->isValue() );
    EXPECT_TRUE( Type::find( "Igmp::IgmpVersion" )->isValue() );
    EXPECT_TRUE( Type::find( "Igmp::IgmpVersion" )->isEnumType() );
    EXPECT_TRUE( Type::find( "Igmp::IgmpHostIntfConfig" )->isValue() );
    EXPECT_FALSE( Type::find( "Igmp::IgmpHostIntfConfig" )->isEnumType() );
    EXPECT_FALSE( Type::find( "Igmp::IgmpHostSm" )->isEntity() );
    for ( Type const* type : Type::types() ) {
        EXPECT_TRUE( type->hasGenericIfSupport() ) << type->name();
    }
}

TEST_F( Registration, ObjectsKnowTheirTypes ) {
    EXPECT_STREQ( igmpHostFactory( "h" )->fwkType()->name(), "Igmp::IgmpHost" );
    Ptr<Kiv::Entity> const dir = igmpHostDirFactory( "hosts" );
    EXPECT_EQ( dir->fwkType(), IgmpHostDir::_fwkType() );
}

TEST_F( Registration, MachinesCountTheirAttributesFrom130 ) {
    for ( Type const* type : Type::types() ) {
        bool const isMachine = type->base() == Kiv::PtrInterface::_fwkType();
        if ( isMachine ) {
            EXPECT_TRUE( Kiv::idsAscendFrom( type->attributes(), 130 ) ) << type->name();
        }
    }
    EXPECT_EQ( attr( "Zornet::VlanPamMultiplexer", "vlanPam" ).id(), 136 );
    EXPECT_EQ( attr( "Zornet::VlanPam", "multiplexer" ).id(), 386 );
    EXPECT_EQ( attr( "Zornet::VlanTaggingPam", "vlanId" ).id(), 386 );
}

TEST_F( Registration, HostMachineDeclaresItsAttributesInOrder ) {
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpHostSm" ),
        ElementsAre(
            "kivFwkActivity", "name", "igmpHost", "rxPam", "txPam", "useMux", "useMuxIntfId", "timerWheel",
            "igmpHostStatusDir", "igmpHostStatus", "groupTimerSm", "enabled", "aggregatedSenderSm",
            "igmpV3HostGeneralQueryTimerSm", "v3GroupQueryTimerSm", "v3GroupCallbackSm", "mtu",
            "v1RouterPresentTimer", "v2RouterPresentTimer", "v3ReportPkt", "v2ReportPkt", "offsetEtherHeader",
            "offsetIpHeader", "offsetIgmpReportHeader", "offsetIgmpGroupRecStart", "initialized",
            "igmpHostDirSm"
        )
    );
}

TEST_F( Registration, RootDeclaresItsThreePointers ) {
    std::pair<char const*, char const*> const pointers[] = {
        { "igmpHostDir", "Igmp::IgmpHostDir" },
        { "igmpHostStatusDir", "Igmp::IgmpHostStatusDir" },
        { "igmpHostDirSm", "Igmp::IgmpHostDirSm" },
    };
    AttributeId id = 258;
    for ( auto const& [name, type] : pointers ) {
        Kiv::KivAttr const& pointer = attr( "Igmp::IgmpHostTestAgentRoot", name );
        EXPECT_EQ( pointer.id(), id++ );
        EXPECT_EQ( pointer.typeName(), String8( type ) );
        EXPECT_EQ( pointer.flags(), 0x8220143U );
        EXPECT_EQ( pointer.introspectionFlags(), 0x400U );
    }
    EXPECT_EQ( Type::find( "Igmp::IgmpHostTestAgentRoot" )->attributes().size(), 3U );
    EXPECT_FALSE( Type::find( "Igmp::IgmpHostTestAgentRoot" )->attr( "fwkKey" ) );
}

TEST_F( Registration, FieldsOfAValueAreNumberedFromTwo ) {
    AttributeId id = 2;
    for ( char const* const field : { "intfId", "deviceName", "vlanId", "tagged", "useMux" } ) {
        EXPECT_EQ( attr( "Igmp::IgmpHostIntfConfig", field ).id(), id++ ) << field;
    }
    EXPECT_EQ( attr( "Igmp::IgmpHostIntfConfig", "deviceName" ).typeName(), String8( "Kiv::String" ) );
    EXPECT_FALSE( attr( "Igmp::IgmpHostIntfConfig", "kivHasAttrLogInterface" ).isDeclared() );
}

/// At load, before anybody wants to know, so that a handle may be kept from then on.
TEST_F( Registration, EveryTypeHasTheHandlesOfReplication ) {
    for ( Type const* type : Type::types() ) {
        ASSERT_TRUE( type->attr( "kivNboAttrLogSaForMsgChannel" ) ) << type->name();
        EXPECT_FALSE( type->attr( "kivNboAttrLogSaForMsgChannel" )->isDeclared() ) << type->name();
        ASSERT_TRUE( type->attr( "kivHasAttrLogInterface" ) ) << type->name();
        EXPECT_EQ( type->attr( "kivHasAttrLogInterface" )->isDeclared(), type->isEntity() ) << type->name();
    }
}

TEST_F( Registration, DirectoryMachineDeclaresItsAttributesInOrder ) {
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpHostDirSm" ),
        ElementsAre(
            "kivFwkActivity", "igmpHostDir", "igmpHostStatusDir", "timerWheel", "igmpHostSm",
            "multiplexerDir", "multiplexerRefCount", "initialized"
        )
    );
}

TEST_F( Registration, GroupMachinesDeclareTheirAttributesInOrder ) {
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpHostGroupTimerSm" ),
        ElementsAre(
            "group", "waitForQueryInterval", "queryInterval", "timerWheel", "responseDelay",
            "responseDelayTimerState", "lastReporter", "joined", "initialized", "igmpHostSm"
        )
    );
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3HostGroupSm" ),
        ElementsAre(
            "kivFwkActivity", "group", "igmpHost", "igmpHostStatus", "hostSm", "currGroupRecord",
            "indexBookMark", "groupRecordOnLeave", "filterModeTransCount", "addedSourceTransCount",
            "deletedSourceTransCount", "initialized", "aggregatedSenderSm"
        )
    );
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3GroupCallbackSm" ),
        ElementsAre( "kivFwkActivity", "mcastAddr", "groupRecord", "initialized", "igmpHostSm" )
    );
}

TEST_F( Registration, ReportTimersDeclareTheirAttributesInOrder ) {
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3HostAggregatedSenderSm" ),
        ElementsAre(
            "kivFwkActivity", "timerWheel", "responseDelay", "igmpHost", "igmpHostStatus",
            "responseDelayTimerState", "v3GroupSm", "initialized", "igmpHostSm"
        )
    );
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3HostGeneralQueryTimerSm" ),
        ElementsAre(
            "kivFwkActivity", "timerWheel", "responseDelay", "igmpHost", "igmpHostStatus",
            "waitForQueryInterval", "queryInterval", "responseDelayTimerState", "queryReportInfo",
            "initialized", "igmpHostSm"
        )
    );
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3HostGroupQueryTimerSm" ),
        ElementsAre(
            "kivFwkActivity", "timerWheel", "responseDelay", "mcastAddr", "igmpHost", "igmpHostStatus",
            "waitForQueryInterval", "queryInterval", "responseDelayTimerState", "groupRecord", "source",
            "initialized", "igmpHostSm"
        )
    );
    EXPECT_THAT(
        attributeNames( "Igmp::IgmpV3ReportProcessInfo" ),
        ElementsAre(
            "useBookMark", "bookMarkSourceIp", "responseDelayRemaining", "numGroups", "recordComplete",
            "scheduleTimer"
        )
    );
}

} // namespace Igmp
