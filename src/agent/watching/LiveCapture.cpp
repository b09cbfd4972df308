#include "agent/watching/LiveCapture.h"

#include <cstring>
#include <stdexcept>

#include "platform/zornet/device/IgmpFilter.h"
#include "platform/zornet/device/NamespaceEntry.h"

namespace Agent {

namespace {

constexpr int longestFrame = 65535;
constexpr int bufferBytes = 16 << 20;

[[noreturn]] void
fail( std::string const& device, char const* why ) {
    throw std::runtime_error( "cannot listen on " + device + ": " + why );
}

void
configure( pcap_t* handle ) {
    pcap_set_snaplen( handle, longestFrame );
    pcap_set_promisc( handle, 1 );
    pcap_set_immediate_mode( handle, 1 );
    pcap_set_buffer_size( handle, bufferBytes );
}

/// The program that the devices of hosts use too: it sees frames as the kernel has them, with the outermost
/// tag beside the received ones and inside those that are sent.
void
filter( pcap_t* handle, std::string const& device ) {
    static_assert( sizeof( bpf_insn ) == sizeof( sock_filter ) );
    std::vector<bpf_insn> instructions( Zornet::igmpFilter().size() );
    std::memcpy(
        instructions.data(), Zornet::igmpFilter().data(), instructions.size() * sizeof( sock_filter )
    );
    bpf_program program{ static_cast<u_int>( instructions.size() ), instructions.data() };
    if ( pcap_setfilter( handle, &program ) != 0 ) {
        fail( device, pcap_geterr( handle ) );
    }
}

} // namespace

LiveCapture::LiveCapture(
    std::string const& device, Zornet::NamespaceName const& ns, FrameHandler frame,
    std::function<void( std::string const& why )> ended
)
    : frame_( std::move( frame ) ), ended_( std::move( ended ) ), handle_( nullptr, &pcap_close ) {
    Zornet::NamespaceEntry const entry( ns );
    if ( entry.error() != 0 ) {
        fail( device, std::strerror( entry.error() ) );
    }
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    handle_.reset( pcap_create( device.c_str(), error.data() ) );
    if ( !handle_ ) {
        fail( device, error.data() );
    }
    configure( handle_.get() );
    if ( int const status = pcap_activate( handle_.get() ); status < 0 ) {
        fail( device, pcap_statustostr( status ) );
    }
    if ( pcap_datalink( handle_.get() ) != DLT_EN10MB ) {
        fail( device, "it carries no Ethernet frames" );
    }
    filter( handle_.get(), device );
    pcap_setnonblock( handle_.get(), 1, error.data() );
    descriptor_ = pcap_get_selectable_fd( handle_.get() );
    Kiv::defaultActivity()->activitySm().ioHandlerIs( descriptor_, EPOLLIN, this );
}

LiveCapture::~LiveCapture() {
    if ( descriptor_ >= 0 ) {
        Kiv::defaultActivity()->activitySm().ioHandlerDel( descriptor_ );
    }
}

void
LiveCapture::handleIo( Kiv::U32 ) {
    int const status = pcap_dispatch( handle_.get(), -1, take, reinterpret_cast<u_char*>( this ) );
    if ( status < 0 && status != PCAP_ERROR_BREAK ) {
        Kiv::defaultActivity()->activitySm().ioHandlerDel( descriptor_ );
        descriptor_ = -1;
        ended_( pcap_geterr( handle_.get() ) );
    }
}

void
LiveCapture::take( u_char* self, pcap_pkthdr const* header, u_char const* bytes ) {
    constexpr double microsecond = 1e-6;
    Kiv::Seconds const time =
        static_cast<double>( header->ts.tv_sec ) + static_cast<double>( header->ts.tv_usec ) * microsecond;
    reinterpret_cast<LiveCapture*>( self )->frame_( time, { bytes, header->caplen } );
}

Zornet::U64
LiveCapture::lost() const {
    pcap_stat stat{};
    return pcap_stats( handle_.get(), &stat ) == 0 ? stat.ps_drop : 0;
}

} // namespace Agent
