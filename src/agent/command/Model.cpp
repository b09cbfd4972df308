#include "agent/command/Model.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "agent/command/ExitStatus.h"
#include "engine/Registration.h"
#include "model/Registration.h"
#include "platform/kiv/IntrospectionReactor.h"
#include "vlan/Registration.h"

namespace Agent {

namespace {

using Line = std::array<std::string, 7>;

Line const heading = { "Id", "Name", "Kind", "Type", "Key", "Default", "Flags" };

/// The row behind a declared attribute, its own or inherited; null for an enumerator.
Kiv::Attribute const*
rowOf( Kiv::Type const& type, Kiv::KivAttr const& attr ) {
    for ( Kiv::Attribute const* row : type.rows() ) {
        if ( attr.name().view() == row->name ) {
            return row;
        }
    }
    return nullptr;
}

std::string
defaultText( Kiv::Attribute const* row ) {
    if ( !row || !row->defaultText ) {
        return "";
    }
    return *row->defaultText ? row->defaultText : "(empty)";
}

Line
lineOf( Kiv::Type const& type, Kiv::KivAttr const& attr ) {
    Kiv::Attribute const* const row = rowOf( type, attr );
    std::ostringstream flags;
    flags << std::hex << std::showbase << attr.flags() << ' ' << attr.introspectionFlags();
    return { std::to_string( attr.id() ),
             attr.name().charPtr(),
             row ? Kiv::kindText( row->kind ) : "enumerator",
             attr.typeName().charPtr(),
             attr.keyTypeName().charPtr(),
             defaultText( row ),
             flags.str() };
}

void
writeTable( std::ostream& out, std::vector<Line> const& lines ) {
    std::array<std::size_t, std::tuple_size_v<Line>> widths{};
    for ( Line const& line : lines ) {
        for ( std::size_t column = 0; column < line.size(); ++column ) {
            widths[column] = std::max( widths[column], line[column].size() );
        }
    }
    for ( std::size_t i = 0; i < lines.size(); ++i ) {
        for ( std::size_t column = 0; column < widths.size(); ++column ) {
            out << "| " << std::left << std::setw( static_cast<int>( widths[column] ) ) << lines[i][column]
                << ' ';
        }
        out << "|\n";
        for ( std::size_t column = 0; i == 0 && column < widths.size(); ++column ) {
            out << '|' << std::string( widths[column] + 2, '-' )
                << ( column + 1 == widths.size() ? "|\n" : "" );
        }
    }
}

/// The heading and the declared attributes by number.
std::vector<Line>
linesOf( Kiv::Type const& type ) {
    std::vector<Kiv::Ptr<Kiv::KivAttr>> attrs = type.attrs();
    std::stable_sort( attrs.begin(), attrs.end(), []( auto const& a, auto const& b ) {
        return a->id() < b->id();
    } );
    std::vector<Line> lines = { heading };
    for ( Kiv::Ptr<Kiv::KivAttr> const& attr : attrs ) {
        if ( attr->isDeclared() ) {
            lines.push_back( lineOf( type, *attr ) );
        }
    }
    return lines;
}

std::string
kindOf( Kiv::Type const& type ) {
    if ( type.isEnumType() ) {
        return "Enumeration";
    }
    return type.isValue() ? "Value" : type.isEntity() ? "Entity" : "Object";
}

void
writeType( std::ostream& out, Kiv::Type const& type ) {
    out << "## " << type.name() << "\n\n" << kindOf( type );
    if ( type.base() ) {
        out << ", derived from " << type.base()->name();
    }
    char const* separator = ". Made from ";
    for ( Kiv::Type::Argument const& argument : type.arguments() ) {
        out << separator << argument.name << " (" << argument.type << ")";
        separator = ", ";
    }
    out << ".\n\n";
    writeTable( out, linesOf( type ) );
}

} // namespace

void
writeModel( std::ostream& out ) {
    Kiv::Ptr<Kiv::IntrospectionReactor> const reactor = Kiv::IntrospectionReactor::global();
    reactor->hasActiveIntrospectionIs( true );
    Igmp::kivInitIgmpHost();
    Igmp::kivInitIgmpHostSm();
    Zornet::kivInitVlanTaggingPam();
    out << "# Types and their attributes\n";
    for ( Kiv::Type const* type : reactor->types() ) {
        out << '\n';
        writeType( out, *type );
    }
}

int
model() {
    writeModel( std::cout );
    return exitDone;
}

} // namespace Agent
