#include "model/Enumerations.h"

#include <ostream>

namespace Igmp {

namespace {

constexpr char versionType[] = "IgmpVersion";
constexpr Kiv::EnumName<IgmpVersion> versions[] = {
    { igmpVersionUnknown, "igmpVersionUnknown" },
    { igmpVersion1, "igmpVersion1" },
    { igmpVersion2, "igmpVersion2" },
    { igmpVersion3, "igmpVersion3" },
};
constexpr char stateType[] = "TimerState";
constexpr Kiv::EnumName<TimerState> states[] = {
    { timerDisabled, "timerDisabled" },
    { timerRunning, "timerRunning" },
    { timerExpired, "timerExpired" },
};

/// The first enumerator that `matches`. Raises RangeException with the type's name where none does.
template <class E, std::size_t count, class Matches>
E
instance( Kiv::EnumName<E> const ( &names )[count], char const* typeName, Matches matches ) {
    for ( Kiv::EnumName<E> const& name : names ) {
        if ( matches( name ) ) {
            return name.value;
        }
    }
    Kiv::throwRangeException( typeName );
}

} // namespace

Kiv::String8
stringValue( IgmpVersion version ) {
    return enumText( versions, versionType, version );
}

Kiv::String8
stringValue( TimerState state ) {
    return enumText( states, stateType, state );
}

Kiv::String8
valueToStrep( IgmpVersion const& version ) {
    return Kiv::valueToStrep( stringValue( version ) );
}

Kiv::String8
valueToStrep( TimerState const& state ) {
    return Kiv::valueToStrep( stringValue( state ) );
}

std::ostream&
operator<<( std::ostream& out, IgmpVersion version ) {
    return out << stringValue( version );
}

std::ostream&
operator<<( std::ostream& out, TimerState state ) {
    return out << stringValue( state );
}

IgmpVersion
IgmpVersionInstance( unsigned int number ) {
    return instance( versions, versionType, [=]( auto const& name ) { return name.value == number; } );
}

IgmpVersion
IgmpVersionInstance( Kiv::String8 const& text ) {
    return instance( versions, versionType, [&]( auto const& one ) { return text.view() == one.text; } );
}

TimerState
TimerStateInstance( unsigned int number ) {
    return instance( states, stateType, [=]( auto const& name ) { return name.value == number; } );
}

TimerState
TimerStateInstance( Kiv::String8 const& text ) {
    return instance( states, stateType, [&]( auto const& one ) { return text.view() == one.text; } );
}

void
sequenceToValue(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IgmpVersion* version
) {
    *version = IgmpVersionInstance( Kiv::deserializeAttr<Kiv::String8>( at, end ) );
}

void
sequenceToValue(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, TimerState* state
) {
    *state = TimerStateInstance( Kiv::deserializeAttr<Kiv::String8>( at, end ) );
}

std::span<Kiv::EnumName<IgmpVersion> const>
igmpVersions() {
    return versions;
}

std::span<Kiv::EnumName<TimerState> const>
timerStates() {
    return states;
}

} // namespace Igmp

std::string
Kiv::ValueTraits<Igmp::IgmpVersion>::format( Igmp::IgmpVersion value ) {
    return Igmp::stringValue( value ).charPtr();
}

Igmp::IgmpVersion
Kiv::ValueTraits<Igmp::IgmpVersion>::parse( std::string_view text ) {
    bool const isNumber = text.size() == 1 && text[0] >= '0' && text[0] <= '3';
    if ( isNumber ) {
        return Igmp::IgmpVersionInstance( static_cast<unsigned int>( text[0] - '0' ) );
    }
    try {
        return Igmp::IgmpVersionInstance( Kiv::String8( text ) );
    } catch ( Kiv::RangeException const& ) {
        Kiv::throwExpected( "an IGMP version: 0 to 3 or igmpVersion1, igmpVersion2, igmpVersion3", text );
    }
}

std::string
Kiv::ValueTraits<Igmp::TimerState>::format( Igmp::TimerState value ) {
    return Igmp::stringValue( value ).charPtr();
}

Igmp::TimerState
Kiv::ValueTraits<Igmp::TimerState>::parse( std::string_view text ) {
    return Igmp::TimerStateInstance( Kiv::String8( text ) );
}

std::vector<std::string>
Kiv::ValueTraits<Igmp::IgmpVersion>::texts() {
    return enumTexts( Igmp::versions, { "1", "2", "3", "0" } );
}

std::vector<std::string>
Kiv::ValueTraits<Igmp::TimerState>::texts() {
    return enumTexts( Igmp::states );
}
