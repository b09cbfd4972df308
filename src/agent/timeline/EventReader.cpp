#include "agent/timeline/EventReader.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "agent/scenario/WorkProgress.h"
#include "agent/scenario/reading/GroupReader.h"
#include "agent/scenario/reading/HostNameReader.h"
#include "agent/scenario/reading/HostReader.h"
#include "agent/scenario/reading/SettingReader.h"
#include "agent/timeline/TimeText.h"

namespace Agent {

namespace {

using Kiv::Seconds;

constexpr char positive[] = R"({"type":"number","exclusiveMinimum":0})";
constexpr char notNegative[] = R"({"type":"number","minimum":0})";
constexpr char groupsSchema[] = R"({"$ref":"#/definitions/groups"})";
constexpr char flagSchema[] = R"({"enum":[true,null]})";

/// "500/s", "500", "30/min", "10/h", as units per second.
double
rateOf( std::string_view text ) {
    constexpr char expected[] = "a rate above 0, such as 500/s, 30/min or 10/h";
    static std::map<std::string_view, Seconds> const spans{
        { "", 1.0 }, { "/s", 1.0 }, { "/min", 60.0 }, { "/h", 3600.0 }
    };
    std::size_t const slash = std::min( text.find( '/' ), text.size() );
    auto const span = spans.find( text.substr( slash ) );
    double rate = 0.0;
    try {
        rate = Kiv::ValueTraits<double>::parse( text.substr( 0, slash ) );
    } catch ( Kiv::RangeException const& ) {
    }
    if ( span == spans.end() || !( rate > 0.0 ) || !Kiv::isFinite( rate ) ) {
        Kiv::throwExpected( expected, text );
    }
    return rate / span->second;
}

/// The work on one entry.
class EventReader {
  public:
    explicit EventReader( ScenarioFile& file ) : file_( file ) {}

    /// The event. One with an error is of no use but to find the hosts that it names.
    Event read( YamlField const& entry );
    /// Whether the key says what happens.
    static bool isAction( std::string_view key ) { return actionOf( key ) != nullptr; }

  private:
    using Reader = void ( EventReader::* )( YamlField const& );
    struct Action {
        EventAction action;
        Reader read;
    };

    static Action const* actionOf( std::string_view key );
    void readKey( YamlField const& field );
    void readTiming( YamlField const& field );
    void readFlag( YamlField const& field );
    void readSettings( YamlField const& field );
    void readGroupList( YamlField const& field ) { readGroups( file_, field, event_.groups ); }
    void readLeave( YamlField const& field );
    void readAdd( YamlField const& field );
    void readAdded( YamlField const& host );
    void readZap( YamlField const& field );
    void readFlap( YamlField const& field );
    std::optional<Seconds> readSpan( YamlField const& field ) {
        return file_.yaml.readUnquoted( field, durationOf );
    }
    void spansAre( std::initializer_list<std::optional<Seconds>> spans );

    void finish( bool allKeysKnown );
    void tellMissingAction();
    void checkRhythm();
    void error( YamlField const& field, std::string const& text ) {
        file_.yaml.error( field.at, field.key + ": " + text );
    }

