#pragma once

#include <deque>
#include <functional>

#include "platform/zornet/EthDevPam.h"
#include "tests/support/Frames.h"

namespace Support {

using Lab::Bytes;

/// A packet whose buffer is just as long as the frame, so that a sanitizer sees a read past its end.
inline Kiv::Ptr<Zornet::Pkt>
tightPkt( Bytes const& frame ) {
    Kiv::Ptr<Zornet::PktSharedBuffer> const buffer(
        new Zornet::PktSharedBuffer( static_cast<Zornet::U32>( frame.size() ) )
    );
    buffer->newHeadData( buffer->size() );
    std::copy( frame.begin(), frame.end(), buffer->data() );
    Kiv::Ptr<Zornet::Pkt> const pkt( new Zornet::Pkt );
    pkt->sharedBufferIs( buffer );
    return pkt;
}

/// An access object for a host to be given from outside: it gives what the test feeds it, frames of any
/// Ethernet type included, and keeps what the host sends.
class FedPam : public Zornet::EthDevPam {
  public:
    FedPam() : EthDevPam( "fed" ) {}

    /// The packet is there to be read, and one signal says so.
    void feed( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
        place( pkt );
        readableCountInc( 1 );
    }
    void feed( Bytes const& frame ) { feed( tightPkt( frame ) ); }
    /// The same without the signal.
    void place( Kiv::Ptr<Zornet::Pkt> const& pkt ) { waiting_.push_back( pkt ); }
    std::size_t waiting() const { return waiting_.size(); }

    std::vector<Bytes> sent;
    /// Runs inside each send, when the frame has been kept.
    std::function<void()> onSend;

    void doGetRxPkt() override {
        if ( !waiting_.empty() ) {
            rxPktHolderIs( waiting_.front() );
            waiting_.pop_front();
        }
    }
    void txPktIs( Kiv::Ptr<Zornet::Pkt> const& pkt ) override {
        Bytes frame( pkt->bytes() );
        pkt->copyTo( frame.data() );
        sent.push_back( frame );
        if ( onSend ) {
            onSend();
        }
    }

  private:
    std::deque<Kiv::Ptr<Zornet::Pkt>> waiting_;
};

} // namespace Support
