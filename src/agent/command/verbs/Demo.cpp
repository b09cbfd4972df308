#include "agent/demo/Demo.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

Verb
addDemo( CLI::App& app ) {
    constexpr U32 mostGroups = 100'000;
    constexpr U32 mostVlans = 4094;
    auto const options = std::make_shared<DemoOptions>();
    CLI::App& command = *app.add_subcommand(
        "demo", "Run hosts on a wire in memory against a reference querier, and compare what both know"
    );
    addWhole<U32>( command, "--hosts", options->hosts, "Number of hosts [1000]", 1, mostHosts );
    addWhole<U32>( command, "--groups", options->groups, "Groups that each host joins [10]", 0, mostGroups );
    addParsed(
        command, "--igmp-version", options->igmpVersion, protocolOf, "V",
        "Protocol of hosts and querier, 1 to 3 [2]"
    );
    addWhole<U32>(
        command, "--vlans", options->vlans,
        "Tag the hosts, spread over that many VLANs with a querier in each", 0, mostVlans
    );
    addParsed(
        command, "--duration", options->duration, durationOf, "S", "Seconds of the hosts' time [600]"
    );
    command.add_flag( "--realtime", options->realtime, "Let the hosts' time pass as it does" );
    addTraces( command, options->traces );
    return { &command, [options] { return demo( *options ); } };
}

} // namespace Agent
