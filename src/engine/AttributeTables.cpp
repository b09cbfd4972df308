/// The attributes of the state machines for code that does not know the classes. Numbers count from 130 in
/// the order of the tables. Where a row can be set, the machine has a public mutator for it; what a machine
/// derives for itself can only be read.

#include <array>

#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostDirSm.h"

namespace Igmp {

namespace {

using Kiv::AttributeKind;

constexpr AttributeId first = 130;
constexpr AttributeId unnumbered = 0;
constexpr auto argument = AttributeKind::argument;
constexpr auto state = AttributeKind::state;

constexpr char activityType[] = "Kiv::ActivityConfig";
constexpr char wheelType[] = "Lumo::TimerWheel";
constexpr char timerType[] = "Lumo::TimerWheel::NotifieeConst";
constexpr char hostType[] = "Igmp::IgmpHost";
constexpr char statusType[] = "Igmp::IgmpHostStatus";
constexpr char statusDirType[] = "Igmp::IgmpHostStatusDir";
constexpr char recordType[] = "Igmp::IgmpV3GroupRecord";
constexpr char sourcesType[] = "Igmp::IgmpV3HostGroupSourceList";
constexpr char hostSmType[] = "Igmp::IgmpHostSm";

/// A pointer given at construction.
template <auto reader>
constexpr Kiv::Attribute
given( char const* name, char const* objectType ) {
    return Kiv::fixedPointerAttribute<reader>( unnumbered, name, objectType, argument );
}

template <auto reader>
constexpr Kiv::Attribute
held( char const* name, char const* objectType ) {
    return Kiv::fixedPointerAttribute<reader>( unnumbered, name, objectType );
}

template <auto reader>
constexpr Kiv::Attribute
readable( char const* name, AttributeKind kind, char const* defaultText = nullptr ) {
    return Kiv::readOnlyAttribute<reader>( unnumbered, name, kind, defaultText );
}

template <auto reader, auto mutator>
constexpr Kiv::Attribute
settable( char const* name, char const* defaultText ) {
    return Kiv::settableAttribute<reader, mutator>( unnumbered, name, defaultText );
}

template <class C>
constexpr Kiv::Attribute
collected( char const* name, char const* objectType ) {
    return Kiv::collectionAttribute<C>( unnumbered, name, objectType );
}

/// Numbers the rows of a machine's table in their order.
template <std::size_t count>
constexpr std::array<Kiv::Attribute, count>
numbered( Kiv::Attribute const ( &rows )[count] ) {
    std::array<Kiv::Attribute, count> table{};
    for ( std::size_t i = 0; i < count; ++i ) {
        table[i] = rows[i];
        table[i].id = first + static_cast<AttributeId>( i );
    }
    return table;
}

struct GroupTimerSm {
    using Class = IgmpHostSm;
    static IgmpHostSm::GroupTimerSms const& members( Class const& sm ) { return sm.groupTimerSm(); }
    static void del( Class& sm, Zornet::IpAddr const& group ) { sm.groupTimerSmDel( group ); }
};
struct V3GroupQueryTimerSm {
    using Class = IgmpHostSm;
    static IgmpHostSm::V3GroupQueryTimerSms const& members( Class const& sm ) {
        return sm.v3GroupQueryTimerSm();
    }
    static void del( Class& sm, Zornet::IpAddr const& group ) { sm.v3GroupQueryTimerSmDel( group ); }
};
struct V3GroupCallbackSm {
    using Class = IgmpHostSm;
    static IgmpHostSm::V3GroupCallbackSms const& members( Class const& sm ) { return sm.v3GroupCallbackSm(); }
    static void del( Class& sm, Zornet::IpAddr const& group ) { sm.v3GroupCallbackSmDel( group ); }
};
struct V3GroupSm {
    using Class = IgmpV3HostAggregatedSenderSm;
    static Class::V3GroupSms const& members( Class const& sm ) { return sm.v3GroupSm(); }
    static void del( Class& sm, Zornet::IpAddr const& group ) { sm.v3GroupSmDel( group ); }
};
struct HostSm {
    using Class = IgmpHostDirSm;
    static IgmpHostDirSm::IgmpHostSms const& members( Class const& sm ) { return sm.igmpHostSm(); }
    static void del( Class& sm, Kiv::Name const& name ) { sm.igmpHostSmDel( name ); }
};
struct MultiplexerDir {
    using Class = IgmpHostDirSm;
    static IgmpHostDirSm::MultiplexerDirs const& members( Class const& sm ) { return sm.multiplexerDir(); }
    static Ptr<Zornet::VlanPamMultiplexer> const& object( IgmpHostDirSm::KivMultiplexerDir const& member ) {
        return member.multiplexer;
    }
    static void del( Class& sm, Zornet::IntfId const& intf ) { sm.multiplexerDirDel( intf ); }
};
struct MultiplexerRefCount {
    using Class = IgmpHostDirSm;
    using Value = U16;
    static IgmpHostDirSm::MultiplexerRefCounts const& members( Class const& sm ) {
        return sm.multiplexerRefCount();
    }
    static Value value( IgmpHostDirSm::KivMultiplexerRefCount const& member ) { return member.count; }
    static void is( Class& sm, Zornet::IntfId const& intf, Value count ) {
        sm.multiplexerRefCountIs( intf, count );
    }
    static void del( Class& sm, Zornet::IntfId const& intf ) { sm.multiplexerRefCountDel( intf ); }
};

constexpr auto reportInfoTable = [] {
    using Info = IgmpV3ReportProcessInfo;
    return numbered( {
        settable<&Info::useBookMark, &Info::useBookMarkIs>( "useBookMark", "false" ),
        settable<&Info::bookMarkSourceIp, &Info::bookMarkSourceIpIs>( "bookMarkSourceIp", "0.0.0.0" ),
        settable<&Info::responseDelayRemaining, &Info::responseDelayRemainingIs>(
            "responseDelayRemaining", "0"
        ),
        readable<&Info::numGroups>( "numGroups", state, "0" ),
        settable<&Info::recordComplete, &Info::recordCompleteIs>( "recordComplete", "true" ),
        settable<&Info::scheduleTimer, &Info::scheduleTimerIs>( "scheduleTimer", "false" ),
    } );
}();

constexpr auto groupTimerTable = [] {
    using Sm = IgmpHostGroupTimerSm;
    return numbered( {
        readable<&Sm::group>( "group", argument ),
        readable<&Sm::waitForQueryInterval>( "waitForQueryInterval", state, "false" ),
        settable<&Sm::queryInterval, &Sm::queryIntervalIs>( "queryInterval", "125" ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        held<&Sm::responseDelay>( "responseDelay", timerType ),
        readable<&Sm::responseDelayTimerState>( "responseDelayTimerState", state, "timerDisabled" ),
        settable<&Sm::lastReporter, &Sm::lastReporterIs>( "lastReporter", "true" ),
        settable<&Sm::joined, &Sm::joinedIs>( "joined", "false" ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostSm>( "igmpHostSm", hostSmType ),
    } );
}();

constexpr auto generalQueryTimerTable = [] {
    using Sm = IgmpV3HostGeneralQueryTimerSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        held<&Sm::responseDelay>( "responseDelay", timerType ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        given<&Sm::igmpHostStatus>( "igmpHostStatus", statusType ),
        readable<&Sm::waitForQueryInterval>( "waitForQueryInterval", state, "false" ),
        settable<&Sm::queryInterval, &Sm::queryIntervalIs>( "queryInterval", "125" ),
        readable<&Sm::responseDelayTimerState>( "responseDelayTimerState", state, "timerDisabled" ),
        held<&Sm::queryReportInfo>( "queryReportInfo", "Igmp::IgmpV3ReportProcessInfo" ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostSm>( "igmpHostSm", hostSmType ),
    } );
}();

constexpr auto groupQueryTimerTable = [] {
    using Sm = IgmpV3HostGroupQueryTimerSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        held<&Sm::responseDelay>( "responseDelay", timerType ),
        readable<&Sm::mcastAddr>( "mcastAddr", argument ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        given<&Sm::igmpHostStatus>( "igmpHostStatus", statusType ),
        settable<&Sm::waitForQueryInterval, &Sm::waitForQueryIntervalIs>( "waitForQueryInterval", "false" ),
        settable<&Sm::queryInterval, &Sm::queryIntervalIs>( "queryInterval", "125" ),
        readable<&Sm::responseDelayTimerState>( "responseDelayTimerState", state, "timerDisabled" ),
        held<&Sm::groupRecord>( "groupRecord", recordType ),
        held<&Sm::source>( "source", sourcesType ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostSm>( "igmpHostSm", hostSmType ),
    } );
}();

constexpr auto groupCallbackTable = [] {
    using Sm = IgmpV3GroupCallbackSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        readable<&Sm::mcastAddr>( "mcastAddr", argument ),
        given<&Sm::groupRecord>( "groupRecord", recordType ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostSm>( "igmpHostSm", hostSmType ),
    } );
}();

constexpr auto v3GroupTable = [] {
    using Sm = IgmpV3HostGroupSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        readable<&Sm::group>( "group", argument ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        given<&Sm::igmpHostStatus>( "igmpHostStatus", statusType ),
        held<&Sm::hostSm>( "hostSm", hostSmType ),
        held<&Sm::currGroupRecord>( "currGroupRecord", recordType ),
        settable<&Sm::indexBookMark, &Sm::indexBookMarkIs>( "indexBookMark", "0.0.0.0" ),
        held<&Sm::groupRecordOnLeave>( "groupRecordOnLeave", recordType ),
        settable<&Sm::filterModeTransCount, &Sm::filterModeTransCountIs>( "filterModeTransCount", "0" ),
        held<&Sm::addedSourceTransCount>( "addedSourceTransCount", sourcesType ),
        held<&Sm::deletedSourceTransCount>( "deletedSourceTransCount", sourcesType ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::aggregatedSenderSm>( "aggregatedSenderSm", "Igmp::IgmpV3HostAggregatedSenderSm" ),
    } );
}();

constexpr auto aggregatedSenderTable = [] {
    using Sm = IgmpV3HostAggregatedSenderSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        held<&Sm::responseDelay>( "responseDelay", timerType ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        given<&Sm::igmpHostStatus>( "igmpHostStatus", statusType ),
        readable<&Sm::responseDelayTimerState>( "responseDelayTimerState", state, "timerDisabled" ),
        collected<V3GroupSm>( "v3GroupSm", "Igmp::IgmpV3HostGroupSm" ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostSm>( "igmpHostSm", hostSmType ),
    } );
}();

constexpr auto hostTable = [] {
    using Sm = IgmpHostSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        readable<&Sm::name>( "name", argument ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        held<&Sm::rxPam>( "rxPam", "Zornet::Pam" ),
        held<&Sm::txPam>( "txPam", "Zornet::EthDevPam" ),
        readable<&Sm::useMux>( "useMux", state, "false" ),
        readable<&Sm::useMuxIntfId>( "useMuxIntfId", state, "" ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        given<&Sm::igmpHostStatusDir>( "igmpHostStatusDir", statusDirType ),
        held<&Sm::igmpHostStatus>( "igmpHostStatus", statusType ),
        collected<GroupTimerSm>( "groupTimerSm", "Igmp::IgmpHostGroupTimerSm" ),
        readable<&Sm::enabled>( "enabled", state, "false" ),
        held<&Sm::aggregatedSenderSm>( "aggregatedSenderSm", "Igmp::IgmpV3HostAggregatedSenderSm" ),
        held<&Sm::igmpV3HostGeneralQueryTimerSm>(
            "igmpV3HostGeneralQueryTimerSm", "Igmp::IgmpV3HostGeneralQueryTimerSm"
        ),
        collected<V3GroupQueryTimerSm>( "v3GroupQueryTimerSm", "Igmp::IgmpV3HostGroupQueryTimerSm" ),
        collected<V3GroupCallbackSm>( "v3GroupCallbackSm", "Igmp::IgmpV3GroupCallbackSm" ),
        readable<&Sm::mtu>( "mtu", state, "1514" ),
        held<&Sm::v1RouterPresentTimer>( "v1RouterPresentTimer", timerType ),
        held<&Sm::v2RouterPresentTimer>( "v2RouterPresentTimer", timerType ),
        held<&Sm::v3ReportPkt>( "v3ReportPkt", "Zornet::Pkt" ),
        held<&Sm::v2ReportPkt>( "v2ReportPkt", "Zornet::Pkt" ),
        readable<&Sm::offsetEtherHeader>( "offsetEtherHeader", state, "0" ),
        readable<&Sm::offsetIpHeader>( "offsetIpHeader", state, "0" ),
        readable<&Sm::offsetIgmpReportHeader>( "offsetIgmpReportHeader", state, "0" ),
        readable<&Sm::offsetIgmpGroupRecStart>( "offsetIgmpGroupRecStart", state, "0" ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
        given<&Sm::igmpHostDirSm>( "igmpHostDirSm", "Igmp::IgmpHostDirSm" ),
    } );
}();

constexpr auto hostDirTable = [] {
    using Sm = IgmpHostDirSm;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        given<&Sm::igmpHostDir>( "igmpHostDir", "Igmp::IgmpHostDir" ),
        given<&Sm::igmpHostStatusDir>( "igmpHostStatusDir", statusDirType ),
        given<&Sm::timerWheel>( "timerWheel", wheelType ),
        collected<HostSm>( "igmpHostSm", hostSmType ),
        collected<MultiplexerDir>( "multiplexerDir", "Zornet::VlanPamMultiplexer" ),
        collected<MultiplexerRefCount>(
            "multiplexerRefCount", "Igmp::IgmpHostDirSm::KivMultiplexerRefCount"
        ),
        readable<&Sm::initialized>( "initialized", state, "true" ),
    } );
}();

constexpr auto configHelperTable = [] {
    using Sm = IgmpHostConfigHelper;
    return numbered( {
        given<&Sm::kivFwkActivity>( "kivFwkActivity", activityType ),
        readable<&Sm::name>( "name", argument ),
        given<&Sm::igmpHost>( "igmpHost", hostType ),
        Kiv::operationAttribute<&Sm::replicateGroup>( unnumbered, "replicateGroup" ),
    } );
}();

} // namespace

std::span<Kiv::Attribute const>
IgmpV3ReportProcessInfo::attributes() {
    return reportInfoTable;
}

std::span<Kiv::Attribute const>
IgmpHostGroupTimerSm::attributes() {
    return groupTimerTable;
}

std::span<Kiv::Attribute const>
IgmpV3HostGeneralQueryTimerSm::attributes() {
    return generalQueryTimerTable;
}

std::span<Kiv::Attribute const>
IgmpV3HostGroupQueryTimerSm::attributes() {
    return groupQueryTimerTable;
}

std::span<Kiv::Attribute const>
IgmpV3GroupCallbackSm::attributes() {
    return groupCallbackTable;
}

std::span<Kiv::Attribute const>
IgmpV3HostGroupSm::attributes() {
    return v3GroupTable;
}

std::span<Kiv::Attribute const>
IgmpV3HostAggregatedSenderSm::attributes() {
    return aggregatedSenderTable;
}

std::span<Kiv::Attribute const>
IgmpHostSm::attributes() {
    return hostTable;
}

std::span<Kiv::Attribute const>
IgmpHostDirSm::attributes() {
    return hostDirTable;
}

std::span<Kiv::Attribute const>
IgmpHostConfigHelper::attributes() {
    return configHelperTable;
}

} // namespace Igmp
