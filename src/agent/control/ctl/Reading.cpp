#include <algorithm>
#include <iomanip>
#include <iostream>

#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/HostView.h"
#include "agent/control/ctl/Selection.h"
#include "agent/scenario/Suggestion.h"
#include "platform/kiv/Type.h"

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpHostStatus;
using Json = nlohmann::ordered_json;

namespace {

constexpr std::string_view statusPrefix = "status.";

/// An attribute of a host or, behind "status." or where only the status has it, of its status.
struct Wanted {
    std::string word; ///< as it was asked for
    Kiv::Attribute const* row;
    bool isOfStatus;
};

[[noreturn]] void
throwUnknown( std::string const& word, std::string const& name ) {
    std::vector<std::string_view> known;
    for ( auto const table : { IgmpHost::attributes(), IgmpHostStatus::attributes() } ) {
        for ( Kiv::Attribute const& row : table ) {
            known.emplace_back( row.name );
        }
    }
    throw std::invalid_argument( "no attribute '" + word + "'" + suggestion( name, known ) );
}

Wanted
wanted( std::string const& word ) {
    bool const isOfStatus = word.starts_with( statusPrefix );
    std::string const name = isOfStatus ? word.substr( statusPrefix.size() ) : word;
    if ( !isOfStatus ) {
        Kiv::Attribute const* const row = Kiv::findAttribute( IgmpHost::attributes(), name );
        if ( row && ( row->read || row->id == IgmpHost::attrV3group ) ) {
            return { word, row, false };
        }
    }
    if ( Kiv::Attribute const* const row = Kiv::findAttribute( IgmpHostStatus::attributes(), name ) ) {
        return { word, row, true };
    }
    throwUnknown( word, name );
}

Json
valueOf( ControlClient const& client, IgmpHost const& host, Wanted const& wanted ) {
    if ( !wanted.isOfStatus && wanted.row->read ) {
        return jsonValue( *wanted.row, host );
    }
    if ( !wanted.isOfStatus ) {
        Json groups = Json::array();
        for ( auto const& record : groupsOf( host ) ) {
            groups.push_back( Kiv::ValueTraits<Zornet::IpAddr>::format( record->multicastAddr() ) );
        }
        return groups;
    }
    auto const status = client.statusDir().igmpHostStatus( host.name() );
    if ( !status ) {
        throw std::runtime_error(
            std::string( host.name().view() ) + " is not enabled, so it has no status"
        );
    }
    return jsonValue( *wanted.row, *status );
}

std::string
plain( Json const& value ) {
    if ( value.is_array() ) {
        return joined( value.get<std::vector<std::string>>() );
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

using Line = std::vector<std::string>;

/// What the list of hosts shows of each besides its name and its groups.
constexpr Kiv::AttributeId listed[] = {
    IgmpHost::attrEnabled, IgmpHost::attrIgmpVersion, IgmpHost::attrIpAddr,
    IgmpHost::attrMacAddr, IgmpHost::attrDeviceName,  IgmpHost::attrVlanId,
};

Line
headingLine() {
    Line line = { "name" };
    for ( Kiv::AttributeId const id : listed ) {
        line.emplace_back( IgmpHost::_fwkType()->row( id )->name );
    }
    line.insert( line.end(), { "in force", "groups" } );
    return line;
}

Line
lineOf( ControlClient const& client, IgmpHost const& host ) {
    Line line = { host.name().charPtr() };
    for ( Kiv::AttributeId const id : listed ) {
        line.push_back( Kiv::attributeText( *IgmpHost::_fwkType()->row( id ), host ) );
    }
    auto const status = client.statusDir().igmpHostStatus( host.name() );
    line.push_back( status ? Igmp::stringValue( status->igmpVersion() ).charPtr() : "-" );
    line.push_back( std::to_string( host.v3group().size() ) );
    return line;
}

void
printTable( std::vector<Line> const& lines ) {
    std::vector<std::size_t> widths( lines.front().size() );
    for ( Line const& line : lines ) {
        for ( std::size_t i = 0; i < line.size(); ++i ) {
            widths[i] = std::max( widths[i], line[i].size() );
        }
    }
    for ( Line const& line : lines ) {
        for ( std::size_t i = 0; i + 1 < line.size(); ++i ) {
            std::cout << std::left << std::setw( static_cast<int>( widths[i] + 2 ) ) << line[i];
        }
        std::cout << line.back() << '\n';
    }
}

Json
listedJson( ControlClient const& client, IgmpHost const& host ) {
    Json json = { { "name", host.name().charPtr() } };
    for ( Kiv::AttributeId const id : listed ) {
        Kiv::Attribute const& row = *IgmpHost::_fwkType()->row( id );
        json[row.name] = jsonValue( row, host );
    }
    auto const status = client.statusDir().igmpHostStatus( host.name() );
    json["inForce"] = status ? Json( Igmp::stringValue( status->igmpVersion() ).charPtr() ) : Json();
    json["groups"] = host.v3group().size();
    return json;
}

/// Opens, separates and closes the members of one long JSON text, so that it never stands in memory whole.
class JsonMembers {
  public:
    JsonMembers( char open, char close ) : close_( close ) { std::cout << open; }
    ~JsonMembers() { std::cout << '\n' << close_ << '\n'; }
    JsonMembers( JsonMembers const& ) = delete;
    JsonMembers& operator=( JsonMembers const& ) = delete;

    std::ostream& next() { return std::cout << std::exchange( before_, ",\n" ); }

  private:
    char close_;
    char const* before_ = "\n";
};

std::string
quoted( Kiv::Name const& name ) {
    return textOf( Json( name.charPtr() ) );
}

} // namespace

void
ctlHosts( CtlOptions const& options ) {
    ControlClient client( options.path, options.patience );
    client.synchronise();
    Hosts const hosts = selectedHosts( client, options.host );
    if ( options.isJson ) {
        JsonMembers members( '[', ']' );
        for ( auto const& host : hosts ) {
            members.next() << textOf( listedJson( client, *host ) );
        }
        return;
    }
    std::vector<Line> lines = { headingLine() };
    for ( auto const& host : hosts ) {
        lines.push_back( lineOf( client, *host ) );
    }
    printTable( lines );
}

void
ctlShow( CtlOptions const& options ) {
    ControlClient client( options.path, options.patience );
    client.synchronise();
    Hosts const hosts = selectedHosts( client, options.host );
    if ( options.isJson ) {
        JsonMembers members( '{', '}' );
        for ( auto const& host : hosts ) {
            members.next() << quoted( host->name() ) << ": " << textOf( hostJson( client, *host ) );
        }
        return;
    }
    for ( auto const& host : hosts ) {
        printHost( client, *host );
    }
}

void
ctlGet( CtlOptions const& options ) {
    std::vector<Wanted> attributes;
    std::transform( options.words.begin(), options.words.end(), std::back_inserter( attributes ), wanted );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    Hosts const hosts = selectedHosts( client, options.host );
    Json json = Json::object();
    bool const isSingle = hosts.size() == 1 && attributes.size() == 1;
    for ( auto const& host : hosts ) {
        for ( Wanted const& attribute : attributes ) {
            Json const value = valueOf( client, *host, attribute );
            if ( options.isJson ) {
                json[host->name().charPtr()][attribute.word] = value;
            } else if ( isSingle ) {
                std::cout << plain( value ) << '\n';
            } else {
                std::cout << host->name() << ' ' << attribute.word << ' ' << plain( value ) << '\n';
            }
        }
    }
    if ( options.isJson ) {
        std::cout << textOf( json ) << '\n';
    }
}

} // namespace Agent
