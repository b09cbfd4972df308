#include "agent/timeline/Event.h"

#include <numeric>

namespace Agent {

char const*
actionName( EventAction action ) {
    switch ( action ) {
    case EventAction::set: return "set";
    case EventAction::join: return "join";
    case EventAction::leave: return "leave";
    case EventAction::change: return "change";
    case EventAction::enable: return "enable";
    case EventAction::disable: return "disable";
    case EventAction::add: return "add";
    case EventAction::remove: return "delete";
    case EventAction::zap: return "zap";
    case EventAction::flap: return "flap";
    }
    return "";
}

Kiv::Seconds
Event::stepTime( U64 step ) const {
    if ( spans.empty() ) {
        return time;
    }
    U64 const rounds = step / spans.size();
    auto const part = static_cast<std::ptrdiff_t>( step % spans.size() );
    Kiv::Seconds const round = std::accumulate( spans.begin(), spans.end(), 0.0 );
    return time + static_cast<double>( rounds ) * round +
           std::accumulate( spans.begin(), spans.begin() + part, 0.0 );
}

U64
Event::groupsPerHost() const {
    bool const isWhole = action == EventAction::zap || groups.empty();
    U64 count = isWhole ? 1 : 0;
    for ( std::size_t i = 0; !isWhole && i < groups.size(); ++i ) {
        count += groups[i].groups.count();
    }
    return count;
}

Kiv::Seconds
Event::endTime() const {
    if ( !steps ) {
        return Kiv::never;
    }
    Kiv::Seconds const pacing = rate ? static_cast<double>( unitsPerStep() ) / *rate : 0.0;
    return stepTime( *steps - 1 ) + jitter + pacing;
}

} // namespace Agent
