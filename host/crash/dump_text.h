// A minidump as kestrova crash show prints it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "host/crash/minidump_reader.h"

namespace kestrova {

// Without the file's name and the faults.
nlohmann::ordered_json DumpJson(const Minidump& dump);
void PrintDump(const std::string& file, const Minidump& dump);

}  // namespace kestrova
