#include "agent/scenario/ScenarioReader.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <map>
#include <system_error>
#include <unordered_map>

#include "agent/scenario/YamlReader.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Zornet::IpAddr;

constexpr U64 mostHosts = 1'000'000;
constexpr U64 mostGroups = 1'000'000;
constexpr IpAddr lastIpAddr = IpAddr::fromHost( 0xffffffff );
constexpr U64 lastEthAddr = ( U64{ 1 } << 48 ) - 1;
constexpr U64 lastVlanId = 0xffff;

template <class T>
std::string
textOf( T const& value ) {
    return Kiv::ValueTraits<T>::format( value );
}

/// The keys of a map: those of its own, and the scalars of a class that a user may set, some apart.
KeySet
keysOf(
    char const* what, std::vector<std::string_view> own, std::span<Kiv::Attribute const> table,
    std::span<Kiv::AttributeId const> apart, std::vector<std::string_view> required
) {
    for ( Kiv::Attribute const& row : table ) {
        if ( row.isWritable() && std::find( apart.begin(), apart.end(), row.id ) == apart.end() ) {
            own.emplace_back( row.name );
        }
    }
    return { what, std::move( own ), std::move( required ) };
}

KeySet const&
hostKeys() {
    static Kiv::AttributeId const apart[] = { IgmpHost::attrExternalPam };
    static KeySet const keys = keysOf(
        "a host", { "name", "count", "groups", "vlanStep" }, IgmpHost::attributes(), apart, { "name" }
    );
    return keys;
}

/// The generation of a record is the agent's to raise, and a copy's template the engine's to write.
KeySet const&
groupKeys() {
    static Kiv::AttributeId const apart[] = { IgmpV3GroupRecord::attrVersion,
                                              IgmpV3GroupRecord::attrReplicateGroup };
    static KeySet const keys = keysOf(
        "a group", { "multicastAddr", "count", "sources" }, IgmpV3GroupRecord::attributes(), apart,
        { "multicastAddr" }
    );
    return keys;
}

/// The work on one file.
class FileReader {
  public:
    using HostNames = std::unordered_map<std::string, Position>;

    FileReader( Scenario& scenario, HostNames& hostNames, Diagnostics& errors )
        : scenario_( scenario ),
          hostNames_( hostNames ),
          errors_( errors ),
          yaml_( scenario.files.size() - 1, scenario.files, errors ) {}

    void read( std::string const& text );

  private:
    void readHost( YamlField const& host );
    void readHostKey( YamlField const& field, HostSpec& spec );
    void readGroup( YamlField const& group, HostSpec& host );
    void readGroupKey( YamlField const& field, GroupSpec& spec );
    void readSources( YamlField const& field, std::vector<IpAddr>& sources );
    std::optional<IpAddr> readAddr( YamlField const& field );
    void readCount( YamlField const& field, U64 most, U32& count );
    void readSetting( YamlField const& field, std::span<Kiv::Attribute const> table, Settings& settings );

    void checkSteps( HostSpec const& spec );
    void checkRange(
        Position const& at, std::string const& block, U64 last, U64 greatest, std::string const& end
    );
    void checkNames( HostSpec const& spec );
    void checkBlock( GroupSpec const& spec );
    void checkOverlaps( HostSpec const& spec );

    Scenario& scenario_;
    HostNames& hostNames_; ///< of the whole scenario, and where they come from
    Diagnostics& errors_;
    YamlReader yaml_;
};

void
FileReader::read( std::string const& text ) {
    static KeySet const keys{ "a scenario", { "hosts" }, { "hosts" } };
    std::optional<YAML::Node> const root = yaml_.document( text );
    if ( !root ) {
        return;
    }
    Position const top{ scenario_.files.size() - 1, 1, 1 };
    yaml_.readMap( { "scenario", *root, top }, keys, [this]( YamlField const& hosts ) {
        yaml_.readList( hosts, [this]( YamlField const& host ) { readHost( host ); } );
    } );
}

