#include <future>

#include "agent/control/ControlClient.h"
#include "agent/control/ControlMounts.h"
#include "agent/control/ControlServer.h"
#include "agent/run/Emulation.h"
#include "lab/Wire.h"
#include "platform/kiv/Type.h"
#include "platform/lumo/TimerWheel.h"
#include "tests/agent/control/ControlledAgent.h"

namespace Agent {

namespace {

using namespace std::chrono_literals;

/// Everything that two entities of one class hold, compared attribute by attribute; what differs is counted,
/// and the first few are told.
class Comparison {
  public:
    void compare( Kiv::Entity const& a, Kiv::Entity const& b, std::string const& path ) {
        for ( Kiv::Attribute const& row : a.fwkType()->attributes() ) {
            Place const place{ path, row.name };
            if ( row.collection ) {
                compareMembers( row, a, b, place.text() );
            } else if ( row.kind == Kiv::AttributeKind::containedEntity ) {
                comparePart( row.pointer->read( a ), row.pointer->read( b ), place );
            } else if ( row.type && row.read ) {
                ++attributes_;
                expect( row.holds( b, row.read( a ) ), place );
            }
        }
    }
    std::size_t attributes() const { return attributes_; }
    std::size_t differences() const { return differences_; }
    std::string const& first() const { return first_; }

  private:
    /// Put into words only where it is told: most places agree.
    struct Place {
        std::string const& path;
        std::string_view name;
        std::string text() const { return path + "/" + std::string( name ); }
    };

    void expect( bool isAlike, Place const& place ) {
        if ( !isAlike && ++differences_ <= 5 ) {
            first_ += place.text() + "\n";
        }
    }
    void compareMembers(
        Kiv::Attribute const& row, Kiv::Entity const& a, Kiv::Entity const& b, std::string const& place
    ) {
        expect( row.collection->count( a ) == row.collection->count( b ), { place, "" } );
        for ( auto at = row.collection->begin( a ); at->isAtMember(); at->next() ) {
            Kiv::Ptr<Kiv::PtrInterface> const other = row.collection->find( b, at->key() );
            std::string const key = row.keyType->format( at->key() );
            Place const member{ place, key };
            if ( !other ) {
                expect( false, member );
            } else if ( row.collection->value ) {
                ++attributes_;
                auto const text = [&]( Kiv::PtrInterface const& value ) {
                    return row.collection->valueType->format( row.collection->value( value ) );
                };
                expect( text( *at->member() ) == text( *other ), member );
            } else {
                comparePart( at->member(), other, member );
            }
        }
    }
    void comparePart(
        Kiv::Ptr<Kiv::PtrInterface> const& a, Kiv::Ptr<Kiv::PtrInterface> const& b, Place const& place
    ) {
        expect( static_cast<bool>( a ) == static_cast<bool>( b ), place );
        if ( a && b ) {
            compare(
                static_cast<Kiv::Entity const&>( *a ), static_cast<Kiv::Entity const&>( *b ), place.text()
            );
        }
    }

    std::size_t attributes_ = 0;
    std::size_t differences_ = 0;
    std::string first_;
};

/// An agent in this process, whose hosts are on a wire in memory, and the real command as its controller in a
/// process of its own.
class Controller : public ::testing::Test {
  protected:
    static constexpr char const* hosts = "10000";
    static constexpr Kiv::Seconds onlyInFailure = 100.0;

    Controller() { wire_.defaultSegmentIs( "lan" ); }

    /// Ten thousand hosts with ten groups each, that soon have said all there is to say.
    std::vector<std::string> addition() const {
        return { "ctl",
                 path_,
                 "add",
                 "rx",
                 "--update",
                 "--count",
                 hosts,
                 "ipAddr=10.0.0.1",
                 "macAddr=02:00:00:00:00:01",
                 "deviceName=port0",
                 "unsolicitedReportInterval=0.2",
                 "--group",
                 "239.1.1.1-239.1.1.10" };
    }
    /// Serves until the controllers, all at once, have ended well.
    void serve( std::vector<std::vector<std::string>> const& commands ) {
        std::vector<std::future<Told>> controllers;
        for ( auto const& command : commands ) {
            controllers.push_back( std::async( std::launch::async, [&] { return toldBy( command ); } ) );
        }
        for ( auto& controller : controllers ) {
            while ( controller.wait_for( 0s ) != std::future_status::ready ) {
                activity().runFor( 0.005 );
            }
            Told const told = controller.get();
            EXPECT_EQ( told.errors, "" );
            EXPECT_EQ( told.status, 0 );
        }
    }
    /// Starts to add hosts, and dies in the middle of it.
    void addAndDie() {
        AgentProcess controller( addition() );
        ASSERT_TRUE( activity().runUntil( [&] { return hostDir().igmpHosts() > 1000; }, onlyInFailure ) );
        controller.signal( SIGKILL );
        EXPECT_EQ( controller.exitStatus(), -SIGKILL );
        ASSERT_TRUE( activity().runUntil( [&] { return server_.peers() == 0; }, onlyInFailure ) );
        EXPECT_LT( hostDir().igmpHosts(), 10'000U );
    }
    static Kiv::ActivitySm& activity() { return Kiv::defaultActivity()->activitySm(); }
    Igmp::IgmpHostDir& hostDir() const { return emulation_.hostDir(); }

    TemporaryFolder folder_;
    std::string const path_ = folder_.file( "control" );
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Lab::Wire wire_{ wheel_ };
    Zornet::DeviceProviderScope const scope_{ wire_ };
    Emulation emulation_{ wheel_ };
    ControlServer server_{ path_, controlMounts( &emulation_.hostDir(), &emulation_.statusDir() ) };
};

TEST_F( Controller, MirrorAgreesAfterAdditionsChangesDeletionsAndADeathInTheMiddle ) {
    addAndDie();
    serve( { addition() } );
    serve( { { "ctl", path_, "set", "rx-1???", "mtu=1400", "robustness=3" },
             { "ctl", path_, "delete", "rx-2???" } } );
    EXPECT_EQ( hostDir().igmpHosts(), 9000U );
    EXPECT_EQ( hostDir().igmpHost( "rx-1234" )->mtu(), 1400U );
    ControlClient mirror( path_, onlyInFailure );
    mirror.synchronise();
    Comparison comparison;
    bool const isAlike = activity().runUntil(
        [&] {
            comparison = Comparison();
            comparison.compare( hostDir(), mirror.hostDir(), "hosts" );
            comparison.compare( emulation_.statusDir(), mirror.statusDir(), "status" );
            return comparison.differences() == 0;
        },
        onlyInFailure
    );
    EXPECT_TRUE( isAlike ) << comparison.first();
    EXPECT_GT( comparison.attributes(), 9000U * ( 28 + 10 * 5 + 18 ) );
}

} // namespace

} // namespace Agent
