#include "agent/checking/ScenarioSummary.h"

#include <algorithm>
#include <tuple>
#include <unordered_set>

#include "agent/checking/FirstReports.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;

constexpr U32 vlanNumbers = 65536;

auto
asTuple( AddressBlock const& block ) {
    return std::tuple( block.first.hostOrder(), block.count, block.step );
}

/// Of blocks that lie within each other.
U64
differentOf( std::span<AddressBlock const> cluster, U64 width ) {
    bool const stepped = std::any_of( cluster.begin(), cluster.end(), []( AddressBlock const& block ) {
        return block.step != 1 && block.count != 1;
    } );
    if ( !stepped ) {
        return width;
    }
    if ( cluster.size() == 1 ) {
        return cluster.front().count;
    }
    std::vector<U32> addrs;
    for ( AddressBlock const& block : cluster ) {
        for ( U32 i = 0; i < block.count; ++i ) {
            addrs.push_back( block.addr( i ).hostOrder() );
        }
    }
    std::sort( addrs.begin(), addrs.end() );
    return static_cast<U64>( std::unique( addrs.begin(), addrs.end() ) - addrs.begin() );
}

/// The hosts of one entry that this process has.
struct Share {
    HostSpec const& spec;
    U32 first;
    U32 hosts;
    U32 step;
};

void
addVlans( Share const& share, DeviceSummary& device ) {
    device.vlans.resize( vlanNumbers );
    U32 const different = share.spec.vlanStep == 0 ? 1 : share.hosts;
    for ( U32 i = 0; i < different; ++i ) {
        device.vlans[share.spec.vlanId( share.first + i * share.step )] = true;
    }
}

void
addToDevice( Share const& share, ScenarioSummary& summary ) {
    Settings const& settings = share.spec.settings;
    std::string const name( settings.value<Kiv::String8>( IgmpHost::attrDeviceName ).view() );
    if ( name.empty() ) {
        return;
    }
    auto const ns = settings.value<Zornet::NamespaceName>( IgmpHost::attrNs );
    DeviceSummary& device = summary.devices[{ name, ns.name().charPtr() }];
    device.hosts += share.hosts;
    if ( settings.value<bool>( IgmpHost::attrTagged ) ) {
        addVlans( share, device );
    } else {
        device.untagged += share.hosts;
    }
}

void
addHosts( Share const& share, ScenarioSummary& summary ) {
    HostSpec const& spec = share.spec;
    summary.hosts += share.hosts;
    summary.hostsOfVersion.at( spec.settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ) ) +=
        share.hosts;
    summary.memberships += share.hosts * spec.groupCount();
    summary.firstReports += share.hosts * firstReports( spec );
    addToDevice( share, summary );
}

/// The blocks of groups of a scenario; a list that several entries share is taken once.
class GroupBlocks {
  public:
    void add( HostSpec const& spec ) {
        for ( GroupSpec const& group : spec.groups ) {
            std::span<AddressBlock const> const list = group.groups.blocks();
            if ( seen_.insert( list.data() ).second ) {
                blocks_.insert( blocks_.end(), list.begin(), list.end() );
            }
        }
    }
    std::vector<AddressBlock> take() { return std::move( blocks_ ); }

  private:
    std::vector<AddressBlock> blocks_;
    std::unordered_set<AddressBlock const*> seen_;
};

} // namespace

std::string
DeviceSummary::vlanRanges() const {
    std::string text;
    for ( std::size_t first = 0; first < vlans.size(); ++first ) {
        std::size_t last = first;
        while ( vlans[first] && last + 1 < vlans.size() && vlans[last + 1] ) {
            ++last;
        }
        if ( vlans[first] ) {
            text += ( text.empty() ? "" : ", " ) + std::to_string( first );
            text += last == first ? "" : "-" + std::to_string( last );
            first = last;
        }
    }
    return text;
}

U64
differentAddresses( std::vector<AddressBlock> blocks ) {
    std::sort( blocks.begin(), blocks.end(), []( auto const& a, auto const& b ) {
        return asTuple( a ) < asTuple( b );
    } );
    auto const same = []( auto const& a, auto const& b ) { return asTuple( a ) == asTuple( b ); };
    blocks.erase( std::unique( blocks.begin(), blocks.end(), same ), blocks.end() );
    U64 different = 0;
    for ( std::size_t begin = 0; begin < blocks.size(); ) {
        U64 last = blocks[begin].last().hostOrder();
        std::size_t end = begin + 1;
        while ( end < blocks.size() && blocks[end].first.hostOrder() <= last ) {
            last = std::max<U64>( last, blocks[end++].last().hostOrder() );
        }
        U64 const width = last - blocks[begin].first.hostOrder() + 1;
        different += differentOf( std::span( blocks ).subspan( begin, end - begin ), width );
        begin = end;
    }
    return different;
}

ScenarioSummary
summaryOf( Scenario const& scenario ) {
    ScenarioSummary summary;
    GroupBlocks blocks;
    scenario.forEachEntry( [&]( HostSpec const& spec, U32 first, U32 hosts ) {
        addHosts( { spec, first, hosts, scenario.shard.shards }, summary );
        blocks.add( spec );
    } );
    for ( HostSpec const& spec : scenario.hosts ) {
        summary.allHosts += spec.count;
    }
    summary.groups = differentAddresses( blocks.take() );
    return summary;
}

} // namespace Agent
