#include <unistd.h>

#include <cstdio>
#include <random>

#include "model/IgmpHostIntfConfig.h"
#include "tests/model/replication/RawPeer.h"
#include "tests/support/TraceCapture.h"

namespace Igmp {

namespace {

using Bytes = RawPeer::Bytes;
using Operation = Kiv::NboAttrLog::Operation;
using Kiv::NboAttrLog::EntityId;
using Kiv::NboAttrLog::Out;

constexpr EntityId root{ 0, 1 }; ///< the first that a server names
constexpr EntityId client0{ EntityId::clientBit, 1 };
constexpr EntityId client1{ EntityId::clientBit + 1, 1 };

/// A served model, a peer that sends bytes of its own, and an honest mirror, which follows whatever happens.
/// Where the peer's stream ends, the reason is traced.
class HostilePeer : public ReplicationTest {
  protected:
    HostilePeer() { serve( true ); }
    void TearDown() override {
        served_.host( "last" ).mtuIs( 777 );
        served_.status->igmpHostStatusIs( "last" )->v2ReportsSentInc( 7 );
        exchange( honest_ );
        EXPECT_EQ( honest_.serverEnd + honest_.clientEnd, "" );
        expectSame( served_, mirror_ );
    }

    void serve( bool isWritable ) {
        sockets_ = std::make_unique<Support::SocketPair>();
        server_ = new Connection(
            sockets_->handOver( 0 ), Connection::Role::server, served_.mounts( isWritable ), "peer"
        );
    }
    /// What the server says to greeting, mount and these messages in a frame of their own.
    std::string answerTo( Bytes const& messages, char const* mount = "igmpHostDir" ) {
        answerToBytes( RawPeer::greeting( true ) + RawPeer::frame( 1, RawPeer::mount( mount ) ) );
        return answerToBytes( RawPeer::frame( 2, messages ) );
    }
    std::string answerToBytes( Bytes const& bytes ) {
        sockets_->put( 1, bytes );
        return reason();
    }
    std::string reason() {
        Support::TraceCapture const trace( "Replication", 1 );
        turns( 5 );
        std::string const reason( server_->endReason().view() );
        EXPECT_EQ( server_->isOpen(), reason.empty() );
        EXPECT_TRUE( reason.empty() || trace.contains( "replication with peer ends: " + reason ) );
        return reason;
    }
    /// The peer has sent that, and is no more.
    std::string answerToLast( Bytes const& bytes ) {
        sockets_->put( 1, bytes );
        sockets_->closeEnd( 1 );
        return reason();
    }
    static Bytes newHost( EntityId const& id, char const* name ) {
        return RawPeer::message( root, IgmpHostDir::attrIgmpHost, Operation::member, [&]( Out& out ) {
            out.nextEntityIdIs( id );
            out.nextStringIs( name );
        } );
    }
    static Bytes set( EntityId const& id, Kiv::AttributeId attribute, Bytes const& value ) {
        return RawPeer::message( id, attribute, Operation::value, [&]( Out& out ) {
            out.nextBytesIs( value );
        } );
    }

    std::unique_ptr<Support::SocketPair> sockets_;
    Ptr<Connection> server_;
    Link honest_{ served_, mirror_ };
};

TEST_F( HostilePeer, AGoodPeerIsServed ) {
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrMtu, { 0, 0, 3, 0 } ) ), "" );
    EXPECT_EQ( served_.hosts->igmpHost( "rx" )->mtu(), 0x300U );
}

TEST_F( HostilePeer, ABadGreeting ) {
    EXPECT_EQ( answerToBytes( { 'G', 'E', 'T', ' ' } ), "peer does not speak this protocol" );
}

TEST_F( HostilePeer, AnotherVersion ) {
    EXPECT_EQ( answerToBytes( RawPeer::greeting( true, 7 ) ), "peer speaks version 7, and not 1" );
}

TEST_F( HostilePeer, TheWrongRole ) {
    EXPECT_EQ( answerToBytes( RawPeer::greeting( false ) ), "peer has the wrong role" );
}

TEST_F( HostilePeer, ATruncatedStream ) {
    EXPECT_EQ(
        answerToLast( RawPeer::greeting( true ) + Bytes{ 0, 0, 0, 9, 0, 0 } ),
        "peer closed the stream in the middle of a frame"
    );
}

