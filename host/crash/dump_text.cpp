#include "host/crash/dump_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/crash/crash_file.h"
#include "host/crash/exception_texts.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

// UTC
std::string TimeText(std::uint32_t timestamp) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::gmtime(std::time_t{timestamp}));
}

// The pretty name of an os-release file, or the description of an lsb-release file; otherwise empty.
std::string DistributionName(const std::string& text) {
  for (const std::string_view key : {"PRETTY_NAME=", "DISTRIB_DESCRIPTION="}) {
    const std::size_t at = text.find(key);
    if (at == text.npos || (at > 0 && text[at - 1] != '\n')) continue;
    std::string name = text.substr(at + key.size(), text.find('\n', at) - at - key.size());
    std::erase(name, '"');
    return name;
  }
  return {};
}

std::string SystemText(const Minidump& dump) {
  constexpr std::uint32_t kWindows = 2;
  constexpr std::uint16_t kAmd64 = 9;
  const DumpSystem& system = *dump.system;
  std::string text = system.platform == kWindows ? "Windows" : system.IsLinux() ? "Linux" : "unknown system";
  if (system.major > 0) text += fmt::format(" {}.{}.{}", system.major, system.minor, system.build);
  for (const std::string& more : {DistributionName(dump.distribution), system.text})
    if (!more.empty()) text += ", " + more;
  return text + fmt::format("; {} {}", Counted(system.processors, "processor"),
                            system.architecture == kAmd64 ? "amd64" : fmt::format("({})", system.architecture));
}

std::uint64_t MemoryBytes(const Minidump& dump) {
  std::uint64_t bytes = 0;
  for (const DumpRange& range : dump.memory) bytes += range.size;
  return bytes;
}

std::string MeaningOf(const DumpException& exception) {
  std::string meaning(ExceptionTextOf(exception.code).meaning);
  const bool access = !AccessText(exception.code, exception.parameters).empty();
  if (const std::string_view more = access ? AddressMeaning(exception.parameters[1]) : ""; !more.empty())
    meaning += fmt::format(" {}", more);
  return meaning;
}

// ---- JSON

Json ExceptionJson(const Minidump& dump) {
  if (!dump.exception) return nullptr;
  const DumpException& exception = *dump.exception;
  const DumpModule* const module = dump.ModuleAt(exception.address);
  Json parameters = Json::array();
  for (const std::uint64_t parameter : exception.parameters) parameters.push_back(AddressText(parameter, 1));
  return {{"code", AddressText(exception.code, 8)},
          {"signal", exception.signal > 0 ? Json(exception.signal) : Json()},
          {"name", ExceptionTextOf(exception.code).name},
          {"meaning", MeaningOf(exception)},
          {"access", OrNull(AccessText(exception.code, exception.parameters))},
          {"thread", exception.thread},
          {"address", AddressText(exception.address)},
          {"module", module ? Json(module->path) : Json()},
          {"offset", module ? Json(AddressText(exception.address - module->base, 1)) : Json()},
          {"parameters", parameters}};
}

Json ThreadJson(const Minidump& dump, const DumpThread& thread) {
  Json registers = Json::array();
  if (const DumpRegisters* const found = dump.RegistersOf(thread)) {
    for (std::size_t i = 0; i < found->general.size(); ++i)
      registers.push_back({{"name", kDumpRegisterNames[i]}, {"value", AddressText(found->general[i])}});
    registers.push_back({{"name", "rip"}, {"value", AddressText(found->rip)}});
    registers.push_back({{"name", "eflags"}, {"value", AddressText(found->eflags, 8)}});
  }
  return {
      {"id", thread.id}, {"name", OrNull(thread.name)}, {"stackBytes", thread.stack.size}, {"registers", registers}};
}

Json ModuleJson(const DumpModule& module) {
  return {{"path", module.path},
          {"base", AddressText(module.base)},
          {"size", module.size},
          {"buildId", OrNull(HexText(module.build_id))},
          {"symbols", OrNull(module.symbols)},
          {"checksum", AddressText(module.checksum, 8)}};
}

Json SystemJson(const Minidump& dump) {
  if (!dump.system) return nullptr;
  return {{"text", SystemText(dump)},
          {"platform", dump.system->platform},
          {"architecture", dump.system->architecture},
          {"processors", dump.system->processors},
          {"version", dump.system->major > 0
                          ? Json(fmt::format("{}.{}.{}", dump.system->major, dump.system->minor, dump.system->build))
                          : Json()},
          {"distribution", OrNull(DistributionName(dump.distribution))}};
}

