#include "bench/support/VethPair.h"

namespace Bench {

VethPair::VethPair() {
    Support::vethIs( nearNs, nearDevice, farNs, farDevice );
}

} // namespace Bench