TEST_F( HostilePeer, APeerThatVanishesAnywhereInItsStream ) {
    Bytes const mount = RawPeer::greeting( true ) + RawPeer::frame( 1, RawPeer::mount( "igmpHostDir" ) );
    Bytes const whole = RawPeer::frame( 2, newHost( client0, "rx" ) + newHost( client1, "ry" ) );
    for ( std::size_t bytes = 0; bytes < whole.size(); ++bytes ) {
        serve( true );
        answerToBytes( mount );
        EXPECT_EQ(
            answerToLast( Bytes( whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>( bytes ) ) ),
            bytes == 0 ? "peer closed the stream" : "peer closed the stream in the middle of a frame"
        ) << bytes;
        EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
    }
}

TEST_F( HostilePeer, APeerThatVanishesInItsGreeting ) {
    EXPECT_EQ( answerToLast( { 'K', 'i', 'v' } ), "peer closed the stream in the middle of a frame" );
}

TEST_F( HostilePeer, AFrameOutOfOrder ) {
    EXPECT_EQ(
        answerToBytes( RawPeer::greeting( true ) + RawPeer::frame( 2, {} ) ), "frame is out of order"
    );
}

TEST_F( HostilePeer, AFrameThatIsTooLong ) {
    EXPECT_EQ(
        answerToBytes( RawPeer::greeting( true ) + Bytes{ 0, 1, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0 } ),
        "frame is too long"
    );
}

TEST_F( HostilePeer, AnAcknowledgementOfNothing ) {
    EXPECT_EQ(
        answerToBytes( RawPeer::greeting( true ) + RawPeer::frame( 1, {}, 77 ) ),
        "frame acknowledges what was never sent"
    );
}

TEST_F( HostilePeer, AMessageCutShort ) {
    Bytes message = newHost( client0, "rx" );
    message.erase( message.end() - 4, message.end() );
    EXPECT_EQ( answerTo( message ), "record is too short" );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
}

TEST_F( HostilePeer, AMessageWithoutItsToken ) {
    Bytes message = newHost( client0, "rx" );
    message.back() = 9;
    EXPECT_EQ( answerTo( message ), "transaction token is missing" );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
}

TEST_F( HostilePeer, AMessageThatIsTooLong ) {
    Bytes const payload( Kiv::NboAttrLog::maxPayloadBytes + 1, 'x' );
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrDeviceName, payload ) ),
        "message is too long"
    );
}

TEST_F( HostilePeer, ATextThatIsTooLong ) {
    Bytes const longest = Bytes{ 0, 0, 0x40, 0 } + Bytes( 0x4000, 'x' );
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrDeviceName, longest ) ), "" );
    serve( true );
    Bytes const longer = Bytes{ 0, 0, 0x40, 1 } + Bytes( 0x4001, 'x' );
    EXPECT_EQ(
        answerTo( newHost( client0, "ry" ) + set( client0, IgmpHost::attrDeviceName, longer ) ),
        "text is too long"
    );
    EXPECT_EQ( served_.hosts->igmpHost( "rx" )->deviceName().bytes(), 0x4000U );
    EXPECT_EQ( served_.hosts->igmpHost( "ry" )->deviceName().bytes(), 0U );
}

TEST_F( HostilePeer, MessagesInTheWrongOrder ) {
    EXPECT_EQ(
        answerTo( set( client0, IgmpHost::attrMtu, { 0, 0, 3, 0 } ) + newHost( client0, "rx" ) ),
        "entity was never announced"
    );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
}

TEST_F( HostilePeer, AnUnknownMessageAboutTheStream ) {
    auto const about = []( Operation operation ) {
        return RawPeer::message( {}, 0, operation, []( Out& ) {} );
    };
    for ( Operation const operation :
          { Operation::value, Operation::member, Operation::del, Operation::orphan, Operation::synchronised,
            Operation{ 7 }, Operation{ 255 } } ) {
        serve( true );
        EXPECT_EQ( answerTo( about( operation ) ), "unknown message about the stream" );
    }
}

TEST_F( HostilePeer, AnUnknownEntity ) {
    EXPECT_EQ(
        answerTo( set( { 44, 1 }, IgmpHost::attrMtu, { 0, 0, 3, 0 } ) ), "entity was never announced"
    );
}

TEST_F( HostilePeer, AnUnknownAttribute ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, 999, { 1 } ) ),
        "attribute 999 of Igmp::IgmpHost is not replicated"
    );
}