    ScenarioFile& file_;
    Event event_;
    std::optional<YamlField> action_;
    std::optional<YamlField> every_;
    std::optional<YamlField> times_;
    std::optional<YamlField> jitter_;
    std::optional<YamlField> hosts_;
    bool spansKnown_ = true; ///< none of them had an error, or was missing
    bool addsHosts_ = false;
    U64 repeats_ = 0;
};

Event
EventReader::read( YamlField const& entry ) {
    static KeySet const keys = keySet( "an event", eventKeys() );
    std::size_t const errorsBefore = file_.yaml.errors().size();
    event_.at = entry.at;
    finish( file_.yaml.readMap( entry, keys, [this]( YamlField const& field ) { readKey( field ); } ) );
    event_.faulty = file_.yaml.errors().size() != errorsBefore;
    if ( event_.faulty ) {
        // Its time may be the error: hosts are not to be missed on its account.
        event_.time = event_.action == EventAction::add ? 0.0 : Kiv::never;
    }
    return std::move( event_ );
}

EventReader::Action const*
EventReader::actionOf( std::string_view key ) {
    static std::map<std::string_view, Action> const actions{
        { "set", { EventAction::set, &EventReader::readSettings } },
        { "join", { EventAction::join, &EventReader::readGroupList } },
        { "leave", { EventAction::leave, &EventReader::readLeave } },
        { "change", { EventAction::change, &EventReader::readGroupList } },
        { "enable", { EventAction::enable, &EventReader::readFlag } },
        { "disable", { EventAction::disable, &EventReader::readFlag } },
        { "add", { EventAction::add, &EventReader::readAdd } },
        { "delete", { EventAction::remove, &EventReader::readFlag } },
        { "zap", { EventAction::zap, &EventReader::readZap } },
        { "flap", { EventAction::flap, &EventReader::readFlap } },
    };
    auto const action = actions.find( key );
    return action == actions.end() ? nullptr : &action->second;
}

void
EventReader::readKey( YamlField const& field ) {
    Action const* const action = actionOf( field.key );
    if ( !action ) {
        readTiming( field );
    } else if ( action_ ) {
        error( field, "expected one action in an event, found " + action_->key + " too" );
        spansKnown_ = false;
        std::vector<GroupSpec> const groups = std::exchange( event_.groups, {} ); // no repetition of these
        ( this->*action->read )( field );
        event_.groups = groups;
    } else {
        action_ = field;
        event_.action = action->action;
        ( this->*action->read )( field );
    }
}

void
EventReader::readTiming( YamlField const& field ) {
    if ( field.key == "at" ) {
        event_.time = file_.yaml.readUnquoted( field, notNegativeSeconds ).value_or( 0.0 );
    } else if ( field.key == "every" ) {
        every_ = field;
        spansAre( { readSpan( field ) } );
    } else if ( field.key == "times" ) {
        times_ = field;
        repeats_ = file_.yaml.readWhole( field, 1, std::numeric_limits<U32>::max() ).value_or( 1 );
    } else if ( field.key == "jitter" ) {
        jitter_ = field;
        event_.jitter = file_.yaml.readUnquoted( field, notNegativeSeconds ).value_or( 0.0 );
    } else if ( field.key == "rate" ) {
        event_.rate = file_.yaml.readParsed( field, rateOf );
    } else {
        hosts_ = field;
        event_.hosts = readHostNames( file_.yaml, field );
    }
}

void
EventReader::spansAre( std::initializer_list<std::optional<Seconds>> spans ) {
    event_.spans.clear();
    for ( std::optional<Seconds> const& span : spans ) {
        event_.spans.push_back( span.value_or( 1.0 ) );
        spansKnown_ = spansKnown_ && span;
    }
}

void
EventReader::readFlag( YamlField const& field ) {
    bool const isTrue = field.value.IsNull() || ( field.value.IsScalar() && field.value.Scalar() == "true" );
    if ( !isTrue ) {
        std::string const found =
            field.value.IsScalar() ? "'" + field.value.Scalar() + "'" : std::string( "more" );
        error( field, "expected true or nothing, for hosts says which, found " + found );
    } else {
        file_.yaml.isQuoted( field );
    }
}

void
EventReader::readSettings( YamlField const& field ) {
    static KeySet const keys = keySet( "what a host is set to", {}, settableHostAttributes() );
    event_.values.at = field.at;
    file_.yaml.readMap( field, keys, [this]( YamlField const& setting ) {
        readSetting( file_.yaml, setting, settableHostAttributes(), event_.values.settings );
    } );
    if ( field.value.IsMap() && field.value.size() == 0 ) {
        error( field, "expected an attribute of a host, found none" );
    }
}

void
EventReader::readLeave( YamlField const& field ) {
    if ( field.value.IsNull() ) {
        error( field, "expected all, or groups, found nothing" );
    } else if ( !field.value.IsScalar() || field.value.Scalar() != "all" ) {
        readGroupList( field );
    }
}

/// Without a map, hosts that the scenario describes and that have been deleted come back.
void
EventReader::readAdd( YamlField const& field ) {
    if ( field.value.IsMap() ) {
        readAdded( field );
    } else if ( field.value.IsSequence() ) {
        file_.yaml.readList( field, [this]( YamlField const& host ) { readAdded( host ); } );
    } else {
        readFlag( field );
    }
}

void
EventReader::readAdded( YamlField const& host ) {
    HostSpec spec = readHost( file_, host );
    spec.later = true;
    addsHosts_ = true;
    event_.hosts.push_back( { spec.name, spec.at } );
    file_.scenario.hosts.push_back( std::move( spec ) );
}

void
EventReader::readZap( YamlField const& field ) {
    static KeySet const keys = keySet( "a zap", zapKeys() );
    std::optional<Seconds> dwell;
    file_.yaml.readMap( field, keys, [&]( YamlField const& key ) {
        if ( key.key == "groups" ) {
            readGroupList( key );
        } else if ( key.key == "dwell" ) {
            dwell = readSpan( key );
        } else if ( auto const spread = file_.yaml.readValue( key, Kiv::valueType<bool> ) ) {
            event_.spread = std::any_cast<bool>( *spread );
        }
    } );
    spansAre( { dwell } );
}

void
EventReader::readFlap( YamlField const& field ) {
    static KeySet const keys = keySet( "a flap", flapKeys() );
    std::optional<Seconds> down;
    std::optional<Seconds> up;
    file_.yaml.readMap( field, keys, [&]( YamlField const& key ) {
        if ( key.key == "groups" ) {
            readGroupList( key );
        } else {
            ( key.key == "down" ? down : up ) = readSpan( key );
        }
    } );
    spansAre( { down, up } );
}

/// A key that is not known may be what is missing, misspelt.
void
EventReader::finish( bool allKeysKnown ) {
    if ( !action_ && allKeysKnown ) {
        tellMissingAction();
    }
    if ( addsHosts_ && hosts_ ) {
        error( *hosts_, "does not go with add of hosts that are described there" );
    }
    if ( times_ && event_.spans.empty() && allKeysKnown && spansKnown_ ) {
        error( *times_, "expected every, zap or flap beside it, found none" );
    }
    checkRhythm();
    if ( event_.spans.empty() ) {
        event_.steps = 1;
    } else if ( times_ ) {
        event_.steps = repeats_ * event_.spans.size();
    }
}

void
EventReader::tellMissingAction() {
    std::string text;
    for ( std::string const& key : eventActionKeys() ) {
        text += ( text.empty() ? "" : ", " ) + key;
    }
    file_.yaml.error( event_.at, "missing action in an event; expected one of " + text );
}

void
EventReader::checkRhythm() {
    bool const hasOwnRhythm = event_.action == EventAction::zap || event_.action == EventAction::flap;
    if ( every_ && hasOwnRhythm ) {
        error(
            *every_, std::string( "does not go with " ) + actionName( event_.action ) + ", which has its own"
        );
    } else if ( jitter_ && spansKnown_ && !event_.spans.empty() ) {
        Seconds const shortest = *std::min_element( event_.spans.begin(), event_.spans.end() );
        if ( event_.jitter > shortest ) {
            error(
                *jitter_, "expected at most the " + Kiv::ValueTraits<double>::format( shortest ) +
                              " s to the next step, found '" + jitter_->value.Scalar() + "'"
            );
        }
    }
}

} // namespace

std::span<KeyRow const>
eventKeys() {
    static KeyRow const rows[] = {
        { "at", "When it happens first, in seconds after the start", notNegative, true },
        { "every", "Seconds from each time to the next", positive },
        { "times", "How many times it happens; without end where not set",
          R"({"type":"integer","minimum":1,"maximum":4294967295})" },
        { "jitter", "Each time is put off by a random part of so many seconds [0]", notNegative },
        { "rate",
          "How many hosts, or groups of hosts, are served per second, such as 500/s; all at once "
          "where not set",
          R"({"anyOf":[{"type":"number","exclusiveMinimum":0},{"type":"string","pattern":"^(?=[0-9.]*[1-9])([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][-+]?[0-9]+)?(/(s|min|h))?$"}]})" },
        { "hosts",
          "Names of hosts, of entries with a count, or patterns, with *, ?, [ or \\ in them; "
          "every host where not set",
          hostNamesSchema },
        { "set", "Attributes that the hosts are set to; ipAddr and macAddr step by one from host to host",
          R"({"$ref":"#/definitions/changes"})" },
        { "join",
          "Groups that the hosts join; a group that is joined already gets this filter mode and these "
          "sources",
          groupsSchema },
        { "leave", "Groups that the hosts leave, or all",
          R"({"anyOf":[{"const":"all"},{"$ref":"#/definitions/groups"}]})" },
        { "change", "Groups that get this filter mode and these sources on hosts that have them",
          groupsSchema },
        { "enable", "The hosts are switched on", flagSchema },
        { "disable", "The hosts are switched off, without a leave", flagSchema },
        { "add",
          "Hosts that come into being, as under hosts; without any, hosts that have been deleted come "
          "back as they were described",
          R"({"anyOf":[{"enum":[true,null]},{"$ref":"#/definitions/host"},{"type":"array","items":{"$ref":"#/definitions/host"}}]})" },
        { "delete", "The hosts cease to be, without a leave", flagSchema },
        { "zap", "The hosts join the first of some groups, and go on to the next one again and again",
          R"({"$ref":"#/definitions/zap"})" },
        { "flap", "The hosts go down and come up again and again, or leave and join groups",
          R"({"$ref":"#/definitions/flap"})" },
    };
    return rows;
}

std::vector<std::string>
eventActionKeys() {
    std::vector<std::string> keys;
    for ( KeyRow const& key : eventKeys() ) {
        if ( EventReader::isAction( key.name ) ) {
            keys.emplace_back( key.name );
        }
    }
    return keys;
}

std::span<KeyRow const>
zapKeys() {
    static constexpr KeyRow rows[] = {
        { "groups", "What is zapped through, in this order; the first follows the last", groupsSchema, true },
        { "dwell", "Seconds in a group", positive, true },
        { "spread", "Each host begins one group further than the host before it [false]",
          R"({"type":"boolean"})" },
    };
    return rows;
}

std::span<KeyRow const>
flapKeys() {
    static constexpr KeyRow rows[] = {
        { "down", "Seconds that the hosts are down, or out of the groups", positive, true },
        { "up", "Seconds until they go down again", positive, true },
        { "groups", "Groups that are left and joined; without any, the hosts are switched off and on",
          groupsSchema },
    };
    return rows;
}

void
readEvents( ScenarioFile& file, YamlField const& events ) {
    U64 done = 0;
    file.yaml.readList( events, [&]( YamlField const& entry ) {
        WorkProgress::tell( "events read", done++, events.value.size() );
        file.scenario.events.push_back( EventReader( file ).read( entry ) );
    } );
}

} // namespace Agent
