#pragma once

#include <yaml-cpp/yaml.h>

#include <optional>

#include "agent/scenario/Diagnostics.h"
#include "platform/kiv/Attribute.h"
#include "platform/kiv/FunctionRef.h"

namespace Agent {

/// The keys that a map of a scenario may have.
struct KeySet {
    char const* what; ///< the map describes, such as "a host"
    std::vector<std::string_view> known;
    std::vector<std::string_view> required;
};

/// A key of a map with its value. The place is the value's, or the key's where there is no value.
struct YamlField {
    std::string key;
    YAML::Node value;
    Position at;
};

/// A text as values of the type have it: YAML writes infinity as ".inf", and to a JSON Schema 2.0 is a whole
/// number.
std::string_view plainText( YamlField const& field, std::string_view text, Kiv::ValueType const& type );

/// Takes the nodes of one file apart. What is not as it should be becomes an error with its place, and the
/// reading goes on behind it, so that one pass finds everything.
class YamlReader {
  public:
    YamlReader( std::size_t file, std::vector<std::string> const& files, Diagnostics& errors )
        : file_( file ), files_( files ), errors_( errors ) {}

    /// The one document in the text; none, told, where the text is not YAML.
    std::optional<YAML::Node> document( std::string const& text );

    Position at( YAML::Node const& node ) const { return at( node.Mark() ); }
    void error( Position const& at, std::string const& text ) { errors_.add( at, text ); }
    /// "WHAT is there already, in line N".
    void repetition( Position const& at, std::string const& what, Position const& first ) {
        errors_.addRepetition( at, what, first, files_ );
    }
    Diagnostics& errors() { return errors_; }

    /// Calls `read` for each known key of a map, once. False where it is no map, or has other keys too.
    bool readMap( YamlField const& map, KeySet const& keys, Kiv::FunctionRef<void( YamlField const& )> read );
    /// Calls `read` for each element of a list, which bears the list's name.
    void readList( YamlField const& list, Kiv::FunctionRef<void( YamlField const& )> read );
    /// The text of a single value.
    std::optional<std::string> readText( YamlField const& field );
    std::optional<Kiv::U64> readWhole( YamlField const& field, Kiv::U64 least, Kiv::U64 greatest );
    /// A value of that type.
    std::optional<std::any> readValue( YamlField const& field, Kiv::ValueType const& type );
    /// What `parse` makes of the text of a single value. It raises RangeException for what it does not take.
    template <class Parse>
    auto readParsed( YamlField const& field, Parse parse ) {
        std::optional<decltype( parse( std::string_view() ) )> value;
        if ( std::optional<std::string> const text = readText( field ) ) {
            try {
                value = parse( std::string_view( *text ) );
            } catch ( Kiv::RangeException const& fault ) {
                refused( field, fault );
            }
        }
        return value;
    }

    /// The same of what in quotes is a text, and no number, true or false.
    template <class Parse>
    auto readUnquoted( YamlField const& field, Parse parse ) {
        auto value = readParsed( field, parse );
        if ( value && isQuoted( field ) ) {
            value.reset();
        }
        return value;
    }
    /// Whether a single value is in quotes, which is an error.
    bool isQuoted( YamlField const& field );

  private:
    void refused( YamlField const& field, Kiv::RangeException const& fault );
    Position at( YAML::Mark const& mark ) const;
    Position placeOf( std::string_view before ) const;
    void tellSyntax( std::string const& text, YAML::Exception const& fault );
    bool checkCharacters( std::string const& text );
    bool isWithinBounds( YamlField const& field );
    void expected( YamlField const& field, std::string const& what );
    bool checkKey( YamlField const& field, KeySet const& keys );

    std::size_t file_;
    std::vector<std::string> const& files_;
    Diagnostics& errors_;
    std::size_t fields_ = 0; ///< read so far
    bool boundTold_ = false;
};

} // namespace Agent
