#include "agent/querying/Query.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

namespace {

void
addProtocol( CLI::App& command, QueryOptions& options ) {
    Lab::QuerierConfig& config = options.config;
    auto const version = [&config]( std::string const& text ) {
        config.version = static_cast<Zornet::U8>( protocolOf( text ) );
        return config.version;
    };
    addParsed( command, "--igmp-version", config.version, version, "V", "Protocol to ask by, 1 to 3 [3]" );
    addParsed(
        command, "--interval", config.queryInterval, durationOf, "S",
        "Seconds from general query to query [125]"
    );
    addParsed(
        command, "--response-time", options.responseTime, durationOf, "S",
        "Seconds within which hosts are to answer [10, or half of the interval where that is less]"
    );
    addParsed(
        command, "--last-member", config.lastMemberQueryInterval, durationOf, "S",
        "Seconds within which hosts are to answer after a leave [1]"
    );
    addWhole<Zornet::U32>(
        command, "--robustness", config.robustness, "How often queries are repeated [2]", 1, 255
    );
    command.add_flag( "--elect", config.electionEnabled, "Yield to a querier with a lower address" );
}

template <class Address>
Address
addressOf( std::string const& text ) {
    return Address( text );
}

void
addPlace( CLI::App& command, QueryOptions& options ) {
    addDevice( command, options.device, options.ns );
    addParsed(
        command, "--address", options.ipAddr, addressOf<Zornet::IpAddr>, "IP",
        "Address to ask from [that of the device, else 10.0.0.254]"
    );
    addParsed(
        command, "--mac", options.macAddr, addressOf<Zornet::EthAddr>, "MAC",
        "Ethernet address to ask from [that of the device]"
    );
    auto const vlan = []( std::string const& text ) {
        return Bridging::VlanId( static_cast<Zornet::U16>( wholeNumberOf( text, 1, 4094 ) ) );
    };
    addParsed(
        command, "--vlan", options.config.vlanId, vlan, "VLAN", "Ask and listen in this VLAN, tagged"
    );
}

} // namespace

Verb
addQuery( CLI::App& app ) {
    auto const options = std::make_shared<QueryOptions>();
    CLI::App& command =
        *app.add_subcommand( "query", "Be the querier on a device and show who wants which groups" );
    addPlace( command, *options );
    addProtocol( command, *options );
    command.add_flag( "--once", options->once, "Ask one time, wait for the answers, print the membership" );
    command.add_flag( "--json", options->json, "Print JSON" );
    addParsed( command, "--duration", options->duration, durationOf, "S", "End after so many seconds" );
    addTraces( command, options->traces );
    return { &command, [options] { return query( *options ); } };
}

} // namespace Agent
