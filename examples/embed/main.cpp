/// An agent of its own in a page: one version 3 host on a device joins a group, runs for some seconds,
/// leaves, and says what it counted.
///
///     embed DEVICE [GROUP [SECONDS]]        needs root or CAP_NET_RAW

#include <cstdlib>
#include <exception>
#include <iostream>

#include "engine/IgmpHostTestAgentRoot.h"
#include "model/IgmpHost.h"
#include "platform/kiv/Activity.h"
#include "platform/lumo/TimerWheel.h"

namespace {

/// The tree that an embedder builds, top down: the root, the two directories, the machine that serves them.
Kiv::Ptr<Igmp::IgmpHostTestAgentRoot>
newRoot( Kiv::Ptr<Lumo::TimerWheel> const& wheel ) {
    auto const root = Igmp::igmpHostTestAgentRootFactory( "root" );
    root->igmpHostDirIs( Igmp::igmpHostDirFactory( "hosts" ) );
    root->igmpHostStatusDirIs( Igmp::igmpHostStatusDirFactory( "status" ) );
    root->igmpHostDirSmIs(
        Igmp::igmpHostDirSmFactory( nullptr, root->igmpHostDir(), root->igmpHostStatusDir(), wheel )
    );
    return root;
}

/// Attributes in any order; the generation counter makes them take effect together.
Kiv::Ptr<Igmp::IgmpHost>
newHost( Igmp::IgmpHostTestAgentRoot& root, char const* device ) {
    auto const host = root.igmpHostDir()->igmpHostIs( "receiver" );
    host->ipAddrIs( Zornet::IpAddr( "10.0.0.11" ) );
    host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:11" ) );
    host->deviceNameIs( device );
    host->igmpVersionIs( Igmp::igmpVersion3 );
    host->configVersionIs( 1 );
    host->intfConfigVersionIs( 1 );
    host->enabledIs( true );
    return host;
}

/// From anywhere: exclude mode without sources. A record acts when its version moves.
void
join( Igmp::IgmpHost& host, Zornet::IpAddr const& group ) {
    auto const record = host.v3groupIs( group );
    record->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
    record->versionIs( record->version() + 1 );
}

void
runFor( Kiv::Seconds span ) {
    Kiv::defaultActivity()->activitySm().runFor( span );
}

int
run( char const* device, Zornet::IpAddr const& group, Kiv::Seconds span ) {
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    auto const root = newRoot( wheel );
    auto const host = newHost( *root, device );
    join( *host, group );
    runFor( span );
    host->v3groupDel( group );
    runFor( 2.0 ); // the leave and its repeat, RFC 3376 section 5.1

    auto const status = root->igmpHostStatusDir()->igmpHostStatus( host->name() );
    std::cout << host->name() << " on " << device << ": version " << status->igmpVersion()
              << ", queries heard " << status->v3GeneralQueryReceived() << ", reports sent "
              << status->v3StateChangeReportSent() + status->v3CurrentStateReportSent() << std::endl;
    root->igmpHostDir()->igmpHostDelAll(); // hosts go before the machine that serves them
    return EXIT_SUCCESS;
}

} // namespace

int
main( int argc, char** argv ) try {
    if ( argc < 2 || argc > 4 ) {
        std::cerr << "usage: embed DEVICE [GROUP [SECONDS]]" << std::endl;
        return EXIT_FAILURE;
    }
    return run(
        argv[1], Zornet::IpAddr( argc > 2 ? argv[2] : "239.1.1.1" ), argc > 3 ? atof( argv[3] ) : 5.0
    );
} catch ( std::exception const& fault ) {
    std::cerr << "embed: " << fault.what() << std::endl;
    return EXIT_FAILURE;
}
