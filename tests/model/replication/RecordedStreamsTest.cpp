/// What two honest sides have said to each other, as the fuzz target for replication starts from it: in
/// tests/fuzz/corpus/replication, whole streams and their messages one by one. They must still be understood
/// to the end. With IGMPHOST_RECORD set in the environment they are recorded anew first.

#include <cstdlib>
#include <fstream>

#include "platform/kiv/nboattrlog/In.h"
#include "tests/fuzz/WildPeer.h"
#include "tests/model/replication/ReplicationTest.h"
#include "tests/support/Paths.h"

namespace Igmp {

namespace {

using Fuzz::Bytes;
using Fuzz::WildPeer;
using Kiv::NboAttrLog::In;
using Kiv::NboAttrLog::MsgHeader;

struct Story {
    char const* name;
    std::function<void( IgmpHostDir& )> before; ///< the server's full send
    std::function<void( IgmpHostDir& )> after;
};

void
add( IgmpHostDir& dir ) {
    auto const host = dir.igmpHostIs( "c" );
    host->ipAddrIs( IpAddr( "10.0.0.3" ) );
    auto const record = host->v3groupIs( IpAddr( "239.1.1.2" ) );
    record->sourceIs()->sourceIpIs( IpAddr( "10.9.9.2" ), 1 );
    record->versionIs( 1 );
    host->enabledIs( true );
}

void
change( IgmpHostDir& dir ) {
    auto const host = dir.igmpHost( "a" );
    auto const record = host->v3group( IpAddr( "239.1.1.1" ) );
    host->mtuIs( 1400 );
    host->nsIs( Zornet::NamespaceName( "blue" ) );
    host->configVersionIs( 2 );
    record->source()->sourceIpIs( IpAddr( "10.9.9.2" ), 1 );
    record->source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
    record->versionIs( 2 );
}

void
remove( IgmpHostDir& dir ) {
    dir.igmpHost( "a" )->v3group( IpAddr( "239.1.1.1" ) )->sourceDel();
    dir.igmpHost( "a" )->v3groupDel( IpAddr( "239.1.1.1" ) );
    dir.igmpHostDel( "b" );
}

void
nothing( IgmpHostDir& ) {}

/// A stream, by what arrived at once.
using Said = std::vector<Bytes>;

/// Two connections with somebody in between who notes what goes to one of them.
class Wiretap {
  public:
    Wiretap( Ptr<IgmpHostDir> const& served, Ptr<IgmpHostDir> const& mirror )
        : server_( new Connection(
              servers_.handOver( 0 ), Connection::Role::server, { { "d", served, true } }, "client"
          ) ),
          client_( new Connection(
              clients_.handOver( 0 ), Connection::Role::client, { { "d", mirror, false } }, "server"
          ) ) {}

    /// Until nothing more is said.
    void listen() {
        for ( bool isSilent = false; !isSilent; ) {
            Fuzz::turns( 2 );
            Bytes const fromServer = servers_.take( 1 );
            Bytes const fromClient = clients_.take( 1 );
            clients_.put( 1, fromServer );
            servers_.put( 1, fromClient );
            toMirror.push_back( fromServer );
            toServer.push_back( fromClient );
            isSilent = fromServer.empty() && fromClient.empty();
        }
        EXPECT_TRUE( server_->isSettled() && client_->isSettled() );
    }

    Said toMirror;
    Said toServer;

