#include "agent/output/StatusLines.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "agent/output/Grouped.h"

namespace Agent {

namespace {

using Json = nlohmann::ordered_json;

constexpr Kiv::Seconds intervalForPersons = 10.0;

std::string
perSecond( double rate ) {
    return grouped( static_cast<U64>( std::llround( rate ) ) ) + "/s";
}

std::string
byVersion( StatusLedger::Account const& account ) {
    std::string text;
    for ( std::size_t version = 1; version < account.hostsByVersion.size(); ++version ) {
        if ( U64 const hosts = account.hostsByVersion[version] ) {
            text += ( text.empty() ? "v" : ", v" ) + std::to_string( version ) + " " + grouped( hosts );
        }
    }
    return text.empty() ? "none enabled" : text;
}

Json
trafficJson( DeviceTraffic const& traffic ) {
    return { { "framesSent", traffic.sent },
             { "framesReceived", traffic.received },
             { "framesLostSending", traffic.sendLosses },
             { "framesLostReceiving", traffic.receiveLosses } };
}

void
printRow( std::ostream& out, std::string const& name, U64 value ) {
    out << "  " << std::left << std::setw( 34 ) << name << std::right << std::setw( 16 ) << grouped( value )
        << '\n';
}

} // namespace

std::string
statusText( RunView const& view ) {
    std::ostringstream text;
    text << std::fixed << std::setprecision( 0 ) << view.elapsed << " s: " << counted( view.hosts, "host" )
         << " (" << byVersion( view.account ) << "), " << counted( view.account.groups, "group" ) << ", "
         << counted( view.timersArmed, "timer" ) << "; sent " << grouped( view.all.traffic.sent ) << " ("
         << perSecond( view.all.sentPerSecond ) << "), received " << grouped( view.all.traffic.received )
         << " (" << perSecond( view.all.receivedPerSecond ) << "), lost " << grouped( view.losses() );
    return text.str();
}

std::string
statusJson( RunView const& view ) {
    StatusLedger::Account const& account = view.account;
    Json json{ { "time", view.time },
               { "elapsed", view.elapsed },
               { "hosts", view.hosts },
               { "enabledHosts", account.hosts },
               { "hostsByVersion",
                 { { "1", account.hostsByVersion[1] },
                   { "2", account.hostsByVersion[2] },
                   { "3", account.hostsByVersion[3] } } },
               { "groups", account.groups },
               { "timersArmed", view.timersArmed } };
    for ( std::size_t i = 0; i < account.counters.size(); ++i ) {
        json["totals"][StatusLedger::counterRows()[i]->name] = account.counters[i];
    }
    json["devices"] = Json::object();
    for ( auto const& [label, device] : view.devices ) {
        json["devices"][label] = trafficJson( device.traffic );
    }
    return json.dump( -1, ' ', false, Json::error_handler_t::replace );
}

void
printSummary( std::ostream& out, RunView const& view ) {
    std::ostringstream table;
    table << "what the hosts counted\n";
    StatusLedger::Account const& account = view.account;
    for ( std::size_t i = 0; i < account.counters.size(); ++i ) {
        if ( account.counters[i] != 0 ) {
            printRow( table, StatusLedger::counterRows()[i]->name, account.counters[i] );
        }
    }
    for ( auto const& [label, device] : view.devices ) {
        table << "frames on " << label << '\n';
        printRow( table, "sent", device.traffic.sent );
        printRow( table, "received", device.traffic.received );
        printRow( table, "lost", device.traffic.sendLosses + device.traffic.receiveLosses );
    }
    std::istringstream lines( table.str() );
    for ( std::string line; std::getline( lines, line ); ) {
        out << "igmphost: " << line << '\n';
    }
    out << std::flush;
}

StatusLines::StatusLines( RunContext const& context )
    : context_( context ), monitor_( context ), timer_( new Lab::Timer( context.wheel, [this] {
          tell();
          next();
      } ) ) {}

void
StatusLines::handleProgress( StartUpProgress const& progress ) {
    std::cerr << "igmphost: " << progress.text() << std::endl;
}

void
StatusLines::next() {
    timer_->remainingIs( context_.options.statusInterval.value_or( intervalForPersons ) );
}

void
StatusLines::tell() {
    if ( !isJson() ) {
        std::cerr << "igmphost: " << statusText( monitor_.look() ) << std::endl;
        return;
    }
    if ( failed_ ) {
        return;
    }
    std::string const line = statusJson( monitor_.look() );
    if ( line == last_ ) { // an interval ends with the run
        return;
    }
    last_ = line;
    errno = 0;
    std::cout << line << std::endl;
    if ( !std::cout ) {
        failed_ = true;
        std::cerr << "igmphost: error: the status lines end: cannot write the standard output: "
                  << std::strerror( errno ) << "; the hosts go on" << std::endl;
    }
}

ExitStatus
StatusLines::handleEnded() {
    timer_->stop();
    if ( isJson() ) {
        tell();
    }
    printSummary( std::cerr, monitor_.look() );
    return failed_ ? exitFailed : exitDone;
}

} // namespace Agent
