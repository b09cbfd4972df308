#include "agent/output/StatusWriter.h"

#include <nlohmann/json.hpp>

#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

class StatusWriter : public ::testing::Test {
  protected:
    Igmp::IgmpHostStatus& status( char const* host ) { return *dir_->igmpHostStatusIs( host ); }
    std::string text( std::string const& scenario ) {
        std::ostringstream out;
        writeStatus( out, scenarioOf( scenario ), *dir_ );
        return out.str();
    }
    Json json( std::string const& scenario ) { return Json::parse( text( scenario ) ); }

    Kiv::Ptr<Igmp::IgmpHostStatusDir> const dir_ = Igmp::igmpHostStatusDirFactory( "status" );
};

constexpr char oneHost[] = "hosts: [ { name: a } ]";

TEST_F( StatusWriter, EveryAttributeIsThereByName ) {
    status( "a" );
    Json const host = json( oneHost )["hosts"]["a"];
    EXPECT_EQ( host.size(), Igmp::IgmpHostStatus::attributes().size() );
    for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
        EXPECT_TRUE( host.contains( row.name ) ) << row.name;
    }
}

TEST_F( StatusWriter, ValuesHaveTheirTypes ) {
    status( "a" ).v2ReportsSentIs( 4294967295 );
    status( "a" ).enablePeriodicReportIs( true );
    status( "a" ).unsolicitedReportIntervalIs( 2.5 );
    Json const host = json( oneHost )["hosts"]["a"];
    EXPECT_EQ( host["v2ReportsSent"], 4294967295 );
    EXPECT_EQ( host["enablePeriodicReport"], true );
    EXPECT_EQ( host["unsolicitedReportInterval"], 2.5 );
    EXPECT_EQ( host["igmpVersion"], "igmpVersion2" );
}

TEST_F( StatusWriter, InfinityIsText ) {
    status( "a" ).unsolicitedReportIntervalIs( Kiv::never );
    EXPECT_EQ( json( oneHost )["hosts"]["a"]["unsolicitedReportInterval"], "inf" );
}

TEST_F( StatusWriter, HostsThatTheScenarioDoesNotNameComeLast ) {
    for ( char const* const host : { "x-10", "x-9", "z" } ) {
        status( host );
    }
    std::vector<std::string> names;
    Json const all = json( "hosts: [ { name: z } ]" );
    for ( auto const& item : all["hosts"].items() ) {
        names.push_back( item.key() );
    }
    EXPECT_THAT( names, ElementsAre( "z", "x-9", "x-10" ) );
}

TEST_F( StatusWriter, HostsStandInTheOrderOfTheScenario ) {
    for ( char const* const host : { "m", "z-1", "z-2", "b" } ) {
        status( host );
    }
    Json const all = json( "hosts: [ { name: z, count: 2 }, { name: m }, { name: b } ]" );
    std::vector<std::string> names;
    for ( auto const& item : all["hosts"].items() ) {
        names.push_back( item.key() );
    }
    EXPECT_THAT( names, ElementsAre( "z-1", "z-2", "m", "b" ) );
}

TEST_F( StatusWriter, HostWithoutStatusIsLeftOut ) {
    status( "b" );
    Json const hosts = json( "hosts: [ { name: a }, { name: b } ]" )["hosts"];
    EXPECT_EQ( hosts.size(), 1U );
    EXPECT_TRUE( hosts.contains( "b" ) );
}

TEST_F( StatusWriter, NoStatusAtAllIsAnEmptyObject ) {
    EXPECT_EQ( json( oneHost ), Json::parse( R"({"hosts": {}})" ) );
}

TEST_F( StatusWriter, NamesAreWrittenSoThatJsonReadsThem ) {
    status( "a\"b\\" );
    EXPECT_TRUE( json( R"(hosts: [ { name: 'a"b\' } ])" )["hosts"].contains( "a\"b\\" ) );
}

TEST_F( StatusWriter, NameThatIsNotUtf8DoesNoHarm ) {
    status( "a\xff" );
    EXPECT_EQ( json( "hosts: [ { name: 'a\xff' } ]" )["hosts"].size(), 1U );
}

} // namespace

} // namespace Agent
