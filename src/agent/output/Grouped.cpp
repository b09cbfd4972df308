#include "agent/output/Grouped.h"

namespace Agent {

std::string
grouped( Kiv::U64 number ) {
    std::string text = std::to_string( number );
    for ( auto at = static_cast<long>( text.size() ) - 3; at > 0; at -= 3 ) {
        text.insert( static_cast<std::size_t>( at ), "," );
    }
    return text;
}

std::string
counted( Kiv::U64 count, std::string const& noun, std::string const& plural ) {
    return grouped( count ) + " " + ( count == 1 ? noun : plural.empty() ? noun + "s" : plural );
}

} // namespace Agent
