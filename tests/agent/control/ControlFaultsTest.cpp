#include <poll.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <random>

#include "agent/control/ControlClient.h"
#include "agent/control/ControlMounts.h"
#include "agent/control/ControlServer.h"
#include "agent/control/SocketPath.h"
#include "agent/hosts/HostPattern.h"
#include "platform/kiv/GenericIf.h"
#include "platform/kiv/nboattrlog/In.h"
#include "platform/kiv/nboattrlog/Out.h"
#include "tests/agent/control/ControlledAgent.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;

/// A peer that speaks as it likes.
class RawPeer {
  public:
    explicit RawPeer( std::string const& path ) : socket_( newStreamSocket() ) {
        EXPECT_EQ( connectTo( socket_, socketAddress( path ) ), 0 );
    }
    void send( std::string const& bytes ) const {
        EXPECT_EQ(
            ::send( socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL ),
            static_cast<ssize_t>( bytes.size() )
        );
    }
    /// The next bytes that come; the test fails where there are none.
    std::vector<Kiv::U8> take( std::size_t count ) const {
        std::vector<Kiv::U8> bytes( count );
        for ( std::size_t have = 0; have < count; ) {
            pollfd wait{ socket_.get(), POLLIN, 0 };
            poll( &wait, 1, 20'000 );
            ssize_t const got = recv( socket_.get(), bytes.data() + have, count - have, 0 );
            if ( got <= 0 ) {
                throw std::runtime_error( "the agent says nothing more" );
            }
            have += static_cast<std::size_t>( got );
        }
        return bytes;
    }
    /// Waits for the other side to close.
    bool isLetGo() const {
        std::array<char, 65536> bytes;
        pollfd wait{ socket_.get(), POLLIN, 0 };
        while ( poll( &wait, 1, 20'000 ) > 0 ) {
            if ( recv( socket_.get(), bytes.data(), bytes.size(), 0 ) <= 0 ) {
                return true;
            }
        }
        return false;
    }

  private:
    Zornet::FileDescriptor socket_;
};

std::string
randomBytes( std::size_t count ) {
    std::mt19937 random( 1 );
    std::string bytes( count, '\0' );
    std::generate( bytes.begin(), bytes.end(), [&] { return static_cast<char>( random() ); } );
    return bytes;
}

constexpr std::string_view greeting( "KivNbo\r\n\0\1\1\0", 12 );

using Kiv::NboAttrLog::EntityId;
using Kiv::NboAttrLog::In;
using Kiv::NboAttrLog::MsgHeader;
using Kiv::NboAttrLog::Operation;
using Kiv::NboAttrLog::Out;

/// A frame of one message.
template <class Payload>
std::string
frame( Kiv::U32 number, MsgHeader const& header, Payload payload ) {
    Out content;
    Out::Record record( content, header );
    payload( content );
    record.finish();
    Out all;
    all.nextU32Is( static_cast<Kiv::U32>( content.size() ) );
    all.nextU32Is( number );
    all.nextU32Is( 0 );
    all.nextBytesIs( content.bytes() );
    return { all.bytes().begin(), all.bytes().end() };
}

/// By what name the agent announces the status of a host to a peer that has asked for it.
EntityId
statusName( RawPeer const& peer, Kiv::String8 const& host ) {
    peer.take( greeting.size() );
    for ( ;; ) {
        std::vector<Kiv::U8> const head = peer.take( 12 );
        std::vector<Kiv::U8> const content = peer.take( In( head ).nextU32() );
        for ( In in( content ); in.bytesLeft() != 0; ) {
            MsgHeader const header = in.nextHeader();
            in.nextTokenIs( Kiv::NboAttrLog::tokenBegin );
            In payload( in.nextBytes( header.length ) );
            in.nextTokenIs( Kiv::NboAttrLog::tokenEnd );
            if ( header.operation == Operation::member ) {
                EntityId const name = payload.nextEntityId();
                if ( payload.nextString() == host ) {
                    return name;
                }
            }
        }
    }
}

class ControlFaults : public ControlledAgent {
  protected:
    void SetUp() override {
        ControlledAgent::SetUp();
        if ( !IsSkipped() ) {
            addHosts( { "--group", "239.1.1.1" } );
        }
    }

    /// The hosts are as they were and the agent serves.
    void expectUndisturbed() const {
        Json const hosts = json( { "show", "rx-*" } );
        ASSERT_EQ( hosts.size(), 3U );
        EXPECT_EQ( hosts["rx-3"]["ipAddr"], "10.0.0.3" );
        EXPECT_EQ( hosts["rx-3"]["v3group"].size(), 1U );
        EXPECT_EQ( hosts["rx-3"]["status"]["v2ReportsSent"], 0 );
    }
};

TEST_F( ControlFaults, PeerOfRandomBytesIsLetGo ) {
    RawPeer const peer( path_ );
    peer.send( randomBytes( 4096 ) );
    EXPECT_TRUE( peer.isLetGo() );
    expectUndisturbed();
}

TEST_F( ControlFaults, PeerOfRandomBytesBehindAGreetingIsLetGo ) {
    RawPeer const peer( path_ );
    peer.send( std::string( greeting ) + randomBytes( 4096 ) );
    EXPECT_TRUE( peer.isLetGo() );
    expectUndisturbed();
}

TEST_F( ControlFaults, PeerThatVanishesInMidMessageIsForgotten ) {
    for ( std::size_t const bytes : { 1U, 12U, 15U, 30U } ) {
        std::string const message =
            std::string( greeting ) + std::string( "\0\0\0\x40\0\0\0\1\0\0\0\0", 12 ) + "abcdefgh";
        RawPeer( path_ ).send( message.substr( 0, bytes ) );
    }
    expectUndisturbed();
}

TEST_F( ControlFaults, PeerThatWritesStatusIsLetGo ) {
    RawPeer const peer( path_ );
    MsgHeader mount;
    mount.operation = Operation::mount;
    peer.send( std::string( greeting ) );
    peer.send( frame( 1, mount, []( Out& out ) { out.nextStringIs( "igmpHostStatusDir" ); } ) );
    MsgHeader value;
    value.entity = statusName( peer, "rx-3" );
    value.attribute = Igmp::IgmpHostStatus::attrV2ReportsSent;
    peer.send( frame( 2, value, []( Out& out ) { out.nextU32Is( 7 ); } ) );
    EXPECT_TRUE( peer.isLetGo() );
    expectUndisturbed();
}

TEST_F( ControlFaults, TwoHundredPeersAtOnceAreServed ) {
    std::vector<RawPeer> silent;
    for ( int i = 0; i < 200; ++i ) {
        silent.emplace_back( path_ );
    }
    expectUndisturbed();
}

TEST_F( ControlFaults, PeerThatNeverReadsHoldsNobodyUp ) {
    ControlClient const reader( path_, 20.0 );
    Kiv::defaultActivity()->activitySm().runOnce(); // it asks for everything, and takes nothing in after that
    output( { "add", "many", "--count", "300", "ipAddr=10.1.0.1", "macAddr=02:00:00:01:00:01",
              "deviceName=none0", "--group", "239.1.0.0-239.1.0.39" } );
    for ( int i = 0; i < 3; ++i ) {
        output( { "set", "many-*", "mtu=" + std::to_string( 1400 + i ) } );
    }
    EXPECT_EQ( output( { "get", "many-7", "mtu" } ), "1402\n" );
    expectUndisturbed();
}

/// A controller that reads only when the test says so.
class SleepingReader {
  public:
    explicit SleepingReader( std::string const& path ) : connection_( connect( path ) ) {}

    void runOnce() const { asleep_->activitySm().runOnce(); }
    /// Until the mirror stands and all hosts of it, but for some, have that mtu.
    bool reads( Kiv::U32 mtu, std::size_t others ) const {
        auto const isLevel = [&] {
            std::size_t different = 0;
            for ( Igmp::IgmpHost const& host : hosts_->igmpHost() ) {
                different += host.mtu() == mtu ? 0 : 1;
            }
            return connection_->isSynchronised() && different == others;
        };
        return asleep_->activitySm().runUntil( isLevel, 20.0 );
    }
    Kiv::Connection const& connection() const { return *connection_; }
    std::size_t hosts() const { return hosts_->igmpHosts(); }

  private:
    Kiv::Ptr<Kiv::Connection> connect( std::string const& path ) const {
        Zornet::FileDescriptor socket = newStreamSocket();
        EXPECT_EQ( connectTo( socket, socketAddress( path ) ), 0 );
        return new Kiv::Connection(
            socket.release(), Kiv::Connection::Role::client, controlMounts( hosts_, status_ ), "the agent",
            asleep_
        );
    }

    Kiv::Ptr<Kiv::ActivityConfig> const asleep_{ new Kiv::ActivityConfig };
    Kiv::Ptr<Igmp::IgmpHostDir> const hosts_ = Igmp::igmpHostDirFactory( "hosts" );
    Kiv::Ptr<Igmp::IgmpHostStatusDir> const status_ = Igmp::igmpHostStatusDirFactory( "status" );
    Kiv::Ptr<Kiv::Connection> const connection_;
};

/// The changes, kept as copies, would take more than twice the growth that is allowed.
TEST_F( ControlFaults, PeerThatDoesNotReadCostsBoundedMemoryAndConvergesWhenItReads ) {
    output( { "add", "many", "--count", "300", "ipAddr=10.1.0.1", "macAddr=02:00:00:00:01:01",
              "deviceName=none0", "--group", "239.1.0.0-239.1.0.39" } );
    SleepingReader const reader( path_ );
    reader.runOnce(); // it asks for everything, and takes nothing in after that
    ControlClient writer( path_, 20.0 );
    writer.synchronise();
    Kiv::U32 mtu = 600;
    auto const change = [&]( int rounds ) {
        for ( int i = 0; i < rounds; ++i, ++mtu ) {
            for ( auto const& host : hostsOf( writer.hostDir(), "many-*" ) ) {
                host->mtuIs( mtu + 1 );
            }
            writer.settle();
        }
    };
    change( 20 );
    [[maybe_unused]] std::size_t const before = agent_->residentBytes();
    change( 200 );
#ifndef __SANITIZE_ADDRESS__ // which keeps for a while what has been given back
    EXPECT_LT( agent_->residentBytes(), before + 512 * 1024 );
#endif
    EXPECT_FALSE( reader.connection().isSynchronised() );
    EXPECT_TRUE( reader.reads( mtu, 3 ) );
    EXPECT_EQ( reader.hosts(), 303U );
    expectUndisturbed();
}

TEST_F( ControlFaults, PeersThatAreTooManyAreToldSo ) {
    std::vector<RawPeer> silent;
    for ( std::size_t i = 0; i < ControlServer::mostPeers; ++i ) {
        silent.emplace_back( path_ );
    }
    expectComplaint( { "hosts" }, 1, "the agent ends the connection: the agent has 256 peers already" );
    EXPECT_TRUE( agent_->waitFor( AgentProcess::errors, "is refused: the agent has 256 peers already\n" ) );
    silent.clear();
    expectUndisturbed();
}

TEST_F( ControlFaults, SocketIsForItsUserAloneWhateverTheUmask ) {
    std::string const path = folder_.file( "open" );
    AgentProcess agent( { "run", "--control", path }, { "sh", "-c", "umask 0; exec \"$@\"", "sh" } );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "until Ctrl-C\n" ) );
    for ( std::string const& socket : { path, path_ } ) {
        EXPECT_EQ(
            std::filesystem::status( socket ).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write
        );
    }
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

/// Prefix of a command of another user, who counts executed lines, if at all, where he may write.
std::vector<std::string>
asNobody( TemporaryFolder const& writable ) {
    return { "setpriv",
             "--reuid=65534",
             "--regid=65534",
             "--clear-groups",
             "--inh-caps=-all",
             "env",
             "GCOV_PREFIX=" + writable.path().string() };
}

/// Whether another user can run the command at all; it may lie in a folder that is closed.
bool
nobodyCanRun( TemporaryFolder const& writable ) {
    return toldBy( { "--version" }, asNobody( writable ) ).status == 0;
}

TEST_F( ControlFaults, OtherUserHasNoPermission ) {
    if ( !nobodyCanRun( folder_ ) ) {
        GTEST_SKIP() << "another user cannot run the command";
    }
    std::filesystem::permissions( folder_.path(), std::filesystem::perms::all );
    Told const told = ctl( { "hosts" }, asNobody( folder_ ) );
    EXPECT_EQ( told.status, 1 );
    EXPECT_EQ(
        told.errors, "igmphost: error: no agent is reached at " + path_ +
                         ": permission denied; the agent obeys root alone\n"
    );
}

TEST_F( ControlFaults, OtherUserIsRefusedEvenWhereThePathIsOpen ) {
    if ( !nobodyCanRun( folder_ ) ) {
        GTEST_SKIP() << "another user cannot run the command";
    }
    std::filesystem::permissions( folder_.path(), std::filesystem::perms::all );
    std::filesystem::permissions( path_, std::filesystem::perms::all );
    Told const told = ctl( { "hosts" }, asNobody( folder_ ) );
    EXPECT_EQ( told.status, 1 );
    EXPECT_EQ(
        told.errors,
        "igmphost: error: the agent ends the connection: this agent runs as root and obeys no user nobody\n"
    );
    EXPECT_TRUE( agent_->waitFor( AgentProcess::errors, " of user nobody is refused: " ) );
    EXPECT_THAT( agent_->written( AgentProcess::errors ), HasSubstr( "igmphost: control: process " ) );
    expectUndisturbed();
}

TEST_F( ControlFaults, AgentThatDoesNotAnswerIsGivenUp ) {
    agent_->signal( SIGSTOP );
    Told const told = toldBy( { "ctl", "--timeout", "0.1", path_, "hosts" } );
    agent_->signal( SIGCONT );
    EXPECT_EQ( told.status, 1 );
    EXPECT_EQ( told.errors, "igmphost: error: the agent at " + path_ + " has not answered for 0.1 s\n" );
    expectUndisturbed();
}

TEST_F( ControlFaults, SocketOfALiveAgentIsLeftToIt ) {
    Told const told = toldBy( { "run", "--control", path_ } );
    EXPECT_EQ( told.status, 1 );
    EXPECT_EQ(
        told.errors,
        "igmphost: error: cannot listen at " + path_ + ": an agent that is running listens there\n"
    );
    expectUndisturbed();
}

TEST_F( ControlFaults, SocketOfAnAgentThatHasDiedIsReplaced ) {
    agent_->signal( SIGKILL );
    EXPECT_EQ( agent_->exitStatus(), -SIGKILL );
    AgentProcess next( { "run", "--control", path_ } );
    EXPECT_TRUE( next.waitFor(
        AgentProcess::errors,
        "igmphost: replaced the socket that an agent which has ended left at " + path_ + "\n"
    ) );
    EXPECT_TRUE( next.waitFor( AgentProcess::errors, "until Ctrl-C\n" ) );
    EXPECT_EQ( toldBy( { "ctl", path_, "hosts" } ).status, 0 );
    next.signal( SIGTERM );
    EXPECT_EQ( next.exitStatus(), 0 );
}

/// The command where no agent is.
class ControlWithoutAgent : public ::testing::Test {
  protected:
    std::string complaint() const { return toldBy( { "ctl", path_, "hosts" } ).errors; }

