#pragma once

#include "agent/expecting/Expectation.h"
#include "agent/run/RunPart.h"

namespace Agent {

/// What keeps an expectation from being met now, a text for each condition and host, such as "rx-1:
/// v2ReportsSent: expected >= 2, found 1"; empty where it is met. Of a great many the first ones are told,
/// and how many there are besides. Hosts of other shares are not looked at.
std::vector<std::string> shortfalls( Expectation const& expectation, RunContext const& context );

} // namespace Agent
