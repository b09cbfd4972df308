#include "agent/run/RunPart.h"

namespace Agent {

DeviceTraffic
RunContext::hostsTraffic() const {
    DeviceTraffic all;
    for ( auto const& [label, device] : traffic.devices() ) {
        if ( !farEnds.contains( label ) ) {
            all += device;
        }
    }
    return all;
}

} // namespace Agent
