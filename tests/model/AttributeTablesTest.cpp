/// The tables of attributes against the classes that they stand for: every row of every class of the model is
/// walked and compared with the list below, and its mutator and callback are tried.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"

namespace Igmp {

namespace {

using Kiv::AttributeKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What a row must say. An empty type or text stands for none.
struct Row {
    AttributeId id;
    std::string name;
    AttributeKind kind;
    std::string type{};
    std::string defaultText{};
};

constexpr auto scalar = AttributeKind::scalar;
constexpr auto constant = AttributeKind::constant;
constexpr auto collection = AttributeKind::entityCollection;

struct HostClass {
    using Class = IgmpHost;
    using Watcher = HostWatcher;
    static Ptr<Class> make() { return igmpHostFactory( "host" ); }
    static std::vector<Row> rows() {
        return {
            { 258, "configVersion", scalar, "U32", "0" },
            { 259, "ipAddr", scalar, "Zornet::IpAddr", "0.0.0.0" },
            { 260, "macAddr", scalar, "Zornet::EthAddr", "00:00:00:00:00:00" },
            { 261, "intfConfigVersion", scalar, "U32", "0" },
            { 262, "intfId", scalar, "Zornet::IntfId", "" },
            { 263, "ns", scalar, "Zornet::NamespaceName", "" },
            { 264, "deviceName", scalar, "Kiv::String", "" },
            { 265, "vlanId", scalar, "U16", "0" },
            { 266, "tagged", scalar, "bool", "false" },
            { 267, "useMux", scalar, "bool", "false" },
            { 268, "externalPam", scalar, "bool", "false" },
            { 269, "enableRouterAlert", scalar, "bool", "true" },
            { 270, "blocked", scalar, "bool", "false" },
            { 271, "direction", scalar, "Bridging::AllowedTrafficDirection", "both" },
            { 272, "pam", AttributeKind::pointer },
            { 273, "enabled", scalar, "bool", "false" },
            { 274, "igmpVersion", scalar, "Igmp::IgmpVersion", "igmpVersion2" },
            { 275, "igmpVersionForced", scalar, "bool", "false" },
            { 276, "processV3GroupChange", scalar, "bool", "true" },
            { 277, "v3group", collection },
            { 278, "mtu", scalar, "U32", "1514" },
            { 279, "robustness", scalar, "U32", "2" },
            { 280, "v1RouterPresentTimeout", scalar, "double", "400" },
            { 281, "v2RouterPresentTimeout", scalar, "double", "400" },
            { 282, "v1MaxResponseTime", scalar, "U8", "100" },
            { 283, "maxResponseTimeTicksPerSec", constant, "double", "10" },
            { 284, "defaultIgmpV3UnsolicitedReportIntvl", constant, "double", "1" },
            { 285, "defaultIgmpV1V2UnsolicitedReportIntvl", constant, "double", "10" },
            { 286, "unsolicitedReportInterval", scalar, "double", "0" },
            { 287, "enablePeriodicReport", scalar, "bool", "false" },
        };
    }
};

struct StatusClass {
    using Class = IgmpHostStatus;
    using Watcher = StatusWatcher;
    static Ptr<Class> make() { return igmpHostStatusFactory( "host" ); }
    static std::vector<Row> rows() {
        return {
            { 258, "v1QueryReceived", scalar, "U32", "0" },
            { 259, "v1ReportsSent", scalar, "U32", "0" },
            { 260, "v12ReportReceived", scalar, "U32", "0" },
            { 261, "v2GeneralQueryReceived", scalar, "U32", "0" },
            { 262, "v2GroupQueryReceived", scalar, "U32", "0" },
            { 263, "v2ReportsSent", scalar, "U32", "0" },
            { 264, "v2LeavesSent", scalar, "U32", "0" },
            { 265, "v3GeneralQueryReceived", scalar, "U32", "0" },
            { 266, "v3GroupQueryReceived", scalar, "U32", "0" },
            { 267, "v3GroupSourceQueryReceived", scalar, "U32", "0" },
            { 268, "v3ReportReceived", scalar, "U32", "0" },
            { 269, "v3CurrentStateReportSent", scalar, "U32", "0" },
            { 270, "v3StateChangeReportSent", scalar, "U32", "0" },
            { 271, "igmpVersion", scalar, "Igmp::IgmpVersion", "igmpVersion2" },
            { 272, "numPacketInitialized", scalar, "U32", "0" },
            { 273, "unsolicitedReportInterval", scalar, "double", "10" },
            { 274, "enablePeriodicReport", scalar, "bool", "false" },
            { 275, "continueUnsolicitedReport", scalar, "bool", "false" },
        };
    }
};

struct RecordClass {
    using Class = IgmpV3GroupRecord;
    using Watcher = RecordWatcher;
    static Ptr<Class> make() { return igmpV3GroupRecordFactory( "record", Zornet::IpAddr( "239.1.1.1" ) ); }
    static std::vector<Row> rows() {
        return {
            { 258, "multicastAddr", AttributeKind::argument, "Zornet::IpAddr" },
            { 259, "filterMode", scalar, "Zornet::IgmpV3GroupRecordType", "MODE_IS_INCLUDE" },
            { 260, "source", AttributeKind::containedEntity },
            { 261, "version", scalar, "U32", "0" },
            { 262, "replicate", scalar, "bool", "false" },
            { 263, "replicateNumber", scalar, "U32", "0" },
            { 264, "replicateGroup", scalar, "Zornet::IpAddr", "0.0.0.0" },
        };
    }
};

struct SourceListClass {
    using Class = IgmpV3HostGroupSourceList;
    using Watcher = SourceListWatcher;
    static Ptr<Class> make() { return igmpV3HostGroupSourceListFactory(); }
    static std::vector<Row> rows() { return { { 258, "sourceIp", AttributeKind::valueCollection } }; }
};

struct HostDirClass {
    using Class = IgmpHostDir;
    using Watcher = HostDirWatcher;
    static Ptr<Class> make() { return igmpHostDirFactory( "hosts" ); }
    static std::vector<Row> rows() { return { { 258, "igmpHost", collection } }; }
};

struct StatusDirClass {
    using Class = IgmpHostStatusDir;
    using Watcher = StatusDirWatcher;
    static Ptr<Class> make() { return igmpHostStatusDirFactory( "status" ); }
    static std::vector<Row> rows() { return { { 258, "igmpHostStatus", collection } }; }
};

/// A value of the row's type other than its default.
std::string
otherText( Row const& row ) {
    static std::map<std::string, std::string> const texts = {
        { "U8", "7" },
        { "U16", "65535" },
        { "U32", "4294967295" },
        { "double", "2.5" },
        { "Zornet::IpAddr", "10.0.0.9" },
        { "Zornet::EthAddr", "02:00:00:00:00:09" },
        { "Zornet::IntfId", "trunk" },
        { "Zornet::NamespaceName", "blue" },
        { "Kiv::String", "eth9" },
        { "Bridging::AllowedTrafficDirection", "egress" },
        { "Igmp::IgmpVersion", "igmpVersion1" },
        { "Zornet::IgmpV3GroupRecordType", "MODE_IS_EXCLUDE" },
    };
    if ( row.type == "bool" ) {
        return row.defaultText == "true" ? "false" : "true";
    }
    return texts.at( row.type );
}

} // namespace

template <class C>
class AttributeTables : public ::testing::Test {
  protected:
    /// Calls `check` with each row of the table and what it must say.
    template <class Check>
    void walk( Check check ) {
        std::vector<Row> const rows = C::rows();
        std::span<Kiv::Attribute const> const table = C::Class::attributes();
        ASSERT_EQ( table.size(), rows.size() );
        for ( std::size_t i = 0; i < rows.size(); ++i ) {
            SCOPED_TRACE( rows[i].name );
            check( table[i], rows[i] );
        }
    }
    /// The same for the rows of stored scalars.
    template <class Check>
    void walkScalars( Check check ) {
        walk( [&]( Kiv::Attribute const& attribute, Row const& row ) {
            if ( row.kind == scalar ) {
                check( attribute, row );
            }
        } );
    }

