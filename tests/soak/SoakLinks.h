#pragma once

#include <memory>
#include <optional>

#include "lab/Querier.h"
#include "lab/Wire.h"
#include "tests/soak/SoakHosts.h"

namespace Soak {

/// What happened on the links.
struct LinkFigures {
    U64 queriers = 0; ///< that came
    U64 troubles = 0; ///< changes of losses, delays, duplication, reordering
    U64 flaps = 0;    ///< links that went down
    U64 vanished = 0; ///< devices that were taken away
    U64 frames = 0;   ///< sent
    U64 lost = 0;
    U64 digest = 0; ///< of every frame sent, its time and its sender's segment
};

/// The segments of a soak test with their troubles, and the queriers on them: at most two in each of the
/// VLANs and among untagged frames, which come, go and change their version.
class SoakLinks {
  public:
    SoakLinks( U32 segments, Ptr<Lumo::TimerWheel> const& wheel, U64 seed );
    ~SoakLinks();

    /// Does one thing to one segment.
    void change( Random& random );
    /// Links that have been down long enough come up, and devices come back.
    void mend();
    /// No querier, no trouble, every link up.
    void rest();

    std::size_t inFlight();
    std::size_t queriers() const;
    LinkFigures figures();

  private:
    /// A querier and its access object.
    struct Router {
        std::unique_ptr<Lab::Querier> querier;
        Ptr<Zornet::EthDevPam> pam;

        Router(
            Lab::QuerierConfig const& config, std::string const& device, Ptr<Lumo::TimerWheel> const& wheel
        );
        Router( Router&& ) = default;
        Router& operator=( Router&& ) = default;
        ~Router();
    };
    /// A device that is down, or away, until then.
    struct Outage {
        U32 segment;
        std::string device;
        bool away;
        Seconds until;
    };
    static constexpr U32 places = 6; ///< for queriers on a segment: two in each of three VLANs

    Lab::WireSegment& segment( U32 number ) { return wire_.segment( segmentName( number ) ); }
    void changeQuerier( Random& random, U32 segment );
    static Lab::QuerierConfig randomConfig( Random& random, U32 segment, U32 place );
    void changeImpairment( Random& random, U32 segment );
    void breakLink( Random& random, U32 segment );
    void mend( Outage const& outage );
    void digest( U32 segment, Lab::WireFrame const& frame );

    U32 const segments_;
    Ptr<Lumo::TimerWheel> const wheel_;
    Lab::Wire wire_;
    Zornet::DeviceProviderScope const scope_{ wire_ };
    std::vector<std::optional<Router>> routers_;
    std::vector<Outage> outages_;
    LinkFigures figures_;
};

} // namespace Soak
