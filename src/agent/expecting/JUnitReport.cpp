#include "agent/expecting/JUnitReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

namespace Agent {

namespace {

/// Valid UTF-8, with what is none replaced.
std::string
utf8( std::string const& text ) {
    using Json = nlohmann::json;
    return Json::parse( Json( text ).dump( -1, ' ', false, Json::error_handler_t::replace ) );
}

bool
isForbidden( char c ) {
    auto const byte = static_cast<unsigned char>( c );
    return byte < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

std::string
escaped( std::string const& text ) {
    std::string out;
    for ( char const c : utf8( text ) ) {
        switch ( c ) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\n': out += "&#10;"; break;
        case '\r': out += "&#13;"; break;
        case '\t': out += "&#9;"; break;
        default: out += isForbidden( c ) ? "\xef\xbf\xbd" : std::string( 1, c );
        }
    }
    return out;
}

void
writeCase( std::ostream& out, ExpectationOutcome const& outcome ) {
    out << "    <testcase classname=\"" << escaped( outcome.place ) << "\" name=\"" << escaped( outcome.name )
        << "\" time=\"" << outcome.time << '"';
    if ( outcome.shortfalls.empty() ) {
        out << "/>\n";
        return;
    }
    out << ">\n      <failure message=\"" << escaped( outcome.shortfalls.front() ) << "\">";
    for ( std::string const& text : outcome.shortfalls ) {
        out << escaped( text ) << '\n';
    }
    out << "</failure>\n    </testcase>\n";
}

} // namespace

void
writeJUnit( std::ostream& out, std::vector<ExpectationOutcome> const& outcomes, Kiv::Seconds duration ) {
    auto const failures =
        std::count_if( outcomes.begin(), outcomes.end(), []( ExpectationOutcome const& outcome ) {
            return !outcome.shortfalls.empty();
        } );
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite name=\"igmphost\" tests=\""
        << outcomes.size() << "\" failures=\"" << failures << "\" errors=\"0\" skipped=\"0\" time=\""
        << duration << "\">\n";
    for ( ExpectationOutcome const& outcome : outcomes ) {
        writeCase( out, outcome );
    }
    out << "  </testsuite>\n</testsuites>\n";
}

} // namespace Agent
