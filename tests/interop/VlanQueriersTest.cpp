/// Tagged hosts on a real device, a querier in each VLAN at its far end, in a process of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "engine/IgmpHostDirSm.h"
#include "lab/Querier.h"
#include "tests/support/Child.h"
#include "tests/support/Namespace.h"
#include "tests/support/WireTap.h"

namespace {

using namespace Igmp;
using Zornet::IpAddr;

constexpr U16 sharedVlans = 200;
constexpr U16 ownVlans = 20;
constexpr U16 allVlans = sharedVlans + ownVlans;
constexpr Seconds span = 8.0;

IpAddr
groupOf( U16 vlan ) {
    return IpAddr::fromHost( 0xef020000U + vlan );
}

/// Version 2 in the odd VLANs, version 3 in the even ones.
U8
versionOf( U16 vlan ) {
    return vlan % 2 == 0 ? 3 : 2;
}

/// What the queriers learn, a line per VLAN: the VLAN and its groups.
void
runQueriers( Zornet::NamespaceName const& ns, std::ostream& out ) {
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    std::vector<std::unique_ptr<Lab::Querier>> queriers;
    for ( U16 vlan = 1; vlan <= allVlans; ++vlan ) {
        auto const pam = Zornet::EthDevPamIs( "far" );
        pam->nsIs( ns );
        pam->deviceOpenIs( true );
        Lab::QuerierConfig config;
        config.version = versionOf( vlan );
        config.vlanId = Bridging::VlanId( vlan );
        config.queryInterval = 2.0;
        config.queryResponseInterval = 1.0;
        config.startupQueryIntervalSet = 1.0;
        queriers.push_back( std::make_unique<Lab::Querier>( config, pam, wheel ) );
        queriers.back()->enabledIs( true );
    }
    Kiv::defaultActivity()->activitySm().runFor( span );
    for ( auto const& querier : queriers ) {
        out << querier->config().vlanId->value();
        for ( IpAddr const& group : querier->groups() ) {
            out << ' ' << group;
        }
        out << '\n';
    }
}

void
addHost( IgmpHostDir& dir, Zornet::NamespaceName const& ns, U16 vlan ) {
    Kiv::Ptr<IgmpHost> const host = dir.igmpHostIs( Kiv::Name( "vlan-" + std::to_string( vlan ) ) );
    host->ipAddrIs( IpAddr::fromHost( 0x0a010000U + vlan ) );
    host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:01" ) );
    host->deviceNameIs( "near" );
    host->nsIs( ns );
    host->igmpVersionIs( versionOf( vlan ) == 3 ? igmpVersion3 : igmpVersion2 );
    host->taggedIs( true );
    host->vlanIdIs( vlan );
    host->useMuxIs( vlan <= sharedVlans );
    host->intfIdIs( Zornet::IntfId( "if0" ) );
    host->intfConfigVersionIs( 1 );
    host->enabledIs( true );
    Kiv::Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( groupOf( vlan ) );
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    record->versionIs( 1 );
}

std::string
expectedTable() {
    std::ostringstream out;
    for ( U16 vlan = 1; vlan <= allVlans; ++vlan ) {
        out << vlan << ' ' << groupOf( vlan ) << '\n';
    }
    return out.str();
}

TEST( VlanQueriers, EachVlansQuerierLearnsItsHostsGroupsAndNoOthers ) {
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    Support::Namespace const near( "vlan-near" );
    Support::Namespace const distant( "vlan-far" );
    Support::vethIs( near, "near", distant, "far" );
    Support::Child queriers( [&]( std::ostream& out ) { runQueriers( distant.ns(), out ); } );

    Support::WireTap tap( distant, "far" );
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    auto const dir = igmpHostDirFactory( "hosts" );
    auto const statusDir = igmpHostStatusDirFactory( "status" );
    auto const dirSm = igmpHostDirSmFactory( nullptr, dir, statusDir, wheel );
    for ( U16 vlan = 1; vlan <= allVlans; ++vlan ) {
        addHost( *dir, near.ns(), vlan );
    }
    EXPECT_EQ( dirSm->multiplexerDirs(), 1U );
    EXPECT_EQ( dirSm->multiplexerRefCount( Zornet::IntfId( "if0" ) ), sharedVlans );
    Kiv::defaultActivity()->activitySm().runFor( span + 0.5 );

    EXPECT_EQ( queriers.output(), expectedTable() );
    tap.flush();
    std::map<std::string, std::size_t> framesPerVlan;
    for ( std::string const& line : Support::tshark(
              tap.path(), "igmp", { "vlan.id", "ip.src", "ip.checksum.status", "igmp.checksum.status" }
          ) ) {
        ++framesPerVlan[line];
    }
    EXPECT_EQ( framesPerVlan.size(), allVlans );
    for ( U16 vlan = 1; vlan <= allVlans; ++vlan ) {
        std::ostringstream line;
        line << vlan << '|' << IpAddr::fromHost( 0x0a010000U + vlan ) << "|1|1";
        EXPECT_GE( framesPerVlan[line.str()], 3U ) << line.str();
    }
    dir->igmpHostDelAll();
}

} // namespace
