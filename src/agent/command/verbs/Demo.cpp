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
    command.add_option( "--hosts", options->hosts, "Number of hosts" )
        ->check( CLI::Range( 1U, mostHosts ) )
        ->capture_default_str();
    command.add_option( "--groups", options->groups, "Groups that each host joins" )
        ->check( CLI::Range( 0U, mostGroups ) )
        ->capture_default_str();
    addParsed(
        command, "--igmp-version", options->igmpVersion, igmpVersion, "V",
        "Protocol of hosts and querier, 1 to 3 [2]"
    );
    command
        .add_option(
            "--vlans", options->vlans, "Tag the hosts, spread over that many VLANs with a querier in each"
        )
        ->check( CLI::Range( 0U, mostVlans ) );
    addParsed(
        command, "--duration", options->duration, durationOf, "S", "Seconds of the hosts' time [600]"
    );
    command.add_flag( "--realtime", options->realtime, "Let the hosts' time pass as it does" );
    addTraces( command, options->traces );
    return { &command, [options] { return demo( *options ); } };
}

} // namespace Agent
