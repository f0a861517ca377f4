// kestrova reg: shows and changes registry values, with the syntax that support staff know.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/registry/registry_values.h"
#include "host/shell/failure.h"
#include "host/shell/whole_file.h"
#include "platform/console.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "share/core/registry_key_handle.h"
#include "share/settings/registry_text.h"

namespace kestrova {

namespace {

using registry_text::KeyName;
using Text = std::basic_string<TCHAR>;

constexpr char kDone[] = "The operation completed successfully.";

constexpr char kOverview[] = R"(Shows and changes values of the registry.

  kestrova reg query  KEY [/v NAME | /ve] [/s] [--json]
  kestrova reg add    KEY [/v NAME | /ve] [/t TYPE] [/d DATA] [/s SEPARATOR] [/f]
  kestrova reg delete KEY [/v NAME | /ve | /va] [/f]
  kestrova reg export KEY FILE [/y]
  kestrova reg import FILE

A KEY begins with HKCU or HKLM, or their long names. A switch may be written with / or -, in any case.
"kestrova reg query /?" shows the help of a command.
)";

// ---- the words after a command

struct Arguments;

void QueryCommand(const Arguments& arguments);
void AddCommand(const Arguments& arguments);
void DeleteCommand(const Arguments& arguments);
void ExportCommand(const Arguments& arguments);
void ImportCommand(const Arguments& arguments);

struct CommandForm {
  const char* name;
  void (*run)(const Arguments& arguments);
  std::size_t words;       // number of words that are not switches
  const char* with_value;  // switches with a value, separated by blanks
  const char* without_value;
  const char* help;
};

constexpr CommandForm kForms[] = {
    {"query", QueryCommand, 1, "v", "ve s -json", R"(Shows the values of a key and the keys below it.

  kestrova reg query KEY [/v NAME | /ve] [/s] [--json]

  /v NAME  that value only      /ve     the default value only
  /s       all keys below, too  --json  as JSON
The exit code is 1 if the key or the value is missing.

  kestrova reg query "HKCU\Software\Zemlor\Kestrova" /s
  kestrova reg query "HKCU\Software\Zemlor\Kestrova\Debug" /v LOG_KV
)"},
    {"add", AddCommand, 1, "v t d s", "ve f", R"(Creates a key, or writes a value.

  kestrova reg add KEY [/v NAME | /ve] [/t TYPE] [/d DATA] [/s SEPARATOR] [/f]

  /v NAME  the value's name           /ve  the default value
  /t TYPE  REG_SZ (default), REG_EXPAND_SZ, REG_MULTI_SZ, REG_DWORD, REG_QWORD, REG_BINARY, REG_NONE
  /d DATA  a text; a number, decimal or 0x2a; binary as 0A1B; a list with \0, or the SEPARATOR, between its texts
  /f       overwrite a value without asking

  kestrova reg add "HKCU\Software\Zemlor\Kestrova\Debug" /v LOG_KV /t REG_DWORD /d 1 /f
)"},
    {"delete", DeleteCommand, 1, "v", "ve va f", R"(Deletes a key with everything below it, or values.

  kestrova reg delete KEY [/v NAME | /ve | /va] [/f]

  /v NAME  that value    /ve  the default value
  /va      all values    /f   without asking

  kestrova reg delete "HKCU\Software\Zemlor\Kestrova\Debug" /v LOG_KV /f
)"},
    {"export", ExportCommand, 2, "", "y", R"(Writes a key with everything below it into a file.

  kestrova reg export KEY FILE [/y]

  /y  overwrite a file without asking

  kestrova reg export "HKCU\Software\Zemlor\Kestrova" settings.reg /y
)"},
    {"import", ImportCommand, 1, "", "",
     R"(Writes the keys and values of a file into the registry. If one line is wrong, nothing is changed.

  kestrova reg import FILE

  kestrova reg import settings.reg
)"},
};

std::string LowerAscii(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
  return text;
}

const CommandForm* FormOf(const std::string& word) {
  for (const CommandForm& form : kForms) {
    if (LowerAscii(word) == form.name) return &form;
  }
  return nullptr;
}

std::vector<std::string> WordsOf(const char* list) { return CLI::detail::split_up(list); }

bool Contains(const char* list, const std::string& word) {
  const std::vector<std::string> words = WordsOf(list);
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool AsksForHelp(const std::string& word) {
  const std::string lower = LowerAscii(word);
  return lower == "/?" || lower == "-?" || lower == "-h" || lower == "--help";
}

struct Arguments {
  std::vector<std::string> words;
  std::map<std::string, std::string> switches;

  bool Has(const char* name) const { return switches.count(name) != 0; }
  std::string Get(const char* name) const { return Has(name) ? switches.at(name) : ""; }
};

// The word after a switch with a value is its value, even if it begins with / or -.
Arguments ReadArguments(const CommandForm& form, const std::vector<std::string>& words) {
  Arguments read;
  const auto wrong = [&](const std::string& what) {
    return WrongUsage(fmt::format("{}; see kestrova reg {} --help", what, form.name));
  };
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string& word = words[i];
    const std::string name = LowerAscii(word.substr(std::min<std::size_t>(1, word.size())));
    const bool marked = word.size() > 1 && (word[0] == '/' || word[0] == '-');
    if (marked && Contains(form.with_value, name)) {
      if (i + 1 == words.size()) throw wrong(fmt::format("{} needs a value", word));
      if (!read.switches.emplace(name, words[++i]).second) throw wrong(fmt::format("{} is given twice", word));
    } else if (marked && Contains(form.without_value, name)) {
      read.switches.emplace(name, "");
    } else if (read.words.size() < form.words) {
      read.words.push_back(word);
    } else {
      throw wrong(fmt::format("{} is unexpected", word));
    }
  }
  if (read.words.size() < form.words)
    throw wrong(form.words == 2             ? "KEY or FILE is missing"
                : form.run == ImportCommand ? "FILE is missing"
                                            : "KEY is missing");
  if (int(read.Has("v")) + int(read.Has("ve")) + int(read.Has("va")) > 1) {
    throw wrong("only one of /v, /ve and /va can be given");
  }
  return read;
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
std::optional<Text> ValueNameOf(const Arguments& arguments) {
  if (arguments.Has("v")) return Text(FromUtf8(arguments.Get("v")).View());
  if (arguments.Has("ve")) return Text();
  return std::nullopt;
}

std::string ShownName(const Text& value_name) { return value_name.empty() ? "(Default)" : ToUtf8(value_name); }

// ---- the registry

std::string TextOf(const registry_text::Error& error) { return fmt::format("{}; {}", error.reason, error.remedy); }

void Check(LSTATUS status, const KeyName& key) {
  if (status == ERROR_SUCCESS) return;
  const std::string reason = TextOf(registry_text::ErrorOf(status, key));
  if (status == ERROR_FILE_NOT_FOUND) throw NotFound(reason);
  throw Failure(reason);
}

RegistryKeyHandle Open(const KeyName& key, REGSAM rights) {
  RegistryKeyHandle open;
  Check(RegOpenKeyExW(key.hive, key.path.c_str(), 0, rights, open.Receive()), key);
  return open;
}

std::vector<RegistryValue> ReadValues(const KeyName& key, HKEY handle) {
  std::vector<RegistryValue> values;
  Text name(16384, TCHAR(0));
  for (std::vector<BYTE> data(4096);;) {
    DWORD units = DWORD(name.size()), size = DWORD(data.size()), type = 0;
    const LSTATUS status =
        RegEnumValueW(handle, DWORD(values.size()), name.data(), &units, nullptr, &type, data.data(), &size);
    if (status == ERROR_NO_MORE_ITEMS) return values;
    if (status == ERROR_MORE_DATA && size > data.size()) {
      data.resize(size);
    } else {
      Check(status, key);
      values.push_back({name.substr(0, units), type, {data.begin(), data.begin() + size}});
    }
  }
}

std::vector<Text> ReadSubKeys(const KeyName& key, HKEY handle) {
  std::vector<Text> names;
  for (TCHAR name[256];;) {
    DWORD units = 256;
    const LSTATUS status = RegEnumKeyExW(handle, DWORD(names.size()), name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return names;
    Check(status, key);
    names.emplace_back(name, units);
  }
}

bool ReadValue(HKEY handle, RegistryValue& value) {
  DWORD size = 256;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {
    value.data.resize(size);
    status = RegQueryValueExW(handle, value.name.c_str(), nullptr, &value.type, value.data.data(), &size);
  }
  value.data.resize(size);
  return status == ERROR_SUCCESS;
}

KeyName Below(const KeyName& key, const Text& name) {
  return {key.hive, key.path.empty() ? name : key.path + TCHAR('\\') + name};
}

// Appends the key and, if `below`, all keys below it; with a name only the keys that have that value.
void Collect(const KeyName& key, const std::optional<Text>& name, bool below, std::vector<KeyContent>& contents) {
  const RegistryKeyHandle open = Open(key, KEY_READ);
  KeyContent content{key, {}, ReadSubKeys(key, open)};
  const std::vector<Text> sub_keys = content.sub_keys;
  RegistryValue value{name.value_or(Text()), REG_NONE, {}};
  if (!name) {
    content.values = ReadValues(key, open);
  } else if (ReadValue(open, value)) {
    content.values.push_back(value);
  }
  if (!name || !content.values.empty()) contents.push_back(std::move(content));
  for (std::size_t i = 0; below && i < sub_keys.size(); ++i) Collect(Below(key, sub_keys[i]), name, below, contents);
}

// ---- questions

// Asks the user on a terminal. Without a terminal throws the refusal, which names the switch that answers yes.
void Confirm(const std::string& question, const std::string& refusal) {
  if (!_isatty(0)) throw Failure(refusal);
  std::fprintf(stderr, "%s (Yes/No)? ", question.c_str());
  std::string answer;
  std::getline(std::cin, answer);
  const std::string lower = LowerAscii(answer);
  if (lower != "y" && lower != "yes") throw Failure("nothing was changed");
}

void Done() { std::printf("%s\n", kDone); }

// ---- commands

void PrintContents(const std::vector<KeyContent>& contents, bool sub_keys) {
  for (const KeyContent& content : contents) {
    const std::string name = ToUtf8(registry_text::FullName(content.key));
    if (!content.values.empty() || content.sub_keys.empty()) {
      std::printf("\n%s\n", name.c_str());
      for (const RegistryValue& value : content.values) {
        std::printf("    %s    %s    %s\n", ShownName(value.name).c_str(), TypeName(value.type).c_str(),
                    DataText(value).c_str());
      }
    }
    if (!sub_keys) continue;
    std::printf("\n");
    for (const Text& sub_key : content.sub_keys) std::printf("%s\\%s\n", name.c_str(), ToUtf8(sub_key).c_str());
  }
  if (!sub_keys) std::printf("\n");
}

void QueryCommand(const Arguments& arguments) {
  const KeyName key = KeyOf(arguments.words[0]);
  const std::optional<Text> name = ValueNameOf(arguments);
  const bool below = arguments.Has("s");
  std::vector<KeyContent> contents;
  Collect(key, name, below, contents);
  if (contents.empty()) {
    throw NotFound(fmt::format("there is no value {} in {}", ShownName(*name), ToUtf8(registry_text::FullName(key))));
  }
  if (arguments.Has("-json")) {
    std::printf("%s\n", ContentsJson(contents).c_str());
  } else {
    PrintContents(contents, /*sub_keys=*/!below && !name);
  }
}

void AddCommand(const Arguments& arguments) {
  const KeyName key = KeyOf(arguments.words[0]);
  std::optional<Text> name = ValueNameOf(arguments);
  if (!name && (arguments.Has("d") || arguments.Has("t"))) name = Text();
  const std::optional<DWORD> type = TypeOf(arguments.Has("t") ? arguments.Get("t") : "REG_SZ");
  if (!type) throw WrongUsage(fmt::format("/t {} is not a type; see kestrova reg add --help", arguments.Get("t")));
  const std::string separator = arguments.Has("s") ? arguments.Get("s") : "\\0";
  if (separator.empty()) throw WrongUsage("/s needs a separator that is not empty");
  const std::vector<BYTE> data = DataFromText(*type, arguments.Get("d"), separator);
  RegistryKeyHandle open;
  Check(RegCreateKeyExW(key.hive, key.path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, open.Receive(),
                        nullptr),
        key);
  if (name) {
    RegistryValue old{*name, REG_NONE, {}};
    if (!arguments.Has("f") && ReadValue(open, old)) {
      const std::string what = fmt::format("Value {} exists, overwrite", ShownName(*name));
      Confirm(what, fmt::format("value {} exists; add /f to overwrite it", ShownName(*name)));
    }
    Check(RegSetValueExW(open, name->c_str(), 0, *type, data.data(), DWORD(data.size())), key);
  }
  Done();
}

void DeleteValues(const KeyName& key, const std::optional<Text>& name) {
  const RegistryKeyHandle open = Open(key, KEY_READ | KEY_SET_VALUE);
  if (name) {
    const LSTATUS status = RegDeleteValueW(open, name->c_str());
    if (status == ERROR_FILE_NOT_FOUND) {
      throw NotFound(fmt::format("there is no value {} in {}", ShownName(*name), ToUtf8(registry_text::FullName(key))));
    }
    Check(status, key);
    return;
  }
  for (const RegistryValue& value : ReadValues(key, open)) {
    Check(RegDeleteValueW(open, value.name.c_str()), key);
  }
}

void DeleteCommand(const Arguments& arguments) {
  const KeyName key = KeyOf(arguments.words[0]);
  const std::optional<Text> name = ValueNameOf(arguments);
  const std::string full = ToUtf8(registry_text::FullName(key));
  if (!arguments.Has("f")) {
    const std::string what = name                  ? fmt::format("the value {} of {}", ShownName(*name), full)
                             : arguments.Has("va") ? fmt::format("all values of {}", full)
                                                   : fmt::format("the key {} with everything below it", full);
    Confirm("Delete " + what, "deleting " + what + " needs /f");
  }
  if (name || arguments.Has("va")) {
    DeleteValues(key, name);
  } else if (key.path.empty()) {
    throw Failure("a whole hive cannot be deleted; name a key below it");
  } else {
    Check(RegDeleteTreeW(key.hive, key.path.c_str()), key);
  }
  Done();
}

void ExportCommand(const Arguments& arguments) {
  const KeyName key = KeyOf(arguments.words[0]);
  const std::string& file = arguments.words[1];
  const Text path = ProductPathFromSystem(file);
  std::string bytes;
  registry_text::Error error;
  if (!registry_text::Write(key, bytes, error)) throw Failure(TextOf(error));
  if (!arguments.Has("y") && _waccess(path.c_str(), 0) == 0) {
    Confirm(fmt::format("File {} exists, overwrite", file), fmt::format("{} exists; add /y to overwrite it", file));
  }
  WriteWholeFile(file, bytes);
  Done();
}

void ImportCommand(const Arguments& arguments) {
  const std::string& file = arguments.words[0];
  std::vector<registry_text::Step> steps;
  registry_text::Error error;
  if (!registry_text::Parse(ReadWholeFile(file, registry_text::kMostBytes), steps, error) ||
      !registry_text::Apply(steps, error)) {
    const std::string place = error.line > 0 ? fmt::format("{}:{}", file, error.line) : file;
    throw Failure(fmt::format("{}: {}; nothing was imported", place, TextOf(error)));
  }
  Done();
}

void RunRegistryCommand(const std::vector<std::string>& words) {
  if (words.empty()) throw WrongUsage("reg needs a command; see kestrova reg --help");
  if (AsksForHelp(words[0])) {
    std::fputs(kOverview, stdout);
    return;
  }
  const CommandForm* const form = FormOf(words[0]);
  if (!form) throw WrongUsage(fmt::format("reg has no command {}; see kestrova reg --help", words[0]));
  if (words.size() == 2 && AsksForHelp(words[1])) {
    std::fputs(form->help, stdout);
  } else {
    form->run(ReadArguments(*form, words));
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
  if (form && (before == "/t" || before == "-t") && Contains(form->with_value, "t")) return TypeNames();
  if (!form || (!last.starts_with('/') && !last.starts_with('-'))) return candidates;
  for (const char* list : {form->with_value, form->without_value}) {
    for (const std::string& name : WordsOf(list)) {
      if (last[0] == '-' || name[0] != '-') candidates.push_back(last[0] + name);  // --json has no form with /
    }
  }
  return candidates;
}

}  // namespace kestrova
