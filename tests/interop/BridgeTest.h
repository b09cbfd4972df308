#pragma once

#include "tests/support/PeerTest.h"

namespace Interop {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Kiv::Seconds;
using Support::Membership;
using Support::Memberships;

/// Hosts before a Linux bridge, which is querier and judge: it has one port per device "h1", "h2".
class BridgeTest : public Support::PeerTest {
  protected:
    /// Times in hundredths of a second, as the bridge takes them.
    struct Timing {
        unsigned query;
        unsigned response;
        unsigned lastMember;
        unsigned membership;
    };

    BridgeTest( unsigned igmpVersion, Timing const& timing );
    void SetUp() override;

    /// What the bridge believes of a port, by its own word. Version 2 tells groups only.
    Memberships bridgeTable( char const* port );
    /// Lets the hosts live until the bridge's table of the port is `expected`, at most `span`. Returns the
    /// last table.
    Memberships awaitTable( char const* port, Memberships const& expected, Seconds span );
    /// Lets the hosts live for `span` and returns every table of the port that differed from `expected` on
    /// the way.
    std::vector<Memberships> deviations( char const* port, Memberships const& expected, Seconds span );
    /// Queries that the bridge has sent through the port.
    unsigned queriesSent( char const* port );
    /// One line per captured IGMP frame of the hosts, as tshark reads it: "src|type|group or records".
    std::vector<std::string> reports() {
        return dissected( { "ip.src", "ip.dst", "igmp.type", "igmp.maddr" } );
    }
    Support::Namespace& bridge() { return peer_; }

  private:
    void setUpBridge();
    bool wantsSources() const { return igmpVersion_ == 3; }

    unsigned igmpVersion_;
    Timing timing_;
};

} // namespace Interop
