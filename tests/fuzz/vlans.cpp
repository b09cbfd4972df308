/// Frames with any number of tags to and from the VLANs of one device: through a multiplexer with channels,
/// through a tagging access object on a device of its own, and through the tag functions alone. What each
/// reader hears and what each device sends is compared with what the bytes say.
///
/// An input is a byte for the multiplexer (bit 0: it sends the callers' own packets), then steps: a byte for
/// the kind and what that kind reads. What ends the process by decision is kept out: tags for frames without
/// an Ethernet header, untagged sending of frames with two tags, no packet at all. The tag functions take
/// frames that stand whole in the shared buffer; frames in two regions are given to what makes copies.

#include <deque>
#include <map>

#include "platform/kiv/Exception.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/PktManager.h"
#include "tests/fuzz/FuzzFrames.h"
#include "tests/support/FedPam.h"
#include "vlan/VlanTaggingPam.h"

namespace {

using namespace Zornet;
using Fuzz::Bytes;
using Fuzz::Input;
using Fuzz::require;
using Kiv::Ptr;
using Support::FedPam;
using Support::tightPkt;

constexpr unsigned maxSteps = 200;
constexpr U16 vlans[] = { 1, 2, 100, 4094 }; ///< that channels are made for
constexpr U16 ownVlan = 100;                 ///< of the tagging access object

// The same in plain bytes.

bool
isTagged( Bytes const& frame ) {
    return frame.size() >= 18 && frame[12] == 0x81 && frame[13] == 0x00;
}

U16
controlOf( Bytes const& frame ) {
    return static_cast<U16>( frame[14] << 8 | frame[15] );
}

U16
vlanOf( Bytes const& frame ) {
    return isTagged( frame ) ? controlOf( frame ) & 0xfff : U16{ 0 };
}

Bytes
stripped( Bytes frame ) {
    if ( isTagged( frame ) ) {
        frame.erase( frame.begin() + 12, frame.begin() + 16 );
    }
    return frame;
}

/// A tag that is there keeps its priority.
Bytes
fixedUp( Bytes const& frame, U16 vlan ) {
    auto const priority = static_cast<U16>( isTagged( frame ) ? controlOf( frame ) & 0xf000 : 0 );
    return Fuzz::tagged( stripped( frame ), static_cast<U16>( priority | ( vlan & 0xfff ) ) );
}

Bytes
bytesOf( Ptr<Pkt> const& pkt ) {
    Bytes bytes( pkt->bytes() );
    pkt->copyTo( bytes.data() );
    return bytes;
}

/// Reads one frame for each signal, as a host does.
class Reader : public Pam::Notifiee {
  public:
    explicit Reader( Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }

    void onReadableCount() override {
        if ( deliverable( Pam::attrReadableCount ) ) {
            if ( Ptr<Pkt> const pkt = notifier()->rxPkt() ) {
                read.push_back( bytesOf( pkt ) );
            }
            then();
        }
    }

    std::deque<Bytes> read;
    std::function<void()> then = [] {};

  protected:
    std::span<Kiv::Watch const> watches() const override {
        static constexpr Kiv::Watch rows[] = { Kiv::watch<&Reader::onReadableCount>( Pam::attrReadableCount
        ) };
        return rows;
    }
};

struct Channel {
    Ptr<VlanPam> pam;
    Ptr<Reader> reader;
};

class World {
  public:
    explicit World( bool sendsOwn );
    ~World();
    void step( Input& input );

  private:
    void hear( Bytes const& frame, Input& input );
    void send( Bytes const& frame, Input& input );
    void sendTagging( Bytes const& frame );
    void useFunctions( Bytes const& frame, U16 vlan );
    void channelIs( U16 vlan );
    void channelDel( U16 vlan );
    Bytes madeFrame( Input& input );

    bool const sendsOwn_;
    Ptr<FedPam> const shared_{ new FedPam };
    Ptr<FedPam> const own_{ new FedPam };
    Ptr<VlanPamMultiplexer> const multiplexer_ =
        VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, IntfId( "eth0" ) );
    Ptr<VlanTaggingPam> const tagging_{ new VlanTaggingPam( "tagging", ownVlan, own_ ) };
    Ptr<Reader> const taggingReader_{ new Reader( tagging_ ) };
    std::map<U16, Channel> channels_;
};

World::World( bool sendsOwn ) : sendsOwn_( sendsOwn ) {
    multiplexer_->copyPktBeforeTxIs( !sendsOwn );
    multiplexer_->innerPamIs( shared_ );
    channelIs( 1 );
    channelIs( 100 );
}

World::~World() {
    tagging_->smDel();
    multiplexer_->vlanPamDelAll();
}

void
World::channelIs( U16 vlan ) {
    Ptr<VlanPam> const pam = vlanPamFactory( std::to_string( vlan ), multiplexer_ );
    multiplexer_->vlanPamIs( pam );
    channels_[vlan] = { pam, new Reader( pam ) };
}

void
World::channelDel( U16 vlan ) {
    multiplexer_->vlanPamDel( vlan );
    channels_.erase( vlan );
}

Bytes
World::madeFrame( Input& input ) {
    Bytes frame = Fuzz::frameOf( input.bytes( input.byte() ) );
    for ( unsigned tags = input.below( 4 ); tags != 0; --tags ) {
        unsigned const choice = input.byte();
        auto const priority = static_cast<U16>( choice << 13 );
        frame = Fuzz::tagged(
            frame, choice & 8 ? static_cast<U16>( priority | vlans[choice % 4] ) : input.word()
        );
    }
    return frame;
}

