#include "lab/WireSegment.h"

#include <algorithm>
#include <utility>

namespace Lab {

using Zornet::U8;

WireSegment::WireSegment( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, Random& random )
    : random_( random ), timer_( new Timer( wheel, [this] { handleArrivals(); } ) ) {}

void
WireSegment::impairmentIs( Impairment const& impairment ) {
    impairment.check();
    impairment_ = impairment;
}

void
WireSegment::deviceIs( WireDevice& device ) {
    devices_.push_back( &device );
    device.segmentIs( this );
}

void
WireSegment::deviceDel( WireDevice& device ) {
    std::replace( devices_.begin(), devices_.end(), &device, static_cast<WireDevice*>( nullptr ) );
    if ( handing_ == 0 ) {
        std::erase( devices_, nullptr );
    }
    device.segmentIs( nullptr );
}

void
WireSegment::transmit( WireDevice const& from, std::span<U8 const> bytes ) {
    WireFrame frame{ Kiv::now(), from.label(), bytes };
    frame.lost = isLost( frame );
    ++counters_.sent;
    if ( capture_ ) {
        capture_->frameIs( frame );
    }
    if ( frame.lost ) {
        ++counters_.lost;
        return;
    }
    launch( from, bytes );
    if ( happens( impairment_.duplication ) ) {
        ++counters_.duplicated;
        launch( from, bytes );
    }
}

bool
WireSegment::isLost( WireFrame const& frame ) {
    return ( drop_ && drop_( frame ) ) || happens( impairment_.loss );
}

bool
WireSegment::happens( double probability ) {
    return probability >= 1.0 || ( probability > 0.0 && fraction() < probability );
}

/// At least 0 and below 1, the same on every machine.
double
WireSegment::fraction() {
    return static_cast<double>( random_() >> 11 ) * 0x1p-53;
}

Kiv::Seconds
WireSegment::arrivalTime() {
    Kiv::Seconds const jitter = impairment_.jitter > 0.0 ? impairment_.jitter * fraction() : 0.0;
    Kiv::Seconds const arrival = std::max( lastArrival_, Kiv::now() + impairment_.delay + jitter );
    if ( happens( impairment_.reordering ) ) {
        ++counters_.heldBack;
        return arrival + impairment_.reorderingDelay;
    }
    lastArrival_ = arrival;
    return arrival;
}

void
WireSegment::launch( WireDevice const& from, std::span<U8 const> frame ) {
    Bytes bytes;
    if ( !spare_.empty() ) {
        bytes = std::move( spare_.back() );
        spare_.pop_back();
    }
    bytes.assign( frame.begin(), frame.end() );
    inFlight_.push_back( { arrivalTime(), launched_++, &from, std::move( bytes ) } );
    std::push_heap( inFlight_.begin(), inFlight_.end(), LaterArrival() );
    if ( Kiv::Seconds const next = inFlight_.front().arrival; next < timer_->timeMin() ) {
        timer_->timeMinIs( next );
    }
}

WireSegment::Flight
WireSegment::land() {
    std::pop_heap( inFlight_.begin(), inFlight_.end(), LaterArrival() );
    Flight flight = std::move( inFlight_.back() );
    inFlight_.pop_back();
    return flight;
}

/// What is sent in answer to a frame waits for another turn, even where it is to arrive at this very time.
void
WireSegment::handleArrivals() {
    Zornet::U64 const launchedBefore = launched_;
    while ( !inFlight_.empty() && !isAhead( inFlight_.front().arrival ) &&
            inFlight_.front().number < launchedBefore ) {
        Flight flight = land();
        hand( flight );
        spare_.push_back( std::move( flight.bytes ) );
    }
    timer_->timeMinIs( inFlight_.empty() ? Kiv::never : inFlight_.front().arrival );
}

/// A device that is attached meanwhile does not hear the frame.
void
WireSegment::hand( Flight const& flight ) {
    ++handing_;
    for ( std::size_t i = 0, end = devices_.size(); i < end; ++i ) {
        WireDevice* const device = devices_[i];
        if ( device && device != flight.from && device->receive( flight.bytes ) ) {
            ++counters_.received;
        }
    }
    if ( --handing_ == 0 ) {
        std::erase( devices_, nullptr );
    }
}

} // namespace Lab
