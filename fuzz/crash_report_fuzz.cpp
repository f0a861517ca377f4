// Reads any bytes as a file of crash reports. Places are within the bytes, and nothing is longer than they are.
#include <cstdlib>

#include "host/crash/crash_report_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const kestrova::CrashReports read = kestrova::ReadCrashReports(bytes);
  std::size_t text = 0;
  for (const kestrova::CrashReport& report : read.reports) {
    if (report.byte >= size || report.line < 1 || report.code_bytes.size() > 16) std::abort();
    if (report.whole && report.end_name.size() > size) std::abort();
    for (const kestrova::ReportModule& module : report.modules) text += module.file.size() + module.file_time.size();
    for (const auto& [name, value] : report.system) text += name.size() + value.size();
  }
  for (const kestrova::ReportFault& fault : read.faults)
    if (fault.byte > size || fault.line < 0 || fault.reason.empty()) std::abort();
  if (text > size || read.faults.size() > kestrova::kMostReportFaults) std::abort();
  return 0;
}
