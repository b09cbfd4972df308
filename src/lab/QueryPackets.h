#pragma once

#include <span>

#include "lab/QuerierConfig.h"
#include "platform/zornet/Pkt.h"

namespace Lab {

/// The queries of one querier as frames. Each kind has one packet that is made once and patched for every
/// use, so a packet that a function returns holds its bytes until the next call for that kind.
class QueryPackets {
  public:
    using PktPtr = Kiv::Ptr<Zornet::Pkt>;

    /// `config` must have passed its check. Its version decides the form: 8 bytes, or those of RFC 3376
    /// section 4.1.
    explicit QueryPackets( QuerierConfig const& config );

    PktPtr const& general() const { return general_; }
    /// `suppress` is the S flag, which versions 1 and 2 do not have.
    PktPtr const& group( IpAddr const& group, bool suppress );
    /// Version 3 only; at most `sourcesPerQuery()` sources.
    PktPtr const& groupAndSources( IpAddr const& group, std::span<IpAddr const> sources, bool suppress );
    /// How many sources the MTU leaves room for.
    U32 sourcesPerQuery() const;

  private:
    U32 ethBytes() const;
    U32 ipHeaderBytes() const;
    U32 igmpOffset() const { return ethBytes() + ipHeaderBytes(); }
    U32 igmpBytes() const;
    PktPtr makePacket( U32 sourceRoom, Seconds maxResponse ) const;
    void writeEth( U8* frame ) const;
    void writeIp( U8* ip ) const;
    void writeIgmp( U8* igmp, Seconds maxResponse ) const;
    void address( Zornet::Pkt& pkt, IpAddr const& group, bool suppress ) const;
    void finish( Zornet::Pkt& pkt, IpAddr const& destination ) const;
    void sourceCountIs( Zornet::Pkt& pkt, std::size_t sources ) const;

    QuerierConfig config_;
    PktPtr general_;
    PktPtr group_;
    PktPtr groupAndSources_;
};

/// 224.0.0.1, all systems on this link.
inline constexpr IpAddr allSystems = IpAddr::fromHost( 0xe0000001 );
/// 224.0.0.2, all routers on this link; leaves go there.
inline constexpr IpAddr allRouters = IpAddr::fromHost( 0xe0000002 );
/// 224.0.0.22, all IGMPv3 routers; version 3 reports go there.
inline constexpr IpAddr allV3Routers = IpAddr::fromHost( 0xe0000016 );

} // namespace Lab