TEST_F( HostilePeer, AConstantAndAPointer ) {
    EXPECT_EQ(
        answerTo(
            newHost( client0, "rx" ) + set( client0, IgmpHost::attrMaxResponseTimeTicksPerSec, { 1 } )
        ),
        "attribute 283 of Igmp::IgmpHost is not replicated"
    );
    serve( true );
    EXPECT_EQ(
        answerTo( newHost( client0, "ry" ) + set( client0, IgmpHost::attrPam, { 1 } ) ),
        "attribute 272 of Igmp::IgmpHost is not replicated"
    );
}

TEST_F( HostilePeer, AValueForACollection ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrV3group, { 1 } ) ),
        "operation does not fit attribute v3group"
    );
}

TEST_F( HostilePeer, TheEndOfWhatIsNoCollection ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, -IgmpHost::attrMtu, {} ) ),
        "end of something that is no collection"
    );
}

TEST_F( HostilePeer, AValueOfTheWrongLength ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrMtu, { 1, 2 } ) ),
        "record is too short"
    );
    serve( true );
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrMtu, { 1, 2, 3, 4, 5 } ) ),
        "record is too long"
    );
    EXPECT_EQ( served_.hosts->igmpHost( "rx" )->mtu(), 1514U );
}

TEST_F( HostilePeer, ValuesOutsideTheirRange ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrIgmpVersion, { 0, 0, 0, 9 } ) ),
        "IgmpVersion"
    );
    serve( true );
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrEnabled, { 2 } ) ),
        "truth value is neither 0 nor 1"
    );
    serve( true );
    EXPECT_EQ(
        answerTo(
            newHost( client0, "rx" ) +
            set( client0, IgmpHost::attrUnsolicitedReportInterval, { 0x7f, 0xf8, 0, 0, 0, 0, 0, 0 } )
        ),
        "number is not a number"
    );
    serve( true );
    Bytes const name = Bytes{ 0, 0, 0, 151 } + Bytes( 151, 'x' );
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrNs, name ) ),
        "NamespaceName::bytes > 150 not allowed"
    );
}

TEST_F( HostilePeer, ANamespaceOf150BytesIsTaken ) {
    Bytes const name = Bytes{ 0, 0, 0, 150 } + Bytes( 150, 'x' );
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) + set( client0, IgmpHost::attrNs, name ) ), "" );
}

TEST_F( HostilePeer, ANameInUse ) {
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) + newHost( client0, "ry" ) ),
        "entity is announced under a name in use"
    );
    serve( true );
    EXPECT_EQ( answerTo( newHost( client1, "rz" ) ), "entity is announced under a name in use" );
    EXPECT_FALSE( served_.hosts->igmpHost( "rz" ) );
}

TEST_F( HostilePeer, AWriteToWhatIsReadOnly ) {
    serve( false );
    EXPECT_EQ(
        answerTo( newHost( client0, "rx" ) ), "write-update from readonly proxy: igmpHost peerName: peer"
    );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
}

TEST_F( HostilePeer, AWriteOfStatus ) {
    served_.status->igmpHostStatusIs( "rx" )->v2ReportsSentInc( 3 );
    EntityId const status{ 1, 1 }; // named behind its directory
    EXPECT_EQ(
        answerTo( set( status, IgmpHostStatus::attrV2ReportsSent, { 0, 0, 0, 9 } ), "igmpHostStatusDir" ),
        "write-update from readonly proxy: v2ReportsSent peerName: peer"
    );
    EXPECT_EQ( served_.status->igmpHostStatus( "rx" )->v2ReportsSent(), 3U );
    serve( true );
    EXPECT_EQ(
        answerTo(
            RawPeer::message(
                root, IgmpHostStatusDir::attrIgmpHostStatus, Operation::del,
                []( Out& out ) {
                    out.nextEntityIdIs( { 1, 1 } );
                    out.nextStringIs( "rx" );
                }
            ),
            "igmpHostStatusDir"
        ),
        "write-update from readonly proxy: igmpHostStatus peerName: peer"
    );
    EXPECT_TRUE( served_.status->igmpHostStatus( "rx" ) );
}

TEST_F( HostilePeer, AMountAskedForTwice ) {
    EXPECT_EQ( answerTo( RawPeer::mount( "igmpHostDir" ) ), "mount igmpHostDir is asked for twice" );
}

