#include "tests/interop/FaultTest.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace Interop {

void
FaultTest::SetUp() {
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        if ( std::getenv( "IGMPHOST_FAULT_SECONDS" ) ) { // whoever asks for the long form wants no silence
            FAIL() << "needs network namespaces: " << reason;
        }
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    near_.add();
    far_.add();
    cableIs();
    listen();
    wheel_ = new Lumo::TimerWheel;
    dir_ = Igmp::igmpHostDirFactory( "hosts" );
    statusDir_ = Igmp::igmpHostStatusDirFactory( "status" );
    dirSm_ = Igmp::igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ );
}

void
FaultTest::TearDown() {
    if ( !dir_ ) {
        return;
    }
    if ( hosts() != 0 ) {
        EXPECT_EQ( openDescriptors(), descriptors_ );
#ifndef __SANITIZE_ADDRESS__ // which keeps for a while what has been given back
        EXPECT_LT( residentBytes(), resident_ + memory );
#endif
    }
    dir_->igmpHostDelAll();
}

Seconds
FaultTest::faultTime() {
    char const* const seconds = std::getenv( "IGMPHOST_FAULT_SECONDS" );
    return seconds ? std::stod( seconds ) : 1.0;
}

void
FaultTest::listen() {
    end_ = std::make_unique<Support::PacketEnd>( far_, "far0" );
}

void
FaultTest::hostsAre( unsigned count, Igmp::IgmpVersion version ) {
    version_ = version;
    for ( unsigned i = 0; i < count; ++i ) {
        hostIs( i, version );
    }
    // Two reports of each join, and the timers that sent them.
    ASSERT_TRUE( eventually( [&] { return reportsSent() >= 2 * count && !isAnswering(); } ) );
    resident_ = residentBytes();
    descriptors_ = openDescriptors();
}

void
FaultTest::hostIs( std::size_t i, Igmp::IgmpVersion version ) {
    auto const number = static_cast<Zornet::U32>( i + 1 );
    Ptr<IgmpHost> const host = dir_->igmpHostIs( nameOf( i ) );
    host->ipAddrIs( IpAddr::fromHost( 0x0a000000U + number ) );
    host->macAddrIs( Zornet::EthAddr( { 0x02, 0, 0, 0, static_cast<U8>( number >> 8 ),
                                        static_cast<U8>( number ) } ) );
    host->deviceNameIs( "near0" );
    host->nsIs( near_.ns() );
    host->igmpVersionIs( version );
    host->v1MaxResponseTimeIs(
        version == Igmp::igmpVersion1 ? static_cast<Zornet::U32>( 10 * responseTime ) : 100
    );
    host->intfConfigVersionIs( 1 );
    host->enabledIs( true );
    host->unsolicitedReportIntervalIs( 0.2 );
    join( i, group );
}

void
FaultTest::join( std::size_t i, IpAddr const& addr ) {
    auto const record = dir_->igmpHost( nameOf( i ) )->v3groupIs( addr );
    record->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
    record->versionIs( 1 );
    ++memberships_;
}

Bytes
FaultTest::query() const {
    // Version 1 hosts are told theirs by configuration.
    auto const code = static_cast<U8>( version_ == Igmp::igmpVersion1 ? 0 : 10 * responseTime );
    return Lab::igmpFrame(
        IpAddr( "10.0.255.254" ), IpAddr( "224.0.0.1" ),
        version_ == Igmp::igmpVersion3
            ? Lab::v3QueryMessage( IpAddr(), {}, code, false, 2, 125 )
            : Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr() )
    );
}

bool
FaultTest::ask() {
    return end_->send( query() );
}

void
FaultTest::hear() {
    std::vector<Support::Arrival> const arrivals = end_->takeAll();
    heard_.insert( heard_.end(), arrivals.begin(), arrivals.end() );
}

