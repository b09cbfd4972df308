#include <random>

#include "model/IgmpHostIntfConfig.h"
#include "tests/model/replication/RawPeer.h"

namespace Igmp {

namespace {

using Bytes = RawPeer::Bytes;
using Operation = Kiv::NboAttrLog::Operation;
using Kiv::NboAttrLog::EntityId;
using Kiv::NboAttrLog::Out;

constexpr EntityId root{ 0, 1 }; ///< the first that a server names
constexpr EntityId client0{ EntityId::clientBit, 1 };
constexpr EntityId client1{ EntityId::clientBit + 1, 1 };

/// A served model and a peer that sends bytes of its own.
class HostilePeer : public ReplicationTest {
  protected:
    HostilePeer() { serve( true ); }

    void serve( bool isWritable ) {
        sockets_ = std::make_unique<Support::SocketPair>();
        server_ = new Connection(
            sockets_->handOver( 0 ), Connection::Role::server, served_.mounts( isWritable ), "peer"
        );
    }
    /// What the server says to greeting, mount and these messages in a frame of their own.
    std::string answerTo( Bytes const& messages ) {
        answerToBytes( RawPeer::greeting( true ) + RawPeer::frame( 1, RawPeer::mount( "igmpHostDir" ) ) );
        return answerToBytes( RawPeer::frame( 2, messages ) );
    }
    std::string answerToBytes( Bytes const& bytes ) {
        sockets_->put( 1, bytes );
        turns( 5 );
        return std::string( server_->endReason().view() );
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
    sockets_->put( 1, RawPeer::greeting( true ) + Bytes{ 0, 0, 0, 9, 0, 0 } );
    sockets_->closeEnd( 1 );
    turns( 5 );
    EXPECT_EQ( server_->endReason(), "peer closed the stream in the middle of a frame" );
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
    message.resize( message.size() - 4 );
    EXPECT_EQ( answerTo( message ), "record is too short" );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
}

TEST_F( HostilePeer, AMessageWithoutItsToken ) {
    Bytes message = newHost( client0, "rx" );
    message.back() = 9;
    EXPECT_EQ( answerTo( message ), "transaction token is missing" );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
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

/// The bytes of one message, which must never change.
TEST_F( HostilePeer, AnUpdateOfMtuInBytes ) {
    Bytes const expected{ 0x80, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0x16, 0,    0,
                          0,    0, 4, 0, 0, 0, 0, 0, 1, 0, 0, 5,    0xdc, 3 };
    EXPECT_EQ( set( client0, IgmpHost::attrMtu, { 0, 0, 5, 0xdc } ), expected );
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

} // namespace

} // namespace Igmp