    Ptr<typename C::Class> const object = C::make();
    Log log;
    Ptr<typename C::Watcher> const watcher{ new typename C::Watcher( object, log ) };
};

using Classes =
    ::testing::Types<HostClass, StatusClass, RecordClass, SourceListClass, HostDirClass, StatusDirClass>;
TYPED_TEST_SUITE( AttributeTables, Classes );

TYPED_TEST( AttributeTables, NameEveryAttributeInOrderWithNumberKindAndType ) {
    this->walk( []( Kiv::Attribute const& attribute, Row const& row ) {
        EXPECT_EQ( attribute.id, row.id );
        EXPECT_EQ( attribute.name, row.name );
        EXPECT_EQ( attribute.kind, row.kind );
        EXPECT_EQ( attribute.type ? attribute.type->name : "", row.type );
    } );
}

TYPED_TEST( AttributeTables, StateTheValueOfANewObject ) {
    this->walk( [this]( Kiv::Attribute const& attribute, Row const& row ) {
        if ( row.kind == scalar || row.kind == constant ) {
            EXPECT_EQ( attribute.defaultText, row.defaultText );
            EXPECT_EQ( Kiv::attributeText( attribute, *this->object ), row.defaultText );
        }
    } );
}

TYPED_TEST( AttributeTables, OnlyStoredScalarsCanBeSet ) {
    this->walk( []( Kiv::Attribute const& attribute, Row const& row ) {
        EXPECT_EQ( attribute.isWritable(), row.kind == scalar );
        EXPECT_EQ( attribute.callback != nullptr, row.kind == scalar );
    } );
}

TYPED_TEST( AttributeTables, MutatorStoresAndTellsOfItsOwnAttributeOnce ) {
    this->walkScalars( [this]( Kiv::Attribute const& attribute, Row const& row ) {
        U32 const before = this->object->modificationCount();
        Kiv::attributeTextIs( attribute, *this->object, otherText( row ) );
        EXPECT_EQ( Kiv::attributeText( attribute, *this->object ), otherText( row ) );
        EXPECT_THAT( this->log, ElementsAre( row.name ) );
        EXPECT_EQ( this->object->modificationCount(), before + 1 );
        this->log.clear();
    } );
}

TYPED_TEST( AttributeTables, MutatorTouchesNoOtherAttribute ) {
    this->walkScalars( [this]( Kiv::Attribute const& attribute, Row const& row ) {
        Kiv::attributeTextIs( attribute, *this->object, otherText( row ) );
        this->walkScalars( [&]( Kiv::Attribute const& other, Row const& otherRow ) {
            std::string const text = Kiv::attributeText( other, *this->object );
            EXPECT_EQ( text, other.id == row.id ? otherText( row ) : otherRow.defaultText ) << otherRow.name;
        } );
        Kiv::attributeTextIs( attribute, *this->object, row.defaultText );
    } );
}

TYPED_TEST( AttributeTables, EqualValueTellsNobodyAndCountsNothing ) {
    this->walkScalars( [this]( Kiv::Attribute const& attribute, Row const& row ) {
        Kiv::attributeTextIs( attribute, *this->object, row.defaultText );
    } );
    EXPECT_THAT( this->log, IsEmpty() );
    EXPECT_EQ( this->object->modificationCount(), 0U );
}

TYPED_TEST( AttributeTables, CallbackOfTheRowIsThatOfTheMutator ) {
    this->walkScalars( [this]( Kiv::Attribute const& attribute, Row const& row ) {
        attribute.callback( *this->watcher );
        EXPECT_THAT( this->log, ElementsAre( row.name ) );
        this->log.clear();
    } );
}

TYPED_TEST( AttributeTables, RowIsFoundByName ) {
    this->walk( []( Kiv::Attribute const& attribute, Row const& row ) {
        EXPECT_EQ( Kiv::findAttribute( TypeParam::Class::attributes(), row.name ), &attribute );
    } );
}

TYPED_TEST( AttributeTables, CollectionsNameTheTypeOfTheirKeys ) {
    this->walk( []( Kiv::Attribute const& attribute, Row const& row ) {
        bool const keyed = row.kind == collection || row.kind == AttributeKind::valueCollection;
        ASSERT_EQ( attribute.keyType != nullptr, keyed );
        if ( keyed ) {
            bool const byAddress = row.name == "v3group" || row.name == "sourceIp";
            EXPECT_STREQ( attribute.keyType->name, byAddress ? "Zornet::IpAddr" : "Kiv::Name" );
        }
    } );
}

} // namespace Igmp
