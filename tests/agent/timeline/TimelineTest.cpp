#include "agent/timeline/Timeline.h"

#include <optional>

#include "lab/Wire.h"
#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char version3[] = "igmpVersion: 3, robustness: 1";

class TimelineTest : public HostsBench {
  protected:
    /// Three hosts, "rx-1" to "rx-3" of 10.0.0.1 to 10.0.0.3, whose reports are not repeated, and the events.
    void play( std::string const& events, std::string const& more = version3 ) {
        hostsAre(
            "hosts:\n"
            "  - { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, " +
            more + " }\nevents:\n" + events
        );
        timeline_.emplace( context_ );
        timeline_->handleStarted();
    }
    std::vector<std::string> sentBy( Kiv::Seconds time ) {
        runUntilElapsed( time );
        return takeSent();
    }

    std::optional<Timeline> timeline_;
};

TEST_F( TimelineTest, JoinIsAnnouncedAtItsTime ) {
    play( "  - { at: 5, hosts: rx-2, join: 239.1.1.1 }\n" );
    EXPECT_THAT( sentBy( 10.0 ), ElementsAre( "5 10.0.0.2 v3report TO_EX 239.1.1.1 {}" ) );
}

TEST_F( TimelineTest, EventAtZeroActsAtTheStart ) {
    play( "  - { at: 0, hosts: rx-1, join: { multicastAddr: 239.1.1.1, sources: 10.9.9.1 } }\n" );
    EXPECT_THAT( sentBy( 1.0 ), ElementsAre( "0 10.0.0.1 v3report ALLOW 239.1.1.1 {10.9.9.1}" ) );
}

TEST_F( TimelineTest, LeaveIsAnnounced ) {
    play(
        "  - { at: 1, hosts: rx-1, join: 239.1.1.1-239.1.1.3 }\n"
        "  - { at: 2, hosts: rx-1, leave: 239.1.1.2 }\n"
        "  - { at: 3, hosts: rx-1, leave: all }\n",
        "igmpVersion: 2"
    );
    sentBy( 1.5 );
    EXPECT_THAT( sentBy( 2.0 ), testing::Contains( "2 10.0.0.1 leave 239.1.1.2 to 224.0.0.2" ) );
    std::vector<std::string> const last = sentBy( 3.0 );
    EXPECT_THAT( last, testing::Contains( "3 10.0.0.1 leave 239.1.1.1 to 224.0.0.2" ) );
    EXPECT_THAT( last, testing::Contains( "3 10.0.0.1 leave 239.1.1.3 to 224.0.0.2" ) );
}

TEST_F( TimelineTest, ChangeReplacesModeAndSources ) {
    play(
        "  - { at: 1, hosts: rx-1, join: { multicastAddr: 239.1.1.1, sources: [ 10.9.9.1, 10.9.9.2 ] } }\n"
        "  - { at: 2, hosts: rx-1, change: { multicastAddr: 239.1.1.1, sources: [ 10.9.9.2, 10.9.9.3 ] } }\n"
        "  - { at: 3, hosts: rx-1, change: { multicastAddr: 239.1.1.1, filterMode: exclude } }\n"
    );
    sentBy( 1.5 );
    EXPECT_THAT(
        sentBy( 4.0 ), ElementsAre(
                           "2 10.0.0.1 v3report ALLOW 239.1.1.1 {10.9.9.3}, BLOCK 239.1.1.1 {10.9.9.1}",
                           "3 10.0.0.1 v3report TO_EX 239.1.1.1 {}"
                       )
    );
}

TEST_F( TimelineTest, ChangeOfAGroupThatIsNotThereIsToldOnce ) {
    testing::internal::CaptureStderr();
    play( "  - { at: 1, every: 1, times: 3, hosts: 'rx-*', change: 239.1.1.1 }\n" );
    EXPECT_THAT( sentBy( 5.0 ), IsEmpty() );
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "igmphost: warning: s.yaml:4: change at 1 s: 3 of 3 hosts or groups are not there\n"
    );
}

