#pragma once

#include <deque>
#include <string>
#include <vector>

#include "platform/zornet/Pam.h"
#include "tests/vlan/Frames.h"

namespace Zornet {

/// Stands for the access object of a device: receives what a test lets arrive, and writes down what is sent.
class FakePam : public Pam {
  public:
    FakePam() : Pam( "device" ) {}

    /// Queues a frame without a signal, as one that came before anybody listened.
    void queue( std::string const& frame ) { waiting_.push_back( pktOf( frame ) ); }
    void arrive( std::string const& frame ) {
        queue( frame );
        readableCountInc( 1 );
    }
    std::size_t waiting() const { return waiting_.size(); }

    void doGetRxPkt() override {
        if ( !waiting_.empty() ) {
            rxPktHolderIs( waiting_.front() );
            waiting_.pop_front();
        }
    }
    void txPktIs( Kiv::Ptr<Pkt> const& pkt ) override {
        sent.push_back( frameOf( pkt ) );
        sentPkts.push_back( pkt );
    }

    std::vector<std::string> sent;
    std::vector<Kiv::Ptr<Pkt>> sentPkts;

  private:
    std::deque<Kiv::Ptr<Pkt>> waiting_;
};

} // namespace Zornet
