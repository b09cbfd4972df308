#pragma once

#include <iosfwd>
#include <span>

#include "model/Types.h"
#include "platform/kiv/EnumText.h"

namespace Igmp {

/// A version of the protocol. Compared as a number; the unknown one is carried through like any other.
enum IgmpVersion : U32 { igmpVersionUnknown = 0, igmpVersion1 = 1, igmpVersion2 = 2, igmpVersion3 = 3 };

/// State of a response delay timer. Running says that an answer is pending, not that the wheel is armed.
enum TimerState : U32 { timerDisabled = 0, timerRunning = 1, timerExpired = 2 };

/// The enumerator's name; "IgmpVersion(%d)" or "TimerState(%d)" with the number where there is none.
Kiv::String8 stringValue( IgmpVersion version );
Kiv::String8 stringValue( TimerState state );
/// The name between single quotes.
Kiv::String8 valueToStrep( IgmpVersion const& version );
Kiv::String8 valueToStrep( TimerState const& state );
std::ostream& operator<<( std::ostream& out, IgmpVersion version );
std::ostream& operator<<( std::ostream& out, TimerState state );

/// The enumerator of that number or name. Raises RangeException with the type's name where there is none.
IgmpVersion IgmpVersionInstance( unsigned int number );
IgmpVersion IgmpVersionInstance( Kiv::String8 const& name );
TimerState TimerStateInstance( unsigned int number );
TimerState TimerStateInstance( Kiv::String8 const& name );
/// Read the name between quotes. Raise like the forms by name.
void sequenceToValue(
    Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IgmpVersion* version
);
void
sequenceToValue( Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, TimerState* state );

/// Every enumerator with its name, by number.
std::span<Kiv::EnumName<IgmpVersion> const> igmpVersions();
std::span<Kiv::EnumName<TimerState> const> timerStates();

} // namespace Igmp

/// Text is the name; a number is taken too.
template <>
struct Kiv::ValueTraits<Igmp::IgmpVersion> {
    static constexpr char const* name = "Igmp::IgmpVersion";
    static constexpr ValueForm form = ValueForm::enumeration;
    static std::string format( Igmp::IgmpVersion value );
    static Igmp::IgmpVersion parse( std::string_view text );
    static Igmp::IgmpVersion fromNumber( U32 number ) { return Igmp::IgmpVersionInstance( number ); }
    static std::vector<std::string> texts();
};

template <>
struct Kiv::ValueTraits<Igmp::TimerState> {
    static constexpr char const* name = "Igmp::TimerState";
    static constexpr ValueForm form = ValueForm::enumeration;
    static std::string format( Igmp::TimerState value );
    static Igmp::TimerState parse( std::string_view text );
    static Igmp::TimerState fromNumber( U32 number ) { return Igmp::TimerStateInstance( number ); }
    static std::vector<std::string> texts();
};
