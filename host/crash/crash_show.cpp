#include "host/crash/crash_show.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "host/crash/crash_file.h"
#include "host/crash/dump_text.h"
#include "host/crash/report_text.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"

namespace kestrova {
namespace {

constexpr char kHelp[] = R"(
Explains a crash report (NAME-0.txt) or a minidump (NAME-0.dmp): what happened, in which module, on which system, and
what to look at. A report has the low 32 bits of each number; a dump has the whole ones. JSON: {"file", "kind": "report",
"reports", "faults"} or {"file", "kind": "minidump", ..., "faults"}. The exit code is 1 if the file is damaged and parts
of it were left out.

  kestrova crash show part-0.txt
  kestrova crash show part-0.dmp --json
)";

struct Options {
  std::string file;
  bool json = false;
};

void ShowDump(const Options& options, const DumpBytes& bytes) {
  Minidump dump;
  ReadDumpFile(bytes, options.file, dump);
  if (options.json) {
    nlohmann::ordered_json json = {{"file", options.file}, {"kind", "minidump"}};
    json.update(DumpJson(dump));
    json["faults"] = FaultsJson(dump.faults);
    PrintJson(json);
  } else {
    PrintDump(options.file, dump);
  }
  ReportFaults(options.file, dump.faults);
}

void ShowReports(const Options& options) {
  const std::string bytes = ReadWholeFile(options.file, kMostReportBytes);
  if (bytes.size() > kMostReportBytes)
    throw Failure(
        fmt::format("{} is larger than the {} MiB that are read of a report", options.file, kMostReportBytes >> 20),
        {.file = options.file});
  const CrashReports reports = ReadCrashReports(bytes);
  if (reports.reports.empty())
    throw Failure(options.file + " is neither a crash report, which has a line \"Error type\", nor a minidump",
                  {.file = options.file});
  if (options.json) {
    PrintJson({{"file", options.file},
               {"kind", "report"},
               {"reports", ReportsJson(reports)},
               {"faults", FaultsJson(reports)}});
  } else {
    PrintReports(options.file, reports);
  }
  for (const ReportFault& fault : reports.faults)
    PrintNote(fmt::format("{}:{}: byte {}: {}", options.file, fault.line, fault.byte, fault.reason));
  if (!reports.faults.empty()) throw FoundErrors();
}

void Run(const Options& options) {
  if (options.file != kStandardStream) {
    const DumpFile bytes(options.file);
    std::string signature;
    if (bytes.Read(0, sizeof kMinidumpSignature - 1, signature) && signature == kMinidumpSignature)
      return ShowDump(options, bytes);
  }
  ShowReports(options);
}

}  // namespace

void AddCrashShow(CLI::App& group) {
  static Options options;
  CLI::App* const command = group.add_subcommand("show", "Explain a crash report or a minidump");
  command->footer(kHelp);
  command->add_option("FILE", options.file, "The report or the minidump, such as part-0.txt")->required();
  command->add_flag("--json", options.json, "As JSON");
  command->callback([] { Run(options); });
}

}  // namespace kestrova
