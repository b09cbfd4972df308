#pragma once

#include <deque>
#include <vector>

#include "platform/kiv/Clock.h"
#include "platform/zornet/Pam.h"
#include "platform/zornet/PktManager.h"
#include "tests/support/Frames.h"

namespace Lab {

/// An access object without a device: it gives the frames that a test says have arrived and keeps what it is
/// to send.
class ScriptedPam : public Zornet::Pam {
  public:
    struct Sent {
        Seconds time;
        Bytes frame;
    };

    ScriptedPam() : Pam( "scripted" ) {}

    /// The frame is there to be read; `signal` tells of it.
    void arrive( Bytes const& frame, bool signal = true ) {
        arrived_.push_back( Zornet::pktWithBytes( frame ) );
        readableCountInc( signal ? 1 : 0 );
    }
    /// Puts any packet, such as one of two regions, in place of one made from bytes.
    void arrive( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
        arrived_.push_back( pkt );
        readableCountInc( 1 );
    }
    std::vector<Sent> sent;

    void doGetRxPkt() override {
        if ( !arrived_.empty() ) {
            rxPktHolderIs( arrived_.front() );
            arrived_.pop_front();
        }
    }
    void txPktIs( Kiv::Ptr<Zornet::Pkt> const& pkt ) override {
        sent.push_back( { Kiv::now(), Bytes( pkt->bytes() ) } );
        pkt->copyTo( sent.back().frame.data() );
    }

  private:
    std::deque<Kiv::Ptr<Zornet::Pkt>> arrived_;
};

} // namespace Lab
