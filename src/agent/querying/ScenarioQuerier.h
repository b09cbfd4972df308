#pragma once

#include <algorithm>

#include "agent/querying/DeviceQuerier.h"
#include "agent/run/RunPart.h"

namespace Agent {

/// The querier of a scenario, from before its hosts are started to after their end. The parts that are made
/// after it find it in the context.
class ScenarioQuerier : public RunPart {
  public:
    explicit ScenarioQuerier( RunContext& context )
        : querier_(
              context.scenario.querier->device, context.scenario.querier->ns,
              context.scenario.querier->config, context.wheel
          ) {
        context.queriers.push_back( &querier_.querier() );
        QuerierSpec const& spec = *context.scenario.querier;
        auto const sitsThere = [&spec]( HostSpec const& host ) {
            return host.settings.value<Kiv::String8>( Igmp::IgmpHost::attrDeviceName ) == spec.device &&
                   host.settings.value<Zornet::NamespaceName>( Igmp::IgmpHost::attrNs ) == spec.ns;
        };
        if ( std::none_of( context.scenario.hosts.begin(), context.scenario.hosts.end(), sitsThere ) ) {
            context.farEnds.insert( deviceLabel( spec.ns, spec.device ) );
        }
    }

  private:
    DeviceQuerier querier_;
};

} // namespace Agent
