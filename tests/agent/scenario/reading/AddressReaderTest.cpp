#include "tests/agent/TemporaryFolder.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

std::string
groupsOf( std::string const& groups ) {
    Scenario const scenario = scenarioOf( "hosts: [ { name: a, groups: " + groups + " } ]" );
    std::string text;
    for ( GroupSpec const& group : scenario.hosts.at( 0 ).groups ) {
        text += "[" + textOf( group.groups ) + "]";
    }
    return text;
}

std::string
groupErrors( std::string const& group ) {
    return errorsOf( "hosts: [ { name: a, groups:\n { " + group + " } } ]" );
}

TEST( AddressReader, RangesAreTakenWhereverAnAddressIs ) {
    EXPECT_EQ( groupsOf( "239.1.1.1" ), "[239.1.1.1]" );
    EXPECT_EQ(
        groupsOf( "[ 239.1.1.0/31, 239.1.2.1-239.1.2.3 ]" ),
        "[239.1.1.0 239.1.1.1][239.1.2.1 239.1.2.2 239.1.2.3]"
    );
    EXPECT_EQ( groupsOf( "{ multicastAddr: 239.1.1.0/31 }" ), "[239.1.1.0 239.1.1.1]" );
}

TEST( AddressReader, CountAndStepWalkFromAnAddressOrWithinARange ) {
    EXPECT_EQ( groupsOf( "{ multicastAddr: 239.1.1.1, count: 3 }" ), "[239.1.1.1 239.1.1.2 239.1.1.3]" );
    EXPECT_EQ(
        groupsOf( "{ multicastAddr: 239.1.1.1, count: 3, step: 256 }" ), "[239.1.1.1 239.1.2.1 239.1.3.1]"
    );
    EXPECT_EQ( groupsOf( "{ multicastAddr: 239.1.1.0/29, step: 3 }" ), "[239.1.1.0 239.1.1.3 239.1.1.6]" );
    EXPECT_EQ( groupsOf( "{ multicastAddr: 239.1.1.0/24, count: 2 }" ), "[239.1.1.0 239.1.1.1]" );
    EXPECT_EQ( groupsOf( "{ multicastAddr: 239.1.1.1, step: 7 }" ), "[239.1.1.1]" );
}

TEST( AddressReader, CountAndStepStayWithinTheRange ) {
    EXPECT_EQ(
        groupErrors( "multicastAddr: 239.1.1.0/24, count: 257" ),
        ":2:19: error: multicastAddr: 257 groups from 239.1.1.0 on run past 239.1.1.255\n"
    );
    EXPECT_EQ(
        groupErrors( "multicastAddr: 239.1.1.1, count: 3, step: 4294967295" ),
        ":2:19: error: multicastAddr: 3 groups from 239.1.1.1 on run past 255.255.255.255\n"
    );
    EXPECT_EQ(
        groupErrors( "multicastAddr: 224.0.0.0/4" ),
        ":2:19: error: multicastAddr: expected at most 1000000 groups, found 268435456 groups\n"
    );
}

TEST( AddressReader, MillionGroupsAreOneBlock ) {
    auto const host =
        scenarioOf( "hosts: [ { name: a, groups: { multicastAddr: 239.0.0.0, count: 1000000 } } ]" )
            .hosts.at( 0 );
    EXPECT_EQ( host.groupCount(), 1'000'000U );
    EXPECT_EQ( host.groups.at( 0 ).groups.blocks().size(), 1U );
}

/// A scenario next to a file of addresses.
class AddressFile : public ::testing::Test {
  protected:
    std::string errorsWith( std::string const& addresses, std::string const& group = "file: groups.txt" ) {
        folder_.fileWith( "groups.txt", addresses );
        std::string const path =
            folder_.fileWith( "s.yaml", "hosts: [ { name: a, groups:\n { " + group + " } } ]" );
        Diagnostics errors;
        scenario_ = readScenario( { &path, 1 }, errors );
        std::string told = linesOf( scenario_.files, errors );
        std::string const folder = folder_.path().string() + "/";
        for ( std::size_t at = told.find( folder ); at != std::string::npos; at = told.find( folder ) ) {
            told.erase( at, folder.size() );
        }
        return told;
    }

    TemporaryFolder folder_;
    Scenario scenario_;
};

TEST_F( AddressFile, HasOneAddressOrRangeALine ) {
    EXPECT_EQ( errorsWith( "# mine\n239.1.1.1\n\n  239.2.0.0/31  # two\r\n239.3.1.1-239.3.1.2" ), "" );
    EXPECT_EQ(
        textOf( scenario_.hosts.at( 0 ).groups.at( 0 ).groups ),
        "239.1.1.1 239.2.0.0 239.2.0.1 239.3.1.1 239.3.1.2"
    );
}

TEST_F( AddressFile, ServesSourcesToo ) {
    EXPECT_EQ(
        errorsWith( "10.0.0.1\n10.0.0.2\n", "multicastAddr: 239.1.1.1, sources: { file: groups.txt }" ), ""
    );
    EXPECT_EQ( textOf( scenario_.hosts.at( 0 ).groups.at( 0 ).sources ), "10.0.0.1 10.0.0.2" );
    EXPECT_EQ( scenario_.hosts.at( 0 ).groups.at( 0 ).sources.blocks().size(), 1U );
}

TEST_F( AddressFile, EveryErrorIsToldWithItsLine ) {
    EXPECT_EQ(
        errorsWith( "239.1.1.1\n  x\n239.1.1.1\n" ),
        "groups.txt:2:3: error: expected an IPv4 address such as 239.1.1.1, or a range such as 239.1.1.0/24 "
        "or "
        "239.1.1.1-239.1.1.50, found 'x'\n"
        "groups.txt:3:1: error: address 239.1.1.1 is there already, in line 1\n"
    );
}

TEST_F( AddressFile, ThatIsMissingEmptyOrTooLongIsTold ) {
    EXPECT_EQ(
        errorsWith( "", "file: none.txt" ),
        "s.yaml:2:10: error: file: none.txt cannot be read: No such file or directory\n"
    );
    EXPECT_EQ( errorsWith( "", "file: ." ), "s.yaml:2:10: error: file: . cannot be read: Is a directory\n" );
    EXPECT_EQ(
        errorsWith( "# none\n" ), "s.yaml:2:10: error: file: expected an address in groups.txt, found none\n"
    );
    EXPECT_EQ(
        errorsWith( "10.0.0.0/8\n" ),
        "s.yaml:2:10: error: file: expected at most 1000000 addresses in groups.txt, found 16777216\n"
    );
}

TEST_F( AddressFile, StandsInPlaceOfTheAddress ) {
    EXPECT_EQ(
        errorsWith( "239.1.1.1", "file: groups.txt, multicastAddr: 239.1.1.1" ),
        "s.yaml:2:10: error: file: expected either file or multicastAddr, found both\n"
    );
    EXPECT_EQ(
        errorsWith( "239.1.1.1", "file: groups.txt, count: 3" ),
        "s.yaml:2:29: error: count: goes with multicastAddr, not with file\n"
    );
}

} // namespace

} // namespace Agent
