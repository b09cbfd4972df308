#pragma once

#include <prometheus/collectable.h>
#include <prometheus/metric_family.h>

#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/zornet/Types.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// Where the threads of a metrics server meet the one thread of the run. A server's thread asks and waits;
/// the run's thread, woken by a descriptor, answers with metrics that it has gathered and does not touch
/// again. Nothing of the run is ever read by another thread.
class MetricsExchange : public prometheus::Collectable {
  public:
    using Families = std::vector<prometheus::MetricFamily>;

    /// Raises std::system_error without a descriptor to be had.
    MetricsExchange();

    /// A server's thread: asks, and waits for the answer. Nothing where the run does not answer in time.
    Families Collect() const override;

    // The run's thread.
    /// Readable while somebody waits for an answer.
    int descriptor() const { return wanted_.get(); }
    /// To be called before metrics are gathered for those who wait.
    void wantIsTaken() const;
    void answerIs( Families families );
    /// Nobody will answer any more; those who wait get nothing.
    void end();

  private:
    Zornet::FileDescriptor wanted_;
    mutable std::mutex mutex_;
    mutable std::condition_variable answered_;
    Families families_;
    Zornet::U64 answers_ = 0;
    bool ended_ = false;
};

} // namespace Agent
