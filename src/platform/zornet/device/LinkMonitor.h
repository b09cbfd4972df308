#pragma once

#include <linux/netlink.h>
#include <sys/types.h>

#include <map>
#include <span>

#include "platform/kiv/Activity.h"
#include "platform/kiv/String8.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Zornet {

/// What is known of a link by name.
struct LinkState {
    U32 index = 0; ///< 0 where there is no such link
    bool up = false;
    int error = 0; ///< why nothing can be known, as an error number; 0 where all is
};

/// The receiver of a link's changes.
class LinkHandler {
  public:
    virtual ~LinkHandler() = default;
    virtual void handleLink( LinkState const& state ) = 0;
};

/// Watches the links of one network namespace for those who want to know of one by name: that it appeared,
/// went up, went down, was renamed or removed. It listens and never polls. It has the namespace open only
/// while somebody watches, and lets go of it when its name goes, so that the namespace can vanish.
class LinkMonitor : public Kiv::PtrInterface, private Kiv::IoHandler {
  public:
    LinkMonitor( NamespaceName const& ns, Kiv::Ptr<Kiv::ActivityConfig> const& activity );
    ~LinkMonitor() override;

    /// Watches the link of that name, one handler a name, and returns its present state. The handler must be
    /// taken back before it goes.
    LinkState watchIs( Kiv::String8 const& link, LinkHandler* handler );
    void watchDel( Kiv::String8 const& link );

    /// To be called when the names of namespaces may have changed: a name that is gone, or stands for another
    /// namespace now, takes its links along.
    void handleNamespaces();

  private:
    struct Watch {
        LinkHandler* handler;
        U32 index; ///< as last told
    };
    /// Which namespace a name stands for.
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        friend bool operator==( Identity const&, Identity const& ) = default;
    };

    void handleIo( Kiv::U32 events ) override;
    void open();
    void close();
    Identity identity() const;
    LinkState state( Kiv::String8 const& link ) const;
    void tell( Kiv::String8 const& link );
    void tellAll();
    void handleMessages( std::span<U8 const> messages );
    void handleLinkMessage( nlmsghdr const* message );

    NamespaceName const ns_;
    Kiv::Ptr<Kiv::ActivityConfig> const activity_;
    FileDescriptor netlink_;
    int error_ = 0; ///< why there is no netlink socket
    Identity identity_;
    std::map<Kiv::String8, Watch> watches_;
};

} // namespace Zornet