TEST_F( HostilePeer, ADeletionOfAnotherEntitysMember ) {
    auto const del = RawPeer::message( root, IgmpHostDir::attrIgmpHost, Operation::del, [&]( Out& out ) {
        out.nextEntityIdIs( client0 );
        out.nextStringIs( "ry" );
    } );
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) + del ), "deleted member has another key" );
    EXPECT_TRUE( served_.hosts->igmpHost( "rx" ) );
}

TEST_F( HostilePeer, ADeletionThroughTheWrongEntity ) {
    Bytes const group = RawPeer::message( client0, IgmpHost::attrV3group, Operation::member, []( Out& out ) {
        out.nextEntityIdIs( client1 );
        out.nextBytesIs( Bytes{ 239, 1, 1, 1 } );
    } );
    Bytes const del = RawPeer::message( root, IgmpHostDir::attrIgmpHost, Operation::del, []( Out& out ) {
        out.nextEntityIdIs( client1 );
        out.nextStringIs( "rx" );
    } );
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) + group + del ), "deleted member is another entity's" );
    EXPECT_EQ( served_.hosts->igmpHost( "rx" )->v3groups(), 1U );
}

TEST_F( HostilePeer, ADescriptorThatIsNoSocket ) {
    Support::TraceCapture const trace( "Replication", 1 );
    std::unique_ptr<std::FILE, int ( * )( std::FILE* )> const file( std::tmpfile(), &std::fclose );
    Ptr<Connection> const connection( new Connection(
        dup( fileno( file.get() ) ), Connection::Role::server, served_.mounts( true ), "file"
    ) );
    turns( 3 );
    EXPECT_EQ( connection->endReason(), "descriptor cannot be waited for" );
    EXPECT_TRUE( trace.contains( "replication with file ends: descriptor cannot be waited for" ) );
}

TEST_F( HostilePeer, TheReasonIsTold ) {
    answerTo( set( { 44, 1 }, IgmpHost::attrMtu, { 0, 0, 3, 0 } ) );
    Bytes const told = sockets_->take( 1 );
    std::string const text( told.begin(), told.end() );
    EXPECT_NE( text.find( "entity was never announced" ), std::string::npos );
}

TEST_F( HostilePeer, RandomMessagesAndChangedStreamsEndAtMostTheirOwnStream ) {
    Bytes const good = RawPeer::greeting( true ) + RawPeer::frame( 1, RawPeer::mount( "igmpHostDir" ) ) +
                       RawPeer::frame(
                           2, newHost( client0, "rx" ) + set( client0, IgmpHost::attrMtu, { 0, 0, 3, 0 } ) +
                                  newHost( client1, "ry" )
                       );
    auto const half = static_cast<std::ptrdiff_t>(
        ( RawPeer::greeting( true ) + RawPeer::frame( 1, RawPeer::mount( "igmpHostDir" ) ) ).size()
    );
    std::minstd_rand random( 7 );
    unsigned ended = 0;
    for ( unsigned round = 0; round < 300; ++round ) {
        serve( true );
        Bytes bytes = good;
        for ( unsigned i = 0; i <= round % 4; ++i ) {
            bytes[random() % bytes.size()] = static_cast<U8>( random() );
        }
        sockets_->put( 1, Bytes( bytes.begin(), bytes.begin() + half ) );
        turns( 2 );
        sockets_->put( 1, Bytes( bytes.begin() + half, bytes.end() ) );
        turns( 3 );
        ended += server_->isOpen() ? 0 : 1;
    }
    EXPECT_GT( ended, 150U );
}

/// The bytes of one message, which must never change: the third frame behind the tree and the acknowledgement
/// of the new host.
TEST_F( HostilePeer, AnUpdateOfMtuInBytes ) {
    Bytes const expected{ 0x80, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0x16, 0,    0,
                          0,    0, 4, 0, 0, 0, 0, 0, 1, 0, 0, 5,    0xdc, 3 };
    EXPECT_EQ( set( client0, IgmpHost::attrMtu, { 0, 0, 5, 0xdc } ), expected );
    EXPECT_EQ( answerTo( newHost( client0, "rx" ) ), "" );
    sockets_->take( 1 );
    served_.host( "rx" ).mtuIs( 1500 );
    turns( 2 );
    EXPECT_EQ( sockets_->take( 1 ), RawPeer::frame( 3, expected, 2 ) );
}