void
FaultTest::expectAnswersInTime() {
    hear();
    std::size_t const before = heard_.size();
    std::size_t const answers = version_ == Igmp::igmpVersion3 ? hosts() : memberships_;
    Seconds const withoutProcessor = timeWithoutProcessor();
    double const asked = Support::wallClock();
    ASSERT_TRUE( ask() );
    eventually( [&] {
        hear();
        return heard_.size() >= before + answers;
    } );
    Seconds const most = responseTime + tolerance + timeWithoutProcessor() - withoutProcessor;
    std::set<Bytes> reports;
    for ( auto at = heard_.begin() + static_cast<std::ptrdiff_t>( before ); at != heard_.end(); ++at ) {
        EXPECT_GE( at->time - asked, 0.1 * responseTime );
        EXPECT_LE( at->time - asked, most );
        EXPECT_TRUE( reports.insert( at->frame ).second ) << at->source() << " answered twice";
    }
    EXPECT_EQ( reports.size(), answers );
}

U64
FaultTest::reportsSent() const {
    U64 sum = 0;
    for ( IgmpHostStatus const& status : statusDir_->igmpHostStatus() ) {
        sum += status.v1ReportsSent() + status.v2ReportsSent() + status.v3CurrentStateReportSent() +
               status.v3StateChangeReportSent();
    }
    return sum;
}

U64
FaultTest::framesLost( U64 stops ) const {
    U64 sum = 0;
    for ( std::size_t i = 0; i < hosts(); ++i ) {
        sum += pam( i ).txDrops() + pam( i ).txErrors() - stops;
    }
    return sum;
}

bool
FaultTest::isAnswering() const {
    for ( std::size_t i = 0; i < hosts(); ++i ) {
        Ptr<Igmp::IgmpHostSm> const sm = dirSm_->igmpHostSm( nameOf( i ) );
        if ( version_ == Igmp::igmpVersion3
                 ? sm->igmpV3HostGeneralQueryTimerSm()->responseDelayTimerState() == Igmp::timerRunning ||
                       sm->aggregatedSenderSm()->responseDelayTimerState() == Igmp::timerRunning
                 : sm->groupTimerSm( group )->responseDelayTimerState() == Igmp::timerRunning ) {
            return true;
        }
    }
    return false;
}

void
FaultTest::expectNothingLostUncounted( U64 stops, std::function<U64()> const& lostByDevices ) {
    auto const found = [&] { return heard_.size() + framesLost( stops ); };
    U64 lost = lostByDevices();
    unsigned looks = 0;
    auto const isComplete = [&] {
        hear();
        lost = ++looks % 50 == 0 ? lostByDevices() : lost; // to ask takes longer than many turns of the loop
        return found() + lost >= reportsSent();
    };
    EXPECT_TRUE( eventually( isComplete ) )
        << found() << " of " << reportsSent() << ", lost by devices " << lost
        << near_.ip( "-s -s link show near0" ) << near_.run( "tc -s qdisc show dev near0" )
        << far_.ip( "-s -s link show far0" );
    EXPECT_LE( found(), reportsSent() );
}

U64
FaultTest::linkCounter(
    Support::Namespace const& ns, char const* device, char const* direction, char const* what
) {
    auto const link = nlohmann::json::parse( ns.ip( std::string( "-s -j link show " ) + device ) );
    return link.at( 0 ).at( "stats64" ).at( direction ).at( what ).get<U64>();
}

bool
FaultTest::eventually( std::function<bool()> const& condition ) {
    bool held = false;
    for ( int i = 0; !held && i < 4000; ++i ) {
        held = Kiv::defaultActivity()->activitySm().runUntil( condition, 0.005 );
    }
    return held;
}

std::size_t
FaultTest::residentBytes() {
    std::ifstream statm( "/proc/self/statm" );
    std::size_t all = 0;
    std::size_t resident = 0;
    statm >> all >> resident;
    return resident * static_cast<std::size_t>( sysconf( _SC_PAGESIZE ) );
}

std::size_t
FaultTest::openDescriptors() {
    return static_cast<std::size_t>(
        std::distance( std::filesystem::directory_iterator( "/proc/self/fd" ), {} )
    );
}

Seconds
FaultTest::timeWithoutProcessor() {
    std::ifstream schedule( "/proc/self/schedstat" );
    double running = 0.0;
    double waiting = 0.0;
    schedule >> running >> waiting;
    return waiting * 1e-9;
}

} // namespace Interop
