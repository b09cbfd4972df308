#include "agent/scenario/reading/SettingReader.h"

#include <algorithm>

#include "model/IgmpHost.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Attributes = std::vector<Kiv::Attribute const*>;

/// The writable scalars, some apart.
Attributes
settable( std::span<Kiv::Attribute const> table, std::initializer_list<Kiv::AttributeId> apart ) {
    Attributes attributes;
    for ( Kiv::Attribute const& row : table ) {
        if ( row.isWritable() && std::find( apart.begin(), apart.end(), row.id ) == apart.end() ) {
            attributes.push_back( &row );
        }
    }
    return attributes;
}

} // namespace

/// An access object cannot be handed in from outside the process.
std::span<Kiv::Attribute const* const>
settableHostAttributes() {
    static Attributes const attributes = settable( IgmpHost::attributes(), { IgmpHost::attrExternalPam } );
    return attributes;
}

/// The generation of a record is the agent's to raise, and a copy's template the engine's to write.
std::span<Kiv::Attribute const* const>
settableGroupAttributes() {
    static Attributes const attributes = settable(
        IgmpV3GroupRecord::attributes(),
        { IgmpV3GroupRecord::attrVersion, IgmpV3GroupRecord::attrReplicateGroup }
    );
    return attributes;
}

KeySet
keySet( char const* what, std::span<KeyRow const> rows, std::span<Kiv::Attribute const* const> attributes ) {
    KeySet keys{ what, {}, {} };
    for ( KeyRow const& row : rows ) {
        keys.known.push_back( row.name );
        if ( row.isRequired ) {
            keys.required.push_back( row.name );
        }
    }
    for ( Kiv::Attribute const* const attribute : attributes ) {
        keys.known.emplace_back( attribute->name );
    }
    return keys;
}

bool
readSetting(
    YamlReader& yaml, YamlField const& field, std::span<Kiv::Attribute const* const> attributes,
    Settings& settings
) {
    auto const row =
        std::find_if( attributes.begin(), attributes.end(), [&]( Kiv::Attribute const* attribute ) {
            return field.key == attribute->name;
        } );
    if ( row == attributes.end() ) {
        return false;
    }
    if ( auto const value = yaml.readValue( field, *( *row )->type ) ) {
        settings.settingIs( { *row, *value, field.at } );
    }
    return true;
}

} // namespace Agent
