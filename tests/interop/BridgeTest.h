#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "engine/IgmpHostDirSm.h"
#include "tests/support/Namespace.h"
#include "tests/support/WireTap.h"

namespace Interop {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Kiv::Ptr;
using Kiv::Seconds;
using Zornet::IpAddr;

/// What a bridge holds of a group on a port.
struct Membership {
    bool exclude = true;
    std::set<std::string> sources; ///< those let through, or under exclude those kept out
    friend bool operator==( Membership const&, Membership const& ) = default;
};
using Memberships = std::map<std::string, Membership>;

/// Hosts on real devices in a namespace of their own, before a Linux bridge in another, which is querier and
/// judge: it has one port per device "h1", "h2". Everything that the hosts send is captured on the bridge's
/// side, and at the end tshark has to decode all of it without complaint.
class BridgeTest : public ::testing::Test {
  protected:
    /// Times in hundredths of a second, as the bridge takes them.
    struct Timing {
        unsigned query;
        unsigned response;
        unsigned lastMember;
        unsigned membership;
    };

    BridgeTest( unsigned igmpVersion, Timing const& timing );
    ~BridgeTest() override;
    void SetUp() override;
    void TearDown() override;

    /// An enabled host on `device`, at an address of its own.
    IgmpHost& addHost( char const* device, Igmp::IgmpVersion version );
    static IgmpV3GroupRecord& join(
        IgmpHost& host, char const* group, IgmpV3GroupRecord::FilterMode mode,
        std::vector<char const*> const& sources = {}
    );
    static void raise( IgmpV3GroupRecord& record ) { record.versionIs( record.version() + 1 ); }
    Igmp::IgmpHostStatus& status( IgmpHost const& host ) {
        return *statusDir_->igmpHostStatus( host.name() );
    }

    /// What the bridge believes of a port, by its own word. Version 2 tells groups only.
    Memberships bridgeTable( char const* port );
    /// Lets the hosts live until the bridge's table of the port is `expected`, at most `span`. Returns the
    /// last table.
    Memberships awaitTable( char const* port, Memberships const& expected, Seconds span );
    /// Lets the hosts live for `span` and returns every table of the port that differed from `expected` on
    /// the way.
    std::vector<Memberships> deviations( char const* port, Memberships const& expected, Seconds span );
    static void live( Seconds span ) { Kiv::defaultActivity()->activitySm().runFor( span ); }
    /// Queries that the bridge has sent through the port.
    unsigned queriesSent( char const* port );
    /// One line per captured IGMP frame of the hosts, as tshark reads it: "src|type|group or records".
    std::vector<std::string> dissected();

    Support::Namespace hosts_;
    Support::Namespace bridge_;

  private:
    void setUpBridge();
    bool wantsSources() const { return igmpVersion_ == 3; }

    unsigned igmpVersion_;
    Timing timing_;
    Ptr<Lumo::TimerWheel> wheel_;
    Ptr<Igmp::IgmpHostDir> dir_;
    Ptr<Igmp::IgmpHostStatusDir> statusDir_;
    Ptr<Igmp::IgmpHostDirSm> dirSm_;
    std::vector<std::unique_ptr<Support::WireTap>> taps_;
};

} // namespace Interop
