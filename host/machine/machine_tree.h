// A machine as text for users and as JSON for programs.
#pragma once

#include <string>

class KVVMMachine;

namespace kestrova {

// Print channels, tool targets, stations, fixtures, shapes by parent and shape lists: one indented line each, or as a
// JSON object. Neither keeps the text in memory, because a machine may have a million shapes.
void PrintMachineTree(KVVMMachine& machine);
void PrintMachineJson(KVVMMachine& machine);

struct MachineCounts {
  long long channels = 0;
  long long stations = 0;  // of all turrets, as declared
  long long fixtures = 0;
  long long shapes = 0;
  long long shapeLists = 0;
};
MachineCounts CountsOf(KVVMMachine& machine);

// "1 channel, 2 stations, 0 fixtures, 3 shapes, 1 shape list".
std::string MachineSummary(KVVMMachine& machine);

}  // namespace kestrova
