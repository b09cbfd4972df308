#pragma once

#include "tests/support/Namespace.h"

namespace Bench {

/// Two namespaces with a veth device in each, up and joined to one another.
struct VethPair {
    VethPair();

    static constexpr char const* nearDevice = "vb0"; ///< the hosts' end
    static constexpr char const* farDevice = "vb1";
    Support::Namespace const nearNs{ "bench-near" };
    Support::Namespace const farNs{ "bench-far" };
};

} // namespace Bench
