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

} // namespace Agent
