#pragma once

#include "tests/support/PeerTest.h"

namespace Queriers {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Kiv::Seconds;
using Support::Membership;
using Support::Memberships;

/// Hosts on "h0" before the daemons of FRR, which ask every three seconds for answers within one.
class FrrTest : public Support::PeerTest {
  protected:
    static constexpr Seconds queryInterval = 3.0;
    static constexpr auto include = IgmpV3GroupRecord::include;
    static constexpr auto exclude = IgmpV3GroupRecord::exclude;

    explicit FrrTest( unsigned igmpVersion ) : PeerTest( "frr" ), igmpVersion_( igmpVersion ) {}
    void SetUp() override;
    void TearDown() override;

    /// Makes the querier one of that version.
    void versionIs( unsigned igmpVersion );
    /// What it says that hosts want. It may keep groups that nobody wants any more, in INCLUDE mode and
    /// without sources; they are left out.
    Memberships table();
    void expectTable( Memberships const& expected ) {
        EXPECT_EQ( await( expected, 40.0, [this] { return table(); } ), expected );
    }
    std::vector<Memberships> deviations( Memberships const& expected, Seconds span ) {
        return differing( expected, span, [this] { return table(); } );
    }

  private:
    void start( std::string const& daemon );
    void stop( std::string const& daemon );
    std::string ask( std::string const& command );
    std::string file( std::string const& name ) const { return folder_ + "/" + name; }

    unsigned igmpVersion_;
    std::string folder_;
};

} // namespace Queriers