// ---- text

void PrintException(const Minidump& dump) {
  if (!dump.exception) return PrintRaw("error     none: the dump was made on demand\n");
  const DumpException& exception = *dump.exception;
  Print("error     {}\n", ExceptionLine(exception));
  Print("meaning   {}\n", MeaningOf(exception));
  if (!dump.comment.empty()) Print("comment   {}\n", dump.comment);
  Print("at        {}  {}\n", AddressText(exception.address), PlaceText(dump, exception.address));
  const DumpThread* const thread = dump.ThreadWith(exception.thread);
  const std::string name = thread && !thread->name.empty() ? fmt::format(" \"{}\"", thread->name) : "";
  Print("thread    {}{}, {} in all{}\n", exception.thread, name, dump.threads.size(),
        thread ? "" : "; the thread list does not have it");
}

void PrintRegisters(const Minidump& dump) {
  const DumpThread* const thread = dump.exception ? dump.ThreadWith(dump.exception->thread) : nullptr;
  const DumpRegisters* const registers = thread ? dump.RegistersOf(*thread) : nullptr;
  if (!registers) return;
  std::string text = "\nRegisters\n";
  for (std::size_t i = 0; i < registers->general.size(); ++i)
    text += fmt::format("  {:<4} {:016x}{}", kDumpRegisterNames[i], registers->general[i], i % 4 == 3 ? "\n" : "");
  PrintLines(text + fmt::format("  rip  {:016x}  eflags {:08x}  cs {:04x}  ss {:04x}\n", registers->rip,
                                registers->eflags, registers->cs, registers->ss));
}

void PrintModules(const Minidump& dump) {
  if (dump.modules.empty()) return;
  const DumpModule* const at = dump.exception ? dump.ModuleAt(dump.exception->address) : nullptr;
  PrintRaw("\nModules\n");
  TextTable table({{"  base", false}, {"size", true}, {"build id", false}, {"file", false}});
  for (const DumpModule& module : dump.modules)
    table.Add({fmt::format("{} {:016x}", &module == at ? '>' : ' ', module.base), std::to_string(module.size),
               module.build_id.empty() ? module.symbols : HexText(module.build_id), module.path});
  PrintLines(table.Text());
}

}  // namespace

Json DumpJson(const Minidump& dump) {
  Json threads = Json::array(), modules = Json::array(), streams = Json::array();
  for (const DumpThread& thread : dump.threads) threads.push_back(ThreadJson(dump, thread));
  for (const DumpModule& module : dump.modules) modules.push_back(ModuleJson(module));
  for (const DumpStream& stream : dump.streams)
    streams.push_back({{"type", AddressText(stream.type, 1)},
                       {"name", OrNull(std::string(DumpStreamName(stream.type)))},
                       {"byte", stream.at},
                       {"size", stream.size}});
  return {{"bytes", dump.size},
          {"written", TimeText(dump.timestamp)},
          {"type", AddressText(dump.flags, 1)},
          {"process", dump.process ? Json(*dump.process) : Json()},
          {"commandLine", OrNull(dump.command_line)},
          {"system", SystemJson(dump)},
          {"comment", OrNull(dump.comment)},
          {"exception", ExceptionJson(dump)},
          {"threads", threads},
          {"modules", modules},
          {"memory", {{"ranges", dump.memory.size()}, {"bytes", MemoryBytes(dump)}}},
          {"streams", streams}};
}

void PrintDump(const std::string& file, const Minidump& dump) {
  Print("minidump  {}, {} bytes, type {:#x}, written {} UTC\n", file, dump.size, dump.flags, TimeText(dump.timestamp));
  if (dump.process || !dump.command_line.empty())
    Print("process   {}  {}\n", dump.process ? std::to_string(*dump.process) : "of an unknown id", dump.command_line);
  if (dump.system) Print("system    {}\n", SystemText(dump));
  PrintException(dump);
  Print("memory    {}, {} bytes\n", Counted(long(dump.memory.size()), "range"), MemoryBytes(dump));
  PrintRegisters(dump);
  PrintModules(dump);
  Print("\nThe stacks: kestrova crash stack {}\n", file);
}

}  // namespace kestrova
