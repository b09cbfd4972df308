/// Changes of a packet and its window, beside a plain copy of what its frame must be, and headers read and
/// written through the window.
///
/// An input is the frame to begin with (its head room, its length, its bytes), then steps: a byte for the
/// kind and what that kind reads. What ends the process by decision is kept out: data taken beyond what there
/// is or added beyond the tail room, a window that crosses itself, a header beyond the window, a packet
/// without a buffer or without a region in use.

#include <cstring>
#include <sstream>

#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/IgmpFloatCode.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"
#include "platform/zornet/PktManager.h"
#include "tests/fuzz/FuzzFrames.h"

namespace {

using namespace Zornet;
using Fuzz::Bytes;
using Fuzz::Input;
using Fuzz::require;

constexpr unsigned maxSteps = 200;
constexpr U32 mostBytes = 4096; ///< lengths stay within the 16 bits of the offsets

// Checksums, by the definition of RFC 1071: the complement of the ones' complement sum of all words.
U16
plainChecksum( std::span<U8 const> bytes ) {
    U32 sum = 0;
    for ( std::size_t i = 0; i < bytes.size(); ++i ) {
        sum += i % 2 == 0 ? U32{ bytes[i] } << 8 : U32{ bytes[i] };
        sum = ( sum & 0xffff ) + ( sum >> 16 );
    }
    return static_cast<U16>( ~sum );
}

// Headers. The window is long enough for each; the header's fields are read, printed and written back.

template <class Header>
void
print( Header const& header ) {
    std::ostringstream out;
    out << header;
    require( !out.str().empty(), "a header prints" );
}

void
readEth( EthHdr& eth ) {
    EthHdr copy;
    copy.dstIs( eth.dst() );
    copy.srcIs( eth.src() );
    copy.typeOrLenIs( eth.typeOrLen() );
    require( std::memcmp( &copy, &eth, sizeof eth ) == 0, "an Ethernet header is its fields" );
}

void
readTag( Eth8021QHdr& tag, U16 vlan ) {
    Eth8021QTagControl control = tag.tagControl();
    control.vlanIdIs( vlan );
    require( control.vlanId() == ( vlan & 0xfff ), "the low bits are the VLAN" );
    require( ( control.value() ^ tag.tagControl().value() ) < 0x1000, "the priority stays" );
    tag.tagControlIs( control );
    require( tag.tagControl() == control, "a tag is what was written" );
}

void
readIp( IpHdr& ip, U32 room ) {
    print( ip );
    require( ip.headerBytes() <= 60, "a header has at most 60 bytes" );
    require( ip.payloadLen() == U32{ ip.totalLen().value() } - ip.headerBytes(), "lengths agree" );
    if ( ip.headerBytes() <= room ) {
        std::span<U8 const> const bytes( reinterpret_cast<U8*>( &ip ), ip.headerBytes() );
        require( ip.computedChecksum().value() == plainChecksum( bytes ), "the sum of an IP header" );
    }
    U32 const words = ip.headerBytes();
    IpVersion const version = ip.version();
    ip.versionIs( 4 );
    require( ip.headerBytes() == words && ip.version() == 4, "the version is its own" );
    ip.headerBytesIs( 24 );
    require( ip.headerBytes() == 24 && ip.version() == 4, "the length is its own" );
    ip.headerBytesIs( words );
    ip.versionIs( version );
}

/// Stored, the sum makes the sum of all zero.
void
readIgmp( IgmpCommonHdr& igmp, U32 room ) {
    print( igmp );
    auto const length = static_cast<U16>( room );
    std::span<U8 const> const bytes( reinterpret_cast<U8*>( &igmp ), length );
    require( igmp.computedChecksum( length ).value() == plainChecksum( bytes ), "the sum of a message" );
    igmp.checksumIs( 0 );
    igmp.checksumIs( igmp.computedChecksum( length ) );
    require( igmp.computedChecksum( length ) == IpChecksum( 0 ), "a message that holds its sum is good" );
}

void
readQuery( IgmpV3QueryHdr& query, U32 room, U8 value ) {
    print( query );
    require( query.maxResponseSeconds() <= 3174.4, "the greatest response time" );
    require( query.queryIntervalSeconds() <= 31744.0, "the greatest interval" );
    require( igmpFloatEncode( igmpFloatDecode( value ) ) == value, "a code is the code of its value" );
    bool const suppress = query.suppressRouterProcessing();
    query.querierRobustnessIs( value );
    require( query.querierRobustness() == ( value & 7 ), "robustness takes three bits" );
    require( query.suppressRouterProcessing() == suppress, "the flag is its own" );
    query.suppressRouterProcessingIs( !suppress );
    require( query.querierRobustness() == ( value & 7 ), "the flag leaves robustness" );
    if ( query.messageBytes() <= room && query.numSources() != 0 ) {
        auto const last = static_cast<U16>( query.numSources() - 1 );
        query.sourceIs( last, query.source( 0 ) );
        require( query.source( last ) == query.source( 0 ), "sources stand behind the header" );
    }
}

void
readRecord( IgmpReportGroupRecordHeader& record, U32 room ) {
    print( record );
    U32 const bytes = record.recordBytes();
    require( bytes >= sizeof record + record.numSources() * 4U, "a record holds its sources" );
    if ( bytes <= room && record.numSources() != 0 ) {
        auto const last = static_cast<U16>( record.numSources() - 1 );
        record.sourceIs( last, record.mcastAddr() );
        require( record.source( last ) == record.mcastAddr(), "sources stand behind the header" );
    }
}

/// A packet and what it must be.
class World {
  public:
    explicit World( Input& input );
    void step( Input& input );
    void check() const;

