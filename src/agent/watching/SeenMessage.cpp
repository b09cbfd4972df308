#include "agent/watching/SeenMessage.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/output/WallTime.h"
#include "lab/SourceSet.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"

namespace Agent {

using namespace Zornet;

namespace {

constexpr U16 ethType8021ad = 0x88a8;

template <class Header>
Header const&
headerAt( std::span<U8 const> bytes ) {
    return *reinterpret_cast<Header const*>( bytes.data() );
}

bool
isTag( U16 type ) {
    return type == ethType8021Q || type == ethType8021ad;
}

/// The `count` addresses that follow a header.
std::vector<IpAddr>
sourcesAfter( void const* header, U16 count ) {
    auto const* const first = static_cast<IpAddr const*>( header );
    return { first, first + count };
}

/// As RFC 3376 section 4.2.12 abbreviates them.
std::string
shortName( IgmpV3GroupRecordType type ) {
    constexpr char const* names[] = { "IS_IN", "IS_EX", "TO_IN", "TO_EX", "ALLOW", "BLOCK" };
    auto const index = static_cast<std::size_t>( type ) - 1;
    return index < std::size( names ) ? names[index] : "TYPE_" + std::to_string( index + 1 );
}

std::string
hexByte( U8 value ) {
    constexpr char digits[] = "0123456789abcdef";
    return { '0', 'x', digits[value >> 4], digits[value & 0xf] };
}

template <class Value>
std::string
textOf( Value const& value ) {
    return std::string( valueToStrep( value ).view() );
}

} // namespace

SeenMessage::SeenMessage( Kiv::Seconds time, Bytes frame ) : time_( time ) {
    Bytes const packet = readEthernet( frame );
    Bytes const message = packet.empty() ? packet : readIp( packet );
    if ( !message.empty() ) {
        readIgmp( message );
    }
}

SeenMessage::Bytes
SeenMessage::fault( char const* text ) {
    faults_.emplace_back( text );
    return {};
}

SeenMessage::Bytes
SeenMessage::readEthernet( Bytes frame ) {
    if ( frame.size() < sizeof( EthHdr ) ) {
        return fault( "cut short" );
    }
    srcMac_ = headerAt<EthHdr>( frame ).src();
    dstMac_ = headerAt<EthHdr>( frame ).dst();
    U16 type = headerAt<EthHdr>( frame ).typeOrLen();
    frame = frame.subspan( sizeof( EthHdr ) );
    while ( isTag( type ) ) {
        if ( frame.size() < sizeof( Eth8021QHdr ) ) {
            return fault( "cut short" );
        }
        vlans_.push_back( headerAt<Eth8021QHdr>( frame ).tagControl().vlanId() );
        type = headerAt<Eth8021QHdr>( frame ).typeOrLen();
        frame = frame.subspan( sizeof( Eth8021QHdr ) );
    }
    return type == ethTypeIp && !frame.empty() ? frame : fault( "not IPv4" );
}

SeenMessage::Bytes
SeenMessage::readIp( Bytes packet ) {
    if ( packet.size() < sizeof( IpHdr ) ) {
        return fault( "cut short" );
    }
    auto const& ip = headerAt<IpHdr>( packet );
    src_ = ip.src();
    dst_ = ip.dst();
    ttl_ = ip.ttl().value();
    U32 const headerBytes = ip.headerBytes();
    U32 const totalLen = ip.totalLen().value();
    if ( headerBytes < sizeof( IpHdr ) || totalLen < headerBytes ) {
        return fault( "wrong IP header length" );
    }
    if ( headerBytes > packet.size() || totalLen > packet.size() ) {
        return fault( "cut short" );
    }
    if ( ip.computedChecksum() != IpChecksum( 0 ) ) {
        fault( "wrong IP checksum" );
    }
    if ( ttl_ != 1 ) {
        faults_.push_back( "TTL " + std::to_string( ttl_ ) );
    }
    return totalLen == headerBytes ? fault( "no IGMP message" )
                                   : packet.subspan( headerBytes, totalLen - headerBytes );
}

void
SeenMessage::readIgmp( Bytes message ) {
    if ( message.size() < sizeof( IgmpV12Hdr ) ) {
        fault( "IGMP message too short" );
        return;
    }
    auto const& common = headerAt<IgmpCommonHdr>( message );
    if ( common.computedChecksum( static_cast<U16>( message.size() ) ) != IpChecksum( 0 ) ) {
        fault( "wrong IGMP checksum" );
    }
    switch ( common.messageType() ) {
    case IgmpMessageType::membershipQuery: return readQuery( message );
    case IgmpMessageType::v1MembershipReport: return readVersion12( message, 1, "report" );
    case IgmpMessageType::v2MembershipReport: return readVersion12( message, 2, "report" );
    case IgmpMessageType::v2LeaveGroup: return readVersion12( message, 2, "leave" );
    case IgmpMessageType::v3MembershipReport: return readV3Report( message );
    }
    kind_ = "type " + hexByte( static_cast<U8>( common.messageType() ) );
}

void
SeenMessage::readVersion12( Bytes message, int version, char const* kind ) {
    version_ = version;
    kind_ = kind;
    groups_.push_back( { headerAt<IgmpV12Hdr>( message ).groupAddress() } );
}

void
SeenMessage::readQuery( Bytes message ) {
    auto const& query = headerAt<IgmpV12Hdr>( message );
    bool const general = query.groupAddress().isZero();
    kind_ = general ? "general query" : "group query";
    if ( !general ) {
        groups_.push_back( { query.groupAddress() } );
    }
    if ( message.size() >= sizeof( IgmpV3QueryHdr ) ) {
        readV3Query( message );
        return;
    }
    version_ = query.maxResponseCode() == 0 ? 1 : 2;
    query_ = Query{ query.maxResponseSeconds() };
}

void
SeenMessage::readV3Query( Bytes message ) {
    auto const& query = headerAt<IgmpV3QueryHdr>( message );
    version_ = 3;
    query_ = Query{ query.maxResponseSeconds(), query.queryIntervalSeconds(), query.querierRobustness(),
                    query.suppressRouterProcessing() };
    if ( message.size() < query.messageBytes() ) {
        fault( "sources cut short" );
    } else if ( query.numSources() != 0 ) {
        kind_ = groups_.empty() ? "general query with sources" : "source query";
        groups_.resize( 1 );
        groups_[0].sources = sourcesAfter( &query + 1, query.numSources() );
    }
}

void
SeenMessage::readV3Report( Bytes message ) {
    using Record = IgmpReportGroupRecordHeader;
    version_ = 3;
    kind_ = "report";
    U16 const records = headerAt<IgmpV3ReportHdr>( message ).numGroupRecords();
    message = message.subspan( sizeof( IgmpV3ReportHdr ) );
    for ( U16 left = records; left != 0; --left ) {
        auto const& record = headerAt<Record>( message );
        if ( message.size() < sizeof( Record ) || message.size() < record.recordBytes() ) {
            fault( "records cut short" );
            return;
        }
        groups_.push_back( { record.mcastAddr(), sourcesAfter( &record + 1, record.numSources() ),
                             record.recordType() } );
        message = message.subspan( record.recordBytes() );
    }
}

void
SeenMessage::printGroups( std::ostream& out ) const {
    char const* before = " ";
    for ( Group const& group : groups_ ) {
        out << before;
        if ( group.recordType ) {
            out << shortName( *group.recordType ) << ' ';
        }
        out << group.group;
        if ( !group.sources.empty() ) {
            out << ' ' << Lab::SourceSet( group.sources );
        }
        before = ", ";
    }
}

std::ostream&
operator<<( std::ostream& out, SeenMessage const& message ) {
    out << wallTime( message.time_ ) << ' ' << message.srcMac_ << ' ' << message.src_;
    for ( U16 const vlan : message.vlans_ ) {
        out << " vlan " << vlan;
    }
    if ( message.version_ != 0 ) {
        out << " v" << message.version_;
    }
    out << ' ' << message.kind_;
    message.printGroups( out );
    if ( auto const& query = message.query_ ) {
        out << " within " << query->maxResponse << " s";
        if ( message.version_ == 3 ) {
            out << ", every " << query->interval << " s, robustness " << +query->robustness
                << ( query->suppress ? ", suppress" : "" );
        }
    }
    for ( std::string const& text : message.faults_ ) {
        out << " [" << text << ']';
    }
    return out;
}

nlohmann::ordered_json
SeenMessage::json() const {
    using Json = nlohmann::ordered_json;
    Json json{ { "time", time_ },
               { "srcMac", textOf( srcMac_ ) },
               { "dstMac", textOf( dstMac_ ) },
               { "vlans", vlans_ },
               { "src", textOf( src_ ) },
               { "dst", textOf( dst_ ) },
               { "ttl", ttl_ },
               { "igmpVersion", version_ },
               { "kind", kind_ },
               { "groups", Json::array() },
               { "faults", faults_ } };
    for ( Group const& group : groups_ ) {
        Json entry{ { "group", textOf( group.group ) }, { "sources", Json::array() } };
        std::
            transform( group.sources.begin(), group.sources.end(), std::back_inserter( entry["sources"] ), textOf<IpAddr> );
        if ( group.recordType ) {
            entry["recordType"] = std::string( stringValue( *group.recordType ).view() );
        }
        json["groups"].push_back( std::move( entry ) );
    }
    if ( query_ ) {
        json["maxResponse"] = query_->maxResponse;
    }
    if ( query_ && version_ == 3 ) {
        json["queryInterval"] = query_->interval;
        json["robustness"] = query_->robustness;
        json["suppress"] = query_->suppress;
    }
    return json;
}

} // namespace Agent
