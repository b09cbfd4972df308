/// What others do to a host from inside its handlers, when they are told of its status or given a packet to
/// send: they disable it, remove it, or remove the group that it is at work on.

#include <functional>

#include "tests/engine/EngineTest.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Igmp;
using Support::FedPam;
using Zornet::IpAddr;

/// Runs a reaction, once, when an attribute of a status changes for the first time, or later by `skipped`.
class Watcher : public IgmpHostStatus::NotifieeConst {
  public:
    Watcher( Kiv::Ptr<IgmpHostStatus> const& status, unsigned skipped, std::function<void()> const& reaction )
        : NotifieeConst( status ), skipped_( skipped ), reaction_( reaction ) {
        isRegisteredNotifieeIs( true );
    }
    void onV1ReportsSent() override { react(); }
    void onV12ReportReceived() override { react(); }
    void onV2GeneralQueryReceived() override { react(); }
    void onV2GroupQueryReceived() override { react(); }
    void onV2ReportsSent() override { react(); }
    void onV2LeavesSent() override { react(); }
    void onV3GeneralQueryReceived() override { react(); }
    void onV3GroupQueryReceived() override { react(); }
    void onV3ReportReceived() override { react(); }
    void onIgmpVersion() override { react(); }
    void onUnsolicitedReportInterval() override { react(); }
    void onEnablePeriodicReport() override { react(); }
    void onContinueUnsolicitedReport() override { react(); }

  private:
    void react() {
        if ( skipped_-- == 0 ) {
            reaction_();
        }
    }
    unsigned skipped_;
    std::function<void()> reaction_;
};

enum class Reaction { disables, removesHost, removesGroup };

class ReentryBase : public EngineTest {
  public:
    void start( IgmpVersion version, bool held, bool periodic ) {
        host().externalPamIs( true );
        host().pamIs( pam );
        host().igmpVersionForcedIs( held );
        host().unsolicitedReportIntervalIs( 5.0 );
        host().enablePeriodicReportIs( periodic );
        joinAndRest( version );
        exclude( otherGroup );
        runFor( 20.0 );
    }
    void hearMessage( Lab::Bytes const& message ) {
        pam->feed( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), message ) );
    }
    void query( Zornet::U8 code, char const* group = "0.0.0.0" ) {
        hearMessage( Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr( group ) ) );
    }
    void v3Query( char const* group ) {
        hearMessage( Lab::v3QueryMessage( IpAddr( group ), {}, 100, false, 2, 125 ) );
    }
    void report() {
        hearMessage( Lab::igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, IpAddr( G ) ) );
    }
    void setTimer( Kiv::Seconds delay ) { timer().doSetTimer( delay ); }
    void continueStream() { status().continueUnsolicitedReportIs( true ); }
    void pass( Kiv::Seconds span ) { runFor( span ); }
    void join() { exclude( "239.1.1.3" ); }
    void leave() { removeGroup( otherGroup ); }
    Support::IgmpHost& config() { return host(); }

    static constexpr char const* firstGroup = G;
    static constexpr char const* otherGroup = "239.1.1.2";

  protected:
    Kiv::Ptr<FedPam> const pam{ new FedPam };
};

/// Something that happens to a host and moves its status.
struct Happening {
    using Step = void ( * )( ReentryBase& );

    char const* name;
    IgmpVersion version;
    Step happen;
    unsigned skipped = 0; ///< changes before the one that is reacted to
    bool held = false;
    bool periodic = false;
    Step prepare = nullptr;

    friend void PrintTo( Happening const& one, std::ostream* out ) { *out << one.name; }
};

class Reentry : public ReentryBase, public ::testing::WithParamInterface<std::tuple<Reaction, Happening>> {
  protected:
    void react() {
        reacted = true;
        switch ( std::get<Reaction>( GetParam() ) ) {
        case Reaction::disables: host().enabledIs( false ); break;
        case Reaction::removesHost: dir->igmpHostDel( "host" ); break;
        case Reaction::removesGroup: host().v3groupDel( IpAddr( G ) ); break;
        }
    }
    void expectAftermath() {
        switch ( std::get<Reaction>( GetParam() ) ) {
        case Reaction::disables:
            EXPECT_EQ( sm().igmpHostStatus(), nullptr );
            EXPECT_EQ( sm().groupTimerSm().size(), 0U );
            EXPECT_EQ( wheel()->armedTimers(), 0U );
            break;
        case Reaction::removesHost:
            EXPECT_EQ( dirSm->igmpHostSm( "host" ), nullptr );
            EXPECT_EQ( wheel()->armedTimers(), 0U );
            break;
        case Reaction::removesGroup: EXPECT_FALSE( hasTimer() ); break;
        }
    }
    bool reacted = false;
};

