#pragma once

#include <unordered_map>

#include "agent/control/ControlListener.h"
#include "platform/kiv/Connection.h"

namespace Agent {

/// Serves entities to whoever connects to a socket and may: processes of the same user, and root's. Each peer
/// has a connection of its own, and what it does to that disturbs no other.
class ControlServer {
  public:
    /// Above this, more are refused; each costs a bounded buffer and a mark for each attribute that waits.
    static constexpr std::size_t mostPeers = 256;

    /// Raises as ControlListener does.
    ControlServer( std::string const& path, std::vector<Kiv::Connection::Mount> const& mounts );
    /// Ends every connection.
    ~ControlServer();
    ControlServer( ControlServer const& ) = delete;
    ControlServer& operator=( ControlServer const& ) = delete;

    bool hasReplaced() const { return listener_.hasReplaced(); }
    std::size_t peers() const { return peers_.size(); }
    /// Tells every peer the reason and lets it go.
    void endAll( std::string const& reason );

  private:
    using Number = Kiv::U64;

    void take( Zornet::FileDescriptor descriptor );
    void refuse( Kiv::Connection& connection, std::string const& reason );

    std::vector<Kiv::Connection::Mount> const mounts_;
    Number lastNumber_ = 0;
    std::unordered_map<Number, Kiv::Ptr<Kiv::Connection>> peers_;
    ControlListener listener_;
};

} // namespace Agent