  private:
    U32 dataBytes() const { return static_cast<U32>( data_.size() ); }
    U32 windowBytes() const { return dataBytes() - begin_ - end_; }

    void start( Input& input );
    void growHead( U32 bytes );
    void shrinkHead( U32 bytes );
    void growTail( U32 bytes );
    void shrinkTail( U32 bytes );
    void windowIs( U32 begin, U32 end );
    void moveWindow( U32 to );
    void write( Bytes const& bytes );
    void readHeader( Input& input );
    void share();
    template <class Header>
    Header* header() {
        return windowBytes() >= sizeof( Header ) ? pkt_->offsetHeader<Header>() : nullptr;
    }
    void takeBack();

    Kiv::Ptr<PktManager> const manager_{ new PktManager };
    Kiv::Ptr<Pkt> pkt_;
    Bytes head_; ///< the first region, where `hasHead_`
    bool hasHead_ = false;
    Bytes data_;
    U32 headRoom_ = 0;
    U32 tailRoom_ = 0;
    U32 begin_ = 0;
    U32 end_ = 0;
};

World::World( Input& input ) {
    start( input );
}

/// The packet goes back to its manager, which gives it again: as new, and not in a buffer that others hold.
void
World::start( Input& input ) {
    pkt_ = nullptr;
    pkt_ = manager_->newPkt();
    require( pkt_->bytes() == 0 && pkt_->firstIoVec() == 1, "a packet is as new" );
    hasHead_ = false;
    data_.clear();
    begin_ = end_ = tailRoom_ = 0;
    headRoom_ = pkt_->sharedBuffer()->size();
    require( pkt_->sharedBuffer()->hasHeadRoom( headRoom_ ), "the whole region is head room" );
    U32 const headRoom = input.below( 32 );
    Bytes const frame = input.bytes( input.word() % mostBytes );
    auto const bytes = static_cast<U32>( frame.size() );
    growHead( bytes + headRoom );
    shrinkHead( headRoom );
    windowIs( 0, 0 );
    write( frame );
}

void
World::growHead( U32 bytes ) {
    pkt_->newSharedHeadData( bytes );
    if ( bytes > headRoom_ ) { // moved: what room there is stands in front, just as much as is needed more
        headRoom_ += tailRoom_ + bytes;
        tailRoom_ = 0;
    }
    headRoom_ -= bytes;
    require( pkt_->bytes() == bytes + dataBytes() + ( hasHead_ ? head_.size() : 0 ), "the data grows" );
    // What is new is whatever lay there.
    U8 const* const fresh = pkt_->sharedBuffer()->data();
    std::fill_n( const_cast<U8*>( fresh ), bytes, U8{ 0xee } );
    data_.insert( data_.begin(), bytes, U8{ 0xee } );
}

void
World::shrinkHead( U32 bytes ) {
    pkt_->delSharedHeadData( bytes );
    headRoom_ += bytes;
    data_.erase( data_.begin(), data_.begin() + bytes );
    if ( begin_ + end_ > dataBytes() ) {
        windowIs( 0, 0 );
    }
}

void
World::growTail( U32 bytes ) {
    pkt_->newSharedTailData( bytes );
    tailRoom_ -= bytes;
    std::fill_n( pkt_->sharedBuffer()->data() + dataBytes(), bytes, U8{ 0xdd } );
    data_.insert( data_.end(), bytes, U8{ 0xdd } );
}

void
World::shrinkTail( U32 bytes ) {
    pkt_->delSharedTailData( bytes );
    tailRoom_ += bytes;
    data_.resize( data_.size() - bytes );
    if ( begin_ + end_ > dataBytes() ) {
        windowIs( 0, 0 );
    }
}

/// By way of a window that is surely good.
void
World::windowIs( U32 begin, U32 end ) {
    if ( begin_ <= dataBytes() ) {
        pkt_->endOffsetIs( 0 );
        pkt_->beginOffsetIs( 0 );
    } else {
        pkt_->sharedBufferIs( pkt_->sharedBuffer() ); // which opens the window
        hasHead_ = false;
    }
    pkt_->beginOffsetIs( static_cast<S16>( begin ) );
    pkt_->endOffsetIs( static_cast<S16>( end ) );
    begin_ = begin;
    end_ = end;
}

/// To another place in front of the window's end, forwards or backwards.
void
World::moveWindow( U32 to ) {
    pkt_->beginOffsetInc( static_cast<S16>( static_cast<int>( to ) - static_cast<int>( begin_ ) ) );
    begin_ = to;
}

/// Over the first bytes of the window.
void
World::write( Bytes const& bytes ) {
    std::size_t const count = std::min<std::size_t>( bytes.size(), windowBytes() );
    std::copy_n( bytes.begin(), count, pkt_->offsetFront() );
    std::copy_n( bytes.begin(), count, data_.begin() + begin_ );
}

/// A header may write within the window; what it wrote is taken as right.
void
World::takeBack() {
    std::copy_n( pkt_->offsetFront(), windowBytes(), data_.begin() + begin_ );
}

void
World::readHeader( Input& input ) {
    unsigned const kind = input.below( 8 );
    U8 const value = input.byte();
    U32 const room = windowBytes();
    if ( auto* const eth = kind == 0 ? header<EthHdr>() : nullptr ) {
        readEth( *eth );
    } else if ( auto* const tag = kind == 1 ? header<Eth8021QHdr>() : nullptr ) {
        readTag( *tag, static_cast<U16>( value * 257 ) );
    } else if ( auto* const ip = kind == 2 ? header<IpHdr>() : nullptr ) {
        readIp( *ip, room );
    } else if ( auto* const igmp = kind == 3 ? header<IgmpCommonHdr>() : nullptr ) {
        readIgmp( *igmp, room );
    } else if ( auto* const v12 = kind == 4 ? header<IgmpV12Hdr>() : nullptr ) {
        print( *v12 );
        v12->groupAddressIs( v12->groupAddress() );
    } else if ( auto* const query = kind == 5 ? header<IgmpV3QueryHdr>() : nullptr ) {
        readQuery( *query, room, value );
    } else if ( auto* const report = kind == 6 ? header<IgmpV3ReportHdr>() : nullptr ) {
        print( *report );
        report->numGroupRecordsIs( report->numGroupRecords() );
    } else if ( auto* const record = kind == 7 ? header<IgmpReportGroupRecordHeader>() : nullptr ) {
        readRecord( *record, room );
    }
    takeBack();
}

/// Another packet on the same buffer keeps it when this one goes and is used anew.
void
World::share() {
    Kiv::Ptr<Pkt> const other = manager_->newPkt();
    other->sharedBufferIs( pkt_->sharedBuffer() );
    pkt_ = nullptr;
    Kiv::Ptr<Pkt> const next = manager_->newPkt();
    require( next->sharedBuffer() != other->sharedBuffer(), "a buffer that another holds is not used" );
    require( other->bytes() == dataBytes(), "and keeps its data" );
    pkt_ = other;
    begin_ = end_ = 0;
    hasHead_ = false;
}

void
World::step( Input& input ) {
    switch ( input.below( 10 ) ) {
    case 0: growHead( std::min<U32>( input.byte(), mostBytes - dataBytes() ) ); break;
    case 1: shrinkHead( std::min<U32>( input.byte(), dataBytes() ) ); break;
    case 2: growTail( std::min<U32>( input.byte(), tailRoom_ ) ); break;
    case 3: shrinkTail( std::min<U32>( input.byte(), dataBytes() ) ); break;
    case 4: {
        U32 const begin = input.word() % ( dataBytes() + 1 );
        windowIs( begin, input.word() % ( dataBytes() - begin + 1 ) );
        break;
    }
    case 5: moveWindow( input.byte() % ( dataBytes() - end_ + 1 ) ); break;
    case 6: write( input.bytes( input.byte() ) ); break;
    case 7: readHeader( input ); break;
    case 8:
        head_ = input.bytes( input.byte() );
        hasHead_ = true;
        pkt_->headIoVecIs( { head_.data(), static_cast<U32>( head_.size() ) } );
        break;
    default: input.below( 2 ) == 0 ? share() : start( input ); break;
    }
}

void
World::check() const {
    Bytes whole = hasHead_ ? head_ : Bytes();
    whole.insert( whole.end(), data_.begin(), data_.end() );
    Bytes frame( pkt_->bytes() );
    pkt_->copyTo( frame.data() );
    require( frame == whole, "the frame is its regions" );
    require(
        withFrame( *pkt_, [&]( std::span<U8> all ) { return std::ranges::equal( all, whole ); } ), "joined"
    );
    require( pkt_->firstIoVec() == ( hasHead_ ? 0 : 1 ), "the first region" );
    require( pkt_->beginOffset() == begin_ && pkt_->endOffset() == end_, "the window is where it was put" );
    require( pkt_->offsetBytes() == windowBytes(), "the window's length" );
    require( pkt_->offsetFront() == pkt_->sharedBuffer()->data() + begin_, "the window's first byte" );
    require( pkt_->sharedBuffer()->hasHeadRoom( headRoom_ ), "there is the head room" );
    require( !pkt_->sharedBuffer()->hasHeadRoom( headRoom_ + 1 ), "and no more" );
    require( pkt_->sharedBuffer()->size() == headRoom_ + dataBytes() + tailRoom_, "the region's size" );
    require( manager_->freePkts() <= manager_->pktLimit(), "no more packets wait than may" );
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( std::uint8_t const* data, std::size_t size ) {
    Input input( { data, size } );
    World world( input );
    world.check();
    for ( unsigned steps = 0; steps < maxSteps && !input.atEnd(); ++steps ) {
        world.step( input );
        world.check();
    }
    return 0;
}
