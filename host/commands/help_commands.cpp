// kestrova help: lists the topics of the help and opens their pages.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/env/app_env.h"
#include "share/interface/help_system.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;

struct Area {
  const char* name;
  QFHelpFileType type;
};

constexpr Area kAreas[] = {
    {"master", QF_HELP_MASTER},       {"milling", QF_HELP_MILLING}, {"turning", QF_HELP_TURNING}, {"edm", QF_HELP_EDM},
    {"multiaxis", QF_HELP_MULTIAXIS}, {"api", QF_HELP_API},         {"tbm", QF_HELP_TBM},         {"am", QF_HELP_AM},
    {"shopfloor", QF_HELP_SHOPFLOOR}};

struct Options {
  std::string topic, area = "master";
  bool index = false;
  bool json = false;
};

std::vector<std::string> AreaNames() {
  std::vector<std::string> names;
  for (const Area& area : kAreas) names.emplace_back(area.name);
  return names;
}

const Area* FindArea(const std::string& name) {
  const auto* found = std::find_if(std::begin(kAreas), std::end(kAreas), [&](const Area& a) { return a.name == name; });
  return found == std::end(kAreas) ? nullptr : found;
}

std::string System(const CString& path) {
  return std::filesystem::path(SystemPathFromProduct(path)).lexically_normal().string();
}

bool Exists(const CString& path) { return _waccess(path, 0) == 0; }

// ---- list

Json AreaJson(const QFHelpSystem& help, const Area& area) {
  CString overview;
  const bool exists = help.GenerateHtmlHelpFileName(area.type, overview) != 0;
  const CString compiled = help.GetCompiledHelpFileName(area.type);
  return {{"area", area.name},
          {"overview", overview.IsEmpty() ? Json() : Json(System(overview))},
          {"overviewExists", exists},
          {"compiledFile", System(compiled)},
          {"compiledFileExists", Exists(compiled)}};
}

Json ContextJson(const QFHelpSystem& help, int context, const CString& page) {
  CString path;
  const bool exists = help.GenerateHtmlHelpFileName(context, path) != 0;
  return {{"context", context}, {"page", ToUtf8(page)}, {"exists", exists}};
}

std::string NameOf(const Json& path) {
  return path.is_null() ? "-" : path.get<std::string>().substr(path.get<std::string>().rfind('/') + 1);
}

void List(const Options& options) {
  StartMainModule();
  const QFHelpSystem& help = *QFHelpSystem::Instance();
  Json all = {{"folder", System(AppEnv()->GetKVHelpPath())}, {"areas", Json::array()}, {"contexts", Json::array()}};
  for (const Area& area : kAreas) all["areas"].push_back(AreaJson(help, area));
  for (const auto& [context, page] : QFHelpSystem::GetContexts())
    all["contexts"].push_back(ContextJson(help, context, page));
  if (options.json) return PrintJson(all);
  TextTable table({{"topic", false}, {"page", false}, {"", false}});
  for (const Json& area : all["areas"]) {
    const bool missing = !area["overview"].is_null() && !area["overviewExists"].get<bool>();
    table.Add({area["area"], NameOf(area["overview"]), missing ? "missing" : ""});
  }
  for (const Json& context : all["contexts"])
    table.Add({std::to_string(context["context"].get<int>()), context["page"], context["exists"] ? "" : "missing"});
  Print("{}\n", all["folder"].get<std::string>());
  PrintLines(table.Text());
}

// ---- open

std::optional<int> ContextOf(const std::string& topic) {
  int number = 0;
  const char* const end = topic.data() + topic.size();
  const auto [rest, error] = std::from_chars(topic.data(), end, number);
  return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

const char* NameOf(QFHelpShown shown) {
  switch (shown) {
    case QFHelpShown::kPage: return "page";
    case QFHelpShown::kOverview: return "overview";
    case QFHelpShown::kCompiled: return "compiled";
    default: return "nothing";
  }
}

void Open(const Options& options) {
  const Area* const named = FindArea(options.topic);
  const std::optional<int> context = ContextOf(options.topic);
  if (!named && !context) {
    throw WrongUsage(fmt::format("{} is no topic: give a context number or one of {}; kestrova help list shows them",
                                 options.topic, fmt::join(AreaNames(), ", ")));
  }
  StartMainModule();
  QFHelpSystem& help = *QFHelpSystem::Instance();
  const QFHelpFileType type = (named ? named : FindArea(options.area))->type;
  if (context) {
    help.ShowHelp(type, ULONGLONG(LONGLONG(*context)), /*flags=*/0);
  } else if (options.index) {
    help.OnHelpIndex(type);
  } else {
    help.OnHelpFinder(type);
  }
  const std::string file = System(help.GetShownFile());
  switch (help.GetShown()) {
    case QFHelpShown::kNothing:
      throw NotFound(fmt::format("there is no help for {} in {}", options.topic, System(AppEnv()->GetKVHelpPath())));
    case QFHelpShown::kNoProgram:
      throw Failure(
          fmt::format("no program opens {}: install xdg-utils and a web browser, or open the file yourself", file),
          {.file = file});
    case QFHelpShown::kProgramFailed:
      throw Failure(fmt::format("the program that opens {} failed; open the file yourself", file), {.file = file});
    default: break;
  }
  if (options.json) {
    PrintJson({{"topic", options.topic}, {"shown", NameOf(help.GetShown())}, {"file", file}});
  } else {
    Print("{}\n", file);
  }
}

}  // namespace

void AddHelpCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  CLI::App* list = group.add_subcommand("list", "List the topics of the help and their pages");
  list->footer("Example:\n  kestrova help list --json");
  list->callback([] { List(options); });
  CLI::App* open = group.add_subcommand("open", "Open a topic in the user's browser or help viewer; prints its file");
  open->footer(
      "A context without a page opens the compiled help file of its area, or the overview page of the area.\n"
      "Examples:\n"
      "  kestrova help open turning\n"
      "  kestrova help open 1234 --area milling");
  open->add_option("TOPIC", options.topic, "A context number, or the name of an area")->required();
  open->add_option("--area", options.area, "The area of a context without a page")
      ->check(CLI::IsMember(AreaNames()))
      ->capture_default_str();
  open->add_flag("--index", options.index, "The index of an area without an overview page");
  open->callback([] { Open(options); });
  for (CLI::App* command : {list, open}) command->add_flag("--json", options.json, "As JSON");
}

}  // namespace kestrova
