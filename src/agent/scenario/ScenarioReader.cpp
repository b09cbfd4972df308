#include "agent/scenario/ScenarioReader.h"

#include <system_error>

#include "agent/expecting/ExpectationReader.h"
#include "agent/querying/QuerierReader.h"
#include "agent/scenario/HostNames.h"
#include "agent/scenario/WorkProgress.h"
#include "agent/scenario/reading/HostReader.h"
#include "agent/scenario/reading/SettingReader.h"
#include "agent/scenario/reading/TextFile.h"
#include "agent/timeline/EventReader.h"

namespace Agent {

namespace {

/// The work on all files of a scenario, one after the other.
class Reading {
  public:
    explicit Reading( Diagnostics& errors ) : errors_( errors ) {}

    void readPath( std::string const& path );
    void readText( std::string const& name, std::string const& text );
    /// The scenario, once every file is read.
    Scenario take();

    // What the top-level keys stand for.
    void readHosts( ScenarioFile& file, YamlField const& field );
    void readDefaults( ScenarioFile& file, YamlField const& field );
    void readShard( ScenarioFile& file, YamlField const& field );
    void readSeed( ScenarioFile& file, YamlField const& field );
    void readDuration( ScenarioFile& file, YamlField const& field );
    void readQuerier( ScenarioFile& file, YamlField const& field );
    void readEvents( ScenarioFile& file, YamlField const& field ) { Agent::readEvents( file, field ); }
    void readExpectations( ScenarioFile& file, YamlField const& field ) {
        Agent::readExpectations( file, field );
    }

    void readNothing( ScenarioFile&, YamlField const& ) {}

  private:
    bool isFirst( ScenarioFile& file, YamlField const& field );
    void finish( HostSpec& host );

