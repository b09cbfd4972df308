#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/kiv/Entity.h"

namespace Kiv {

/// One replicated stream: a connected, reliable byte stream (a Unix or TCP socket) over which the entities of
/// one process, the server, are mirrored in another, the client, as docs/replication.md describes. It runs on
/// an activity's loop, never blocks, and holds a bounded amount of input and output whatever the peer does:
/// a change that finds no room waits as a mark on its attribute and is sent later, once, with the value it
/// then has.
///
/// A stream that breaks, or a peer that breaks the protocol, ends this connection with a reason and nothing
/// else: the entities stay as they are on both sides. A new connection over the same mirror brings it up to
/// date, and deletes the members that are gone from the server.
class Connection : public PtrInterface {
  public:
    enum class Role {
        server, ///< serves its mounts to the peer
        client, ///< has the peer's mounts mirrored in its own
    };
    /// A tree of entities that is replicated, under a name that both sides know.
    struct Mount {
        Name name;
        Ptr<Entity> entity; ///< server: what is served; client: where the mirror is kept, of the same class
        bool isWritable = false; ///< server: the peer may change it. A client learns it from the server.
    };
    struct Counters {
        U64 bytesReceived = 0;
        U64 bytesSent = 0;
        U64 messagesReceived = 0; ///< attributes, members and markers that were applied
        U64 messagesSent = 0;
    };

    /// Bounds, in bytes. What is buffered never exceeds one of these by more than one frame.
    static constexpr std::size_t outputLimit = 256 * 1024;
    static constexpr std::size_t inputLimit = 128 * 1024;

    /// Takes over `descriptor`, a connected stream socket, makes it non-blocking and closes it at the end. A
    /// client's mounts name what it wants; a server offers its mounts and serves those that are asked for.
    /// `peerName` is for the trace and for messages. A null activity means the default one. The connection
    /// lives for as long as somebody holds it; letting go of it closes it without a word.
    Connection(
        int descriptor, Role role, std::vector<Mount> const& mounts, String8 const& peerName,
        Ptr<ActivityConfig> const& activity = nullptr
    );
    ~Connection() override;

    /// Called once, from the loop and never from within a mutator or end(), when the connection has ended:
    /// the peer went, it broke the protocol, or end() was called. The callee may let go of the connection.
    void onEndIs( std::function<void( String8 const& reason )> const& callback );
    /// Client: called once, when every mount stands in full for the first time.
    void onSynchronisedIs( std::function<void()> const& callback );
    /// Called each time that everything written so far has been applied by the peer, so that isSettled().
    void onSettledIs( std::function<void()> const& callback );

    bool isOpen() const;
    /// Why the connection ended; empty while it is open.
    String8 const& endReason() const;
    /// Client: every mount stood in full once. Server: everything has been told once to the peer.
    bool isSynchronised() const;
    /// Every change that was made here up to now to a replicated entity has been applied by the peer, the
    /// reactions of its own reactors included, or there was none. A client that sets something and wants to
    /// leave waits for isSynchronised(), sets it, waits for isSettled(), and leaves.
    bool isSettled() const;
    /// Client: whether changes to that mount travel to the server; false before the server has said so.
    bool isWritable( Name const& mount ) const;

    /// Sends what the socket takes at once, tells the peer the reason, and closes. onEnd() follows from the
    /// loop.
    void end( String8 const& reason );

    Role role() const;
    String8 const& peerName() const;
    Counters const& counters() const;
    /// Bytes that wait for the socket.
    std::size_t outputBytes() const;

  private:
    class Stream;

    std::unique_ptr<Stream> stream_;
};

} // namespace Kiv
