#pragma once

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <set>

#include "engine/IgmpHostDirSm.h"
#include "platform/kiv/Clock.h"
#include "tests/support/Namespace.h"
#include "tests/support/WireTap.h"

namespace Support {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Kiv::Ptr;
using Kiv::Seconds;
using Zornet::IpAddr;

/// What a querier holds of a group on a link.
struct Membership {
    bool exclude = true;
    std::set<std::string> sources; ///< those let through, or under exclude those kept out
    friend bool operator==( Membership const&, Membership const& ) = default;
    friend void PrintTo( Membership const& membership, std::ostream* out ) {
        *out << ( membership.exclude ? "exclude " : "include " )
             << ::testing::PrintToString( membership.sources );
    }
};
using Memberships = std::map<std::string, Membership>;

/// Hosts on real devices in a namespace of their own, before a querier that somebody else wrote, in another.
/// What that says of them is the oracle. Everything that the hosts send is captured on its side, and at the
/// end tshark has to decode all of it without complaint.
class PeerTest : public ::testing::Test {
  protected:
    explicit PeerTest( char const* peer ) : hosts_( "hosts", false ), peer_( peer, false ) {}
    ~PeerTest() override;
    /// Makes the namespaces, and directories without a host.
    void SetUp() override;
    void TearDown() override;

    /// A cable from the hosts to the peer, whose end is captured.
    void cableIs( char const* hostsDevice, char const* peersDevice );
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
    static void live( Seconds span ) { Kiv::defaultActivity()->activitySm().runFor( span ); }

    /// One line per captured IGMP frame of the hosts, as tshark reads these fields of it.
    std::vector<std::string> dissected( std::vector<std::string> const& fields );

    /// Lets the hosts live until `table()` gives `expected`, at most `span`. Returns the last table.
    template <class Table>
    static Memberships await( Memberships const& expected, Seconds span, Table const& table ) {
        Seconds const end = Kiv::now() + span;
        Memberships found = table();
        while ( found != expected && Kiv::now() < end ) {
            live( 0.05 );
            found = table();
        }
        return found;
    }
    /// Lets the hosts live for `span` and returns every table that differed from `expected` on the way.
    template <class Table>
    static std::vector<Memberships>
    differing( Memberships const& expected, Seconds span, Table const& table ) {
        std::vector<Memberships> found;
        for ( Seconds const end = Kiv::now() + span; Kiv::now() < end; live( 0.1 ) ) {
            Memberships seen = table();
            if ( seen != expected ) {
                found.push_back( std::move( seen ) );
            }
        }
        return found;
    }

    Namespace hosts_;
    Namespace peer_;

  private:
    Ptr<Lumo::TimerWheel> wheel_;
    Ptr<Igmp::IgmpHostDir> dir_;
    Ptr<Igmp::IgmpHostStatusDir> statusDir_;
    Ptr<Igmp::IgmpHostDirSm> dirSm_;
    std::vector<std::unique_ptr<WireTap>> taps_;
};

} // namespace Support
