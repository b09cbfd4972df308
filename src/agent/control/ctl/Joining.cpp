#include <algorithm>

#include "agent/control/ctl/ChangeReport.h"
#include "agent/control/ctl/Consent.h"
#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/GenerationStep.h"
#include "agent/hosts/Generations.h"
#include "agent/hosts/HostRegrets.h"
#include "agent/scenario/ScenarioLoader.h"
#include "platform/kiv/Type.h"

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Zornet::IpAddr;

namespace {

AddressList
addressesOf( std::vector<std::string> const& words ) {
    try {
        std::vector<AddressBlock> blocks;
        std::transform( words.begin(), words.end(), std::back_inserter( blocks ), addressBlock );
        return AddressList( std::move( blocks ) );
    } catch ( Kiv::RangeException const& fault ) {
        throw std::invalid_argument( fault.what() );
    }
}

/// What the hosts are to want of each group.
GroupSpec
wishOf( CtlOptions const& options ) {
    GroupSpec wish;
    wish.groups = addressesOf( options.words );
    if ( auto const& sources = options.included ? options.included : options.excluded ) {
        wish.sources = addressesOf( *sources );
    }
    Kiv::Attribute const* const filterMode =
        IgmpV3GroupRecord::_fwkType()->row( IgmpV3GroupRecord::attrFilterMode );
    wish.settings.settingIs(
        { filterMode, options.included ? IgmpV3GroupRecord::include : IgmpV3GroupRecord::exclude, {} }
    );
    return wish;
}

void
join( IgmpHost& host, GroupSpec const& wish, Kiv::U32 step ) {
    wish.groups.forEach( [&]( IpAddr const& group ) {
        Kiv::Ptr<IgmpV3GroupRecord> const record = groupRecordIs( wish, group, host );
        record->versionIs( nextGeneration( record->version(), step ) );
    } );
}

} // namespace

void
ctlJoin( CtlOptions const& options ) {
    GroupSpec const wish = wishOf( options );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    ChangeReport report{
        "joined", options.words, selectedHosts( client, options.host ), { "version of each record" }
    };
    Consent consent;
    for ( auto const& host : report.hosts ) {
        HostSpec const before = hostSpecOf( *host );
        HostSpec after = before;
        after.groups.push_back( wish );
        consent.add( host->name().charPtr(), newRegrets( before, after ) );
    }
    consent.demand( options.isForced );
    for ( auto const& host : report.hosts ) {
        join( *host, wish, generationStep() );
    }
    client.settle();
    print( report, options );
}

namespace {

/// Of which groups a host is to be rid: addresses, ranges, or patterns such as 239.1.*.
class GroupChoice {
  public:
    explicit GroupChoice( std::vector<std::string> const& words ) {
        std::vector<std::string> addresses;
        std::partition_copy(
            words.begin(), words.end(), std::back_inserter( patterns_ ), std::back_inserter( addresses ),
            isPattern
        );
        addresses_ = addressesOf( addresses );
    }

    bool takes( IpAddr const& group ) const {
        std::string const text = Kiv::ValueTraits<IpAddr>::format( group );
        auto const blocks = addresses_.blocks();
        return std::any_of(
                   patterns_.begin(), patterns_.end(), [&]( std::string const& p ) { return fits( text, p ); }
               ) ||
               std::any_of( blocks.begin(), blocks.end(), [&]( AddressBlock const& block ) {
                   return block.first <= group && group <= block.last();
               } );
    }

  private:
    std::vector<std::string> patterns_;
    AddressList addresses_;
};

/// Removing a group that the host's machine does not take note of leaves its timers behind.
Diagnostic
unseenRemoval() {
    return { {}, "with processV3GroupChange false, removing a group can end the process", true };
}

std::vector<IpAddr>
groupsToLeave( IgmpHost const& host, GroupChoice const& choice ) {
    std::vector<IpAddr> groups;
    for ( IgmpV3GroupRecord const& record : host.v3group() ) {
        if ( choice.takes( record.multicastAddr() ) ) {
            groups.push_back( record.multicastAddr() );
        }
    }
    return groups;
}

} // namespace

void
ctlLeave( CtlOptions const& options ) {
    GroupChoice const choice( options.words );
    ControlClient client( options.path, options.patience );
    client.synchronise();
    Hosts const selected = selectedHosts( client, options.host );
    ChangeReport report{ "left", options.words, {}, {} };
    Consent consent;
    for ( auto const& host : selected ) {
        if ( !groupsToLeave( *host, choice ).empty() ) {
            report.hosts.push_back( host );
            if ( !host->processV3GroupChange() ) {
                consent.add( host->name().charPtr(), { unseenRemoval() } );
            }
        }
    }
    if ( report.hosts.empty() ) {
        throw std::runtime_error( "no such group on " + told( selected ) );
    }
    consent.demand( options.isForced );
    for ( auto const& host : report.hosts ) {
        for ( IpAddr const& group : groupsToLeave( *host, choice ) ) {
            host->v3groupDel( group );
        }
    }
    client.settle();
    print( report, options );
}

} // namespace Agent