TEST_F( TimelineTest, DisabledHostGoesSilentlyAndAnnouncesItsGroupsWhenItIsEnabled ) {
    play( "  - { at: 0, hosts: rx-1, join: 239.1.1.1 }\n"
          "  - { at: 1, hosts: rx-1, disable: true }\n"
          "  - { at: 2, hosts: rx-1, enable: true }\n" );
    EXPECT_THAT(
        sentBy( 3.0 ),
        ElementsAre( "0 10.0.0.1 v3report TO_EX 239.1.1.1 {}", "2 10.0.0.1 v3report TO_EX 239.1.1.1 {}" )
    );
}

TEST_F( TimelineTest, DeletedHostComesBackAsItWasDescribed ) {
    play(
        "  - { at: 1, hosts: rx-1, delete: true }\n"
        "  - { at: 2, hosts: rx-1, add: true }\n",
        "igmpVersion: 3, robustness: 1, groups: 239.1.1.1"
    );
    sentBy( 0.5 );
    runUntilElapsed( 1.5 );
    EXPECT_EQ( emulation_.hostDir().igmpHosts(), 2U );
    EXPECT_THAT( sentBy( 3.0 ), ElementsAre( "2 10.0.0.1 v3report TO_EX 239.1.1.1 {}" ) );
}

TEST_F( TimelineTest, HostsOfAnEventComeWithIt ) {
    play(
        "  - at: 4\n"
        "    add: { name: late, count: 2, ipAddr: 10.0.0.8, macAddr: '02:00:00:00:00:08', deviceName: eth0,\n"
        "           igmpVersion: 3, robustness: 1, groups: 239.1.1.1 }\n"
        "  - { at: 6, hosts: late-2, leave: 239.1.1.1 }\n"
    );
    EXPECT_EQ( emulation_.hostDir().igmpHosts(), 3U );
    EXPECT_THAT(
        sentBy( 8.0 ), ElementsAre(
                           "4 10.0.0.8 v3report TO_EX 239.1.1.1 {}", "4 10.0.0.9 v3report TO_EX 239.1.1.1 {}",
                           "6 10.0.0.9 v3report TO_IN 239.1.1.1 {}"
                       )
    );
}

TEST_F( TimelineTest, AbsentHostsAreTold ) {
    testing::internal::CaptureStderr();
    play( "  - { at: 1, hosts: rx-3, delete: true }\n"
          "  - { at: 2, join: 239.1.1.1 }\n"
          "  - { at: 3, hosts: rx, join: 239.1.1.2 }\n" );
    EXPECT_EQ( sentBy( 4.0 ).size(), 4U );
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "igmphost: warning: s.yaml:6: join at 3 s: 1 of 3 hosts are not there\n"
    );
}

TEST_F( TimelineTest, SetTakesEffectWithOneMoveOfEachGeneration ) {
    play( "  - { at: 1, hosts: [ rx-1, rx-3 ], set: { ipAddr: 10.0.0.77, mtu: 600, deviceName: eth0, intfId: "
          "x } }\n"
          "  - { at: 2, join: 239.1.1.1 }\n" );
    runUntilElapsed( 1.5 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 2U );
    EXPECT_EQ( host( "rx-1" ).intfConfigVersion(), 2U );
    EXPECT_EQ( host( "rx-2" ).configVersion(), 1U );
    EXPECT_THAT(
        sentBy( 3.0 ), ElementsAre(
                           "2 10.0.0.77 v3report TO_EX 239.1.1.1 {}",
                           "2 10.0.0.2 v3report TO_EX 239.1.1.1 {}", "2 10.0.0.78 v3report TO_EX 239.1.1.1 {}"
                       )
    );
}

TEST_F( TimelineTest, SetOfWhatActsAtOnceMovesNoGeneration ) {
    play( "  - { at: 1, hosts: rx-1, set: { igmpVersion: 2, robustness: 7 } }\n" );
    runUntilElapsed( 2.0 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 1U );
    EXPECT_EQ( host( "rx-1" ).intfConfigVersion(), 1U );
    EXPECT_EQ( host( "rx-1" ).robustness(), 7U );
    EXPECT_EQ( status( "rx-1" ).igmpVersion(), Igmp::igmpVersion2 );
}

