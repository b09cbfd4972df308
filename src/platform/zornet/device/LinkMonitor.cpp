#include "platform/zornet/device/LinkMonitor.h"

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <vector>

#include "platform/zornet/device/NamespaceEntry.h"

namespace Zornet {

namespace {

FileDescriptor
linkSocket() {
    FileDescriptor socket( ::socket( AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE ) );
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK;
    if ( socket &&
         bind( socket.get(), reinterpret_cast<sockaddr const*>( &address ), sizeof address ) != 0 ) {
        return FileDescriptor();
    }
    return socket;
}

std::string_view
linkName( nlmsghdr const* message ) {
    auto const* const link = static_cast<ifinfomsg const*>( NLMSG_DATA( message ) );
    auto bytes = static_cast<unsigned>( IFLA_PAYLOAD( message ) );
    for ( auto const* at = IFLA_RTA( link ); RTA_OK( at, bytes ); at = RTA_NEXT( at, bytes ) ) {
        if ( at->rta_type == IFLA_IFNAME ) {
            return static_cast<char const*>( RTA_DATA( at ) );
        }
    }
    return {};
}

} // namespace

LinkMonitor::LinkMonitor( NamespaceName const& ns, Kiv::Ptr<Kiv::ActivityConfig> const& activity )
    : ns_( ns ), activity_( activity ) {}

LinkMonitor::~LinkMonitor() {
    close();
}

LinkState
LinkMonitor::watchIs( Kiv::String8 const& link, LinkHandler* handler ) {
    if ( watches_.empty() ) {
        open();
    }
    LinkState const now = state( link );
    watches_[link] = { handler, now.index };
    return now;
}

void
LinkMonitor::watchDel( Kiv::String8 const& link ) {
    watches_.erase( link );
    if ( watches_.empty() ) {
        close();
    }
}

void
LinkMonitor::handleNamespaces() {
    if ( watches_.empty() || ( netlink_ && identity() == identity_ ) ) {
        return;
    }
    if ( netlink_ ) {
        close();
        error_ = ENOENT;
        tellAll();
    }
    if ( !watches_.empty() && !netlink_ ) {
        open();
        tellAll();
    }
}

void
LinkMonitor::open() {
    identity_ = identity();
    NamespaceEntry const entry( ns_ );
    error_ = entry.error();
    if ( error_ != 0 ) {
        return;
    }
    netlink_ = linkSocket();
    error_ = netlink_ ? 0 : errno;
    if ( netlink_ ) {
        activity_->activitySm().ioHandlerIs( netlink_.get(), EPOLLIN, this );
    }
}

void
LinkMonitor::close() {
    if ( netlink_ ) {
        activity_->activitySm().ioHandlerDel( netlink_.get() );
        netlink_ = FileDescriptor();
    }
}

LinkMonitor::Identity
LinkMonitor::identity() const {
    FileDescriptor const file = ns_.empty() ? FileDescriptor() : namespaceFile( ns_ );
    struct stat status {};
    if ( file && fstat( file.get(), &status ) == 0 ) {
        return { status.st_dev, status.st_ino };
    }
    return {};
}

LinkState
LinkMonitor::state( Kiv::String8 const& link ) const {
    ifreq request{};
    if ( !netlink_ || link.empty() || link.bytes() >= sizeof request.ifr_name ) {
        return { 0, false, error_ };
    }
    link.view().copy( request.ifr_name, link.bytes() );
    if ( ioctl( netlink_.get(), SIOCGIFINDEX, &request ) != 0 ) {
        return {};
    }
    auto const index = static_cast<U32>( request.ifr_ifindex );
    bool const up =
        ioctl( netlink_.get(), SIOCGIFFLAGS, &request ) == 0 && ( request.ifr_flags & IFF_UP ) != 0;
    return { index, up, 0 };
}

void
LinkMonitor::tell( Kiv::String8 const& link ) {
    auto const watch = watches_.find( link );
    if ( watch != watches_.end() ) {
        LinkState const now = state( link );
        watch->second.index = now.index;
        watch->second.handler->handleLink( now );
    }
}

/// By name, because those who are told may watch and cease to.
void
LinkMonitor::tellAll() {
    std::vector<Kiv::String8> links;
    for ( auto const& [link, watch] : watches_ ) {
        links.push_back( link );
    }
    for ( Kiv::String8 const& link : links ) {
        tell( link );
    }
}

void
LinkMonitor::handleIo( Kiv::U32 ) {
    Kiv::Ptr<LinkMonitor> const self( this );
    alignas( nlmsghdr ) std::array<U8, 32768> buffer;
    while ( netlink_ ) {
        ssize_t const bytes = recv( netlink_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT );
        if ( bytes > 0 ) {
            handleMessages( { buffer.data(), static_cast<std::size_t>( bytes ) } );
        } else if ( bytes < 0 && errno == ENOBUFS ) {
            tellAll(); // messages were lost
        } else {
            return;
        }
    }
}

void
LinkMonitor::handleMessages( std::span<U8 const> messages ) {
    auto left = static_cast<unsigned>( messages.size() );
    auto const* message = reinterpret_cast<nlmsghdr const*>( messages.data() );
    for ( ; NLMSG_OK( message, left ); message = NLMSG_NEXT( message, left ) ) {
        if ( message->nlmsg_type == RTM_NEWLINK || message->nlmsg_type == RTM_DELLINK ) {
            handleLinkMessage( message );
        }
    }
}

/// A link is watched under the name it has now, or was under the one it had before.
void
LinkMonitor::handleLinkMessage( nlmsghdr const* message ) {
    auto const index = static_cast<U32>( static_cast<ifinfomsg const*>( NLMSG_DATA( message ) )->ifi_index );
    std::string_view const name = linkName( message );
    std::vector<Kiv::String8> concerned;
    for ( auto const& [link, watch] : watches_ ) {
        if ( watch.index == index || link.view() == name ) {
            concerned.push_back( link );
        }
    }
    for ( Kiv::String8 const& link : concerned ) {
        tell( link );
    }
}

} // namespace Zornet
