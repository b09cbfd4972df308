#include "agent/scenario/Warnings.h"

#include "agent/scenario/WorkProgress.h"
#include "agent/scenario/warnings/DurationWarning.h"
#include "agent/scenario/warnings/EventAddresses.h"
#include "agent/scenario/warnings/EventWarnings.h"
#include "agent/scenario/warnings/GroupWarnings.h"
#include "agent/scenario/warnings/HostWarnings.h"
#include "agent/scenario/warnings/LinkWarnings.h"

namespace Agent {

Diagnostics
scenarioWarnings( Scenario const& scenario ) {
    Diagnostics warnings;
    LinkWarnings link( scenario, warnings );
    U64 done = 0;
    for ( HostSpec const& host : scenario.hosts ) {
        WorkProgress::tell( "entries of hosts looked at", done++, scenario.hosts.size() );
        if ( host.faulty ) {
            continue;
        }
        GroupDigest const groups( host.groups );
        HostWarnings( host, groups, warnings ).check();
        GroupWarnings( host, groups, warnings ).check();
        link.check( host );
    }
    EventWarnings( scenario, warnings ).check();
    EventAddresses( scenario, link, warnings ).check();
    for ( Expectation const& expectation : scenario.expectations ) {
        warnOfTimeBehindEnd( scenario, expectation.time.value_or( 0.0 ), expectation.at, warnings );
        if ( expectation.total && scenario.shard.shards > 1 ) {
            warnings.add( expectation.at, "total: each share sums up its own hosts alone" );
        }
    }
    if ( scenario.hostCount() == 0 && !scenario.hosts.empty() ) {
        warnings.add(
            { 0 }, "shard: share " + std::to_string( scenario.shard.number ) + " of " +
                       std::to_string( scenario.shard.shards ) + " has no hosts"
        );
    }
    return warnings;
}

} // namespace Agent