    TemporaryFolder folder_;
    std::string path_ = folder_.file( "control" );
};

TEST_F( ControlWithoutAgent, MissingSocketIsToldWithTheWayToMakeIt ) {
    EXPECT_EQ(
        complaint(), "igmphost: error: no agent is reached at " + path_ +
                         ": there is no such socket; an agent makes it: igmphost run SCENARIO --control " +
                         path_ + "\n"
    );
}

TEST_F( ControlWithoutAgent, FileThatIsNoSocketIsTold ) {
    folder_.fileWith( "control", "" );
    EXPECT_EQ(
        complaint(), "igmphost: error: no agent is reached at " + path_ + ": there is a regular file\n"
    );
    Told const told = toldBy( { "run", "--control", path_ } );
    EXPECT_EQ( told.status, 1 );
    EXPECT_THAT( told.errors, HasSubstr( "there is a regular file, which is left alone\n" ) );
}

TEST_F( ControlWithoutAgent, PathThatIsTooLongIsWrongUsage ) {
    std::string const path( 108, 'x' );
    for ( auto const& arguments :
          { std::vector<std::string>{ "ctl", path, "hosts" }, { "run", "--control", path } } ) {
        Told const told = toldBy( arguments );
        EXPECT_EQ( told.status, 2 );
        EXPECT_THAT( told.errors, HasSubstr( "the path of a socket has at most 107 bytes, found 108" ) );
    }
}

TEST_F( ControlWithoutAgent, VerbThatIsMissingOrUnknownIsWrongUsage ) {
    EXPECT_EQ( toldBy( { "ctl", path_ } ).status, 2 );
    EXPECT_EQ( toldBy( { "ctl", path_, "hots" } ).status, 2 );
    EXPECT_EQ( toldBy( { "ctl", "hosts" } ).status, 2 );
    EXPECT_EQ( toldBy( { "run" } ).status, 2 );
}

/// An agent in this process, whose turns the test runs, and the real command as its controller.
class ControlCutOff : public ControlWithoutAgent {
  protected:
    ControlCutOff() { hosts_->igmpHostIs( "rx" ); }

