// Crash reports as kestrova crash show prints them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "host/crash/crash_report_reader.h"

namespace kestrova {

nlohmann::ordered_json ReportsJson(const CrashReports& reports);
nlohmann::ordered_json FaultsJson(const CrashReports& reports);
// Prints each report with an explanation.
void PrintReports(const std::string& file, const CrashReports& reports);

}  // namespace kestrova