TEST_F( TimelineTest, GenerationThatIsSetIsLeftAtThat ) {
    play( "  - { at: 1, hosts: rx-1, set: { configVersion: 9, mtu: 600, enabled: false } }\n" );
    runUntilElapsed( 2.0 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 9U );
    EXPECT_FALSE( host( "rx-1" ).enabled() );
}

TEST_F( TimelineTest, GenerationThatWrapsSkipsZero ) {
    play( "  - { at: 1, hosts: rx-1, set: { intfId: x } }\n", "intfConfigVersion: 4294967295" );
    runUntilElapsed( 2.0 );
    EXPECT_EQ( host( "rx-1" ).intfConfigVersion(), 1U );
}

TEST_F( TimelineTest, EventRepeatsAsOftenAsItSays ) {
    play( "  - { at: 10, every: 5, times: 3, hosts: rx-1, set: { mtu: 600 } }\n" );
    runUntilElapsed( 14.9 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 2U );
    runUntilElapsed( 100.0 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 4U );
}

TEST_F( TimelineTest, EventWithoutANumberOfTimesGoesOn ) {
    play( "  - { at: 10, every: 5, hosts: rx-1, set: { mtu: 600 } }\n" );
    runUntilElapsed( 1009.0 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 201U );
}

TEST_F( TimelineTest, NothingHappensOnceTheTimeIsOver ) {
    play( "  - { at: 10, every: 5, hosts: rx-1, set: { mtu: 600 } }\n" );
    runUntilElapsed( 12.0 );
    timeline_->handleTimeOver();
    runUntilElapsed( 100.0 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 2U );
}

TEST_F( TimelineTest, RatePacesHostsAndGroups ) {
    play( "  - { at: 1, rate: 2/s, hosts: 'rx-[12]', join: 239.1.1.1-239.1.1.2 }\n" );
    EXPECT_THAT(
        sentBy( 9.0 ),
        ElementsAre(
            "1 10.0.0.1 v3report TO_EX 239.1.1.1 {}", "1.5 10.0.0.1 v3report TO_EX 239.1.1.2 {}",
            "2 10.0.0.2 v3report TO_EX 239.1.1.1 {}", "2.5 10.0.0.2 v3report TO_EX 239.1.1.2 {}"
        )
    );
}

TEST_F( TimelineTest, StepThatIsDueWhileTheLastIsPacedBeginsBehindIt ) {
    play( "  - { at: 0, every: 1, times: 2, rate: 30/min, set: { mtu: 600 } }\n" );
    runUntilElapsed( 5.9 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 2U );
    runUntilElapsed( 6.1 );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 3U );
    EXPECT_EQ( host( "rx-3" ).configVersion(), 2U );
}

TEST_F( TimelineTest, ZapLeavesOneGroupAndJoinsTheNext ) {
    play( "  - { at: 1, times: 4, hosts: rx-1, zap: { groups: 239.1.1.1-239.1.1.3, dwell: 2 } }\n" );
    EXPECT_THAT(
        sentBy( 20.0 ), ElementsAre(
                            "1 10.0.0.1 v3report TO_EX 239.1.1.1 {}",
                            "3 10.0.0.1 v3report TO_IN 239.1.1.1 {}, TO_EX 239.1.1.2 {}",
                            "5 10.0.0.1 v3report TO_IN 239.1.1.2 {}, TO_EX 239.1.1.3 {}",
                            "7 10.0.0.1 v3report TO_EX 239.1.1.1 {}, TO_IN 239.1.1.3 {}"
                        )
    );
}

