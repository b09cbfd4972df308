#pragma once

#include <functional>
#include <random>
#include <vector>

#include "lab/Capture.h"
#include "lab/Impairment.h"
#include "lab/Timer.h"
#include "lab/WireDevice.h"

namespace Lab {

/// One shared medium: what a device sends reaches every other device of the segment, and never itself. Frames
/// arrive from the timer wheel, in a later turn than the one that sent them, in the order of their arrival
/// times and among equal ones in the order of sending.
class WireSegment {
  public:
    using Random = std::mt19937_64;
    /// Tells of each frame whether it is to be lost, before chance has its say.
    using Drop = std::function<bool( WireFrame const& frame )>;

    struct Counters {
        Zornet::U64 sent = 0;
        Zornet::U64 lost = 0;
        Zornet::U64 duplicated = 0;
        Zornet::U64 heldBack = 0;
        Zornet::U64 received = 0; ///< a frame counts once for each device that hears it
    };

    /// `random` is the wire's and outlives the segment.
    WireSegment( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, Random& random );
    WireSegment( WireSegment const& ) = delete;
    WireSegment& operator=( WireSegment const& ) = delete;

    Impairment const& impairment() const { return impairment_; }
    /// For frames sent from now on. Raises RangeException for a value outside its range.
    void impairmentIs( Impairment const& impairment );
    /// An empty function loses nothing.
    void dropIs( Drop drop ) { drop_ = std::move( drop ); }
    /// Puts a copy of each frame into `capture`; null for none.
    void captureIs( Capture* capture ) { capture_ = capture; }
    Counters const& counters() const { return counters_; }
    /// Frames that are on their way.
    std::size_t inFlight() const { return inFlight_.size(); }

    void deviceIs( WireDevice& device );
    void deviceDel( WireDevice& device );
    /// Takes a copy of a frame that a device of the segment sends.
    void transmit( WireDevice const& from, std::span<Zornet::U8 const> frame );

  private:
    using Bytes = std::vector<Zornet::U8>;

    struct Flight {
        Kiv::Seconds arrival;
        Zornet::U64 number;
        WireDevice const* from;
        Bytes bytes;
    };
    struct LaterArrival {
        bool operator()( Flight const& a, Flight const& b ) const {
            return a.arrival > b.arrival || ( a.arrival == b.arrival && a.number > b.number );
        }
    };

    bool isLost( WireFrame const& frame );
    /// True with that probability. Draws nothing for one of 0 or 1.
    bool happens( double probability );
    double fraction();
    Kiv::Seconds arrivalTime();
    void launch( WireDevice const& from, std::span<Zornet::U8 const> frame );
    Flight land();
    void handleArrivals();
    void hand( Flight const& flight );

    Random& random_;
    Impairment impairment_;
    Drop drop_;
    Capture* capture_ = nullptr;
    Counters counters_;
    std::vector<WireDevice*> devices_; ///< with holes while frames are being handed over
    unsigned handing_ = 0;
    std::vector<Flight> inFlight_; ///< a heap, the next to arrive in front
    std::vector<Bytes> spare_;     ///< buffers of frames that have arrived
    Zornet::U64 launched_ = 0;
    Kiv::Seconds lastArrival_ = 0.0;
    Kiv::Ptr<Timer> timer_;
};

} // namespace Lab
