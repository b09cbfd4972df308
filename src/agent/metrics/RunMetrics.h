#pragma once

#include <prometheus/metric_family.h>

#include <string>
#include <vector>

#include "agent/run/RunPart.h"

namespace Agent {

/// The name of a metric for an attribute: words in small letters, as in "v2_reports_sent" for
/// `v2ReportsSent`.
std::string metricName( std::string_view attribute );

/// All that a run has to tell, as metrics: the hosts by device and version in force, what they counted by
/// device, an own metric for each counter of their status, and the frames of each device. `perHost` adds
/// every attribute of every host's status. Takes a time linear in the hosts.
std::vector<prometheus::MetricFamily> runMetrics( RunContext const& context, bool perHost );

} // namespace Agent
