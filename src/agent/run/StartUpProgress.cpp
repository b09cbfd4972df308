#include "agent/run/StartUpProgress.h"

#include "agent/output/Grouped.h"

namespace Agent {

double
StartUpProgress::share() const {
    Kiv::U64 const all = allHosts + allGroups;
    return all == 0 ? 1.0 : static_cast<double>( hosts + groups ) / static_cast<double>( all );
}

std::string
StartUpProgress::text() const {
    std::string const ofHosts = grouped( hosts ) + " of " + grouped( allHosts ) + " hosts " + done;
    return allGroups == 0 ? ofHosts
                          : ofHosts + ", " + grouped( groups ) + " of " + grouped( allGroups ) + " groups";
}

} // namespace Agent
