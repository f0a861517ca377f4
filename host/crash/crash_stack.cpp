#include "host/crash/crash_stack.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <optional>

#include "host/crash/crash_file.h"
#include "host/crash/exception_texts.h"
#include "host/crash/stack_walk.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kHelp[] = R"(
Prints the stack of each thread, the one that crashed first: address, function, file and line, and the module. Names come
from the modules' files, which must have the build ids of the dump: at their paths, or in the folders of --symbols as
FOLDER/path, FOLDER/name or FOLDER/.build-id/xx/yyyy; debug files there or in /usr/lib/debug. Without these files a stack
has modules and offsets, and may end early. JSON: {"file", "threads", "modules", "faults"}. The exit code is 1 if the
dump is damaged and parts of it were left out.

  kestrova crash stack part-0.dmp
  kestrova crash stack part-0.dmp --thread crashed --json
)";

constexpr std::size_t kFrames = 256, kMostFrames = 1'000'000;

struct Options {
  std::string file;
  std::string thread;
  std::vector<std::string> symbols;
  std::size_t frames = kFrames;
  bool json = false;
};

bool HasCrashed(const Minidump& dump, const DumpThread& thread) {
  return dump.exception && dump.exception->thread == thread.id;
}

// The threads to print, the crashed one first.
std::vector<const DumpThread*> ThreadsOf(const Minidump& dump, const Options& options) {
  std::vector<const DumpThread*> threads;
  for (const DumpThread& thread : dump.threads) {
    const bool crashed = HasCrashed(dump, thread);
    const bool asked = options.thread.empty() || options.thread == std::to_string(thread.id) ||
                       (options.thread == "crashed" && crashed);
    if (asked) threads.insert(crashed ? threads.begin() : threads.end(), &thread);
  }
  if (threads.empty() && !options.thread.empty())
    throw NotFound(options.thread == "crashed"
                       ? options.file + " has no thread that has crashed"
                       : fmt::format("{} has no thread {}; kestrova crash stack without --thread lists all",
                                     options.file, options.thread),
                   {.file = options.file});
  return threads;
}

const char* NameOf(ModuleFile file) {
  switch (file) {
    case ModuleFile::kNotAsked: return "not needed";
    case ModuleFile::kFound: return "found";
    case ModuleFile::kUnproven: return "found without build id";
    case ModuleFile::kOther: return "other build id";
    case ModuleFile::kMissing: return "missing";
    case ModuleFile::kNoReader: return "not read on this system";
  }
  return "";
}

// ---- JSON

Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json FrameJson(const StackFrame& frame) {
  const SourceFrame& source = frame.source;
  return {{"address", AddressText(frame.address)},
          {"module", frame.module ? Json(frame.module->path) : Json()},
          {"offset", frame.module ? Json(AddressText(frame.address - frame.module->base, 1)) : Json()},
          {"function", OrNull(source.function)},
          {"source", OrNull(source.source)},
          {"line", source.line > 0 ? Json(source.line) : Json()},
          {"inlined", source.inlined}};
}

Json ThreadJson(const Minidump& dump, const ThreadStack& stack) {
  Json frames = Json::array();
  for (const StackFrame& frame : stack.frames) frames.push_back(FrameJson(frame));
  return {{"id", stack.thread->id},
          {"name", OrNull(stack.thread->name)},
          {"crashed", HasCrashed(dump, *stack.thread)},
          {"frames", frames},
          {"more", stack.more}};
}

Json ModulesJson(const Minidump& dump, const Symbols& symbols) {
  Json modules = Json::array();
  for (const DumpModule& module : dump.modules)
    modules.push_back({{"path", module.path},
                       {"base", AddressText(module.base)},
                       {"buildId", OrNull(HexText(module.build_id))},
                       {"file", NameOf(symbols.FileOf(module))}});
  return modules;
}

// ---- text

std::string FrameLine(const StackFrame& frame, int number) {
  const SourceFrame& source = frame.source;
  std::string line =
      fmt::format("  #{:<3} {}  ", number, source.inlined ? "(inlined)         " : AddressText(frame.address));
  const std::string module =
      frame.module ? fmt::format("{}+{:#x}", FileNameOf(frame.module->path), frame.address - frame.module->base) : "";
  if (source.function.empty()) return line + (module.empty() ? "in no module" : module);
  line += source.function;
  if (!source.inlined) line += fmt::format("+{:#x}", source.offset);
  if (source.line > 0) line += fmt::format("  at {}:{}", source.source, source.line);
  return line + "  in " + (frame.module ? FileNameOf(frame.module->path) : "no module");
}

void PrintStack(const Minidump& dump, const ThreadStack& stack) {
  const DumpThread& thread = *stack.thread;
  const std::string name = thread.name.empty() ? "" : fmt::format(" \"{}\"", thread.name);
  const std::string what = HasCrashed(dump, thread) ? ": " + ExceptionLine(*dump.exception) : "";
  Print("thread {}{}{}\n", thread.id, name, what);
  if (stack.frames.empty()) PrintRaw("  the dump has no registers of this thread\n");
  int number = 0;
  for (const StackFrame& frame : stack.frames) Print("{}\n", FrameLine(frame, number++));
  if (stack.more) PrintRaw("  more frames; --frames shows them\n");
}

void PrintMissing(const Minidump& dump, const Symbols& symbols) {
  for (const DumpModule& module : dump.modules) {
    const ModuleFile file = symbols.FileOf(module);
    const std::string id = module.build_id.empty() ? "" : ", build id " + HexText(module.build_id);
    if (file == ModuleFile::kMissing) PrintNote(module.path + ": no file, so no names" + id + "; see --symbols");
    if (file == ModuleFile::kOther)
      PrintNote(module.path + ": the file has another build id, so no names" + id + "; see --symbols");
    if (file == ModuleFile::kUnproven) PrintNote(module.path + ": the dump has no build id, so names may be wrong");
  }
}

void Run(const Options& options) {
  const DumpFile bytes(options.file);
  Minidump dump;
  ReadDumpFile(bytes, options.file, dump);
  Symbols symbols(dump, bytes, options.symbols);
  Json threads = Json::array();
  for (const DumpThread* const thread : ThreadsOf(dump, options)) {
    const ThreadStack stack = StackOf(dump, bytes, *thread, options.frames, symbols);
    if (options.json) {
      threads.push_back(ThreadJson(dump, stack));
    } else {
      PrintStack(dump, stack);
    }
  }
  if (options.json) {
    PrintJson({{"file", options.file},
               {"threads", threads},
               {"modules", ModulesJson(dump, symbols)},
               {"faults", FaultsJson(dump.faults)}});
  } else {
    PrintMissing(dump, symbols);
  }
  ReportFaults(options.file, dump.faults);
}

}  // namespace

void AddCrashStack(CLI::App& group) {
  static Options options;
  CLI::App* const command = group.add_subcommand("stack", "Print the stacks of a minidump's threads");
  command->footer(kHelp);
  command->add_option("FILE", options.file, "The minidump, such as part-0.dmp")->required();
  command->add_option("--thread", options.thread, "Only the thread with this id, or the crashed one (crashed)");
  command->add_option("--frames", options.frames, "The largest number of addresses of a stack")
      ->check(CLI::Range(std::size_t{1}, kMostFrames))
      ->capture_default_str();
  command->add_option("--symbols", options.symbols, "A folder with files of modules or debug files; may be repeated")
      ->allow_extra_args(false);
  command->add_flag("--json", options.json, "As JSON");
  command->callback([] { Run(options); });
}

}  // namespace kestrova
