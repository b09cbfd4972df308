#include "agent/expecting/ExpectationReader.h"

#include "agent/scenario/reading/GroupReader.h"
#include "agent/scenario/reading/HostNameReader.h"
#include "agent/scenario/reading/SettingReader.h"
#include "agent/timeline/TimeText.h"
#include "model/IgmpHostStatus.h"

namespace Agent {

namespace {

constexpr char notNegative[] = R"({"type":"number","minimum":0})";
constexpr char groupsSchema[] = R"({"$ref":"#/definitions/groups"})";
constexpr char textSchema[] = R"({"type":["string","integer"],"minLength":1})";

constexpr KeyRow joinedRow{ "joined", "Groups that are to be known, with these sources where it names any",
                            groupsSchema };
constexpr KeyRow notJoinedRow{ "notJoined", "Groups that are not to be known", groupsSchema };
constexpr KeyRow groupCountRow{ "groupCount", "How many groups are to be known, such as 3 or '>= 3'",
                                R"({"$ref":"#/definitions/comparison"})" };

/// The work on one entry.
class ExpectationReader {
  public:
    explicit ExpectationReader( ScenarioFile& file ) : file_( file ) {}

    /// The expectation. One with an error is of no use but to find the hosts that it names.
    Expectation read( YamlField const& entry );

  private:
    void readKey( YamlField const& field );
    bool readText( YamlField const& field, std::string& text );
    void readStatus( YamlField const& field );
    void readMembership( YamlField const& field );
    void readMembershipKey( YamlField const& field, MembershipCondition& condition );
    void finish( bool allKeysKnown );

    ScenarioFile& file_;
    Expectation expectation_;
    bool hasTime_ = false;
    bool hasStatus_ = false;
    std::optional<YamlField> within_;
    std::optional<YamlField> hosts_;
    std::optional<YamlField> total_;
};

Expectation
ExpectationReader::read( YamlField const& entry ) {
    static KeySet const keys = keySet( "an expectation", expectationKeys(), statusAttributes() );
    expectation_.at = entry.at;
    finish( file_.yaml.readMap( entry, keys, [this]( YamlField const& field ) { readKey( field ); } ) );
    return std::move( expectation_ );
}

void
ExpectationReader::readKey( YamlField const& field ) {
    if ( field.key == "name" ) {
        readText( field, expectation_.name );
    } else if ( field.key == "at" ) {
        hasTime_ = true;
        expectation_.time = file_.yaml.readUnquoted( field, notNegativeSeconds );
    } else if ( field.key == "within" ) {
        within_ = field;
        expectation_.within = file_.yaml.readUnquoted( field, notNegativeSeconds ).value_or( 0.0 );
    } else if ( field.key == "hosts" ) {
        hosts_ = field;
        expectation_.hosts = readHostNames( file_.yaml, field );
    } else if ( field.key == "total" ) {
        total_ = field;
        auto const total = file_.yaml.readValue( field, Kiv::valueType<bool> );
        expectation_.total = total && std::any_cast<bool>( *total );
    } else if ( field.key == "querier" || field.key == "bridge" ) {
        readMembership( field );
    } else {
        readStatus( field );
    }
}

bool
ExpectationReader::readText( YamlField const& field, std::string& text ) {
    text = file_.yaml.readText( field ).value_or( "" );
    if ( text.empty() && field.value.IsScalar() ) {
        file_.yaml.error( field.at, field.key + ": expected a name, found ''" );
    }
    return !text.empty();
}

void
ExpectationReader::readStatus( YamlField const& field ) {
    hasStatus_ = true;
    Kiv::Attribute const* const row = Kiv::findAttribute( Igmp::IgmpHostStatus::attributes(), field.key );
    auto const comparison = file_.yaml.readParsed( field, [&]( std::string_view text ) {
        return std::optional( Comparison( *row->type, plainText( field, text, *row->type ) ) );
    } );
    if ( comparison ) {
        expectation_.status.push_back( { row, **comparison } );
    }
}

void
ExpectationReader::readMembership( YamlField const& field ) {
    static KeySet const querierKeys = keySet( "what a querier is to know", querierConditionKeys() );
    static KeySet const bridgeKeys = keySet( "what a bridge is to know", bridgeConditionKeys() );
    MembershipCondition condition;
    condition.at = field.at;
    bool const ofBridge = field.key == "bridge";
    if ( ofBridge ) {
        condition.bridge.emplace();
    }
    std::size_t const errorsBefore = file_.yaml.errors().size();
    file_.yaml.readMap( field, ofBridge ? bridgeKeys : querierKeys, [&]( YamlField const& key ) {
        readMembershipKey( key, condition );
    } );
    bool const isEmpty = condition.joined.empty() && condition.notJoined.empty() && !condition.groupCount;
    if ( isEmpty && file_.yaml.errors().size() == errorsBefore ) {
        file_.yaml.error(
            field.at, field.key + ": expected one of joined, notJoined, groupCount, found none"
        );
    }
    expectation_.memberships.push_back( std::move( condition ) );
}

void
ExpectationReader::readMembershipKey( YamlField const& field, MembershipCondition& condition ) {
    if ( field.key == "joined" ) {
        readGroups( file_, field, condition.joined );
    } else if ( field.key == "notJoined" ) {
        readGroups( file_, field, condition.notJoined );
    } else if ( field.key == "groupCount" ) {
        auto const count = file_.yaml.readParsed( field, [&field]( std::string_view text ) {
            Kiv::ValueType const& type = Kiv::valueType<U32>;
            return std::optional( Comparison( type, plainText( field, text, type ) ) );
        } );
        condition.groupCount = count.value_or( std::nullopt );
    } else if ( field.key == "device" ) {
        readText( field, condition.bridge->device );
    } else {
        readText( field, field.key == "ns" ? condition.bridge->ns : condition.bridge->port );
    }
}

/// A key that is not known may be what is missing, misspelt.
void
ExpectationReader::finish( bool allKeysKnown ) {
    if ( !hasStatus_ && expectation_.memberships.empty() && allKeysKnown ) {
        file_.yaml.error(
            expectation_.at,
            "missing condition in an expectation; expected an attribute of a host's status such as "
            "v2ReportsSent, or querier or bridge"
        );
    }
    if ( within_ && !hasTime_ && allKeysKnown ) {
        file_.yaml.error( within_->at, "within: expected at beside it, found none" );
    }
    for ( auto const& field : { hosts_, total_ } ) {
        if ( field && !hasStatus_ && allKeysKnown ) {
            file_.yaml.error( field->at, field->key + ": goes with attributes of a host's status" );
        }
    }
    for ( StatusCondition const& condition : expectation_.status ) {
        if ( expectation_.total && condition.attribute->type->form != Kiv::ValueForm::unsignedInteger ) {
            file_.yaml.error(
                total_->at, std::string( "total: " ) + condition.attribute->name + " is no counter"
            );
        }
    }
}

} // namespace

std::span<KeyRow const>
expectationKeys() {
    static constexpr KeyRow rows[] = {
        { "name", "How the expectation is called in reports", textSchema },
        { "at", "When it is looked at, in seconds after the start; at the end where not set", notNegative },
        { "within", "How many seconds it may take from then on to come true [0]", notNegative },
        { "hosts",
          "Whose status is looked at: names of hosts, of entries with a count, or patterns, with *, ?, [ or "
          "\\ in them; every host where not set",
          hostNamesSchema },
        { "total", "Compare the sum over the hosts, not each of them [false]", R"({"type":"boolean"})" },
        { "querier", "What the querier of the scenario is to know",
          R"({"$ref":"#/definitions/querierCondition"})" },
        { "bridge", "What a Linux bridge that snoops is to know",
          R"({"$ref":"#/definitions/bridgeCondition"})" },
    };
    return rows;
}

std::span<KeyRow const>
querierConditionKeys() {
    static constexpr KeyRow rows[] = { joinedRow, notJoinedRow, groupCountRow };
    return rows;
}

std::span<KeyRow const>
bridgeConditionKeys() {
    static constexpr KeyRow rows[] = {
        { "device", "The bridge", textSchema, true },
        { "ns", "Its network namespace; that of the command where not set", textSchema },
        { "port", "The port whose groups count; all ports where not set", textSchema },
        joinedRow,
        notJoinedRow,
        groupCountRow,
    };
    return rows;
}

std::span<Kiv::Attribute const* const>
statusAttributes() {
    static std::vector<Kiv::Attribute const*> const attributes = [] {
        std::vector<Kiv::Attribute const*> rows;
        for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
            if ( row.kind == Kiv::AttributeKind::scalar ) {
                rows.push_back( &row );
            }
        }
        return rows;
    }();
    return attributes;
}

void
readExpectations( ScenarioFile& file, YamlField const& expect ) {
    file.yaml.readList( expect, [&]( YamlField const& entry ) {
        file.scenario.expectations.push_back( ExpectationReader( file ).read( entry ) );
    } );
}

void
resolveExpectations( Scenario& scenario, Diagnostics& errors ) {
    if ( scenario.expectations.empty() ) {
        return;
    }
    HostFinder finder( scenario );
    for ( Expectation& expectation : scenario.expectations ) {
        expectation.selection = finder.find( expectation.hosts, errors );
        for ( MembershipCondition const& condition : expectation.memberships ) {
            if ( !condition.bridge && !scenario.querier ) {
                errors.add( condition.at, "querier: expected a querier in the scenario, found none" );
            }
        }
    }
}

} // namespace Agent