void
FileReader::readHost( YamlField const& host ) {
    HostSpec spec;
    spec.at = host.at;
    yaml_.readMap( host, hostKeys(), [&]( YamlField const& field ) { readHostKey( field, spec ); } );
    checkSteps( spec );
    checkNames( spec );
    checkOverlaps( spec );
    scenario_.hosts.push_back( std::move( spec ) );
}

void
FileReader::readHostKey( YamlField const& field, HostSpec& spec ) {
    if ( field.key == "name" ) {
        spec.at = field.at;
        spec.name = yaml_.readText( field ).value_or( "" );
        if ( spec.name.empty() && field.value.IsScalar() ) {
            yaml_.error( field.at, "name: expected a name, found ''" );
        }
    } else if ( field.key == "count" ) {
        readCount( field, mostHosts, spec.count );
    } else if ( field.key == "vlanStep" ) {
        spec.vlanStep = static_cast<U16>( yaml_.readWhole( field, 0, 0xffff ).value_or( 0 ) );
    } else if ( field.key == "groups" ) {
        yaml_.readList( field, [&]( YamlField const& group ) { readGroup( group, spec ); } );
    } else {
        readSetting( field, IgmpHost::attributes(), spec.settings );
    }
}

/// A group that has an error is left out, so that the error brings no others along.
void
FileReader::readGroup( YamlField const& group, HostSpec& host ) {
    GroupSpec spec;
    spec.at = group.at;
    std::size_t const errorsBefore = errors_.size();
    yaml_.readMap( group, groupKeys(), [&]( YamlField const& field ) { readGroupKey( field, spec ); } );
    if ( errors_.size() == errorsBefore ) {
        checkBlock( spec );
        host.groups.push_back( std::move( spec ) );
    }
}

void
FileReader::readGroupKey( YamlField const& field, GroupSpec& spec ) {
    if ( field.key == "multicastAddr" ) {
        spec.at = field.at;
        spec.multicastAddr = readAddr( field ).value_or( IpAddr() );
    } else if ( field.key == "count" ) {
        readCount( field, mostGroups, spec.count );
    } else if ( field.key == "sources" ) {
        readSources( field, spec.sources );
    } else {
        readSetting( field, IgmpV3GroupRecord::attributes(), spec.settings );
    }
}

void
FileReader::readSources( YamlField const& field, std::vector<IpAddr>& sources ) {
    std::map<IpAddr, Position> seen;
    yaml_.readList( field, [&]( YamlField const& element ) {
        std::optional<IpAddr> const source = readAddr( element );
        if ( !source ) {
            return;
        }
        auto const [first, isNew] = seen.emplace( *source, element.at );
        if ( isNew ) {
            sources.push_back( *source );
        } else {
            yaml_.repetition( element.at, "source " + textOf( *source ), first->second );
        }
    } );
}

std::optional<IpAddr>
FileReader::readAddr( YamlField const& field ) {
    auto const value = yaml_.readValue( field, Kiv::valueType<IpAddr> );
    return value ? std::optional( std::any_cast<IpAddr>( *value ) ) : std::nullopt;
}

void
FileReader::readCount( YamlField const& field, U64 most, U32& count ) {
    count = static_cast<U32>( yaml_.readWhole( field, 1, most ).value_or( 1 ) );
}

void
FileReader::readSetting( YamlField const& field, std::span<Kiv::Attribute const> table, Settings& settings ) {
    Kiv::Attribute const* const row = Kiv::findAttribute( table, field.key );
    if ( auto const value = yaml_.readValue( field, *row->type ) ) {
        settings.settingIs( { row, *value, field.at } );
    }
}

/// What steps from host to host must not step out of its type.
void
FileReader::checkSteps( HostSpec const& spec ) {
    U64 const steps = spec.count - 1;
    std::string const hosts = std::to_string( spec.count ) + " hosts from ";
    if ( Setting const* const ip = spec.settings.find( IgmpHost::attrIpAddr ) ) {
        auto const first = std::any_cast<IpAddr>( ip->value );
        checkRange(
            ip->at, "ipAddr: " + hosts + textOf( first ), first.hostOrder() + steps, lastIpAddr.hostOrder(),
            textOf( lastIpAddr )
        );
    }
    if ( Setting const* const mac = spec.settings.find( IgmpHost::attrMacAddr ) ) {
        auto const first = std::any_cast<Zornet::EthAddr>( mac->value );
        checkRange(
            mac->at, "macAddr: " + hosts + textOf( first ), numberOf( first ) + steps, lastEthAddr,
            textOf( ethAddrOf( lastEthAddr ) )
        );
    }
    U64 const firstVlan = spec.vlanId( 0 );
    checkRange(
        spec.settings.placeOf( IgmpHost::attrVlanId, spec.at ),
        "vlanId: " + hosts + std::to_string( firstVlan ), firstVlan + steps * spec.vlanStep, lastVlanId,
        std::to_string( lastVlanId )
    );
}