void
World::step( Input& input ) {
    unsigned const kind = input.below( 8 );
    if ( kind < 2 ) {
        unsigned const vlan = vlans[input.below( std::size( vlans ) )];
        kind == 0 ? channelIs( static_cast<U16>( vlan ) ) : channelDel( static_cast<U16>( vlan ) );
        return;
    }
    Bytes const frame = kind % 2 == 0 ? madeFrame( input ) : input.bytes( input.word() % 2048 );
    switch ( kind ) {
    case 2:
    case 3: hear( frame, input ); break;
    case 4:
    case 5:
        if ( frame.size() >= sizeof( EthHdr ) ) {
            send( frame, input );
            sendTagging( frame );
        }
        break;
    default: useFunctions( frame, input.word() ); break;
    }
}

/// Both devices hear the frame. The reader of a channel may take its own channel out while it is told.
void
World::hear( Bytes const& frame, Input& input ) {
    U16 const vlan = vlanOf( frame );
    bool const leaves = input.below( 4 ) == 0;
    auto const at = channels_.find( vlan );
    Ptr<Reader> const reader = vlan != 0 && at != channels_.end() ? at->second.reader : nullptr;
    if ( reader && leaves ) {
        reader->then = [this, vlan] { multiplexer_->vlanPamDel( vlan ); };
    }
    shared_->feed( frame );
    for ( auto const& [number, channel] : channels_ ) {
        require( channel.reader->read.size() == ( channel.reader == reader ), "the frame's VLAN hears it" );
        require( !channel.pam->inputPkt(), "nothing waits in a channel" );
    }
    if ( reader ) {
        require( reader->read.front() == stripped( frame ), "it is heard without its tag" );
        reader->read.clear();
        reader->then = [] {};
        if ( leaves ) {
            channelDel( vlan );
        }
    }
    own_->feed( frame );
    require( own_->waiting() == 0, "each frame is read" );
    require( taggingReader_->read.size() == ( vlan == ownVlan ), "only the VLAN's own is heard" );
    require( vlan != ownVlan || taggingReader_->read.front() == stripped( frame ), "without its tag" );
    taggingReader_->read.clear();
}

/// Through a channel, which may be one that was taken out. A byte says where two regions meet.
void
World::send( Bytes const& frame, Input& input ) {
    U16 const vlan = vlans[input.below( std::size( vlans ) )];
    std::size_t const meet = sendsOwn_ ? 0 : std::min<std::size_t>( input.byte(), frame.size() );
    auto const tail = frame.begin() + static_cast<std::ptrdiff_t>( meet );
    Bytes head( frame.begin(), tail );
    Ptr<Pkt> const pkt = tightPkt( Bytes( tail, frame.end() ) );
    if ( meet != 0 ) {
        pkt->headIoVecIs( { head.data(), static_cast<U32>( head.size() ) } );
    }
    vlanPamFactory( std::to_string( vlan ), multiplexer_ )->txPktIs( pkt );
    bool const open = channels_.contains( vlan );
    require( shared_->sent.size() == open, "sent where the VLAN has a channel" );
    Bytes const expected = fixedUp( frame, vlan );
    require( !open || shared_->sent.front() == expected, "with the VLAN's tag" );
    require( bytesOf( pkt ) == ( open && sendsOwn_ ? expected : frame ), "the caller's packet" );
    shared_->sent.clear();
}

void
World::sendTagging( Bytes const& frame ) {
    tagging_->txPktIs( tightPkt( frame ) );
    require( own_->sent.size() == 1, "sent" );
    require( own_->sent.front() == Fuzz::tagged( frame, ownVlan ), "in front of any tag" );
    own_->sent.clear();
}

void
World::useFunctions( Bytes const& frame, U16 vlan ) {
    Ptr<Pkt> pkt = tightPkt( frame );
    require( vlanIdFromEthPkt( pkt ) == vlanOf( frame ), "the VLAN of the outermost tag" );
    stripPktVlanTag( pkt );
    require( bytesOf( pkt ) == stripped( frame ), "one tag goes" );
    pkt = tightPkt( frame );
    fixupPktVlanTag( pkt, vlan, false );
    require( bytesOf( pkt ) == stripped( frame ), "one tag goes" );
    if ( frame.size() < sizeof( EthHdr ) ) {
        return;
    }
    pkt = tightPkt( frame );
    fixupPktVlanTag( pkt, vlan, true );
    require( bytesOf( pkt ) == fixedUp( frame, vlan ), "one tag is there" );
    pkt = tightPkt( frame );
    addPktVlanTag( pkt, vlan );
    require( bytesOf( pkt ) == Fuzz::tagged( frame, vlan & 0xfff ), "one tag comes" );
    stripPktVlanTag( pkt );
    require( bytesOf( pkt ) == frame, "and goes" );
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( std::uint8_t const* data, std::size_t size ) {
    Input input( { data, size } );
    {
        World world( ( input.byte() & 1 ) != 0 );
        for ( unsigned steps = 0; steps < maxSteps && !input.atEnd(); ++steps ) {
            world.step( input );
        }
    }
    require( VlanPam::live() == 0 && VlanPktMultiplexer::live() == 0, "channels go with their multiplexer" );
    require( VlanTaggingPam::live() == 0, "a tagging object goes once it is cut" );
    return 0;
}