  private:
    Support::SocketPair servers_;
    Support::SocketPair clients_;
    Ptr<Connection> server_;
    Ptr<Connection> client_;
};

void
addPiece( Bytes& pieces, std::span<U8 const> bytes ) {
    pieces.push_back( static_cast<U8>( bytes.size() ) );
    pieces.insert( pieces.end(), bytes.begin(), bytes.end() );
}

Bytes
piecesOf( Said const& said ) {
    Bytes pieces;
    for ( Bytes const& one : said ) {
        for ( In in( one ); in.bytesLeft() != 0; ) {
            addPiece( pieces, in.nextBytes( std::min<std::size_t>( in.bytesLeft(), 255 ) ) );
        }
    }
    return pieces;
}

/// Each message but the first one.
Bytes
messagesOf( Said const& said ) {
    Bytes stream;
    for ( Bytes const& one : said ) {
        stream.insert( stream.end(), one.begin(), one.end() );
    }
    Bytes pieces;
    In frames( stream );
    frames.nextBytes( 12 );
    for ( bool isFirst = true; frames.bytesLeft() != 0; ) {
        std::size_t const length = frames.nextU32();
        frames.nextBytes( 8 );
        for ( In in( frames.nextBytes( length ) ); in.bytesLeft() != 0; isFirst = false ) {
            In header = in;
            auto const message = in.nextBytes( MsgHeader::bytes + 2 + header.nextHeader().length );
            if ( !isFirst ) {
                addPiece( pieces, message );
            }
        }
    }
    return pieces;
}

class RecordedStreams : public ReplicationTest {
  protected:
    /// Plays a story, keeps what the one side said where recordings are wanted, and lets the recordings be
    /// said to another one, which must end with the same hosts.
    static void tell( Story const& story, bool isToMirror ) {
        Ptr<IgmpHostDir> const served = Fuzz::filledDir();
        Ptr<IgmpHostDir> const mirror = isToMirror ? Fuzz::filledDir() : igmpHostDirFactory( "mirror" );
        if ( isToMirror ) {
            story.before( *served );
        }
        Wiretap tap( served, mirror );
        tap.listen();
        story.after( isToMirror ? *served : *mirror );
        tap.listen();
        Said const& said = isToMirror ? tap.toMirror : tap.toServer;
        std::string const name = std::string( isToMirror ? "server-" : "client-" ) + story.name;
        U8 const side = isToMirror ? WildPeer::toMirror : U8{ 0 };
        keep( name, side, piecesOf( said ) );
        keep( name + "-messages", side | WildPeer::inFrames, messagesOf( said ) );
        expectUnderstood( name, *served );
        expectUnderstood( name + "-messages", *served );
    }

  private:
    static std::string pathOf( std::string const& name ) {
        return Support::sourceFolder() + "/tests/fuzz/corpus/replication/" + name;
    }
    static void keep( std::string const& name, int choice, Bytes const& bytes ) {
        if ( std::getenv( "IGMPHOST_RECORD" ) ) {
            std::ofstream file( pathOf( name ), std::ios::binary );
            file.put( static_cast<char>( choice ) );
            file.write(
                reinterpret_cast<char const*>( bytes.data() ), static_cast<std::streamsize>( bytes.size() )
            );
        }
    }
    static void expectUnderstood( std::string const& name, IgmpHostDir const& hosts ) {
        std::ifstream file( pathOf( name ), std::ios::binary );
        Bytes const bytes{ std::istreambuf_iterator<char>( file ), {} };
        ASSERT_LT( 1U, bytes.size() ) << name;
        Fuzz::Input input( bytes );
        Ptr<IgmpHostDir> const victims = Fuzz::filledDir();
        WildPeer peer( victims, input.byte() );
        peer.feed( input );
        EXPECT_EQ( peer.victim().endReason(), "" ) << name;
        EXPECT_EQ( contents( *victims ), contents( hosts ) ) << name;
    }
};

TEST_F( RecordedStreams, OfMembersThatAreAddedAreUnderstoodToTheEnd ) {
    tell( { "adds", add, nothing }, true );
    tell( { "adds", nothing, add }, false );
}

TEST_F( RecordedStreams, OfChangesAreUnderstoodToTheEnd ) {
    tell( { "changes", nothing, change }, true );
    tell( { "changes", nothing, change }, false );
}

TEST_F( RecordedStreams, OfDeletionsAreUnderstoodToTheEnd ) {
    tell( { "deletes", nothing, remove }, true );
    tell( { "deletes", nothing, remove }, false );
}

} // namespace

} // namespace Igmp
