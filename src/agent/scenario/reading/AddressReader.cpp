#include "agent/scenario/reading/AddressReader.h"

#include "agent/scenario/reading/SettingReader.h"

namespace Agent {

namespace {

using Zornet::IpAddr;

std::string
textOf( IpAddr const& addr ) {
    return Kiv::ValueTraits<IpAddr>::format( addr );
}

/// `wanted` addresses, `step` apart, out of a range. A single address is the begin of as many as fit.
struct Cut {
    std::optional<U64> wanted;
    U32 step;

    IpAddr limit( AddressBlock const& range ) const {
        return range.count == 1 ? IpAddr::fromHost( 0xffffffff ) : range.last();
    }
    U64 count( AddressBlock const& range ) const { return wanted.value_or( ( range.count - 1 ) / step + 1 ); }
    bool fits( AddressBlock const& range ) const {
        return range.first.hostOrder() + ( count( range ) - 1 ) * step <= limit( range ).hostOrder();
    }
};

/// The folder is that of the file which names the path.
std::string
pathFrom( std::string const& namingFile, std::string const& path ) {
    std::size_t const slash = namingFile.rfind( '/' );
    bool const isAbsolute = path.starts_with( '/' );
    return isAbsolute || slash == std::string::npos ? path : namingFile.substr( 0, slash + 1 ) + path;
}

std::optional<AddressList>
cutOut( ScenarioFile& file, YamlField const& field, AddressWords const& words, Cut const& cut ) {
    auto const range = file.yaml.readParsed( field, addressBlock );
    if ( !range ) {
        return {};
    }
    U64 const count = cut.count( *range );
    std::string const many = std::to_string( count ) + " " + words.noun + "s";
    if ( !cut.fits( *range ) ) {
        file.yaml.error(
            field.at, field.key + ": " + many + " from " + textOf( range->first ) + " on run past " +
                          textOf( cut.limit( *range ) )
        );
    } else if ( count > mostAddresses ) {
        file.yaml.error(
            field.at, field.key + ": expected at most " + std::to_string( mostAddresses ) + " " + words.noun +
                          "s, found " + many
        );
    } else {
        return AddressList( { { range->first, static_cast<U32>( count ), cut.step, field.at } } );
    }
    return {};
}

/// One entry of a list: a text or a map.
std::optional<AddressList>
readEntry( ScenarioFile& file, YamlField const& field, AddressWords const& words ) {
    if ( !field.value.IsMap() ) {
        return readRange( file, field, words );
    }
    AddressKeys keys( file, words );
    KeySet const known = keySet( words.what, AddressKeys::rows( words ) );
    file.yaml.readMap( field, known, [&]( YamlField const& key ) { keys.take( key ); } );
    return keys.addresses( field );
}

} // namespace

std::vector<KeyRow>
AddressKeys::rows( AddressWords const& words ) {
    return {
        { words.key, words.help, R"({"$ref":"#/definitions/range"})" },
        { "file",
          "File of addresses and ranges, one a line, '#' begins a comment; the path is seen from this file",
          R"({"type":"string"})" },
        { "count", "How many addresses; without it a range is taken whole, and an address alone",
          R"({"type":"integer","minimum":1,"maximum":1000000})" },
        { "step", "From one address to the next [1]",
          R"({"type":"integer","minimum":1,"maximum":4294967295})" },
    };
}

bool
AddressKeys::take( YamlField const& field ) {
    std::optional<YamlField>* const slots[] = { &addr_, &path_, &count_, &step_ };
    std::size_t i = 0;
    for ( KeyRow const& row : rows( words_ ) ) {
        if ( field.key == row.name ) {
            slots[i]->emplace( field );
            return true;
        }
        ++i;
    }
    return false;
}

std::optional<AddressList>
AddressKeys::addresses( YamlField const& map ) {
    if ( path_ && !addr_ ) {
        return fromFile();
    }
    if ( addr_ && !path_ ) {
        return fromRange();
    }
    if ( addr_ ) {
        file_.yaml.error(
            path_->at, std::string( "file: expected either file or " ) + words_.key + ", found both"
        );
    } else {
        file_.yaml.error( map.at, std::string( "missing key '" ) + words_.key + "' in " + words_.what );
    }
    return {};
}

Position const&
AddressKeys::at( YamlField const& map ) const {
    return addr_ ? addr_->at : path_ ? path_->at : map.at;
}

std::optional<AddressList>
AddressKeys::fromFile() {
    for ( auto const* const key : { &count_, &step_ } ) {
        if ( *key ) {
            file_.yaml.error( ( *key )->at, ( *key )->key + ": goes with " + words_.key + ", not with file" );
        }
    }
    std::optional<std::string> const path = file_.yaml.readText( *path_ );
    return path ? file_.addressFiles.addresses( pathFrom( file_.path, *path ), path_->at ) : std::nullopt;
}

std::optional<AddressList>
AddressKeys::fromRange() {
    auto const count = count_ ? file_.yaml.readWhole( *count_, 1, mostAddresses ) : std::nullopt;
    auto const step = step_ ? file_.yaml.readWhole( *step_, 1, 0xffffffff ) : U64{ 1 };
    if ( ( count_ && !count ) || !step ) {
        file_.yaml.readParsed( *addr_, addressBlock );
        return {};
    }
    return cutOut( file_, *addr_, words_, { count, static_cast<U32>( *step ) } );
}

std::optional<AddressList>
readRange( ScenarioFile& file, YamlField const& field, AddressWords const& words ) {
    return cutOut( file, field, words, { {}, 1 } );
}

AddressList
readAddresses( ScenarioFile& file, YamlField const& field, AddressWords const& words ) {
    if ( !field.value.IsSequence() ) {
        return readEntry( file, field, words ).value_or( AddressList() );
    }
    std::vector<AddressBlock> blocks;
    file.yaml.readList( field, [&]( YamlField const& entry ) {
        if ( auto const addresses = readEntry( file, entry, words ) ) {
            blocks.insert( blocks.end(), addresses->blocks().begin(), addresses->blocks().end() );
        }
    } );
    tellRepetitions( blocks, words.noun, file.scenario.files, file.yaml.errors() );
    return AddressList( std::move( blocks ) );
}

} // namespace Agent
