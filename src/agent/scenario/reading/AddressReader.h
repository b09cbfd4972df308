#pragma once

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// How a kind of addresses is spoken of.
struct AddressWords {
    char const* key;  ///< that names an address or a range
    char const* noun; ///< for one of them
    char const* what; ///< one entry of them is
    char const* help; ///< for the key
};

inline constexpr AddressWords groupWords{ "multicastAddr", "group", "a group",
                                          "Address of the group, or a range of groups" };
inline constexpr AddressWords sourceWords{ "sourceIp", "source", "a source",
                                           "Address of the source, or a range of sources" };

/// The keys of one map that say which addresses it is about: an address or a range, with `count` and `step`,
/// or a file.
class AddressKeys {
  public:
    AddressKeys( ScenarioFile& file, AddressWords const& words ) : file_( file ), words_( words ) {}

    /// The keys themselves.
    static std::vector<KeyRow> rows( AddressWords const& words );
    /// Keeps a field that is one of these keys; false, with nothing done, for any other.
    bool take( YamlField const& field );
    /// The addresses, once every key of `map` has been seen. None, told, where the keys have an error.
    std::optional<AddressList> addresses( YamlField const& map );
    /// Where the addresses are named, or the map's place.
    Position const& at( YamlField const& map ) const;

  private:
    std::optional<AddressList> fromFile();
    std::optional<AddressList> fromRange();

    ScenarioFile& file_;
    AddressWords const& words_;
    std::optional<YamlField> addr_;
    std::optional<YamlField> path_;
    std::optional<YamlField> count_;
    std::optional<YamlField> step_;
};

/// The addresses that a single text names.
std::optional<AddressList> readRange( ScenarioFile& file, YamlField const& field, AddressWords const& words );

/// Addresses as a text, a map with the keys of AddressKeys, or a list of such. Tells each address that is
/// there twice.
AddressList readAddresses( ScenarioFile& file, YamlField const& field, AddressWords const& words );

} // namespace Agent
