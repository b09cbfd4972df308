#pragma once

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
    }

  private:
    DeviceQuerier querier_;
};

} // namespace Agent
