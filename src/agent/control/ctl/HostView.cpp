#include "agent/control/ctl/HostView.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpHostStatus;
using Igmp::IgmpV3GroupRecord;
using Json = nlohmann::ordered_json;

std::vector<Kiv::Ptr<IgmpV3GroupRecord>>
groupsOf( IgmpHost const& host ) {
    std::vector<Kiv::Ptr<IgmpV3GroupRecord>> records;
    for ( IgmpV3GroupRecord& record : host.v3group() ) {
        records.emplace_back( &record );
    }
    std::sort( records.begin(), records.end(), []( auto const& a, auto const& b ) {
        return a->multicastAddr() < b->multicastAddr();
    } );
    return records;
}

std::vector<std::string>
sourcesOf( IgmpV3GroupRecord const& record ) {
    std::vector<Zornet::IpAddr> sources;
    if ( record.source() ) {
        for ( auto const& source : record.source()->sourceIp() ) {
            sources.push_back( source.key );
        }
    }
    std::sort( sources.begin(), sources.end() );
    std::vector<std::string> texts;
    std::transform( sources.begin(), sources.end(), std::back_inserter( texts ), []( auto const& source ) {
        return Kiv::ValueTraits<Zornet::IpAddr>::format( source );
    } );
    return texts;
}

std::string
joined( std::vector<std::string> const& texts ) {
    std::string all;
    for ( std::string const& text : texts ) {
        all += ( all.empty() ? "" : ", " ) + text;
    }
    return all;
}

namespace {

Json
recordJson( IgmpV3GroupRecord const& record ) {
    Json json = jsonOf( IgmpV3GroupRecord::attributes(), record );
    json["source"] = sourcesOf( record );
    return json;
}

void
printRows( std::span<Kiv::Attribute const> table, Kiv::PtrInterface const& object, char const* indent ) {
    constexpr int width = 40;
    for ( Kiv::Attribute const& row : table ) {
        if ( row.type && row.read ) {
            std::cout << indent << std::left << std::setw( width ) << row.name
                      << Kiv::attributeText( row, object ) << '\n';
        }
    }
}

/// The filter mode with the sources, and what else is not as in a new record.
void
printRecord( IgmpV3GroupRecord const& record ) {
    std::cout << "  group " << record.multicastAddr();
    for ( Kiv::Attribute const& row : IgmpV3GroupRecord::attributes() ) {
        if ( row.id == IgmpV3GroupRecord::attrSource && record.source() ) {
            std::cout << ' ' << joined( sourcesOf( record ) );
        } else if ( row.id == IgmpV3GroupRecord::attrFilterMode ) {
            std::cout << ' ' << Kiv::attributeText( row, record );
        } else if ( row.isWritable() && Kiv::attributeText( row, record ) != row.defaultText ) {
            std::cout << "; " << row.name << ' ' << Kiv::attributeText( row, record );
        }
    }
    std::cout << '\n';
}

} // namespace

Json
hostJson( ControlClient const& client, IgmpHost const& host ) {
    Json json = jsonOf( IgmpHost::attributes(), host );
    json["v3group"] = Json::array();
    for ( auto const& record : groupsOf( host ) ) {
        json["v3group"].push_back( recordJson( *record ) );
    }
    auto const status = client.statusDir().igmpHostStatus( host.name() );
    json["status"] = status ? jsonOf( IgmpHostStatus::attributes(), *status ) : Json();
    return json;
}

void
printHost( ControlClient const& client, IgmpHost const& host ) {
    std::cout << host.name() << '\n';
    printRows( IgmpHost::attributes(), host, "  " );
    for ( auto const& record : groupsOf( host ) ) {
        printRecord( *record );
    }
    if ( auto const status = client.statusDir().igmpHostStatus( host.name() ) ) {
        printRows( IgmpHostStatus::attributes(), *status, "  status." );
    } else {
        std::cout << "  no status: the host is not enabled\n";
    }
}

} // namespace Agent
