/// What others do to a host from inside the calls of its version 3 timers: a packet is being sent, a counter
/// has just moved.

#include "tests/engine/V3Test.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Igmp;
using Support::nextDrawIs;
using ::testing::SizeIs;
using Zornet::IpAddr;

class V3Reentry : public V3Test {
  protected:
    V3Reentry() {
        host().externalPamIs( true );
        settle();
        host().pamIs( pam );
        settle();
        exclude( G );
        enableAndRest();
        pam->sent.clear();
        pam->onSend = [this] {
            if ( reaction ) {
                std::exchange( reaction, nullptr )();
            }
        };
    }
    ~V3Reentry() override { pam->onSend = nullptr; }

    void disable() { host().enabledIs( false ); }
    void query( char const* group ) {
        nextDrawIs( 0.3 );
        auto const message = Lab::v3QueryMessage( IpAddr( group ), {}, 100, false, 2, 125 );
        pam->feed( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), message ) );
        settle();
    }
    void expectDisabledAfterOnePacket() {
        runFor( 20.0 );
        EXPECT_THAT( pam->sent, SizeIs( 1 ) );
        EXPECT_EQ( sm().aggregatedSenderSm(), nullptr );
        EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    }

    Ptr<Support::FedPam> const pam{ new Support::FedPam };
    std::function<void()> reaction; ///< to the next packet
};

INSTANTIATE_DELIVERY_TESTS( V3Reentry );

TEST_P( V3Reentry, HostMayBeDisabledWhileTheSenderSends ) {
    reaction = [this] { disable(); };
    addSources( G, { a } );
    expectDisabledAfterOnePacket();
}

TEST_P( V3Reentry, HostMayBeDisabledWhileItAnswersAGeneralQuery ) {
    reaction = [this] { disable(); };
    query( "0.0.0.0" );
    expectDisabledAfterOnePacket();
}

TEST_P( V3Reentry, HostMayBeDisabledWhileItAnswersAGroupQuery ) {
    reaction = [this] { disable(); };
    query( G );
    expectDisabledAfterOnePacket();
}

TEST_P( V3Reentry, HostMayGoWhileTheSenderSends ) {
    reaction = [this] { dir->igmpHostDelAll(); };
    addSources( G, { a } );
    runFor( 20.0 );
    EXPECT_THAT( pam->sent, SizeIs( 1 ) );
    EXPECT_EQ( dirSm->igmpHostSm( "host" ), nullptr );
}

TEST_P( V3Reentry, GroupMayGoWhileItsQueryIsAnswered ) {
    reaction = [this] { host().v3groupDel( IpAddr( G ) ); };
    query( G );
    runFor( 20.0 );
    EXPECT_THAT( pam->sent, SizeIs( 3 ) ); // the answer and the leave, twice
    EXPECT_FALSE( hasQueryTimer() );
}

TEST_P( V3Reentry, ChangeFromInsideASendIsReportedWithTheNextTurn ) {
    reaction = [this] {
        record().sourceIs()->sourceIpIs( IpAddr( b ), 1 );
        raise( record() );
    };
    query( "0.0.0.0" );
    runFor( 3.1 );
    ASSERT_THAT( pam->sent, SizeIs( 2 ) );
    EXPECT_EQ( sortedRecords( pam->sent[0] ), "IS_EX 239.1.1.1 {}" );
    EXPECT_EQ( sortedRecords( pam->sent[1] ), "BLOCK 239.1.1.1 {10.9.9.2}" );
}

/// Disables its host when the counter of current-state reports moves.
class Disabler : public IgmpHostStatus::Notifiee {
  public:
    Disabler( Ptr<IgmpHostStatus> const& status, IgmpHost& host ) : Notifiee( status ), host_( host ) {
        isRegisteredNotifieeIs( true );
    }
    void onV3CurrentStateReportSent() override { host_.enabledIs( false ); }

  private:
    IgmpHost& host_;
};

TEST_P( V3Reentry, HostMayBeDisabledByAWatcherOfItsCounters ) {
    Ptr<Disabler> const disabler( new Disabler( Ptr<IgmpHostStatus>( &status() ), host() ) );
    setRobustness( 1 );
    addSources( G, { a } );
    expectDisabledAfterOnePacket();
}

} // namespace
