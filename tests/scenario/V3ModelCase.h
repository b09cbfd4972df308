#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/IgmpHostDirSm.h"
#include "lab/Querier.h"
#include "lab/Wire.h"
#include "tests/scenario/V3Losses.h"

namespace Scenario {

using Igmp::IgmpHost;
using Kiv::Ptr;

/// The size and the times of a case, drawn from its seed.
struct V3ModelShape {
    explicit V3ModelShape( Random& random );

    Seconds start;
    U32 hosts;
    U32 groups;
    U32 sources;
    U32 changes;
    Seconds changeSpan;
    U32 mtu;
    /// Sources that an exclude record may name at most.
    U32 excluded;
    Lab::QuerierConfig querier;
    V3Losses::Limits losses;

  private:
    void drawMtu( Random& random );
};

std::ostream& operator<<( std::ostream& out, V3ModelShape const& shape );

/// One random case on one simulated wire: hosts whose groups change at random while a querier asks and frames
/// are lost, then silence for as long as the querier needs. What it would forward must then be what some host
/// is configured to want, for each group and source. Where one host is alone and loses nothing any more, that
/// holds after each further change as soon as the querier's last queries have ended.
///
/// Kept out is what the engine does on purpose and no querier can get right: records that no packet holds,
/// since their host stalls; periodic reports, since they starve later groups; and exclude records that are
/// cut at the end of a packet, since to a querier a cut record lets the sources through that it does not
/// name. So where an answer needs several packets, an exclude record names one source at most, which is never
/// cut.
class V3ModelCase {
  public:
    explicit V3ModelCase( U64 seed );
    ~V3ModelCase();
    V3ModelCase( V3ModelCase const& ) = delete;
    V3ModelCase& operator=( V3ModelCase const& ) = delete;

    /// Says how the querier's state differs from what is wanted; nothing where it does not.
    std::vector<std::string> run();

    V3ModelShape const& shape() const { return shape_; }
    U64 framesLost() const { return losses_.lost(); }
    /// Writes a line for each group that is configured, each change and each frame. The stream must outlive
    /// the case.
    void logIs( std::ostream& log );

  private:
    U32 below( U32 bound ) { return static_cast<U32>( random_() % bound ); }
    Seconds timeWithin( Seconds span ) { return span * static_cast<double>( below( 1'000'000 ) ) * 1e-6; }
    IpAddr group( U32 number ) const { return IpAddr::fromHost( 0xef010100 + number ); }
    IpAddr source( U32 number ) const { return IpAddr::fromHost( 0x0a090900 + number ); }
    IpAddr randomGroup() { return group( below( shape_.groups ) ); }

    bool handleFrame( Lab::WireFrame const& frame );
    void logChange( IgmpHost const& host, IpAddr const& ofGroup ) const;
    void addHost( U32 number );
    void change( IgmpHost& host );
    void rewrite( Igmp::IgmpV3GroupRecord& record );
    void toggle( Igmp::IgmpV3GroupRecord& record );
    void finish( Igmp::IgmpV3GroupRecord& record );
    void makeChanges();
    void awaitReports();
    bool anyoneOwes() const;
    std::vector<std::string> differences() const;
    bool isWanted( IpAddr const& ofGroup, IpAddr const& fromSource ) const;

    Random random_;
    std::ostream* log_ = nullptr;
    V3ModelShape const shape_;
    Kiv::SimulatedClock clock_;
    Kiv::ClockScope clockScope_;
    Ptr<Lumo::TimerWheel> const wheel_;
    V3Losses losses_;
    Lab::Wire wire_;
    Zornet::DeviceProviderScope providerScope_;
    Ptr<Igmp::IgmpHostDir> const dir_;
    Ptr<Igmp::IgmpHostStatusDir> const statusDir_;
    Ptr<Igmp::IgmpHostDirSm> const dirSm_;
    std::vector<Ptr<IgmpHost>> hosts_;
    Ptr<Zornet::EthDevPam> const pam_;
    Lab::Querier querier_;
};

} // namespace Scenario
