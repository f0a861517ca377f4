// kestrova reg: shows and changes registry values, with the syntax that support staff know.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/registry/registry_health.h"
#include "host/registry/registry_reader.h"
#include "host/registry/registry_switches.h"
#include "host/shell/failure.h"
#include "host/shell/nearest_names.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "platform/console.h"
#include "platform/files.h"
#include "share/settings/registry_text.h"

namespace kestrova {

namespace {

using registry_text::KeyName;
using Text = std::basic_string<TCHAR>;

constexpr char kOverview[] = R"(Shows and changes values of the registry.

  kestrova reg query  KEY [/v NAME | /ve] [/s] [--json | --value]
  kestrova reg add    KEY [/v NAME | /ve] [/t TYPE] [/d DATA] [/s SEPARATOR] [/f]
  kestrova reg delete KEY [/v NAME | /ve | /va] [/f]
  kestrova reg export KEY FILE [/y]
  kestrova reg import FILE

A KEY begins with HKCU or HKLM, or their long names. A switch may be written with / or -, in any case.
FILE may be - for the standard input or output. "kestrova reg query /?" shows the help of a command.
)";

// ---- the commands' forms

void QueryCommand(const Switches& switches);
void AddCommand(const Switches& switches);
void DeleteCommand(const Switches& switches);
void ExportCommand(const Switches& switches);
void ImportCommand(const Switches& switches);

struct CommandForm {
  const char* name;
  void (*run)(const Switches& switches);
  SwitchForm form;
  const char* help;
};

const CommandForm kForms[] = {
    {"query",
     QueryCommand,
     {{"KEY"}, "v", "ve s -json -value"},
     R"(Shows the values of a key and the keys below it, all in one state, also while others write.

  kestrova reg query KEY [/v NAME | /ve] [/s] [--json | --value]

  /v NAME  that value only      /ve      the default value only
  /s       all keys below, too  --json   as JSON
                                --value  the data of the value alone, for scripts
The exit code is 1 if the key or the value is missing.

  kestrova reg query "HKCU\Software\Zemlor\Kestrova" /s
  kestrova reg query "HKCU\Software\Zemlor\Kestrova\Kestrova 2024x64\Debug" /v PostingPerformanceImprovements --value
)"},
    {"add",
     AddCommand,
     {{"KEY"}, "v t d s", "ve f"},
     R"(Creates a key, or writes a value.

  kestrova reg add KEY [/v NAME | /ve] [/t TYPE] [/d DATA] [/s SEPARATOR] [/f]

  /v NAME  the value's name           /ve  the default value
  /t TYPE  REG_SZ (default), REG_EXPAND_SZ, REG_MULTI_SZ, REG_DWORD, REG_QWORD, REG_BINARY, REG_NONE
  /d DATA  a text; a number, decimal or 0x2a; binary as 0A1B; a list with \0, or the SEPARATOR, between its texts
  /f       overwrite a value without asking

  kestrova reg add "HKCU\Software\Zemlor\Kestrova\Debug" /v LOG_KV /t REG_DWORD /d 1 /f
)"},
    {"delete",
     DeleteCommand,
     {{"KEY"}, "v", "ve va f"},
     R"(Deletes a key with everything below it, or values.

  kestrova reg delete KEY [/v NAME | /ve | /va] [/f]

  /v NAME  that value    /ve  the default value
  /va      all values    /f   without asking

  kestrova reg delete "HKCU\Software\Zemlor\Kestrova\Kestrova 2024x64\Debug" /v PostingPerformanceImprovements /f
)"},
    {"export",
     ExportCommand,
     {{"KEY", "FILE"}, "", "y"},
     R"(Writes a key with everything below it, all in one state, into a file; - is the standard output.

  kestrova reg export KEY FILE [/y]

  /y  overwrite a file without asking

  kestrova reg export "HKCU\Software\Zemlor\Kestrova" settings.reg /y
)"},
    {"import",
     ImportCommand,
     {{"FILE"}, "", ""},
     R"(Writes the keys and values of a file into the registry; - is the standard input. If one line is wrong, nothing is
changed.

  kestrova reg import FILE

  kestrova reg import settings.reg
)"},
};

const CommandForm* FormOf(const std::string& word) {
  for (const CommandForm& form : kForms) {
    if (LowerAscii(word) == form.name) return &form;
  }
  return nullptr;
}

bool AsksForHelp(const std::string& word) {
  const std::string lower = LowerAscii(word);
  return lower == "/?" || lower == "-?" || lower == "-h" || lower == "--help";
}

KeyName KeyOf(const std::string& text) {
  KeyName key;
  const CString wide = FromUtf8(text);
  if (!registry_text::ParseKeyName(wide.View(), key)) {
    throw WrongUsage(
        fmt::format("{} is not a key; a key begins with HKCU\\ or HKLM\\ and needs quotes in the shell", text));
  }
  return key;
}

// The name of the value that the switches select; nullopt if they select none.
std::optional<Text> ValueNameOf(const Switches& switches) {
  if (switches.Has("v")) return Text(FromUtf8(switches.Get("v")).View());
  if (switches.Has("ve")) return Text();
  return std::nullopt;
}

std::string ShownName(const Text& value_name) { return value_name.empty() ? "(Default)" : ToUtf8(value_name); }

[[noreturn]] void RefuseMissing(const Text& value_name, const KeyName& key) {
  throw NotFound(
      fmt::format("there is no value {} in {}", ShownName(value_name), ToUtf8(registry_text::FullName(key))));
}

// ---- questions

// Asks the user on a terminal. Without a terminal throws the refusal, which names the switch that answers yes.
void Confirm(const std::string& question, const std::string& refusal) {
  if (!_isatty(0)) throw Failure(refusal);
  std::fprintf(stderr, "%s (Yes/No)? ", Harmless(question).c_str());
  std::string answer;
  std::getline(std::cin, answer);
  const std::string lower = LowerAscii(answer);
  if (lower != "y" && lower != "yes") throw Failure("nothing was changed");
}

void Done() { PrintRaw("The operation completed successfully.\n"); }

// ---- commands

void PrintContents(const std::vector<KeyContent>& contents, bool sub_keys) {
  for (const KeyContent& content : contents) {
    const std::string name = ToUtf8(registry_text::FullName(content.key));
    if (!content.values.empty() || content.sub_keys.empty()) {
      Print("\n{}\n", name);
      for (const RegistryValue& value : content.values)
        Print("    {}    {}    {}\n", ShownName(value.name), TypeName(value.type), DataText(value));
    }
    if (!sub_keys) continue;
    PrintRaw("\n");
    for (const Text& sub_key : content.sub_keys) Print("{}\\{}\n", name, ToUtf8(sub_key));
  }
  if (!sub_keys) PrintRaw("\n");
}

void QueryCommand(const Switches& switches) {
  const KeyName key = KeyOf(switches.words[0]);
  const std::optional<Text> name = ValueNameOf(switches);
  const bool below = switches.Has("s"), alone = switches.Has("-value"), json = switches.Has("-json");
  if (alone && (!name || below || json))
    throw WrongUsage("--value needs /v or /ve, without /s and --json; see kestrova reg query --help");
  const std::vector<KeyContent> contents = RegistryReader().Read(key, name, below);
  if (contents.empty()) RefuseMissing(*name, key);
  if (alone) {
    PrintRaw(DataText(contents.front().values.front()) + '\n');
  } else if (json) {
    PrintJson(ContentsJson(contents));
  } else {
    PrintContents(contents, /*sub_keys=*/!below && !name);
  }
}

void AddCommand(const Switches& switches) {
  const KeyName key = KeyOf(switches.words[0]);
  std::optional<Text> name = ValueNameOf(switches);
  if (!name && (switches.Has("d") || switches.Has("t"))) name = Text();
  const std::optional<DWORD> type = TypeOf(switches.Has("t") ? switches.Get("t") : "REG_SZ");
  if (!type) throw WrongUsage(fmt::format("/t {} is not a type; see kestrova reg add --help", switches.Get("t")));
  const std::string separator = switches.Has("s") ? switches.Get("s") : "\\0";
  if (separator.empty()) throw WrongUsage("/s needs a separator that is not empty");
  const std::vector<BYTE> data = DataFromText(*type, switches.Get("d"), separator);
  RegistryKeyHandle open;
  CheckStatus(RegCreateKeyExW(key.hive, key.path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, open.Receive(),
                              nullptr),
              key);
  if (name) {
    RegistryValue old{*name, REG_NONE, {}};
    if (!switches.Has("f") && ReadValue(key, open, old)) {
      const std::string what = fmt::format("Value {} exists, overwrite", ShownName(*name));
      Confirm(what, fmt::format("value {} exists; add /f to overwrite it", ShownName(*name)));
    }
    CheckStatus(RegSetValueExW(open, name->c_str(), 0, *type, data.data(), DWORD(data.size())), key);
  }
  Done();
}

void DeleteValues(const KeyName& key, const std::optional<Text>& name) {
  const RegistryKeyHandle open = OpenKey(key, KEY_READ | KEY_SET_VALUE);
  if (name) {
    const LSTATUS status = RegDeleteValueW(open, name->c_str());
    if (status == ERROR_FILE_NOT_FOUND) RefuseMissing(*name, key);
    CheckStatus(status, key);
    return;
  }
  for (const RegistryValue& value : ReadValues(key, open)) {
    CheckStatus(RegDeleteValueW(open, value.name.c_str()), key);
  }
}

void DeleteCommand(const Switches& switches) {
  const KeyName key = KeyOf(switches.words[0]);
  const std::optional<Text> name = ValueNameOf(switches);
  const std::string full = ToUtf8(registry_text::FullName(key));
  if (!switches.Has("f")) {
    const std::string what = name                 ? fmt::format("the value {} of {}", ShownName(*name), full)
                             : switches.Has("va") ? fmt::format("all values of {}", full)
                                                  : fmt::format("the key {} with everything below it", full);
    Confirm("Delete " + what, "deleting " + what + " needs /f");
  }
  if (name || switches.Has("va")) {
    DeleteValues(key, name);
  } else if (key.path.empty()) {
    throw Failure("a whole hive cannot be deleted; name a key below it");
  } else {
    CheckStatus(RegDeleteTreeW(key.hive, key.path.c_str()), key);
  }
  Done();
}

void ExportCommand(const Switches& switches) {
  const KeyName key = KeyOf(switches.words[0]);
  const std::string& file = switches.words[1];
  const Text path = ProductPathFromSystem(file);
  std::string bytes;
  registry_text::Error error;
  CheckWhole(key.hive);
  OpenKey(key, KEY_READ);  // throws NotFound for a missing key
  if (!registry_text::Write(key, bytes, error)) throw Failure(TextOf(error));
  if (!switches.Has("y") && file != kStandardStream && _waccess(path.c_str(), 0) == 0) {
    Confirm(fmt::format("File {} exists, overwrite", file), fmt::format("{} exists; add /y to overwrite it", file));
  }
  WriteWholeFile(file, bytes);
  if (file != kStandardStream) Done();
}

void ImportCommand(const Switches& switches) {
  const std::string& file = switches.words[0];
  std::vector<registry_text::Step> steps;
  registry_text::Error error;
  if (!registry_text::Parse(ReadWholeFile(file, registry_text::kMostBytes), steps, error) ||
      !registry_text::Apply(steps, error)) {
    const std::string place = error.line > 0 ? fmt::format("{}:{}", file, error.line) : file;
    throw Failure(fmt::format("{}: {}; nothing was imported", place, TextOf(error)), {file, error.line});
  }
  Done();
}

void RunRegistryCommand(const std::vector<std::string>& words) {
  if (words.empty()) throw WrongUsage("a command is missing; kestrova reg --help lists the commands");
  if (AsksForHelp(words[0])) {
    PrintRaw(kOverview);
    return;
  }
  const CommandForm* const form = FormOf(words[0]);
  if (!form) {
    std::vector<std::string> names;
    for (const CommandForm& known : kForms) names.emplace_back(known.name);
    throw WrongUsage(words[0] + " is not a command of kestrova reg" +
                     NearestOr(names, words[0], "kestrova reg --help lists the commands"));
  }
  if (words.size() == 2 && AsksForHelp(words[1])) {
    PrintRaw(form->help);
  } else {
    const std::string help = fmt::format("see kestrova reg {} --help", form->name);
    form->run(ReadSwitches(form->form, {words.begin() + 1, words.end()}, help));
  }
}

}  // namespace

void AddRegistryCommands(CLI::App& group) {
  // RunRegistryCommand reads the words after "reg": a value may begin with - or /.
  group.prefix_command();
  group.set_help_flag();
  group.callback([&group] { RunRegistryCommand(group.remaining()); });
}

std::vector<std::string> RegistryCandidates(const std::vector<std::string>& words) {
  std::vector<std::string> candidates;
  if (words.size() == 1) {
    for (const CommandForm& form : kForms) candidates.emplace_back(form.name);
    return candidates;
  }
  const CommandForm* const form = FormOf(words.front());
  const std::string& last = words.back();
  const std::string before = LowerAscii(words[words.size() - 2]);
  if (form && (before == "/t" || before == "-t") && IsIn(form->form.with_value, "t")) return TypeNames();
  if (!form || (!last.starts_with('/') && !last.starts_with('-'))) return candidates;
  for (const char* list : {form->form.with_value, form->form.without_value}) {
    for (const std::string& name : NamesIn(list)) {
      if (last[0] == '-' || name[0] != '-') candidates.push_back(last[0] + name);  // --json has no form with /
    }
  }
  return candidates;
}

}  // namespace kestrova
