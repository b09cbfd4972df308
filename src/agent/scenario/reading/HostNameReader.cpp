#include "agent/scenario/reading/HostNameReader.h"

namespace Agent {

std::vector<HostName>
readHostNames( YamlReader& yaml, YamlField const& field ) {
    std::vector<HostName> names;
    auto const read = [&]( YamlField const& name ) {
        std::string const text = yaml.readText( name ).value_or( "" );
        if ( !text.empty() ) {
            names.push_back( { text, name.at } );
        } else if ( name.value.IsScalar() ) {
            yaml.error( name.at, name.key + ": expected the name of a host or a pattern, found ''" );
        }
    };
    if ( !field.value.IsSequence() ) {
        read( field );
    } else if ( field.value.size() == 0 ) {
        yaml.error( field.at, field.key + ": expected the name of a host or a pattern, found an empty list" );
    } else {
        yaml.readList( field, read );
    }
    return names;
}

} // namespace Agent
