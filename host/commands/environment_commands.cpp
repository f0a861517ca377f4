// `kestrova env` prints the paths and settings of the environment; `kestrova env doctor` finds faults in it.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/environment/environment_doctor.h"
#include "host/environment/environment_queries.h"
#include "host/module/main_module.h"
#include "host/module/recorded_message_boxes.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "share/env/app_env.h"

namespace kestrova {

namespace {

constexpr char kEnvHelp[] =
    "Starts the environment as the product does: missing switches and folders get their defaults in the registry, and\n"
    "the folder of simulation recordings is created.\n"
    "With --json the name of an operation begins with a small letter: getKVDataPath.\n"
    "Examples:\n"
    "  kestrova env\n"
    "  kestrova env --json > env.json\n"
    "  kestrova env doctor";

constexpr char kDoctorHelp[] =
    "Starts the environment as the product does, prints which folders and registry files it reads, lists what is\n"
    "missing or suspicious, and gives a remedy for each.\n"
    "An error stops the product, a warning a part of it; a note may explain odd behaviour. The exit code is 1 if "
    "there\n"
    "are errors.\n"
    "Example:\n"
    "  kestrova env doctor";

std::string TextOf(const QueryAnswer& answer) {
  if (const auto* number = std::get_if<long long>(&answer)) return std::to_string(*number);
  if (const auto* flag = std::get_if<bool>(&answer)) return *flag ? "1" : "0";
  const CString& text = std::get<CString>(answer);
  return text.IsEmpty() ? "(empty)" : ToUtf8(text);
}

// "getKVDataPath" for "GetKVDataPath": JSON names begin with a small letter.
std::string JsonName(std::string operation) {
  operation[0] = char(operation[0] | ('a' - 'A'));
  return operation;
}

void PrintEnvironment(bool asJson) {
  StartMainModule();
  CKVEnvApp& env = *AppEnv();
  if (asJson) {
    nlohmann::ordered_json all = {
        {"initResult", {{"value", int(env.GetEnvAPPInitResult())}, {"text", InitResultInWords(env)}}}};
    for (const EnvironmentQueryGroup& group : EnvironmentQueryGroups()) {
      nlohmann::ordered_json& answers = all[group.json_name];
      for (const EnvironmentQuery& query : group.queries) {
        const QueryAnswer answer = query.ask(env);
        nlohmann::ordered_json& value = answers[JsonName(query.operation)];
        if (const auto* number = std::get_if<long long>(&answer)) value = *number;
        if (const auto* flag = std::get_if<bool>(&answer)) value = *flag;
        if (const auto* text = std::get_if<CString>(&answer)) value = ToUtf8(*text);
      }
    }
    PrintJson(all);
    return;
  }
  Print("Init result {}: {}\n", int(env.GetEnvAPPInitResult()), InitResultInWords(env));
  for (const EnvironmentQueryGroup& group : EnvironmentQueryGroups()) {
    Print("\n{}\n", group.title);
    for (const EnvironmentQuery& query : group.queries) Print("  {:<44}{}\n", query.operation, TextOf(query.ask(env)));
  }
}

void RunDoctor(bool asJson) {
  const RecordedMessageBoxes boxes;  // the findings report the same faults
  StartMainModule(Needs::kNoReport);
  const std::vector<EnvironmentFinding> findings = ExamineEnvironment(*AppEnv());
  const auto count = [&](FindingGrade grade) {
    return std::count_if(findings.begin(), findings.end(), [&](const auto& finding) { return finding.grade == grade; });
  };
  const auto errors = count(FindingGrade::kError);
  const auto warnings = count(FindingGrade::kWarning);
  const auto notes = count(FindingGrade::kNote);
  const std::vector<EnvironmentSource> sources = SourcesOf(*AppEnv());
  if (asJson) {
    nlohmann::ordered_json all = {{"read", nlohmann::ordered_json::object()},
                                  {"errors", errors},
                                  {"warnings", warnings},
                                  {"notes", notes},
                                  {"findings", nlohmann::ordered_json::array()}};
    for (const EnvironmentSource& source : sources) all["read"][source.json_name] = source.path;
    for (const EnvironmentFinding& finding : findings) {
      all["findings"].push_back({{"grade", TextOf(finding.grade)},
                                 {"subject", finding.subject},
                                 {"text", finding.text},
                                 {"remedy", finding.remedy}});
    }
    PrintJson(all);
  } else {
    for (const EnvironmentSource& source : sources) Print("{:<20}{}\n", source.name, source.path);
    for (const EnvironmentFinding& finding : findings)
      Print("{}: {}: {}\n    {}\n", TextOf(finding.grade), finding.subject, finding.text, finding.remedy);
    Print("{}, {}, {}\n", Counted(errors, "error"), Counted(warnings, "warning"), Counted(notes, "note"));
  }
  if (errors > 0) throw FoundErrors();
}

}  // namespace

void AddEnvironmentCommands(CLI::App& group) {
  static bool json = false;
  static bool doctorJson = false;
  group.footer(kEnvHelp);
  group.require_subcommand(0, 1);
  group.add_flag("--json", json, "As JSON");
  CLI::App* doctor = group.add_subcommand("doctor", "Find faults of the installation and the registry");
  doctor->footer(kDoctorHelp);
  doctor->add_flag("--json", doctorJson, "As JSON");
  doctor->callback([] { RunDoctor(json || doctorJson); });
  group.callback([&group] {
    if (group.get_subcommands().empty()) PrintEnvironment(json);
  });
}

}  // namespace kestrova
