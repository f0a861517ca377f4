// A machine as text that a person can read, and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

class KVVMMachine;

namespace kestrova {

// Channels, tool targets, stations, fixtures, shapes by parent and shape lists, one line each, indented. Walks the
// machine's shapes.
std::string MachineTree(KVVMMachine& machine);
nlohmann::ordered_json MachineJson(KVVMMachine& machine);

// One line: how many channels, stations, fixtures, shapes and shape lists it has.
std::string MachineSummary(KVVMMachine& machine);

}  // namespace kestrova
