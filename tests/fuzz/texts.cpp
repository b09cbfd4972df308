/// Text for every reader of the value layer. What a reader takes must be written back by its writer as text
/// that gives the same value; anything else must raise RangeException, and nothing but that.
///
/// The first byte picks the reader, the rest is the text.

#include "model/IgmpHostDir.h"
#include "model/IgmpHostIntfConfig.h"
#include "model/IgmpHostStatusDir.h"
#include "tests/fuzz/FuzzInput.h"

namespace {

using Fuzz::Input;
using Fuzz::require;
using Kiv::String8;

template <class T>
void
tryStrep( String8 const& text ) {
    T value;
    try {
        Kiv::strepToValue( text, &value );
    } catch ( Kiv::RangeException const& ) {
        return;
    }
    T again;
    Kiv::strepToValue( valueToStrep( value ), &again );
    require( again == value, "a value reads back" );
}

/// By the rows of the tables, so that every type of an attribute has its turn.
void
tryRow( Kiv::Attribute const& row, String8 const& text ) {
    std::any value;
    try {
        value = row.type->parse( text.view() );
    } catch ( Kiv::RangeException const& ) {
        return;
    }
    std::string const written = row.type->format( value );
    require( row.type->format( row.type->parse( written ) ) == written, "a text reads back" );
    Kiv::NboAttrLog::Out out;
    try {
        row.type->out( out, value );
    } catch ( Kiv::Exception const& ) {
        return; // longer than a stream may carry
    }
    Kiv::NboAttrLog::In in( out.bytes() );
    try {
        require( row.type->format( row.type->in( in ) ) == written, "a value travels" );
    } catch ( Kiv::RangeException const& ) { // a number without a name is for the text form alone
    }
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( Kiv::U8 const* data, std::size_t size ) {
    Input input( { data, size } );
    unsigned const reader = input.byte();
    std::vector<Kiv::U8> const rest = input.bytes( size );
    String8 const text( std::string_view( reinterpret_cast<char const*>( rest.data() ), rest.size() ) );
    std::span<Kiv::Attribute const> const rows = Igmp::IgmpHost::attributes();
    switch ( reader ) {
    case 0: tryStrep<Igmp::IgmpHostIntfConfig>( text ); break;
    case 1: tryStrep<Igmp::IgmpVersion>( text ); break;
    case 2: tryStrep<Igmp::TimerState>( text ); break;
    default:
        if ( Kiv::Attribute const& row = rows[reader % rows.size()]; row.type ) {
            tryRow( row, text );
        }
        tryRow( Igmp::IgmpV3GroupRecord::attributes()[1], text );
    }
    return 0;
}
