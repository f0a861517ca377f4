// Faults on purpose, one of each kind, to see what a crash of that kind leaves.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrova {

// The names of the kinds, such as "read".
std::vector<std::string> CrashKinds();

// Breaks this process. Returns only if the kind is unknown, or if the system has survived the fault.
void BreakOnPurpose(std::string_view kind);

}  // namespace kestrova
