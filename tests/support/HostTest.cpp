#include "tests/support/HostTest.h"

#include <sstream>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"

namespace Support {

namespace {

using Zornet::U16;
using Zornet::U32;
using Zornet::U8;

char const*
recordName( Zornet::IgmpV3GroupRecordType type ) {
    static constexpr char const* names[] = { "?", "IS_IN", "IS_EX", "TO_IN", "TO_EX", "ALLOW", "BLOCK" };
    auto const number = static_cast<std::size_t>( type );
    return names[number < std::size( names ) ? number : 0];
}

void
describeRecords( std::ostream& out, Zornet::IgmpV3ReportHdr const* report ) {
    auto const* at = reinterpret_cast<U8 const*>( report + 1 );
    for ( U16 i = 0; i < report->numGroupRecords(); ++i ) {
        auto const* const record = reinterpret_cast<Zornet::IgmpReportGroupRecordHeader const*>( at );
        out << ( i == 0 ? " " : ", " ) << recordName( record->recordType() ) << ' ' << record->mcastAddr()
            << " {";
        for ( U16 s = 0; s < record->numSources(); ++s ) {
            out << ( s == 0 ? "" : " " ) << record->source( s );
        }
        out << '}';
        at += record->recordBytes();
    }
}

void
describeQuery( std::ostream& out, Zornet::IgmpV12Hdr const* query, U32 bytes ) {
    bool const isV3 = bytes >= sizeof( Zornet::IgmpV3QueryHdr );
    out << ( isV3 ? "v3query " : "query " ) << query->groupAddress();
    if ( isV3 ) {
        auto const* const v3 = static_cast<Zornet::IgmpV3QueryHdr const*>( query );
        out << " {";
        for ( U16 i = 0; i < v3->numSources(); ++i ) {
            out << ( i == 0 ? "" : " " ) << v3->source( i );
        }
        out << '}';
    }
}

} // namespace

std::string
describe( Bytes const& frame ) {
    std::ostringstream out;
    auto const* const eth = reinterpret_cast<Zornet::EthHdr const*>( frame.data() );
    bool const tagged = eth->typeOrLen() == Zornet::ethType8021Q;
    auto const* const ip = reinterpret_cast<Zornet::IpHdr const*>( frame.data() + ( tagged ? 18 : 14 ) );
    auto const* const igmp = reinterpret_cast<U8 const*>( ip ) + ip->headerBytes();
    auto const* const v12 = reinterpret_cast<Zornet::IgmpV12Hdr const*>( igmp );
    switch ( v12->messageType() ) {
    case Zornet::IgmpMessageType::membershipQuery: describeQuery( out, v12, ip->payloadLen() ); break;
    case Zornet::IgmpMessageType::v1MembershipReport: out << "v1report " << v12->groupAddress(); break;
    case Zornet::IgmpMessageType::v2MembershipReport: out << "v2report " << v12->groupAddress(); break;
    case Zornet::IgmpMessageType::v2LeaveGroup:
        out << "leave " << v12->groupAddress() << " to " << ip->dst();
        break;
    case Zornet::IgmpMessageType::v3MembershipReport:
        out << "v3report";
        describeRecords( out, reinterpret_cast<Zornet::IgmpV3ReportHdr const*>( igmp ) );
        break;
    default: out << "type " << static_cast<int>( v12->mType().value() );
    }
    return out.str();
}

bool
RecordingDevice::send( Zornet::EthDevPam const&, std::span<U8 const> frame ) {
    sent.push_back( { Kiv::now() - start_, Bytes( frame.begin(), frame.end() ) } );
    return true;
}

void
RecordingDevice::handleFirstPort() {
    ++openings;
    if ( onOpening ) {
        onOpening();
    }
}

RecordingDevice&
RecordingProvider::recording( char const* name, char const* ns ) {
    return static_cast<RecordingDevice&>( *device( Zornet::NamespaceName( ns ), name ) );
}

Ptr<Zornet::Device>
RecordingProvider::newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) {
    return new RecordingDevice( ns, name, start_ );
}

HostTest::HostTest( Seconds start )
    : SimulatedTest( start ),
      provider( start ),
      providerScope( provider ),
      dir( Igmp::igmpHostDirFactory( "hosts" ) ),
      statusDir( Igmp::igmpHostStatusDirFactory( "status" ) ),
      dirSm( Igmp::igmpHostDirSmFactory( nullptr, dir, statusDir, wheel() ) ) {
    addHost( "host", "10.0.0.1" );
}

HostTest::~HostTest() {
    deferredDeliveryIs( false );
    dir->igmpHostDelAll();
}

IgmpHost&
HostTest::addHost( char const* name, char const* ipAddr, char const* deviceName ) {
    Ptr<IgmpHost> const added = dir->igmpHostIs( name );
    added->ipAddrIs( IpAddr( ipAddr ) );
    added->macAddrIs( Zornet::EthAddr( { 2, 0, 0, 0, 0, static_cast<U8>( dir->igmpHosts() ) } ) );
    added->deviceNameIs( deviceName );
    added->intfConfigVersionIs( 1 );
    stepDone();
    return *added;
}

void
HostTest::enable( Igmp::IgmpVersion version ) {
    host().igmpVersionIs( version );
    stepDone();
    host().enabledIs( true );
    stepDone();
}

IgmpV3GroupRecord&
HostTest::group(
    char const* addr, IgmpV3GroupRecord::FilterMode mode, std::vector<char const*> const& sources
) {
    Ptr<IgmpV3GroupRecord> const record = host().v3groupIs( IpAddr( addr ) );
    record->filterModeIs( mode );
    for ( char const* source : sources ) {
        record->sourceIs()->sourceIpIs( IpAddr( source ), 1 );
    }
    raise( *record );
    stepDone();
    return *record;
}

IgmpV3GroupRecord&
HostTest::exclude( char const* addr, std::vector<char const*> const& sources ) {
    return group( addr, IgmpV3GroupRecord::exclude, sources );
}

IgmpV3GroupRecord&
HostTest::include( char const* addr, std::vector<char const*> const& sources ) {
    return group( addr, IgmpV3GroupRecord::include, sources );
}

std::vector<std::string>
HostTest::takeSent() {
    std::vector<std::string> described;
    for ( SentFrame const& frame : sent() ) {
        described.push_back( describe( frame.bytes ) );
    }
    sent().clear();
    return described;
}

void
HostTest::hear( Bytes const& igmp, char const* dst ) {
    device().hear( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( dst ), igmp ) );
    stepDone();
}

void
HostTest::hearQuery( U8 code, char const* groupAddr ) {
    hear( Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr( groupAddr ) ) );
}

void
HostTest::hearV3Query( U8 code, char const* groupAddr, std::vector<char const*> const& sources ) {
    std::vector<IpAddr> list;
    for ( char const* source : sources ) {
        list.emplace_back( source );
    }
    hear( Lab::v3QueryMessage( IpAddr( groupAddr ), list, code, false, 2, 125 ) );
}

void
HostTest::hearReport( char const* groupAddr ) {
    hear(
        Lab::igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, IpAddr( groupAddr ) ), groupAddr
    );
}

} // namespace Support
