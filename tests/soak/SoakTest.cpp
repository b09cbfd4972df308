#include <gmock/gmock.h>
#include <malloc.h>

#include <cstdlib>
#include <iostream>

#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/PktManager.h"
#include "tests/soak/SoakLinks.h"

/// Hosts of mixed versions, VLANs and bindings under queriers, changes and troubles that chance draws, for as
/// long as is asked for. Every minute everything that can be said of them must hold. At the end of every
/// period they rest: they are given the configuration with which they began, without queriers and troubles,
/// until every querier is forgotten. What they hold then must be the same each time.

namespace Soak {

namespace {

constexpr Seconds minute = 60.0;
constexpr Seconds hour = 60 * minute;
constexpr Seconds day = 24 * hour;
constexpr Seconds restTime = 20 * minute; ///< longer than any querier is remembered

/// What is compared between two rests.
struct Rest {
    std::vector<U32> references;
    std::size_t memory = 0; ///< bytes in use
};

/// What the C library has given out; 0 where a sanitizer stands in for it.
std::size_t
memoryInUse() {
    auto const info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

class World {
  public:
    World( U32 hosts, U64 seed );

    /// Lets that much time pass, and says what did not hold, and when.
    std::string run( Seconds span );
    /// Brings everything to rest, and says what did not hold meanwhile.
    std::string runAtRest( Rest& found );
    SoakHosts& hosts() { return hosts_; }
    SoakLinks& links() { return links_; }
    std::string figures();

  private:
    std::string check();

    Kiv::SimulatedClock clock_{ 1000.0 };
    Kiv::ClockScope const clockScope_{ clock_ };
    Kiv::ActivitySm& activity_ = Kiv::defaultActivity()->activitySm();
    Ptr<Lumo::TimerWheel> const hostWheel_{ new Lumo::TimerWheel };
    Ptr<Lumo::TimerWheel> const linkWheel_{ new Lumo::TimerWheel };
    SoakLinks links_;
    SoakHosts hosts_;
    Random random_;
    U32 const changesPerMinute_;
    U64 minutes_ = 0;
};

World::World( U32 hosts, U64 seed )
    : links_( hosts / hostsPerSegment, linkWheel_, seed ),
      hosts_( hosts, hostWheel_ ),
      random_( seed ),
      changesPerMinute_( hosts / 40 ) {}

/// Changes come at any instant of a minute: one of five on the links, the rest in the configuration.
std::string
World::run( Seconds span ) {
    for ( Seconds const end = Kiv::now() + span; Kiv::now() < end; ) {
        Seconds const next = Kiv::now() + minute;
        for ( U32 left = changesPerMinute_; left != 0; --left ) {
            activity_.runFor( below( random_, 1000 ) / 500.0 * minute / ( changesPerMinute_ + 1 ) / 2 );
            links_.mend();
            if ( below( random_, 5 ) == 0 ) {
                links_.change( random_ );
            } else {
                hosts_.change( random_ );
            }
        }
        activity_.runUntilTime( next );
        if ( std::string const fault = check(); !fault.empty() ) {
            return fault;
        }
    }
    return "";
}

/// Packets that wait for reuse are given back: how many there are is a matter of the greatest rush so far.
std::string
World::runAtRest( Rest& found ) {
    links_.rest();
    hosts_.rest();
    for ( Seconds const end = Kiv::now() + restTime; Kiv::now() < end; ) {
        activity_.runFor( minute );
        if ( std::string const fault = check(); !fault.empty() ) {
            return fault;
        }
    }
    hosts_.dissolveIdleMultiplexers();
    auto const packets = Zornet::globalPktManager();
    U32 const limit = packets->pktLimit();
    packets->pktLimitIs( 0 );
    packets->pktLimitIs( limit );
    found.references = hosts_.references();
    found.memory = memoryInUse();
    std::string const fault = hosts_.fault();
    return !fault.empty() ? fault : links_.inFlight() == 0 ? "" : "at rest nobody sends";
}

std::string
World::check() {
    ++minutes_;
    std::string const fault = hosts_.fault();
    return fault.empty() ? "" : fault + ", after " + std::to_string( minutes_ ) + " minutes";
}

std::string
World::figures() {
    HostFigures const& hosts = hosts_.figures();
    LinkFigures const links = links_.figures();
    std::ostringstream out;
    out << hosts_.count() << " hosts, " << minutes_ << " minutes, each of them looked at\n"
        << hosts.changes << " changes of configuration, among them " << hosts.rebindings
        << " of the binding, " << hosts.remade << " hosts made anew\n"
        << links.queriers << " queriers came, " << links.troubles << " changes of losses and delays, "
        << links.flaps << " links went down, " << links.vanished << " devices vanished\n"
        << links.frames << " frames sent, " << links.lost << " lost\n"
        << "at one moment at most " << hosts.mostTimers << " timers armed, " << hosts.mostLeaving
        << " groups leaving\n"
        << hosts.idleMultiplexers << " idle multiplexers\n";
    return out.str();
}

U64
numberFrom( char const* variable, U64 otherwise ) {
    char const* const text = std::getenv( variable );
    return text ? std::strtoull( text, nullptr, 10 ) : otherwise;
}

/// Few hosts for a few hours, for which everyone can wait.
TEST( Soak, HoldsForHours ) {
    World world( 100, numberFrom( "IGMPHOST_SOAK_SEED", 1 ) );
    Rest first;
    ASSERT_EQ( world.runAtRest( first ), "" );
    ASSERT_EQ( world.run( 4 * hour ), "" );
    Rest second;
    ASSERT_EQ( world.runAtRest( second ), "" );
    EXPECT_EQ( first.references, second.references );
    EXPECT_GT( world.links().figures().lost, 100U );
    EXPECT_GT( world.hosts().figures().idleMultiplexers, 0U );
    EXPECT_GT( world.hosts().figures().mostLeaving, 0U );
}

U64
digestOfAnHour( U64 seed ) {
    World world( 50, seed );
    EXPECT_EQ( world.run( hour ), "" );
    return world.links().figures().digest;
}

TEST( Soak, IsTheSameForTheSameSeed ) {
    U64 const digest = digestOfAnHour( 1 );
    EXPECT_EQ( digest, digestOfAnHour( 1 ) );
    EXPECT_NE( digest, digestOfAnHour( 2 ) );
}

/// Buffers and tables grow to the greatest rush so far, ever more seldom: memory settles. What is lost at
/// each change, be it a byte, is more than that over the second half of a run of weeks.
void
expectSettled( std::vector<std::size_t> const& memory, U64 days ) {
    ASSERT_LT( memory.back(), memory.front() / 100 * 110 );
    if ( std::size_t const half = days / 2; half != 0 && memory.size() > half ) {
        ASSERT_LT( memory.back(), memory[half - 1] / 100 * 101 );
    }
}

/// The long form: for as many days as IGMPHOST_SOAK_DAYS says.
TEST( SoakForDays, HoldsAndItsMemorySettles ) {
    U64 const days = numberFrom( "IGMPHOST_SOAK_DAYS", 0 );
    if ( days == 0 ) {
        return; // scripts/soak asks for it
    }
    World world(
        static_cast<U32>( numberFrom( "IGMPHOST_SOAK_HOSTS", 1000 ) ), numberFrom( "IGMPHOST_SOAK_SEED", 1 )
    );
    std::vector<U32> references;
    std::vector<std::size_t> memory;
    memory.reserve( days );
    while ( memory.size() < days ) {
        ASSERT_EQ( world.run( day - restTime ), "" );
        Rest rest;
        ASSERT_EQ( world.runAtRest( rest ), "" );
        memory.push_back( rest.memory );
        std::cout << "day " << memory.size() << ": " << rest.memory / 1024 << " KiB in use, "
                  << world.hosts().figures().idleMultiplexers << " idle multiplexers so far, "
                  << world.links().figures().frames << " frames" << std::endl;
        references = references.empty() ? rest.references : references;
        ASSERT_EQ( rest.references, references );
        ASSERT_NO_FATAL_FAILURE( expectSettled( memory, days ) );
    }
    std::cout << world.figures();
}

} // namespace

} // namespace Soak
