#include "agent/screen/ScreenPage.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "agent/output/Grouped.h"

namespace Agent {

namespace {

/// As in "1:02:03".
std::string
clockText( Kiv::Seconds span ) {
    constexpr long long minute = 60;
    auto const seconds = static_cast<long long>( span );
    std::ostringstream text;
    text << seconds / ( minute * minute ) << ':' << std::setfill( '0' ) << std::setw( 2 )
         << seconds / minute % minute << ':' << std::setw( 2 ) << seconds % minute;
    return text.str();
}

std::string
bar( double share, std::size_t columns ) {
    constexpr std::size_t longest = 60;
    std::size_t const width = std::min( longest, columns > 10 ? columns - 10 : 0 );
    auto const filled =
        static_cast<std::size_t>( std::clamp( share, 0.0, 1.0 ) * static_cast<double>( width ) );
    return "[" + std::string( filled, '#' ) + std::string( width - filled, '.' ) + "] " +
           std::to_string( static_cast<int>( std::clamp( share, 0.0, 1.0 ) * 100.0 ) ) + " %";
}

std::string
rateText( double rate ) {
    return grouped( static_cast<U64>( std::llround( rate ) ) );
}

std::string
deviceRow( std::string const& name, RunView::Device const& device ) {
    std::ostringstream row;
    row << std::left << std::setw( 22 ) << name << std::right << std::setw( 14 )
        << grouped( device.traffic.sent ) << std::setw( 10 ) << rateText( device.sentPerSecond )
        << std::setw( 14 ) << grouped( device.traffic.received ) << std::setw( 10 )
        << rateText( device.receivedPerSecond ) << std::setw( 10 )
        << grouped( device.traffic.sendLosses + device.traffic.receiveLosses );
    return row.str();
}

std::string
hostsLine( RunView const& view ) {
    StatusLedger::Account const& account = view.account;
    std::ostringstream line;
    line << "hosts   " << grouped( view.hosts );
    for ( std::size_t version = 1; version < account.hostsByVersion.size(); ++version ) {
        line << "   v" << version << ' ' << grouped( account.hostsByVersion[version] );
    }
    line << "   disabled " << grouped( view.hosts - std::min( view.hosts, account.hosts ) );
    return line.str();
}

std::string
nextLine( RunView const& view ) {
    std::ostringstream line;
    line << "next    in " << std::fixed << std::setprecision( 1 )
         << std::max( 0.0, view.next->time - view.time ) << " s: " << view.next->what;
    return line.str();
}

std::vector<std::string>
body( std::string const& title, RunView const& view, std::size_t columns ) {
    std::string const span = view.duration ? " of " + clockText( *view.duration ) : "";
    std::vector<std::string> lines{ "igmphost  " + title + "  " + clockText( view.elapsed ) + span };
    if ( view.duration ) {
        lines.push_back( bar( view.elapsed / *view.duration, columns ) );
    }
    lines.insert(
        lines.end(), { "", hostsLine( view ), "groups  " + grouped( view.account.groups ),
                       "timers  " + grouped( view.timersArmed ) + " armed",
                       "told    " + grouped( view.account.reportsSent() ) + " reports, " +
                           grouped( view.account.counter( Igmp::IgmpHostStatus::attrV2LeavesSent ) ) +
                           " leaves; heard " + grouped( view.account.queriesHeard() ) + " queries" }
    );
    if ( view.next ) {
        lines.push_back( nextLine( view ) );
    }
    std::ostringstream head;
    head << std::left << std::setw( 22 ) << "frames" << std::right << std::setw( 14 ) << "out"
         << std::setw( 10 ) << "/s" << std::setw( 14 ) << "in" << std::setw( 10 ) << "/s" << std::setw( 10 )
         << "lost";
    lines.insert( lines.end(), { "", head.str() } );
    for ( auto const& [label, device] : view.devices ) {
        lines.push_back( deviceRow( label, device ) );
    }
    if ( view.devices.size() != 1 ) {
        lines.push_back( deviceRow( "all", view.all ) );
    }
    return lines;
}

/// The lines on a screen, with the messages below.
std::vector<std::string>
fitted( std::vector<std::string> lines, std::deque<std::string> const& messages, ScreenSize const& size ) {
    lines.emplace_back();
    std::size_t const room = size.rows > lines.size() ? size.rows - lines.size() : 0;
    std::size_t const shown = std::min( room, messages.size() );
    lines.insert( lines.end(), messages.end() - static_cast<std::ptrdiff_t>( shown ), messages.end() );
    lines.resize( std::min( size.rows, lines.size() ) );
    for ( std::string& line : lines ) {
        line.resize( std::min( size.columns, line.size() ) );
    }
    return lines;
}

} // namespace

std::vector<std::string>
screenPage(
    std::string const& title, RunView const& view, std::deque<std::string> const& messages,
    ScreenSize const& size
) {
    return fitted( body( title, view, size.columns ), messages, size );
}

std::vector<std::string>
startUpPage(
    std::string const& title, StartUpProgress const& progress, std::deque<std::string> const& messages,
    ScreenSize const& size
) {
    return fitted(
        { "igmphost  " + title + "  start-up", bar( progress.share(), size.columns ), "", progress.text() },
        messages, size
    );
}

} // namespace Agent