TEST_F( TimelineTest, SpreadZapKeepsHostsOneGroupApart ) {
    play( "  - { at: 1, times: 2, zap: { groups: [ 239.1.1.1, 239.1.1.2 ], dwell: 2, spread: true } }\n" );
    runUntilElapsed( 2.0 );
    EXPECT_TRUE( host( "rx-1" ).v3group( Zornet::IpAddr( "239.1.1.1" ) ) );
    EXPECT_TRUE( host( "rx-2" ).v3group( Zornet::IpAddr( "239.1.1.2" ) ) );
    EXPECT_TRUE( host( "rx-3" ).v3group( Zornet::IpAddr( "239.1.1.1" ) ) );
    runUntilElapsed( 4.0 );
    EXPECT_TRUE( host( "rx-1" ).v3group( Zornet::IpAddr( "239.1.1.2" ) ) );
    EXPECT_TRUE( host( "rx-2" ).v3group( Zornet::IpAddr( "239.1.1.1" ) ) );
    EXPECT_EQ( host( "rx-2" ).v3groups(), 1U );
}

TEST_F( TimelineTest, FlapTakesHostsDownAndUp ) {
    play( "  - { at: 1, times: 2, hosts: rx-1, flap: { down: 2, up: 5 } }\n" );
    std::string states;
    for ( Kiv::Seconds const time : { 0.5, 2.5, 3.5, 7.5, 8.5, 10.5, 40.0 } ) {
        runUntilElapsed( time );
        states += host( "rx-1" ).enabled() ? 'u' : 'd';
    }
    EXPECT_EQ( states, "uduuduu" );
}

TEST_F( TimelineTest, FlapOfGroupsLeavesAndJoinsThem ) {
    play( "  - { at: 0, hosts: rx-1, join: 239.1.1.1 }\n"
          "  - { at: 1, times: 1, hosts: rx-1, flap: { down: 2, up: 5, groups: 239.1.1.1 } }\n" );
    EXPECT_THAT(
        sentBy( 20.0 ), ElementsAre(
                            "0 10.0.0.1 v3report TO_EX 239.1.1.1 {}",
                            "1 10.0.0.1 v3report TO_IN 239.1.1.1 {}", "3 10.0.0.1 v3report TO_EX 239.1.1.1 {}"
                        )
    );
}

TEST_F( TimelineTest, EventsOfOneTimeActInTheirOrder ) {
    play( "  - { at: 2, hosts: rx-1, set: { robustness: 5 } }\n"
          "  - { at: 1, every: 1, times: 2, hosts: rx-1, set: { robustness: 6 } }\n" );
    runUntilElapsed( 3.0 );
    EXPECT_EQ( host( "rx-1" ).robustness(), 6U );
}

TEST_F( TimelineTest, NextEventIsKnown ) {
    play( "  - { at: 7, hosts: rx-1, disable: true }\n"
          "  - { at: 2, times: 1, every: 1, hosts: rx-1, set: { robustness: 6 } }\n" );
    EXPECT_EQ( timeline_->next()->time, start() + 2.0 );
    runUntilElapsed( 3.0 );
    EXPECT_EQ( timeline_->next()->event->action, EventAction::disable );
    runUntilElapsed( 8.0 );
    EXPECT_FALSE( timeline_->next() );
}

/// An hour of events that leave much to chance, on a wire in memory.
class Rehearsal : public TimelineTest {
  public:
    std::string capture( std::string const& seed ) {
        Lab::Wire wire( wheel() );
        wire.defaultSegmentIs( "lan" );
        Lab::Capture capture;
        wire.segment( "lan" ).captureIs( &capture );
        Zornet::DeviceProviderScope const scope( wire );
        play(
            "  - { at: 10, jitter: 20, rate: 2/s, zap: { groups: 239.1.0.0/28, dwell: 25 } }\n"
            "  - { at: 15, jitter: 9, flap: { down: 10, up: 50 } }\n"
            "seed: " +
            seed + "\n"
        );
        runFor( 3600.0 );
        emulation_.hostDir().igmpHostDelAll();
        std::ostringstream pcap;
        capture.writePcap( pcap, Lab::PcapResolution::nanoseconds );
        return pcap.str();
    }
    void TestBody() override {}
};

TEST( TimelineRepeatability, SameSeedAndStartGiveTheSameCapture ) {
    std::string const first = Rehearsal().capture( "5" );
    EXPECT_GT( first.size(), 10000U );
    EXPECT_TRUE( first == Rehearsal().capture( "5" ) );
    EXPECT_FALSE( first == Rehearsal().capture( "6" ) );
}

} // namespace

} // namespace Agent
