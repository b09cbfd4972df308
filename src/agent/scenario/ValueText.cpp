#include "agent/scenario/ValueText.h"

namespace Agent {

std::any
valueOf( Kiv::ValueType const& type, std::string_view text ) {
    try {
        return type.parse( text );
    } catch ( Kiv::RangeException const& fault ) {
        if ( type.form != Kiv::ValueForm::unsignedInteger ) {
            throw;
        }
        Kiv::throwExpected( expectationOf( type, fault ), text );
    }
}

std::string
expectationOf( Kiv::ValueType const& type, Kiv::RangeException const& fault ) {
    std::string_view expected = fault.what();
    for ( std::string const& before : { std::string( "expected " ), type.name + std::string( ", " ) } ) {
        expected.remove_prefix( expected.starts_with( before ) ? before.size() : 0 );
    }
    return std::string( expected.substr( 0, expected.find( ", found '" ) ) );
}

} // namespace Agent