void
FileReader::checkRange(
    Position const& at, std::string const& block, U64 last, U64 greatest, std::string const& end
) {
    if ( last > greatest ) {
        yaml_.error( at, block + " on run past " + end );
    }
}

/// One error is enough for two entries that clash in many names.
void
FileReader::checkNames( HostSpec const& spec ) {
    bool clashed = spec.name.empty();
    for ( U32 i = 0; i < spec.count && !clashed; ++i ) {
        std::string const name = spec.hostName( i );
        auto const [first, isNew] = hostNames_.emplace( name, spec.at );
        clashed = !isNew;
        if ( clashed ) {
            yaml_.repetition( spec.at, "host '" + name + "'", first->second );
        }
    }
}

void
FileReader::checkBlock( GroupSpec const& spec ) {
    checkRange(
        spec.at,
        "multicastAddr: " + std::to_string( spec.count ) + " groups from " + textOf( spec.multicastAddr ),
        U64{ spec.multicastAddr.hostOrder() } + spec.count - 1, lastIpAddr.hostOrder(), textOf( lastIpAddr )
    );
}

/// No group of a host may be told twice; which entry would win?
void
FileReader::checkOverlaps( HostSpec const& spec ) {
    std::vector<GroupSpec const*> ordered;
    for ( GroupSpec const& group : spec.groups ) {
        ordered.push_back( &group );
    }
    std::stable_sort( ordered.begin(), ordered.end(), []( auto const* a, auto const* b ) {
        return a->multicastAddr < b->multicastAddr;
    } );
    GroupSpec const* farthest = nullptr;
    for ( GroupSpec const* const group : ordered ) {
        if ( farthest && group->multicastAddr <= farthest->lastGroup() ) {
            yaml_.repetition( group->at, "group " + textOf( group->multicastAddr ), farthest->at );
        }
        if ( !farthest || group->lastGroup() > farthest->lastGroup() ) {
            farthest = group;
        }
    }
}

/// No single file needs a host, but all together do.
void
checkNotEmpty( Scenario const& scenario, Diagnostics& errors ) {
    if ( errors.empty() && scenario.hosts.empty() ) {
        errors.add( { 0 }, "expected at least one host, found none" );
    }
}

std::string
readFile( std::string const& path ) {
    std::ifstream file( path, std::ios::binary );
    if ( !file ) {
        throw std::system_error( errno, std::generic_category() );
    }
    std::string text( ( std::istreambuf_iterator<char>( file ) ), {} );
    if ( file.bad() ) {
        throw std::system_error( errno, std::generic_category() );
    }
    return text;
}

} // namespace

Scenario
readScenario( std::span<std::string const> paths, Diagnostics& errors ) {
    Scenario scenario;
    FileReader::HostNames hostNames;
    for ( std::string const& path : paths ) {
        scenario.files.push_back( path );
        try {
            FileReader( scenario, hostNames, errors ).read( readFile( path ) );
        } catch ( std::system_error const& fault ) {
            errors.add( { scenario.files.size() - 1 }, "cannot be read: " + fault.code().message() );
        }
    }
    checkNotEmpty( scenario, errors );
    return scenario;
}

Scenario
readScenarioText( std::string const& name, std::string const& text, Diagnostics& errors ) {
    Scenario scenario;
    scenario.files.push_back( name );
    FileReader::HostNames hostNames;
    FileReader( scenario, hostNames, errors ).read( text );
    checkNotEmpty( scenario, errors );
    return scenario;
}

} // namespace Agent
