// ReadCrashReports reads a file of crash reports: the text that the exception handler appends for each crash.
//
// The bytes may be anything, and a report may be cut by a full disk. Lines that belong to no report, and lines that are
// not as a report has them, become faults with their place; the rest is read. Memory is taken in proportion to the
// bytes. Any thread may call.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrova {

inline constexpr std::size_t kMostReportBytes = 64 << 20;  // of a file
inline constexpr std::size_t kMostReportFaults = 100;

struct ReportFault {
  std::size_t byte = 0;  // offset of the line
  int line = 0;          // from 1
  std::string reason;    // for humans
};

// All numbers are the low 32 bits of the process's, as reports have them.
struct ReportModule {
  int number = 0;  // from 1
  std::string file;
  std::uint32_t desired_base = 0, size = 0, base = 0;
  std::uint32_t end = 0;  // as printed: base + 4 * size, not the real end
  std::uint32_t checksum = 0, timestamp = 0;
  std::uint64_t file_size = 0;
  std::string file_time;
};

using ReportFields = std::vector<std::pair<std::string, std::string>>;  // label and value, in the report's order

struct CrashReport {
  std::size_t byte = 0;  // offset of its first line
  int line = 0;          // of its first line, from 1
  std::string error;     // such as "an Access Violation"
  std::uint32_t code = 0;
  std::uint32_t segment = 0, instruction = 0;
  std::string module, program;
  struct Access {
    bool write = false;
    std::uint32_t address = 0;
  };
  std::optional<Access> access;
  ReportFields product, system, graphics;
  std::vector<std::pair<std::string, std::uint32_t>> registers;
  std::string code_bytes;  // from the instruction on
  std::vector<ReportModule> modules;
  bool partial = false;  // the crashed program itself has written it, without what it could not find out
  bool whole = false;    // the end of the report is there
  std::string end_name;  // the file that the end names
};

struct CrashReports {
  std::vector<CrashReport> reports;
  std::vector<ReportFault> faults;  // kMostReportFaults at most
};

CrashReports ReadCrashReports(std::string_view bytes);

}  // namespace kestrova
