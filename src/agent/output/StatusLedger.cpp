#include "agent/output/StatusLedger.h"

#include <algorithm>

#include "agent/traffic/Traffic.h"

namespace Agent {

using Igmp::IgmpHostStatus;
using Kiv::U32;
using Kiv::U64;

namespace {

StatusLedger::CounterRows
unsignedRows() {
    StatusLedger::CounterRows rows;
    for ( Kiv::Attribute const& row : IgmpHostStatus::attributes() ) {
        if ( row.type->form == Kiv::ValueForm::unsignedInteger ) {
            rows.push_back( &row );
        }
    }
    return rows;
}

} // namespace

/// Tells the ledger of each status that comes or goes.
class StatusLedger::DirWatch : public Igmp::IgmpHostStatusDir::NotifieeConst {
  public:
    DirWatch( Kiv::Ptr<Igmp::IgmpHostStatusDir const> const& dir, StatusLedger& ledger )
        : NotifieeConst( dir ), ledger_( ledger ) {
        isRegisteredNotifieeIs( true );
    }
    void onIgmpHostStatus( Kiv::Name name ) override { ledger_.handleStatus( name ); }

  private:
    StatusLedger& ledger_;
};

StatusLedger::CounterRows const&
StatusLedger::counterRows() {
    static CounterRows const rows = unsignedRows();
    return rows;
}

U64
StatusLedger::Account::counter( Kiv::AttributeId id ) const {
    CounterRows const& rows = counterRows();
    auto const at =
        std::find_if( rows.begin(), rows.end(), [id]( auto const* row ) { return row->id == id; } );
    return counters.at( static_cast<std::size_t>( at - rows.begin() ) );
}

U64
StatusLedger::Account::reportsSent() const {
    return counter( IgmpHostStatus::attrV1ReportsSent ) + counter( IgmpHostStatus::attrV2ReportsSent ) +
           counter( IgmpHostStatus::attrV3CurrentStateReportSent ) +
           counter( IgmpHostStatus::attrV3StateChangeReportSent );
}

U64
StatusLedger::Account::messagesSent() const {
    return reportsSent() + counter( IgmpHostStatus::attrV2LeavesSent );
}

/// The general counter of version 3 counts group queries too; the others count a query once.
U64
StatusLedger::Account::queriesHeard() const {
    return counter( IgmpHostStatus::attrV2GeneralQueryReceived ) +
           counter( IgmpHostStatus::attrV2GroupQueryReceived ) +
           counter( IgmpHostStatus::attrV3GeneralQueryReceived );
}

StatusLedger::Account&
StatusLedger::Account::operator+=( Account const& other ) {
    auto const add = []( auto& to, auto const& from ) {
        std::transform( to.begin(), to.end(), from.begin(), to.begin(), std::plus<>() );
    };
    add( counters, other.counters );
    add( hostsByVersion, other.hostsByVersion );
    hosts += other.hosts;
    groups += other.groups;
    return *this;
}

StatusLedger::StatusLedger( Emulation const& emulation ) : emulation_( emulation ) {
    watch_ = new DirWatch( &emulation.statusDir(), *this );
    for ( IgmpHostStatus const& status : emulation.statusDir().igmpHostStatus() ) {
        handleStatus( status.name() );
    }
}

StatusLedger::~StatusLedger() {
    watch_->isRegisteredNotifieeIs( false );
}

std::string
StatusLedger::labelOf( Igmp::IgmpHost const& host ) {
    return deviceLabel( host.ns(), host.deviceName() );
}

void
StatusLedger::handleStatus( Kiv::Name const& name ) {
    std::string const key( name.view() );
    if ( auto const at = entries_.find( key ); at != entries_.end() ) {
        book( at->second );
        entries_.erase( at );
    }
    Kiv::Ptr<IgmpHostStatus> const status = emulation_.statusDir().igmpHostStatus( name );
    Kiv::Ptr<Igmp::IgmpHost> const host = emulation_.hostDir().igmpHost( name );
    if ( status && host ) {
        entries_[key] = { status, host, std::vector<U32>( counterRows().size() ), host->intfConfigVersion(),
                          &accounts_[labelOf( *host )] };
    }
}

/// What has been counted since the last time belongs to the device that the host was on.
void
StatusLedger::book( Entry& entry ) {
    CounterRows const& rows = counterRows();
    for ( std::size_t i = 0; i < rows.size(); ++i ) {
        U32 const count = std::any_cast<U32>( rows[i]->read( *entry.status ) );
        entry.account->counters[i] += static_cast<U32>( count - entry.counted[i] );
        entry.counted[i] = count;
    }
    if ( entry.host->intfConfigVersion() != entry.intfConfigVersion ) {
        entry.intfConfigVersion = entry.host->intfConfigVersion();
        entry.account = &accounts_[labelOf( *entry.host )];
    }
}

StatusLedger::Accounts const&
StatusLedger::balance() {
    for ( auto& [label, account] : accounts_ ) {
        account.hosts = 0;
        account.hostsByVersion = {};
        account.groups = 0;
    }
    for ( auto& [name, entry] : entries_ ) {
        book( entry );
        Account& account = *entry.account;
        ++account.hosts;
        ++account.hostsByVersion.at( static_cast<std::size_t>( entry.status->igmpVersion() ) );
        account.groups += entry.host->v3groups();
    }
    return accounts_;
}

StatusLedger::Account
StatusLedger::total() const {
    Account total;
    for ( auto const& [label, account] : accounts_ ) {
        total += account;
    }
    return total;
}

} // namespace Agent
