#include "agent/metrics/RunMetrics.h"

#include <cctype>

namespace Agent {

namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Labels = std::vector<ClientMetric::Label>;

MetricFamily
family( std::string const& name, std::string const& help, MetricType type ) {
    return { "igmphost_" + name, help, type, {} };
}

void
add( MetricFamily& family, Labels const& labels, double value ) {
    ClientMetric metric;
    metric.label = labels;
    metric.counter.value = value;
    metric.gauge.value = value;
    family.metric.push_back( std::move( metric ) );
}

MetricFamily
single( std::string const& name, std::string const& help, double value, Labels const& labels = {} ) {
    MetricFamily gauge = family( name, help, MetricType::Gauge );
    add( gauge, labels, value );
    return gauge;
}

/// A metric with one value for each device.
template <class Things, class ValueOf>
MetricFamily
byDevice( MetricFamily metric, Things const& things, ValueOf valueOf ) {
    for ( auto const& [device, thing] : things ) {
        add( metric, { { "device", device } }, static_cast<double>( valueOf( thing ) ) );
    }
    return metric;
}

MetricFamily
hostsByVersion( StatusLedger::Accounts const& accounts ) {
    MetricFamily hosts =
        family( "hosts", "Enabled hosts by device and IGMP version in force.", MetricType::Gauge );
    for ( auto const& [device, account] : accounts ) {
        for ( std::size_t version = 1; version < account.hostsByVersion.size(); ++version ) {
            add( hosts, { { "device", device }, { "version", std::to_string( version ) } },
                 static_cast<double>( account.hostsByVersion[version] ) );
        }
    }
    return hosts;
}

void
addCounters( std::vector<MetricFamily>& families, StatusLedger::Accounts const& accounts ) {
    StatusLedger::CounterRows const& rows = StatusLedger::counterRows();
    for ( std::size_t i = 0; i < rows.size(); ++i ) {
        std::string const help = std::string( "Sum of " ) + rows[i]->name + " of the status of all hosts.";
        families.push_back( byDevice(
            family( metricName( rows[i]->name ) + "_total", help, MetricType::Counter ), accounts,
            [i]( StatusLedger::Account const& account ) { return account.counters[i]; }
        ) );
    }
}

void
addTraffic( std::vector<MetricFamily>& families, std::map<std::string, DeviceTraffic> const& devices ) {
    struct Row {
        char const* name;
        char const* help;
        U64 DeviceTraffic::*count;
    };
    constexpr Row rows[] = {
        { "frames_sent_total", "Frames handed to the network.", &DeviceTraffic::sent },
        { "frames_received_total", "Frames received, IGMP alone.", &DeviceTraffic::received },
        { "frames_lost_sending_total", "Frames lost because the device was missing, down or without room.",
          &DeviceTraffic::sendLosses },
        { "frames_lost_receiving_total", "Frames lost because they came too fast.",
          &DeviceTraffic::receiveLosses },
    };
    for ( Row const& row : rows ) {
        families.push_back( byDevice(
            family( row.name, row.help, MetricType::Counter ), devices,
            [&row]( DeviceTraffic const& traffic ) { return traffic.*row.count; }
        ) );
    }
}

/// How an attribute of a host's status becomes a metric.
MetricFamily
familyOf( Kiv::Attribute const& row ) {
    std::string const name = "host_" + metricName( row.name );
    std::string const help = std::string( row.name ) + " of the host's status.";
    switch ( row.type->form ) {
    case Kiv::ValueForm::unsignedInteger: return family( name + "_total", help, MetricType::Counter );
    case Kiv::ValueForm::real: return family( name + "_seconds", help, MetricType::Gauge );
    default: return family( name, help, MetricType::Gauge );
    }
}

double
valueOf( Kiv::Attribute const& row, Igmp::IgmpHostStatus const& status ) {
    if ( row.id == Igmp::IgmpHostStatus::attrIgmpVersion ) {
        return status.igmpVersion();
    }
    std::any const value = row.read( status );
    switch ( row.type->form ) {
    case Kiv::ValueForm::unsignedInteger: return std::any_cast<U32>( value );
    case Kiv::ValueForm::real: return std::any_cast<Kiv::Seconds>( value );
    default: return std::any_cast<bool>( value ) ? 1.0 : 0.0;
    }
}

void
addHosts( std::vector<MetricFamily>& families, Emulation const& emulation ) {
    for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
        MetricFamily metric = familyOf( row );
        for ( Igmp::IgmpHostStatus const& status : emulation.statusDir().igmpHostStatus() ) {
            auto const host = emulation.hostDir().igmpHost( status.name() );
            std::string const device = host ? StatusLedger::labelOf( *host ) : "";
            add( metric, { { "host", std::string( status.name().view() ) }, { "device", device } },
                 valueOf( row, status ) );
        }
        families.push_back( std::move( metric ) );
    }
}

} // namespace

std::string
metricName( std::string_view attribute ) {
    std::string name;
    for ( char const letter : attribute ) {
        auto const byte = static_cast<unsigned char>( letter );
        if ( std::isupper( byte ) != 0 ) {
            name += '_';
        }
        name += static_cast<char>( std::tolower( byte ) );
    }
    return name;
}

std::vector<MetricFamily>
runMetrics( RunContext const& context, bool perHost ) {
    StatusLedger::Accounts const& accounts = context.ledger.balance();
    std::vector<MetricFamily> families;
    families.push_back(
        single( "build_info", "Version of the command.", 1.0, { { "version", IGMPHOST_VERSION } } )
    );
    families.push_back( single( "start_time_seconds", "When the hosts were started.", context.started ) );
    families.push_back( single(
        "configured_hosts", "Hosts that there are, enabled or not.",
        static_cast<double>( context.emulation.hostDir().igmpHosts() )
    ) );
    families.push_back( single(
        "armed_timers", "Timers that are armed.", static_cast<double>( context.wheel->armedTimers() )
    ) );
    families.push_back( hostsByVersion( accounts ) );
    families.push_back( byDevice(
        family( "groups", "Group records of enabled hosts, over all hosts.", MetricType::Gauge ), accounts,
        []( StatusLedger::Account const& account ) { return account.groups; }
    ) );
    addCounters( families, accounts );
    addTraffic( families, context.traffic.devices() );
    if ( perHost ) {
        addHosts( families, context.emulation );
    }
    return families;
}

} // namespace Agent
