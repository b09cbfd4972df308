#include "agent/scenario/reading/GroupReader.h"

#include "agent/scenario/reading/AddressReader.h"
#include "agent/scenario/reading/SettingReader.h"

namespace Agent {

namespace {

using Igmp::IgmpV3GroupRecord;

/// As a host's applications have it (RFC 3376, section 3.1): without sources a join is one for every source.
void
joinIfNotTold( GroupSpec& spec ) {
    if ( !spec.settings.find( IgmpV3GroupRecord::attrFilterMode ) ) {
        auto const mode = spec.sources.empty() ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include;
        spec.settings.settingIs(
            IgmpV3GroupRecord::attrFilterMode,
            Kiv::ValueTraits<IgmpV3GroupRecord::FilterMode>::format( mode ), spec.at
        );
    }
}

KeySet const&
groupKeySet() {
    static KeySet const keys = [] {
        std::vector<KeyRow> rows = AddressKeys::rows( groupWords );
        rows.insert( rows.end(), groupKeys().begin(), groupKeys().end() );
        return keySet( groupWords.what, rows, settableGroupAttributes() );
    }();
    return keys;
}

void
readGroupMap( ScenarioFile& file, YamlField const& group, GroupSpec& spec ) {
    AddressKeys addressKeys( file, groupWords );
    file.yaml.readMap( group, groupKeySet(), [&]( YamlField const& field ) {
        if ( field.key == "sources" ) {
            spec.sources = readAddresses( file, field, sourceWords );
        } else if ( !addressKeys.take( field ) ) {
            readSetting( file.yaml, field, settableGroupAttributes(), spec.settings );
        }
    } );
    spec.groups = addressKeys.addresses( group ).value_or( AddressList() );
    spec.at = addressKeys.at( group );
}

void
readGroup( ScenarioFile& file, YamlField const& group, std::vector<GroupSpec>& groups ) {
    GroupSpec spec;
    spec.at = group.at;
    if ( group.value.IsMap() ) {
        readGroupMap( file, group, spec );
    } else {
        spec.groups = readRange( file, group, groupWords ).value_or( AddressList() );
    }
    if ( !spec.groups.empty() ) {
        joinIfNotTold( spec );
        groups.push_back( std::move( spec ) );
    }
}

/// No group of a host may be told twice; which entry would win?
void
checkOverlaps( ScenarioFile& file, std::vector<GroupSpec> const& groups ) {
    std::vector<AddressBlock> blocks;
    for ( GroupSpec const& group : groups ) {
        blocks.insert( blocks.end(), group.groups.blocks().begin(), group.groups.blocks().end() );
    }
    tellRepetitions( blocks, groupWords.noun, file.scenario.files, file.yaml.errors() );
}

} // namespace

std::span<KeyRow const>
groupKeys() {
    static constexpr KeyRow rows[] = {
        { "sources",
          "Sources that filterMode is about, in version 3: an address, a range, a map or a list of such",
          R"({"$ref":"#/definitions/sources"})" },
    };
    return rows;
}

void
readGroups( ScenarioFile& file, YamlField const& field, std::vector<GroupSpec>& groups ) {
    if ( field.value.IsSequence() ) {
        file.yaml.readList( field, [&]( YamlField const& group ) { readGroup( file, group, groups ); } );
    } else {
        readGroup( file, field, groups );
    }
    if ( groups.size() > 1 ) {
        checkOverlaps( file, groups );
    }
}

} // namespace Agent
