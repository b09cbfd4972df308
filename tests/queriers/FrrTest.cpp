#include "tests/queriers/FrrTest.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace Queriers {

namespace {

using Json = nlohmann::json;

constexpr char const* daemons = "/usr/lib/frr/";
constexpr char const* link = "q0";

/// The times in what units it has for each; it passes over the query interval where that comes before the
/// response time.
constexpr char const* configuration = "hostname querier\n"
                                      "interface q0\n"
                                      " ip pim\n"
                                      " ip igmp\n"
                                      " ip igmp query-max-response-time 10\n"
                                      " ip igmp query-interval 3\n"
                                      " ip igmp last-member-query-count 2\n"
                                      " ip igmp last-member-query-interval 10\n";

bool
isOurs( std::string const& group ) {
    return group.rfind( "224.0.0.", 0 ) != 0;
}

/// The sources of a group with a running timer, or those without: the former are let through under INCLUDE,
/// the latter kept out under EXCLUDE (RFC 3376 section 6.2.1). What it calls forwarded is whether it has set
/// up a route.
std::set<std::string>
sourcesOf( Json const& sources, std::string const& group, bool running ) {
    std::set<std::string> found;
    if ( sources.contains( group ) ) {
        for ( Json const& source : sources.at( group ).at( "sources" ) ) {
            if ( source.at( "source" ) != "*" && ( source.at( "timer" ) != "--:--" ) == running ) {
                found.insert( source.at( "source" ).get<std::string>() );
            }
        }
    }
    return found;
}

} // namespace

void
FrrTest::SetUp() {
    ASSERT_EQ( Support::Namespace::unavailable(), "" ) << "needs network namespaces";
    ASSERT_TRUE( std::filesystem::exists( std::string( daemons ) + "pimd" ) )
        << "needs the routing daemons of FRR: apt-get install frr";
    PeerTest::SetUp();
    char folder[] = "/tmp/igmphost-frr-XXXXXX";
    ASSERT_NE( mkdtemp( folder ), nullptr );
    folder_ = folder;
    std::ofstream( file( "zebra.conf" ) ) << "hostname querier\n";
    std::ofstream( file( "pimd.conf" ) ) << configuration << " ip igmp version " << igmpVersion_ << '\n';
    Support::outputOf( "chown -R frr:frr " + folder_ );
    cableIs( "h0", link );
    peer_.ip( "link set lo up" );
    peer_.ip( "addr add 10.0.0.254/24 dev q0" );
    start( "zebra" );
    start( "pimd" );
}

void
FrrTest::TearDown() {
    if ( !folder_.empty() ) {
        stop( "pimd" );
        stop( "zebra" );
        std::filesystem::remove_all( folder_ );
        PeerTest::TearDown();
    }
}

void
FrrTest::start( std::string const& daemon ) {
    peer_.run(
        daemons + daemon + " -d -u frr -g frr -A 127.0.0.1 -P 0 -f " + file( daemon + ".conf" ) + " -i " +
        file( daemon + ".pid" ) + " -z " + file( "zserv.api" ) + " --vty_socket " + folder_ + " >" +
        file( daemon + ".out" )
    );
}

void
FrrTest::stop( std::string const& daemon ) {
    std::ifstream pidFile( file( daemon + ".pid" ) );
    if ( pid_t pid = 0; pidFile >> pid ) {
        kill( pid, SIGKILL );
    }
}

std::string
FrrTest::ask( std::string const& command ) {
    return peer_.run( "vtysh --vty_socket " + folder_ + " -d pimd " + command );
}

void
FrrTest::versionIs( unsigned igmpVersion ) {
    ask( "-c 'configure terminal' -c 'interface q0' -c 'ip igmp version " + std::to_string( igmpVersion ) +
         "'" );
}

Memberships
FrrTest::table() {
    Json const links = Json::parse( ask( "-c 'show ip igmp groups json'" ) );
    Json const sources = Json::parse( ask( "-c 'show ip igmp sources json'" ) ).value( link, Json::object() );
    Memberships memberships;
    for ( Json const& entry : links.value( link, Json::object() ).value( "groups", Json::array() ) ) {
        auto const group = entry.at( "group" ).get<std::string>();
        bool const excludes = entry.value( "mode", "EXCLUDE" ) == "EXCLUDE"; // none in version 2
        Membership const membership{ excludes, sourcesOf( sources, group, !excludes ) };
        if ( isOurs( group ) && ( excludes || !membership.sources.empty() ) ) {
            memberships[group] = membership;
        }
    }
    return memberships;
}

} // namespace Queriers
