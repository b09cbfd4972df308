#pragma once

#include <map>

#include "agent/control/ControlClient.h"
#include "agent/output/AttributeJson.h"
#include "platform/kiv/GenericIf.h"

namespace Agent {

/// A change of a host, of one of its groups, or of its status.
struct HostChange {
    std::string host = {};
    std::string group = {}; ///< empty for one of the host or of its status
    bool isOfStatus = false;
    std::string attribute = {}; ///< empty where the whole came or went
    std::string event = {};     ///< "added" or "deleted"; empty for a new value
    nlohmann::ordered_json value = {};
};

/// Tells of every change of the hosts that fit a pattern, in the order in which the changes come. One reactor
/// on each entity does it, through the generic interface, so that every attribute is told of.
class HostWatch {
  public:
    using Told = std::function<void( HostChange const& )>;

    HostWatch( ControlClient const& client, std::string const& pattern, Told told );

  private:
    using Reactor = Kiv::Ptr<Kiv::GenericIfAdapter>;
    /// The record's own reactor and that of its sources, where it has any.
    struct GroupReactors {
        Reactor record;
        Reactor sources;
    };

    bool isWatched( Kiv::Name const& host ) const;
    void watchHost( Igmp::IgmpHost& host );
    void watchGroup( std::string const& host, Igmp::IgmpV3GroupRecord& record );
    void watchSources( std::string const& host, Igmp::IgmpV3GroupRecord& record );
    void watchStatus( Igmp::IgmpHostStatus& status );
    void handleHost( Kiv::Name const& name );
    void handleGroup( Igmp::IgmpHost& host, Zornet::IpAddr const& group );
    void handleStatus( Kiv::Name const& name );
    /// A new value of a scalar.
    void tellValue( HostChange change, Kiv::Entity const& entity, Kiv::AttributeId id ) const;
    void tellEvent( HostChange change, bool isThere ) const;

    ControlClient const& client_;
    std::string const pattern_;
    Told const told_;
    std::vector<Reactor> directories_;
    std::map<std::string, Reactor> hosts_;
    std::map<std::string, std::map<Zornet::IpAddr, GroupReactors>> groups_; ///< by host
    std::map<std::string, Reactor> statuses_;
};

} // namespace Agent
