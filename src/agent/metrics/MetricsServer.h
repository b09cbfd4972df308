#pragma once

#include <prometheus/exposer.h>

#include <memory>

#include "agent/metrics/MetricsExchange.h"
#include "agent/run/RunPart.h"
#include "platform/kiv/Activity.h"

namespace Agent {

/// Serves the metrics of a run over HTTP at /metrics: --metrics. Metrics are gathered when they are asked
/// for.
class MetricsServer : public RunPart, private Kiv::IoHandler {
  public:
    /// Raises std::runtime_error, in words for the user, where the address cannot be listened on.
    explicit MetricsServer( RunContext const& context );
    ~MetricsServer() override;

  private:
    void handleIo( Kiv::U32 events ) override;

    RunContext const& context_;
    std::shared_ptr<MetricsExchange> const exchange_ = std::make_shared<MetricsExchange>();
    std::unique_ptr<prometheus::Exposer> exposer_;
};

} // namespace Agent
