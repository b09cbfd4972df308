#pragma once

#include <any>
#include <span>
#include <vector>

#include "agent/scenario/Diagnostics.h"
#include "platform/kiv/Attribute.h"

namespace Agent {

/// A value for one attribute, and where it was read.
struct Setting {
    Kiv::Attribute const* attribute;
    std::any value;
    Position at;
};

/// Values for some attributes of one class, whose table it knows; for the others the class's defaults stand.
class Settings {
  public:
    explicit Settings( std::span<Kiv::Attribute const> table ) : table_( table ) {}

    void settingIs( Setting const& setting );
    /// From text. Raises RangeException for a text that is no value of the attribute.
    void settingIs( Kiv::AttributeId id, std::string_view text, Position const& at = {} );
    std::vector<Setting> const& settings() const { return settings_; }
    /// The setting of that attribute, or null.
    Setting const* find( Kiv::AttributeId id ) const;
    /// Where the attribute is set, or `otherwise`.
    Position const& placeOf( Kiv::AttributeId id, Position const& otherwise ) const;

    /// The attribute's value: as set, or the default.
    template <class T>
    T value( Kiv::AttributeId id ) const {
        Setting const* const setting = find( id );
        return std::any_cast<T>( setting ? setting->value : defaultValue( id ) );
    }

  private:
    Kiv::Attribute const& row( Kiv::AttributeId id ) const;
    std::any defaultValue( Kiv::AttributeId id ) const;

    std::span<Kiv::Attribute const> table_;
    std::vector<Setting> settings_;
};

} // namespace Agent
