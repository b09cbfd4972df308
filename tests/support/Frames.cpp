#include "tests/support/Frames.h"

#include "platform/zornet/Checksum.h"
#include "platform/zornet/IpMcastMacAddr.h"

namespace Lab {

using Zornet::IgmpMessageType;

void
append( Bytes& bytes, U16 value ) {
    bytes.push_back( static_cast<U8>( value >> 8 ) );
    bytes.push_back( static_cast<U8>( value ) );
}

void
append( Bytes& bytes, IpAddr const& addr ) {
    bytes.insert( bytes.end(), addr.bytes().begin(), addr.bytes().end() );
}

void
append( Bytes& bytes, EthAddr const& addr ) {
    bytes.insert( bytes.end(), addr.bytes().begin(), addr.bytes().end() );
}

void
append( Bytes& bytes, Bytes const& more ) {
    bytes.insert( bytes.end(), more.begin(), more.end() );
}

namespace {

/// Puts the checksum of all the bytes into the two at `at`.
void
checksumAt( std::span<U8> bytes, std::size_t at ) {
    bytes[at] = bytes[at + 1] = 0;
    auto const* const data = reinterpret_cast<char const*>( bytes.data() );
    U16 const sum = Zornet::ipChecksumCalc( data, static_cast<U16>( bytes.size() ), 0 ).value();
    bytes[at] = static_cast<U8>( sum >> 8 );
    bytes[at + 1] = static_cast<U8>( sum );
}

Bytes
ipHeader( IpAddr const& src, IpAddr const& dst, std::size_t payload, Manner const& manner ) {
    U16 const headerBytes = manner.routerAlert ? 24 : 20;
    Bytes header{ static_cast<U8>( 0x40 | headerBytes / 4 ), 0 };
    append( header, static_cast<U16>( headerBytes + payload ) );
    append( header, Bytes{ 0, 0, 0, 0, manner.ttl, 2, 0, 0 } );
    append( header, src );
    append( header, dst );
    if ( manner.routerAlert ) {
        append( header, Bytes{ 0x94, 0x04, 0, 0 } );
    }
    checksumAt( header, 10 );
    return header;
}

} // namespace

void
checksum( Bytes& message ) {
    checksumAt( message, 2 );
}

void
fixIpChecksum( Bytes& frame, std::size_t headerBytes ) {
    checksumAt( std::span( frame ).subspan( 14, headerBytes ), 10 );
}

Bytes
igmpMessage( IgmpMessageType type, U8 code, IpAddr const& group ) {
    auto const& addr = group.bytes();
    Bytes message{ static_cast<U8>( type ), code, 0, 0, addr[0], addr[1], addr[2], addr[3] };
    checksum( message );
    return message;
}

Bytes
v3ReportMessage( std::vector<GroupRecord> const& records ) {
    Bytes message{ 0x22, 0, 0, 0, 0, 0 };
    append( message, static_cast<U16>( records.size() ) );
    for ( GroupRecord const& record : records ) {
        append( message, Bytes{ static_cast<U8>( record.type ), record.auxWords } );
        append( message, static_cast<U16>( record.sources.size() ) );
        append( message, record.group );
        for ( IpAddr const& source : record.sources ) {
            append( message, source );
        }
        message.resize( message.size() + record.auxWords * 4U, 0xee );
    }
    checksum( message );
    return message;
}

Bytes
v3QueryMessage(
    IpAddr const& group, std::vector<IpAddr> const& sources, U8 code, bool suppress, U8 qrv, U8 qqic
) {
    Bytes message = igmpMessage( IgmpMessageType::membershipQuery, code, group );
    append( message, Bytes{ static_cast<U8>( ( suppress ? 8 : 0 ) | qrv ), qqic } );
    append( message, static_cast<U16>( sources.size() ) );
    for ( IpAddr const& source : sources ) {
        append( message, source );
    }
    checksum( message );
    return message;
}

Bytes
igmpFrame( IpAddr const& src, IpAddr const& dst, Bytes const& message, Manner const& manner ) {
    Bytes frame;
    append( frame, manner.ethDst.value_or( Zornet::ipMcastMacAddr( dst ) ) );
    append( frame, EthAddr( { 0x02, 0, 0, 0, 0, src.bytes()[3] } ) );
    if ( manner.tag ) {
        append( frame, U16{ 0x8100 } );
        append( frame, *manner.tag );
    }
    append( frame, U16{ 0x0800 } );
    append( frame, ipHeader( src, dst, message.size(), manner ) );
    append( frame, message );
    return frame;
}

Bytes
v1Report( IpAddr const& src, IpAddr const& group ) {
    return igmpFrame( src, group, igmpMessage( IgmpMessageType::v1MembershipReport, 0, group ) );
}

Bytes
v2Report( IpAddr const& src, IpAddr const& group ) {
    return igmpFrame( src, group, igmpMessage( IgmpMessageType::v2MembershipReport, 0, group ) );
}

Bytes
v2Leave( IpAddr const& src, IpAddr const& group ) {
    return igmpFrame( src, allRouters, igmpMessage( IgmpMessageType::v2LeaveGroup, 0, group ) );
}

Bytes
v3Report( IpAddr const& src, std::vector<GroupRecord> const& records ) {
    return igmpFrame( src, allV3Routers, v3ReportMessage( records ) );
}

Bytes
dataFrame( IpAddr const& src, IpAddr const& group ) {
    constexpr std::size_t ipHeaderAt = 14;
    constexpr std::size_t headerBytes = 20;
    constexpr std::size_t leastFrame = 60;
    Manner plain;
    plain.routerAlert = false;
    Bytes frame = igmpFrame( src, group, Bytes( leastFrame - ipHeaderAt - headerBytes ), plain );
    frame[ipHeaderAt + 9] = 17; // UDP
    fixIpChecksum( frame, headerBytes );
    return frame;
}

} // namespace Lab
