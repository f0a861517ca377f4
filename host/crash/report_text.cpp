#include "host/crash/report_text.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/crash/crash_file.h"
#include "host/crash/exception_texts.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kDigits = 8;  // of a number in a report

// The module of the list that has the instruction, by the low 32 bits; null if none has.
const ReportModule* ModuleOf(const CrashReport& report) {
  for (const ReportModule& module : report.modules)
    if (report.instruction >= module.base && report.instruction - module.base < module.size) return &module;
  return nullptr;
}

std::string AccessOf(const CrashReport& report) {
  if (!report.access) return {};
  return fmt::format("{} address {}", report.access->write ? "write to" : "read from",
                     AddressText(report.access->address, kDigits));
}

// The explanation, in sentences.
std::string MeaningOf(const CrashReport& report) {
  std::string meaning(ExceptionTextOf(report.code).meaning);
  if (const std::string_view address = report.access ? AddressMeaning(report.access->address) : ""; !address.empty())
    meaning += fmt::format(" {}", address);
  return meaning;
}

Json FieldsJson(const ReportFields& fields) {
  Json list = Json::array();
  for (const auto& [name, value] : fields) list.push_back({{"name", name}, {"value", value}});
  return list;
}

Json ModuleJson(const ReportModule& module) {
  return {{"number", module.number},
          {"file", module.file},
          {"desiredBase", AddressText(module.desired_base, kDigits)},
          {"base", AddressText(module.base, kDigits)},
          {"size", module.size},
          {"checksum", AddressText(module.checksum, kDigits)},
          {"timestamp", AddressText(module.timestamp, kDigits)},
          {"fileSize", module.file_size},
          {"fileTime", module.file_time}};
}

Json ReportJson(const CrashReport& report) {
  Json registers = Json::array(), modules = Json::array();
  for (const auto& [name, value] : report.registers)
    registers.push_back({{"name", name}, {"value", AddressText(value, kDigits)}});
  for (const ReportModule& module : report.modules) modules.push_back(ModuleJson(module));
  const ReportModule* const at = ModuleOf(report);
  Json access;
  if (report.access)
    access = {{"write", report.access->write}, {"address", AddressText(report.access->address, kDigits)}};
  return {{"line", report.line},
          {"error", report.error},
          {"code", AddressText(report.code, kDigits)},
          {"meaning", MeaningOf(report)},
          {"access", access},
          {"instruction", AddressText(report.instruction, kDigits)},
          {"module", report.module},
          {"offset", at ? Json(AddressText(report.instruction - at->base, 1)) : Json()},
          {"program", report.program},
          {"product", FieldsJson(report.product)},
          {"system", FieldsJson(report.system)},
          {"graphics", FieldsJson(report.graphics)},
          {"registers", registers},
          {"codeBytes", HexText(report.code_bytes)},
          {"modules", modules},
          {"whole", report.whole},
          {"partial", report.partial}};
}

void PrintFields(const char* title, const ReportFields& fields) {
  if (fields.empty()) return;
  Print("\n{}\n", title);
  TextTable table({{"", false}, {"", false}});
  for (const auto& [name, value] : fields) table.Add({"  " + name, value});
  PrintLines(table.Text());
}

void PrintRegisters(const CrashReport& report) {
  if (report.registers.empty()) return;
  PrintRaw("\nRegisters, low 32 bits\n");
  std::string line;
  for (std::size_t i = 0; i < report.registers.size(); ++i) {
    const auto& [name, value] = report.registers[i];
    line += fmt::format("  {:<6} {:08x}{}", name, value, i % 4 == 3 || i + 1 == report.registers.size() ? "\n" : "");
  }
  PrintLines(line);
  if (!report.code_bytes.empty()) Print("  code   {}\n", HexText(report.code_bytes));
}

void PrintModules(const CrashReport& report) {
  if (report.modules.empty()) return;
  PrintRaw("\nModules, addresses by their low 32 bits\n");
  TextTable table(
      {{"  base", false}, {"end", false}, {"checksum", false}, {"size", true}, {"file time", false}, {"file", false}});
  for (const ReportModule& module : report.modules)
    table.Add({fmt::format("{} {:08x}", &module == ModuleOf(report) ? '>' : ' ', module.base),
               fmt::format("{:08x}", module.base + module.size), fmt::format("{:08x}", module.checksum),
               std::to_string(module.file_size), module.file_time, module.file});
  PrintLines(table.Text());
}

void PrintReport(const CrashReport& report) {
  const std::string access = AccessOf(report);
  const ReportModule* const at = ModuleOf(report);
  Print("error    {} (0x{:08X}){}{}\n", report.error, report.code, access.empty() ? "" : ", ", access);
  Print("meaning  {}\n", MeaningOf(report));
  Print("at       {:04x}:{:08x} in {}\n", report.segment, report.instruction, report.module);
  if (at)
    Print("         {}+{:#x}, module {} of {}\n", FileNameOf(at->file), report.instruction - at->base, at->number,
          report.modules.size());
  Print("program  {}\n", report.program);
  PrintFields("Product", report.product);
  PrintFields("System", report.system);
  PrintFields("Graphics", report.graphics);
  PrintRegisters(report);
  PrintModules(report);
  if (report.partial)
    PrintRaw("\nThe crashed program itself has written this report, without what it could not find out.\n");
  if (!report.whole) PrintRaw("\nThe report has no end: it was cut.\n");
}

}  // namespace

Json ReportsJson(const CrashReports& reports) {
  Json list = Json::array();
  for (const CrashReport& report : reports.reports) list.push_back(ReportJson(report));
  return list;
}

Json FaultsJson(const CrashReports& reports) {
  Json list = Json::array();
  for (const ReportFault& fault : reports.faults)
    list.push_back({{"line", fault.line}, {"byte", fault.byte}, {"message", fault.reason}});
  return list;
}

void PrintReports(const std::string& file, const CrashReports& reports) {
  std::size_t number = 0;
  for (const CrashReport& report : reports.reports) {
    Print("{}report {} of {} in {}, line {}\n", number > 0 ? "\n" : "", number + 1, reports.reports.size(), file,
          report.line);
    PrintReport(report);
    ++number;
  }
  PrintRaw("\nThe dump of the same crash, if there is one, has the stacks: kestrova crash stack NAME.dmp\n");
}

}  // namespace kestrova
