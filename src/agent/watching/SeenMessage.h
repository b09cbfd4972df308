#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/zornet/EthAddr.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"
#include "platform/zornet/IpAddr.h"

namespace Agent {

/// An IGMP message as it was seen on a device: all that can be read of a frame, and what is wrong with it.
/// Any bytes will do. What lies behind a fault that keeps the rest from being read stays empty.
class SeenMessage {
  public:
    /// What a message says of one group.
    struct Group {
        Zornet::IpAddr group;
        std::vector<Zornet::IpAddr> sources{};
        std::optional<Zornet::IgmpV3GroupRecordType> recordType{}; ///< in a version 3 report
    };
    /// What a query says beside its group. The last three are of version 3.
    struct Query {
        Kiv::Seconds maxResponse;
        Kiv::Seconds interval = 0.0;
        Zornet::U8 robustness = 0;
        bool suppress = false;
    };

    /// Reads a frame with its tags. `time` in seconds since 1970.
    SeenMessage( Kiv::Seconds time, std::span<Zornet::U8 const> frame );

    /// What kind of message it is, such as "general query"; never empty.
    std::string const& kind() const { return kind_; }
    /// 1 to 3; 0 where it cannot be told.
    int version() const { return version_; }
    std::vector<Zornet::U16> const& vlans() const { return vlans_; }
    std::vector<Group> const& groups() const { return groups_; }
    std::optional<Query> const& query() const { return query_; }
    /// Each in a few words, such as "wrong IGMP checksum".
    std::vector<std::string> const& faults() const { return faults_; }

    /// One line without its end: time of day, who, in which VLAN, version, kind, groups with sources, faults
    /// between brackets.
    friend std::ostream& operator<<( std::ostream& out, SeenMessage const& message );
    nlohmann::ordered_json json() const;

  private:
    using Bytes = std::span<Zornet::U8 const>;

    Bytes readEthernet( Bytes frame );
    Bytes readIp( Bytes packet );
    void readIgmp( Bytes message );
    void readVersion12( Bytes message, int version, char const* kind );
    void readQuery( Bytes message );
    void readV3Query( Bytes message );
    void readV3Report( Bytes message );
    /// Notes the fault; the empty rest says that nothing more is read.
    Bytes fault( char const* text );
    void printGroups( std::ostream& out ) const;

    Kiv::Seconds time_;
    Zornet::EthAddr srcMac_;
    Zornet::EthAddr dstMac_;
    std::vector<Zornet::U16> vlans_;
    Zornet::IpAddr src_;
    Zornet::IpAddr dst_;
    Zornet::U8 ttl_ = 0;
    int version_ = 0;
    std::string kind_ = "unreadable";
    std::optional<Query> query_;
    std::vector<Group> groups_;
    std::vector<std::string> faults_;
};

} // namespace Agent