    Scenario scenario_;
    Diagnostics& errors_;
    AddressFiles addressFiles_{ scenario_.files, errors_ };
    HostNames hostNames_;
    bool defaultsFaulty_ = false;
    std::optional<Position> hostsAt_;        ///< where they are first listed
    std::map<std::string, Position> single_; ///< where keys stand that one file alone may have
};

struct TopLevelKey {
    KeyRow row;
    void ( Reading::*read )( ScenarioFile& file, YamlField const& field );
};

constexpr TopLevelKey topLevelKeys[] = {
    { { "hosts", "Hosts that are there from the start",
        R"({"type":"array","items":{"$ref":"#/definitions/host"}})" },
      &Reading::readHosts },
    { { "defaults", "Settings of every host, of all files, that does not have its own",
        R"({"$ref":"#/definitions/settings"})" },
      &Reading::readDefaults },
    { { "events", "What happens in the course of the run",
        R"({"type":"array","items":{"$ref":"#/definitions/event"}})" },
      &Reading::readEvents },
    { { "expect", "What must hold, or the command ends with status 3",
        R"({"type":"array","items":{"$ref":"#/definitions/expectation"}})" },
      &Reading::readExpectations },
    { { "duration", "Seconds after which the run ends; --duration goes before it",
        R"({"type":"number","exclusiveMinimum":0})" },
      &Reading::readDuration },
    { { "seed", "What the timeline leaves to chance is drawn from this number; --seed goes before it",
        R"({"type":"integer","minimum":0})" },
      &Reading::readSeed },
    { { "shard", "K/N: run every N-th host alone, from the K-th on; --shard goes before it",
        R"({"type":"string","pattern":"^[1-9][0-9]*/[1-9][0-9]*$"})" },
      &Reading::readShard },
    { { "querier", "A reference querier beside the hosts, on a device of its own",
        R"({"$ref":"#/definitions/querier"})" },
      &Reading::readQuerier },
    { { "$schema", "Where an editor finds this schema; the command does not look", R"({"type":"string"})" },
      &Reading::readNothing },
};

void
Reading::readPath( std::string const& path ) {
    try {
        readText( path, textOfFile( path ) );
    } catch ( std::system_error const& fault ) {
        scenario_.files.push_back( path );
        errors_.add( { scenario_.files.size() - 1 }, "cannot be read: " + fault.code().message() );
    }
}

void
Reading::readText( std::string const& name, std::string const& text ) {
    std::size_t const index = scenario_.files.size();
    scenario_.files.push_back( name );
    ScenarioFile file{ name, scenario_, addressFiles_, YamlReader( index, scenario_.files, errors_ ) };
    if ( std::optional<YAML::Node> const root = file.yaml.document( text ) ) {
        YamlField const top{ "scenario", *root, { index, 1, 1 } };
        KeySet const keys = keySet( "a scenario", scenarioKeys() );
        file.yaml.readMap( top, keys, [&]( YamlField const& field ) {
            for ( TopLevelKey const& key : topLevelKeys ) {
                if ( key.row.name == field.key ) {
                    ( this->*key.read )( file, field );
                }
            }
        } );
    }
}

void
Reading::readHosts( ScenarioFile& file, YamlField const& field ) {
    U64 done = 0;
    hostsAt_ = hostsAt_.value_or( field.at );
    file.yaml.readList( field, [&]( YamlField const& host ) {
        WorkProgress::tell( "entries of hosts read", done++, field.value.size() );
        scenario_.hosts.push_back( readHost( file, host ) );
    } );
}

void
Reading::readDefaults( ScenarioFile& file, YamlField const& field ) {
    static KeySet const keys = keySet( "the defaults of hosts", {}, settableHostAttributes() );
    std::size_t const errorsBefore = errors_.size();
    file.yaml.readMap( field, keys, [&]( YamlField const& setting ) {
        if ( isFirst( file, setting ) ) {
            readSetting( file.yaml, setting, settableHostAttributes(), scenario_.defaults );
        }
    } );
    defaultsFaulty_ = defaultsFaulty_ || errors_.size() != errorsBefore;
}

void
Reading::readShard( ScenarioFile& file, YamlField const& field ) {
    if ( isFirst( file, field ) ) {
        scenario_.shard = file.yaml.readParsed( field, shardOf ).value_or( Shard() );
    }
}

void
Reading::readSeed( ScenarioFile& file, YamlField const& field ) {
    if ( isFirst( file, field ) ) {
        scenario_.seed = file.yaml.readWhole( field, 0, std::numeric_limits<U64>::max() );
    }
}

void
Reading::readDuration( ScenarioFile& file, YamlField const& field ) {
    if ( isFirst( file, field ) ) {
        scenario_.duration = file.yaml.readUnquoted( field, durationOf );
    }
}

void
Reading::readQuerier( ScenarioFile& file, YamlField const& field ) {
    if ( isFirst( file, field ) ) {
        // One with an error is there all the same for expectations that ask it.
        scenario_.querier = Agent::readQuerier( file, field ).value_or( QuerierSpec() );
    }
}

/// Which of two values would win?
bool
Reading::isFirst( ScenarioFile& file, YamlField const& field ) {
    auto const [first, isNew] = single_.emplace( field.key, field.at );
    if ( !isNew ) {
        file.yaml.repetition( field.at, "key '" + field.key + "'", first->second );
    }
    return isNew;
}

/// One error is enough for two entries that clash in many names.
void
Reading::finish( HostSpec& host ) {
    applyDefaults( scenario_.defaults, host );
    std::size_t const errorsBefore = errors_.size();
    checkSteps( host, errors_ );
    host.faulty = host.faulty || defaultsFaulty_ || errors_.size() != errorsBefore;
    if ( auto const clash = host.name.empty() ? std::nullopt : hostNames_.take( host ) ) {
        errors_.addRepetition( host.at, "host '" + clash->name + "'", clash->first, scenario_.files );
    }
}

/// No single file needs a host, but all together do.
Scenario
Reading::take() {
    U64 hosts = 0;
    for ( HostSpec& host : scenario_.hosts ) {
        finish( host );
        U64 const before = std::exchange( hosts, hosts + host.count );
        host.faulty = host.faulty || hosts > mostHosts;
        if ( before <= mostHosts && hosts > mostHosts ) {
            errors_.add(
                host.at, "expected at most " + std::to_string( mostHosts ) + " hosts in all, found " +
                             std::to_string( hosts )
            );
        }
    }
    resolveEvents( scenario_, errors_ );
    resolveExpectations( scenario_, errors_ );
    if ( errors_.empty() && scenario_.hosts.empty() && scenario_.events.empty() ) {
        errors_.add( hostsAt_.value_or( Position{ 0 } ), "expected at least one host, found none" );
    }
    return std::move( scenario_ );
}

} // namespace

std::span<KeyRow const>
scenarioKeys() {
    static std::vector<KeyRow> const rows = [] {
        std::vector<KeyRow> all;
        for ( TopLevelKey const& key : topLevelKeys ) {
            all.push_back( key.row );
        }
        return all;
    }();
    return rows;
}

Scenario
readScenario( std::span<std::string const> paths, Diagnostics& errors ) {
    Reading reading( errors );
    for ( std::string const& path : paths ) {
        reading.readPath( path );
    }
    return reading.take();
}

Scenario
readScenarioText( std::string const& name, std::string const& text, Diagnostics& errors ) {
    Reading reading( errors );
    reading.readText( name, text );
    return reading.take();
}

} // namespace Agent
