// A machine as text for users and as JSON for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

class KVVMMachine;

namespace kestrova {

// Channels, tool targets, stations, fixtures, shapes by parent and shape lists, one indented line each.
std::string MachineTree(KVVMMachine& machine);
nlohmann::ordered_json MachineJson(KVVMMachine& machine);

// "1 channel, 2 stations, 0 fixtures, 3 shapes, 1 shape list".
std::string MachineSummary(KVVMMachine& machine);

}  // namespace kestrova
