#pragma once

#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Zornet {

/// The file that stands for the network namespace of that name, where iproute2 keeps it; none, with errno
/// set, where there is no such namespace. The name must not be empty.
FileDescriptor namespaceFile( NamespaceName const& ns );

/// Puts the calling thread into a network namespace for its own life: what is opened meanwhile belongs there.
/// The empty name stands for the namespace that the thread is in already.
class NamespaceEntry {
  public:
    explicit NamespaceEntry( NamespaceName const& ns );
    ~NamespaceEntry();
    NamespaceEntry( NamespaceEntry const& ) = delete;
    NamespaceEntry& operator=( NamespaceEntry const& ) = delete;

    /// Why the thread is not in that namespace, as an error number; 0 where it is.
    int error() const { return error_; }

  private:
    FileDescriptor outer_; ///< the namespace to go back to; none where the thread never left
    int error_ = 0;
};

} // namespace Zornet
