#include "tests/lab/WireTest.h"

namespace Lab {

WireNode::WireNode( Kiv::Ptr<Zornet::EthDevPam> const& openPam ) : Notifiee( openPam ), pam( openPam ) {
    pam->deviceOpenIs( true );
    isRegisteredNotifieeIs( true );
}

void
WireNode::send( std::string const& letters ) {
    for ( char const letter : letters ) {
        Bytes bytes( 14 );
        bytes.back() = static_cast<U8>( letter );
        send( bytes );
    }
}

void
WireNode::onReadableCount() {
    Kiv::Ptr<Zornet::Pkt> const pkt = notifier()->rxPkt();
    frames.emplace_back( pkt->bytes() );
    pkt->copyTo( frames.back().data() );
    heard += static_cast<char>( frames.back().back() );
    times.push_back( Kiv::now() );
    if ( reaction ) {
        reaction();
    }
}

WireTest::WireTest( Zornet::U64 seed ) : wire( wheel(), seed ) {
    for ( char const* device : { "a", "b", "c" } ) {
        wire.attach( ns(), device, "lan" );
    }
    a = node( "a" );
    b = node( "b" );
    c = node( "c" );
}

Kiv::Ptr<WireNode>
WireTest::node( char const* device, char const* nsName ) {
    Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( device );
    pam->nsIs( ns( nsName ) );
    return new WireNode( pam );
}

Bytes
WireTest::frame( char letter ) {
    Bytes bytes( 14 );
    bytes.back() = static_cast<U8>( letter );
    return bytes;
}

} // namespace Lab
