#include "agent/scenario/reading/YamlReader.h"

#include <yaml-cpp/depthguard.h>
#include <yaml-cpp/eventhandler.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "agent/scenario/Scenario.h"
#include "agent/scenario/Suggestion.h"
#include "agent/scenario/ValueText.h"

namespace Agent {

namespace {

/// What is found at a node, for the end of a message.
std::string
foundAt( YAML::Node const& node ) {
    switch ( node.Type() ) {
    case YAML::NodeType::Scalar: return "'" + node.Scalar() + "'";
    case YAML::NodeType::Sequence: return "a list";
    case YAML::NodeType::Map: return "a map";
    default: return "nothing";
    }
}

/// The same number without a fraction of zeros.
std::string_view
wholeText( std::string_view text ) {
    std::size_t const point = text.find( '.' );
    bool const isWhole = point != 0 && point != std::string_view::npos && point + 1 < text.size() &&
                         text.find_first_not_of( "0123456789" ) == point &&
                         text.find_first_not_of( '0', point + 1 ) == std::string_view::npos;
    return isWhole ? text.substr( 0, point ) : text;
}

bool
hasQuotes( YamlField const& field ) {
    return field.value.IsScalar() && field.value.Tag() == "!"; // which the parser gives it
}

/// JSON has no infinity, so a text stands for it.
bool
mayBeQuoted( YamlField const& field, Kiv::ValueType const& type ) {
    switch ( type.form ) {
    case Kiv::ValueForm::boolean:
    case Kiv::ValueForm::unsignedInteger: return false;
    case Kiv::ValueForm::real: return field.value.IsScalar() && field.value.Scalar() == "inf";
    default: return true;
    }
}

/// Listens for where a second document starts.
class SecondDocument final : public YAML::EventHandler {
  public:
    std::optional<YAML::Mark> const& mark() const { return mark_; }

    void OnDocumentStart( YAML::Mark const& mark ) override {
        if ( ++documents_ == 2 ) {
            mark_ = mark;
        }
    }
    void OnDocumentEnd() override {}
    void OnNull( YAML::Mark const&, YAML::anchor_t ) override {}
    void OnAlias( YAML::Mark const&, YAML::anchor_t ) override {}
    void OnScalar( YAML::Mark const&, std::string const&, YAML::anchor_t, std::string const& ) override {}
    void OnSequenceStart( YAML::Mark const&, std::string const&, YAML::anchor_t, YAML::EmitterStyle::value )
        override {}
    void OnSequenceEnd() override {}
    void
    OnMapStart( YAML::Mark const&, std::string const&, YAML::anchor_t, YAML::EmitterStyle::value ) override {}
    void OnMapEnd() override {}

