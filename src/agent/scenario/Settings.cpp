#include "agent/scenario/Settings.h"

#include <algorithm>

namespace Agent {

void
Settings::settingIs( Setting const& setting ) {
    settings_.push_back( setting );
}

void
Settings::settingIs( Kiv::AttributeId id, std::string_view text, Position const& at ) {
    Kiv::Attribute const& attribute = row( id );
    settingIs( { &attribute, attribute.type->parse( text ), at } );
}

Setting const*
Settings::find( Kiv::AttributeId id ) const {
    auto const at = std::find_if( settings_.begin(), settings_.end(), [id]( Setting const& setting ) {
        return setting.attribute->id == id;
    } );
    return at == settings_.end() ? nullptr : &*at;
}

Position const&
Settings::placeOf( Kiv::AttributeId id, Position const& otherwise ) const {
    Setting const* const setting = find( id );
    return setting ? setting->at : otherwise;
}

Kiv::Attribute const&
Settings::row( Kiv::AttributeId id ) const {
    auto const at = std::find_if( table_.begin(), table_.end(), [id]( Kiv::Attribute const& attribute ) {
        return attribute.id == id;
    } );
    Kiv::invariant( at != table_.end(), "an attribute of the class" );
    return *at;
}

std::any
Settings::defaultValue( Kiv::AttributeId id ) const {
    Kiv::Attribute const& attribute = row( id );
    return attribute.type->parse( attribute.defaultText );
}

} // namespace Agent
