#include "platform/zornet/device/NamespaceEntry.h"

#include <fcntl.h>
#include <sched.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "platform/kiv/Assert.h"

namespace Zornet {

namespace {

FileDescriptor
readOnly( std::string const& path ) {
    return FileDescriptor( open( path.c_str(), O_RDONLY | O_CLOEXEC ) );
}

} // namespace

FileDescriptor
namespaceFile( NamespaceName const& ns ) {
    std::string const name( ns.name().view() );
    if ( name.find( '/' ) != std::string::npos || name == "." || name == ".." ) {
        errno = EINVAL;
        return FileDescriptor();
    }
    FileDescriptor file = readOnly( "/run/netns/" + name );
    return file ? std::move( file ) : readOnly( "/var/run/netns/" + name );
}

NamespaceEntry::NamespaceEntry( NamespaceName const& ns ) {
    if ( ns.empty() ) {
        return;
    }
    FileDescriptor const inner = namespaceFile( ns );
    FileDescriptor outer = inner ? readOnly( "/proc/thread-self/ns/net" ) : FileDescriptor();
    if ( outer && setns( inner.get(), CLONE_NEWNET ) == 0 ) {
        outer_ = std::move( outer );
    } else {
        error_ = errno;
    }
}

NamespaceEntry::~NamespaceEntry() {
    if ( outer_ ) {
        Kiv::invariant( setns( outer_.get(), CLONE_NEWNET ) == 0, "setns back to the outer namespace" );
    }
}

} // namespace Zornet