TEST_F( HostilePeer, AnIntfConfigInBytes ) {
    Ptr<Out> const out( new Out );
    IgmpHostIntfConfig const config( Zornet::IntfId( "if" ), "eth0", 258, true, false );
    out << config;
    Bytes const expected{ 0, 0, 0, 2, 'i', 'f', 0, 0, 0, 4, 'e', 't', 'h', '0', 1, 2, 1, 0 };
    EXPECT_EQ( Bytes( out->bytes().begin(), out->bytes().end() ), expected );
    Kiv::NboAttrLog::In in( out->bytes() );
    EXPECT_EQ( IgmpHostIntfConfig( &in, Kiv::StreamBogon() ), config );
    EXPECT_EQ( in.bytesLeft(), 0U );
}

/// A mirror, and a server that sends bytes of its own.
class HostileServer : public ReplicationTest {
  protected:
    HostileServer() { connect(); }

    void connect() {
        sockets_ = std::make_unique<Support::SocketPair>();
        mirror_ = Model();
        client_ = new Connection(
            sockets_->handOver( 0 ), Connection::Role::client, mirror_.mounts( true ), "server"
        );
    }
    std::string answerTo( Bytes const& messages ) {
        Support::TraceCapture const trace( "Replication", 1 );
        sockets_->put( 1, RawPeer::greeting( false ) + RawPeer::frame( 1, messages ) );
        turns( 5 );
        std::string const reason( client_->endReason().view() );
        EXPECT_TRUE( reason.empty() || trace.contains( "replication with server ends: " + reason ) );
        return reason;
    }
    static Bytes orphan( char const* type = "Igmp::IgmpHostDir", EntityId const& id = root ) {
        return RawPeer::message( {}, 0, Operation::orphan, [&]( Out& out ) {
            out.nextEntityIdIs( id );
            out.nextStringIs( "igmpHostDir" );
            out.nextStringIs( type );
        } );
    }
    static Bytes host( EntityId const& id ) {
        return RawPeer::message( root, IgmpHostDir::attrIgmpHost, Operation::member, [&]( Out& out ) {
            out.nextEntityIdIs( id );
            out.nextStringIs( "rx" );
        } );
    }

    std::unique_ptr<Support::SocketPair> sockets_;
    Ptr<Connection> client_;
};

TEST_F( HostileServer, AGoodServerIsMirrored ) {
    EXPECT_EQ( answerTo( orphan() + host( { 1, 1 } ) ), "" );
    EXPECT_TRUE( mirror_.hosts->igmpHost( "rx" ) );
}

TEST_F( HostileServer, AMountOfAnotherClass ) {
    EXPECT_EQ( answerTo( orphan( "Igmp::IgmpHost" ) ), "mount igmpHostDir is of class Igmp::IgmpHost" );
}

TEST_F( HostileServer, AMountThatIsToldTwice ) {
    EXPECT_EQ(
        answerTo( orphan() + orphan( "Igmp::IgmpHostDir", { 1, 1 } ) ), "mount igmpHostDir is asked for twice"
    );
}

TEST_F( HostileServer, ANameThatIsNotItsOwnToGive ) {
    EXPECT_EQ(
        answerTo( orphan( "Igmp::IgmpHostDir", client0 ) ), "entity is announced under a name in use"
    );
    connect();
    EXPECT_EQ( answerTo( orphan() + host( client0 ) ), "entity is announced under a name in use" );
    EXPECT_EQ( mirror_.hosts->igmpHosts(), 0U );
}

TEST_F( HostileServer, AMemberThatIsToldTwice ) {
    EXPECT_EQ( answerTo( orphan() + host( { 1, 1 } ) + host( { 2, 1 } ) ), "member is announced twice" );
}

TEST_F( HostileServer, AnEndOfTheFullSendBeforeEveryMountStands ) {
    Bytes const synchronised = RawPeer::message( {}, 0, Operation::synchronised, []( Out& ) {} );
    EXPECT_EQ( answerTo( orphan() + synchronised ), "mount igmpHostStatusDir has not been told" );
    EXPECT_FALSE( client_->isSynchronised() );
}

TEST_F( HostileServer, AnEndOfTheFullSendThatIsTooLong ) {
    EXPECT_EQ(
        answerTo( RawPeer::message( {}, 0, Operation::synchronised, []( Out& out ) { out.nextU8Is( 0 ); } ) ),
        "record is too long"
    );
}

TEST_F( HostileServer, ATreeOnWhichNothingWasAnnounced ) {
    EXPECT_EQ( answerTo( host( { 1, 1 } ) ), "entity was never announced" );
}

} // namespace

} // namespace Igmp