    Kiv::Ptr<Igmp::IgmpHostDir> const hosts_ = Igmp::igmpHostDirFactory( "hosts" );
    Kiv::Ptr<Igmp::IgmpHostStatusDir> const status_ = Igmp::igmpHostStatusDirFactory( "status" );
    ControlServer server_{ path_, controlMounts( hosts_, status_ ) };
};

TEST_F( ControlCutOff, LossInMidCommandIsToldAndAFailure ) {
    bool isCut = false;
    Kiv::Ptr<Kiv::GenericIfAdapter> const reactor( new Kiv::GenericIfAdapter(
        Kiv::Ptr<Kiv::Entity const>( hosts_->igmpHost( "rx" ).get() ),
        [&]( Kiv::AttributeId, Kiv::GenericValue const& ) {
            isCut = true;
            server_.endAll( "it is over" );
        }
    ) );
    AgentProcess command( { "ctl", path_, "set", "rx", "robustness=3" } );
    Kiv::defaultActivity()->activitySm().runUntil( [&] { return isCut; }, 20.0 );
    EXPECT_EQ( command.exitStatus(), 1 );
    EXPECT_EQ( command.written( AgentProcess::output ), "" );
    EXPECT_EQ(
        command.written( AgentProcess::errors ), "igmphost: error: the agent ends the connection: it is "
                                                 "over; what the agent has taken of the change is "
                                                 "not known\n"
    );
}

} // namespace

} // namespace Agent