TEST_P( Reentry, LeavesTheHostInOrder ) {
    Happening const& happening = std::get<Happening>( GetParam() );
    start( happening.version, happening.held, happening.periodic );
    if ( happening.prepare ) {
        happening.prepare( *this );
    }
    Kiv::Ptr<Watcher> watcher( new Watcher( &status(), happening.skipped, [this] { react(); } ) );
    Support::TraceCapture const trace( "IgmpHost", 9 ); // what is traced is looked up, too
    happening.happen( *this );
    ASSERT_TRUE( reacted );
    watcher = nullptr;
    expectAftermath();
    runFor( 30.0 );
}

using Base = ReentryBase;

constexpr Happening happenings[] = {
    { "Version1Query", igmpVersion2, []( Base& test ) { test.query( 0 ); } },
    { "Version1QueryCounted", igmpVersion2, []( Base& test ) { test.query( 0 ); }, 1 },
    { "GeneralQuery", igmpVersion2, []( Base& test ) { test.query( 100 ); } },
    { "GroupQuery", igmpVersion2, []( Base& test ) { test.query( 100, Base::firstGroup ); } },
    { "FallBack", igmpVersion3, []( Base& test ) { test.query( 100 ); } },
    { "QueryOfTheOldFormAtAHeldHost", igmpVersion3, []( Base& test ) { test.query( 100 ); }, 0, true },
    { "QueryOfTheOldFormCountedTwice", igmpVersion3, []( Base& test ) { test.query( 100 ); }, 1, true },
    { "Version3GeneralQuery", igmpVersion3, []( Base& test ) { test.v3Query( "0.0.0.0" ); } },
    { "Version3GroupQuery", igmpVersion3, []( Base& test ) { test.v3Query( Base::firstGroup ); } },
    { "Version3GroupQueryCountedTwice", igmpVersion3, []( Base& test ) { test.v3Query( Base::firstGroup ); },
      1 },
    { "Report", igmpVersion2, []( Base& test ) { test.report(); } },
    { "Expiry", igmpVersion2, []( Base& test ) { test.pass( 1.0 ); }, 0, false, false,
      []( Base& test ) { test.setTimer( 1.0 ); } },
    { "Join", igmpVersion2, []( Base& test ) { test.join(); } },
    { "Leave", igmpVersion2, []( Base& test ) { test.leave(); } },
    { "WriteOfTheVersion", igmpVersion2, []( Base& test ) { test.config().igmpVersionIs( igmpVersion3 ); } },
    { "WriteOfTheInterval", igmpVersion2,
      []( Base& test ) { test.config().unsolicitedReportIntervalIs( 7.0 ); } },
    { "SwitchingOn", igmpVersion2, []( Base& test ) { test.config().enablePeriodicReportIs( true ); } },
    { "SwitchingOnTheStream", igmpVersion2,
      []( Base& test ) { test.config().enablePeriodicReportIs( true ); }, 1 },
    { "QueryThatEndsTheStream", igmpVersion2, []( Base& test ) { test.query( 1 ); }, 1, false, true,
      []( Base& test ) { test.continueStream(); } },
    { "ReportThatRestartsTheStream", igmpVersion2, []( Base& test ) { test.report(); }, 1, false, true,
      []( Base& test ) { test.setTimer( Kiv::never ); } },
    { "ExpiryThatEndsTheStream", igmpVersion2, []( Base& test ) { test.pass( 1.0 ); }, 0, false, true,
      []( Base& test ) {
          test.setTimer( 1.0 );
          test.continueStream();
      } },
    { "WriteOfTheVersionThatStartsTheStream", igmpVersion2,
      []( Base& test ) { test.config().igmpVersionForcedIs( true ); }, 0, false, true },
};

std::string
reentryName( ::testing::TestParamInfo<std::tuple<Reaction, Happening>> const& info ) {
    static constexpr char const* names[] = { "Disables", "RemovesTheHost", "RemovesTheGroup" };
    auto const reaction = static_cast<std::size_t>( std::get<Reaction>( info.param ) );
    return std::string( std::get<Happening>( info.param ).name ) + names[reaction];
}

INSTANTIATE_TEST_SUITE_P(
    WatcherOfTheStatus, Reentry,
    ::testing::Combine(
        ::testing::Values( Reaction::disables, Reaction::removesHost, Reaction::removesGroup ),
        ::testing::ValuesIn( happenings )
    ),
    reentryName
);

} // namespace