  private:
    int documents_ = 0;
    std::optional<YAML::Mark> mark_;
};

/// Where a second document starts. Never asks for a third: at a stray comma between two nodes the parser
/// finds one empty document after another, without end.
std::optional<YAML::Mark>
secondDocument( std::string const& text ) {
    std::istringstream in( text );
    YAML::Parser parser( in );
    SecondDocument second;
    while ( !second.mark() && parser.HandleNextDocument( second ) ) {
    }
    return second.mark();
}

} // namespace

std::string_view
plainText( YamlField const& field, std::string_view text, Kiv::ValueType const& type ) {
    if ( type.form == Kiv::ValueForm::real && text == ".inf" ) {
        return "inf";
    }
    bool const isNumber =
        type.form == Kiv::ValueForm::unsignedInteger || type.form == Kiv::ValueForm::enumeration;
    return isNumber && !hasQuotes( field ) ? wholeText( text ) : text;
}

std::optional<YAML::Node>
YamlReader::document( std::string const& text ) {
    if ( !checkCharacters( text ) ) {
        return {};
    }
    try {
        if ( std::optional<YAML::Mark> const second = secondDocument( text ) ) {
            error( at( *second ), "expected one document, found a second one" );
            return {};
        }
        return YAML::Load( text );
    } catch ( YAML::DeepRecursion const& deep ) {
        error( at( deep.mark ), "nested too deeply" );
    } catch ( YAML::Exception const& fault ) {
        tellSyntax( text, fault );
    }
    return {};
}

/// YAML reads JSON too, but where that ends early it may tell of a bracket far above.
void
YamlReader::tellSyntax( std::string const& text, YAML::Exception const& fault ) {
    if ( files_[file_].ends_with( ".json" ) ) {
        try {
            auto const parsed = nlohmann::json::parse( text, nullptr, true, true );
        } catch ( nlohmann::json::parse_error const& json ) {
            constexpr std::string_view before = ": syntax error ";
            std::string_view const told = json.what();
            std::size_t const reason = told.find( before );
            error(
                placeOf( std::string_view( text ).substr( 0, json.byte - 1 ) ),
                "not JSON: " +
                    std::string(
                        reason == std::string_view::npos ? told : told.substr( reason + before.size() )
                    )
            );
            return;
        } catch ( nlohmann::json::exception const& ) {
            // Such as a number out of range: that is no fault of the syntax, and the one there is lies
            // behind.
        }
    }
    error( at( fault.mark ), "not YAML: " + fault.msg );
}

/// Of what stands behind that text.
Position
YamlReader::placeOf( std::string_view before ) const {
    return { file_, static_cast<int>( std::count( before.begin(), before.end(), '\n' ) ) + 1,
             static_cast<int>( before.size() - ( before.rfind( '\n' ) + 1 ) ) + 1 };
}

/// YAML is text; the parser would end at some of these, as if the file did (YAML 1.2, section 5.1).
bool
YamlReader::checkCharacters( std::string const& text ) {
    auto const isControl = []( char c ) {
        return ( static_cast<unsigned char>( c ) < ' ' && c != '\t' && c != '\n' && c != '\r' ) || c == 0x7f;
    };
    auto const found = std::find_if( text.begin(), text.end(), isControl );
    if ( found == text.end() ) {
        return true;
    }
    std::string_view const before( text.data(), static_cast<std::size_t>( found - text.begin() ) );
    error( placeOf( before ), "not YAML: expected text, found a byte " + std::to_string( *found ) );
    return false;
}

/// Each use of an alias is read anew, so a short text could stand for a document without end.
bool
YamlReader::isWithinBounds( YamlField const& field ) {
    constexpr std::size_t mostFields = 5'000'000;
    if ( fields_ < mostFields ) {
        ++fields_;
        return true;
    }
    if ( !boundTold_ ) {
        error(
            field.at, "the scenario has more than " + std::to_string( mostFields ) +
                          " values; aliases count wherever they are used"
        );
        boundTold_ = true;
    }
    return false;
}

Position
YamlReader::at( YAML::Mark const& mark ) const {
    return mark.is_null() ? Position{ file_ } : Position{ file_, mark.line + 1, mark.column + 1 };
}

void
YamlReader::expected( YamlField const& field, std::string const& what ) {
    error( field.at, field.key + ": expected " + what + ", found " + foundAt( field.value ) );
}

bool
YamlReader::readMap(
    YamlField const& map, KeySet const& keys, Kiv::FunctionRef<void( YamlField const& )> read
) {
    if ( !map.value.IsMap() ) {
        expected( map, "a map that describes " + std::string( keys.what ) );
        return false;
    }
    bool allKnown = true;
    std::map<std::string, Position> seen;
    for ( auto const& pair : map.value ) {
        Position const keyAt = at( pair.first );
        Position const valueAt = pair.second.IsNull() ? keyAt : at( pair.second );
        YamlField const field{ pair.first.IsScalar() ? pair.first.Scalar() : "", pair.second, valueAt };
        auto const [first, isNew] = seen.emplace( field.key, keyAt );
        if ( !isNew ) {
            repetition( keyAt, "key '" + field.key + "'", first->second );
        } else if ( !checkKey( { field.key, pair.first, keyAt }, keys ) ) {
            allKnown = false;
        } else if ( isWithinBounds( field ) ) {
            read( field );
        }
    }
    for ( std::string_view const key : keys.required ) {
        if ( !seen.contains( std::string( key ) ) ) {
            error( map.at, "missing key '" + std::string( key ) + "' in " + keys.what );
        }
    }
    return allKnown;
}

bool
YamlReader::checkKey( YamlField const& field, KeySet const& keys ) {
    if ( !field.value.IsScalar() ) {
        error(
            field.at, std::string( "expected a key of " ) + keys.what + ", found " + foundAt( field.value )
        );
        return false;
    }
    bool const isKnown = std::find( keys.known.begin(), keys.known.end(), field.key ) != keys.known.end();
    if ( !isKnown ) {
        error(
            field.at, "unknown key '" + field.key + "' in " + keys.what + suggestion( field.key, keys.known )
        );
    }
    return isKnown;
}

void
YamlReader::readList( YamlField const& list, Kiv::FunctionRef<void( YamlField const& )> read ) {
    if ( !list.value.IsSequence() ) {
        expected( list, "a list" );
        return;
    }
    for ( YAML::Node const& element : list.value ) {
        YamlField const field{ list.key, element, element.IsNull() ? list.at : at( element ) };
        if ( isWithinBounds( field ) ) {
            read( field );
        }
    }
}

std::optional<std::string>
YamlReader::readText( YamlField const& field ) {
    if ( !field.value.IsScalar() ) {
        expected( field, "a single value" );
        return {};
    }
    return field.value.Scalar();
}

std::optional<Kiv::U64>
YamlReader::readWhole( YamlField const& field, Kiv::U64 least, Kiv::U64 greatest ) {
    return readUnquoted( field, [&]( std::string_view text ) {
        return wholeNumberOf( wholeText( text ), least, greatest );
    } );
}

std::optional<std::any>
YamlReader::readValue( YamlField const& field, Kiv::ValueType const& type ) {
    auto const parse = [&]( std::string_view text ) {
        return valueOf( type, plainText( field, text, type ) );
    };
    return mayBeQuoted( field, type ) ? readParsed( field, parse ) : readUnquoted( field, parse );
}

bool
YamlReader::isQuoted( YamlField const& field ) {
    bool const isQuoted = hasQuotes( field );
    if ( isQuoted ) {
        error( field.at, field.key + ": expected no quotes, found '" + field.value.Scalar() + "' in quotes" );
    }
    return isQuoted;
}

void
YamlReader::refused( YamlField const& field, Kiv::RangeException const& fault ) {
    std::string message = fault.what();
    if ( message.find( ", found " ) == std::string::npos ) {
        message += ", found " + foundAt( field.value );
    }
    error( field.at, field.key + ": " + message );
}

} // namespace Agent
