#pragma once

#include "agent/scenario/Scenario.h"
#include "agent/scenario/reading/AddressFiles.h"
#include "agent/scenario/reading/YamlReader.h"

namespace Agent {

/// One file on its way into the scenario: what the readers of its parts work with.
struct ScenarioFile {
    std::string path;
    Scenario& scenario;
    AddressFiles& addressFiles;
    YamlReader yaml;
};

} // namespace Agent
