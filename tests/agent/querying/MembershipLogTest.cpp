#include "agent/querying/MembershipLog.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/FedPam.h"
#include "tests/support/Frames.h"
#include "tests/support/SimulatedTest.h"

namespace Agent {

namespace {

using Zornet::IpAddr;

/// A version 3 querier that hears what the test says, and the log of what it learns.
class MembershipLogTest : public Support::SimulatedTest {
  protected:
    using Record = Zornet::IgmpV3GroupRecordType;

    MembershipLogTest() { querier_.enabledIs( true ); }

    void hear( Record type, std::vector<IpAddr> const& sources ) {
        pam_->feed( Lab::v3Report( IpAddr( "10.0.0.1" ), { { type, IpAddr( "239.1.1.1" ), sources } } ) );
    }
    /// What a log that looks before and after `act` tells, without the time.
    template <class Act>
    std::string told( Act act, bool json = false ) {
        std::ostringstream out;
        MembershipLog log( out, querier_, json );
        log.look();
        out.str( "" );
        act();
        log.look();
        std::size_t const time = std::string( "00:00:00.000 " ).size();
        return json || out.str().empty() ? out.str() : out.str().substr( time );
    }

    Kiv::Ptr<Support::FedPam> const pam_{ new Support::FedPam };
    Lab::Querier querier_{ {}, pam_, wheel() };
};

TEST_F( MembershipLogTest, NewGroupIsLearned ) {
    EXPECT_EQ(
        told( [this] { hear( Record::MODE_IS_EXCLUDE, { IpAddr( "10.1.1.1" ) } ); } ),
        "+ 239.1.1.1  EXCLUDE {10.1.1.1}  version 3  last reported by 10.0.0.1\n"
    );
}

TEST_F( MembershipLogTest, OtherWantIsAChange ) {
    hear( Record::ALLOW_NEW_SOURCES, { IpAddr( "10.1.1.1" ) } );
    EXPECT_EQ(
        told( [this] { hear( Record::ALLOW_NEW_SOURCES, { IpAddr( "10.1.1.2" ) } ); } ),
        "~ 239.1.1.1  INCLUDE {10.1.1.1, 10.1.1.2}  version 3  last reported by 10.0.0.1\n"
    );
}

TEST_F( MembershipLogTest, SameReportAgainIsNothing ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( told( [this] { hear( Record::MODE_IS_EXCLUDE, {} ); } ), "" );
}

TEST_F( MembershipLogTest, GroupThatIsNotReportedAgainEnds ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( told( [] { runFor( 261.0 ); } ), "- 239.1.1.1\n" );
}

TEST_F( MembershipLogTest, AsJsonALineIsAnObject ) {
    std::string const line = told( [this] { hear( Record::MODE_IS_EXCLUDE, {} ); }, true );
    auto const json = nlohmann::json::parse( line );
    EXPECT_EQ( json["time"], 1000.0 );
    EXPECT_EQ( json["event"], "learned" );
    EXPECT_EQ( json["group"], "239.1.1.1" );
    EXPECT_EQ( json["remaining"], 260.0 );
    EXPECT_EQ( line.find( '\n' ), line.size() - 1 );
}

} // namespace

} // namespace Agent
