// kestrova analytics: shows and deletes the usage events, and switches them on and off.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "companions/analytics/event_file.h"
#include "host/commands/commands.h"
#include "host/registry/debug_values.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "share/core/registry_keys.h"
#include "share/env/feature_switches.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;

constexpr LPCTSTR kSwitch = _T("LogAnalyticsData");
constexpr int kMostLines = 100'000;

constexpr char kHelp[] =
    "Usage events: which functions of the product are used, in a file on this computer that nothing sends anywhere.\n"
    "docs/analytics.md describes each field. The environment variable DO_NOT_TRACK forbids them, too.\n"
    "Examples:\n"
    "  kestrova analytics show --lines 5\n"
    "  kestrova analytics off";

struct Options {
  int lines = 20;
  bool json = false;
};

std::string File() { return SystemPathFromProduct(EventFile().File().c_str()); }

void CheckDone(const char* what, LONG status) {
  if (status == ERROR_SUCCESS) return;
  const std::string why = status == ERROR_BUSY ? "another process has locked it; try again" : ErrorText(DWORD(status));
  throw Failure(fmt::format("cannot {} {}: {}", what, File(), why), {.file = File()});
}

bool IsOn() { return GetDebugRegistryVal(kSwitch, 1) != 0; }

// Only the known fields with values of their types: a file may have anything. Null for a line that is no event.
Json EventOf(const std::string& line) {
  constexpr const char* kFields[] = {"time",    "process",   "kind", "category", "name",   "value", "language",
                                     "version", "buildCode", "type", "text",     "module", "place"};
  const Json found = Json::parse(line, nullptr, /*allow_exceptions=*/false);
  if (!found.is_object() || !found.contains("kind") || !found["kind"].is_string()) return nullptr;
  Json event = Json::object();
  for (const std::string_view field : kFields) {
    const auto at = found.find(field);
    if (at == found.end()) continue;
    const bool fits = field == "process" ? at->is_number_unsigned()
                      : field == "value" ? at->is_string() || at->is_number() || at->is_null()
                                         : at->is_string();
    if (fits) event[std::string(field)] = *at;
  }
  return event;
}

struct Events {
  std::vector<Json> last;
  std::size_t count = 0, damaged = 0;
};

Events ReadEvents(std::size_t last) {
  std::string lines;
  CheckDone("read", EventFile().Read(lines));
  Events events;
  events.count = std::size_t(std::count(lines.begin(), lines.end(), '\n'));
  std::size_t number = 0;
  for (std::size_t start = 0; start < lines.size(); ++number) {
    const std::size_t end = lines.find('\n', start);
    if (number + last >= events.count) {
      Json event = EventOf(lines.substr(start, end - start));
      event.is_null() ? void(++events.damaged) : events.last.push_back(std::move(event));
    }
    start = end + 1;
  }
  return events;
}

std::string Cell(const Json& event, const char* field) {
  if (!event.contains(field)) return {};
  return event[field].is_string() ? event[field].get<std::string>() : JsonText(event[field]);
}

// ---- the commands

void Show(const Options& options) {
  const Events events = ReadEvents(std::size_t(options.lines));
  const Json state = {{"file", File()}, {"on", IsOn()}, {"forbidden", IsTrackingForbidden()}};
  if (options.json) {
    Json all = state;
    all["count"] = events.count;
    all["damagedLines"] = events.damaged;
    all["events"] = events.last;
    return PrintJson(all);
  }
  Print("file: {}\n{}{}, {}\n", File(), IsOn() ? "on" : "off",
        IsTrackingForbidden() ? ", but DO_NOT_TRACK forbids events" : "", Counted((long long)events.count, "event"));
  TextTable table({{"time", false}, {"kind", false}, {"category", false}, {"name", false}, {"value", false}});
  for (const Json& event : events.last) {
    const std::string kind = Cell(event, "kind");
    const char* const name = kind == "exception" ? "type" : "name";
    const char* const value = kind == "exception" ? "text" : kind == "product" ? "version" : "value";
    table.Add({Cell(event, "time"), kind, Cell(event, "category"), Cell(event, name), Cell(event, value)});
  }
  if (!events.last.empty()) PrintLines(table.Text());
  if (events.damaged > 0) Print("{} are no events\n", Counted((long long)events.damaged, "line"));
}

void Clear(const Options& options) {
  CheckDone("delete", EventFile().Remove());
  if (options.json) PrintJson({{"file", File()}});
}

void Switch(const Options& options, bool on) {
  WriteDebugValue(kVersionDebugKey, kSwitch, on);
  if (options.json) PrintJson({{"on", IsOn()}});
}

}  // namespace

void AddAnalyticsCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kHelp);
  const auto add = [&](const char* name, const char* what, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(kHelp);
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  add("show", "Show the last events", Show)
      ->add_option("--lines", options.lines, "How many events")
      ->check(CLI::Range(0, kMostLines))
      ->capture_default_str();
  add("clear", "Delete all events", Clear);
  add("off", "Write no more events", [](const Options& given) { Switch(given, false); });
  add("on", "Write events", [](const Options& given) { Switch(given, true); });
}

}  // namespace kestrova
