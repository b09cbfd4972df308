#pragma once

#include <vector>

#include "bench/support/VethPair.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Bench {

/// The usual alternative to emulated hosts: macvlan devices on the near end of a veth pair, all in one
/// namespace, made by `ip -batch`, each with an address of its own and in one group, joined by one process.
/// They speak version 2. They go with the namespace.
class KernelHosts {
  public:
    /// 62,500 at most, numbered from `first` on, so that several may share a link. Raises std::runtime_error
    /// where the kernel refuses.
    KernelHosts( VethPair const& link, std::size_t count, std::size_t first = 0 );
    /// Joins the group at every host.
    void join();

  private:
    VethPair const& link_;
    std::size_t const count_;
    std::size_t const first_;
    std::vector<Zornet::FileDescriptor> sockets_; ///< each holds some of the memberships
};

} // namespace Bench
