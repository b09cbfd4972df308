#include <cmath>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/HostWatch.h"
#include "agent/control/ctl/Selection.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

/// The time of day, to the millisecond.
std::string
timeOfDay( Kiv::Seconds time ) {
    auto const whole = static_cast<time_t>( time );
    auto const milliseconds = static_cast<int>( ( time - std::floor( time ) ) * 1000 );
    std::tm local{};
    localtime_r( &whole, &local );
    std::ostringstream text;
    text << std::put_time( &local, "%H:%M:%S." ) << std::setfill( '0' ) << std::setw( 3 ) << milliseconds;
    return text.str();
}

/// "rx-1", "rx-1/239.1.1.1" or "rx-1 status", then what became of it.
std::string
lineOf( HostChange const& change ) {
    std::string line = change.host + ( change.group.empty() ? "" : "/" + change.group );
    std::string const prefix = change.isOfStatus ? "status." : "";
    if ( !change.attribute.empty() ) {
        line += " " + prefix + change.attribute + " " +
                ( change.value.is_string() ? change.value.get<std::string>() : change.value.dump() );
    } else if ( change.isOfStatus ) {
        line += " status";
    }
    return line + ( change.event.empty() ? "" : " " + change.event );
}

Json
jsonOf( HostChange const& change, Kiv::Seconds time ) {
    Json json = { { "time", time }, { "host", change.host } };
    if ( !change.group.empty() ) {
        json["group"] = change.group;
    }
    if ( change.isOfStatus ) {
        json["of"] = "status";
    }
    if ( !change.attribute.empty() ) {
        json["attribute"] = change.attribute;
        json["value"] = change.value;
    }
    if ( !change.event.empty() ) {
        json["event"] = change.event;
    }
    return json;
}

} // namespace

void
ctlWatch( CtlOptions const& options ) {
    ControlClient client( options.path, options.patience );
    client.synchronise();
    if ( !isPattern( options.host ) ) {
        selectedHosts( client, options.host );
    }
    Kiv::U64 changes = 0;
    Kiv::U64 const most = options.changes.value_or( std::numeric_limits<Kiv::U64>::max() );
    HostWatch const watch( client, options.host, [&]( HostChange const& change ) {
        if ( changes++ < most ) {
            Kiv::Seconds const now = Kiv::now();
            std::cout << ( options.isJson ? textOf( jsonOf( change, now ) )
                                          : timeOfDay( now ) + " " + lineOf( change ) )
                      << std::endl;
        }
    } );
    std::cerr << "igmphost: watching " << ( options.host.empty() ? "every host" : options.host ) << " until "
              << ( options.duration || options.changes ? "the end" : "Ctrl-C" ) << std::endl;
    client.watch( [&] { return changes >= most; }, options.duration.value_or( Kiv::never ) );
}

} // namespace Agent
