#pragma once

#include <optional>
#include <span>

#include "lab/QuerierConfig.h"
#include "platform/zornet/IgmpV12Hdr.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"

namespace Lab {

/// What a router finds in a received frame. Invariant: for the verdict `good` the pointer `igmp` stands, the
/// message is `igmpBytes` long, at least 8, and its own checksum and that of its IP header are right. It
/// points into the frame.
class IgmpFrame {
  public:
    enum class Verdict {
        good,
        foreign,
        truncated,
        badIpHeader,
        badIpChecksum,
        fragment,
        badIgmpLength,
        badIgmpChecksum,
    };

    /// Reads a frame that is to be tagged with `vlanId`, or to carry no VLAN. Any bytes will do.
    IgmpFrame( std::span<U8 const> frame, std::optional<Bridging::VlanId> const& vlanId );

    Verdict verdict() const { return verdict_; }

    // For a good frame only.
    EthAddr const& ethDst() const { return ethDst_; }
    IpAddr const& src() const { return src_; }
    IpAddr const& dst() const { return dst_; }
    U8 ttl() const { return ttl_; }
    bool hasRouterAlert() const { return hasRouterAlert_; }
    U32 igmpBytes() const { return static_cast<U32>( igmp_.size() ); }
    Zornet::IgmpV12Hdr const& v12() const { return header<Zornet::IgmpV12Hdr>(); }
    Zornet::IgmpV3ReportHdr const& v3Report() const { return header<Zornet::IgmpV3ReportHdr>(); }
    /// The message must have 12 bytes.
    Zornet::IgmpV3QueryHdr const& v3Query() const { return header<Zornet::IgmpV3QueryHdr>(); }
    std::span<U8 const> igmp() const { return igmp_; }

  private:
    Verdict read( std::span<U8 const> frame, std::optional<Bridging::VlanId> const& vlanId );
    Verdict readIp( std::span<U8 const> packet );
    Verdict readIgmp();

    template <class Header>
    Header const& header() const {
        return *reinterpret_cast<Header const*>( igmp_.data() );
    }

    EthAddr ethDst_;
    IpAddr src_;
    IpAddr dst_;
    U8 ttl_ = 0;
    bool hasRouterAlert_ = false;
    std::span<U8 const> igmp_;
    Verdict verdict_;
};

} // namespace Lab
