// kestrova ini: reads and writes INI files as the product does.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <set>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/shell/failure.h"
#include "platform/paths.h"
#include "platform/profile.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;
using Text = std::basic_string<TCHAR>;

struct Options {
  std::string file, section, key, value;
  bool json = false;

  Text Path() const { return ProductPathFromSystem(file); }
};

// Calls `call` with a growing buffer until the whole text fits. `found` is false, and the text empty, for a missing
// name; a missing file is a failure.
template <class Call>
Text ReadAll(const Options& options, bool& found, Call call) {
  Text text;
  do {
    text.resize(std::max<std::size_t>(1024, text.size() * 4));
    SetLastError(0);
    text[0] = 0;
    const DWORD length = call(text.data(), DWORD(text.size()));
    if (GetLastError() != ERROR_MORE_DATA) text.resize(length);
  } while (GetLastError() == ERROR_MORE_DATA);
  const LONG status = LONG(GetLastError());
  found = status == ERROR_SUCCESS;
  const bool missing_name = status == ERROR_FILE_NOT_FOUND && std::filesystem::exists(options.file);
  if (!found && !missing_name) throw Failure(fmt::format("cannot read {}: {}", options.file, ErrorText(DWORD(status))));
  return text;
}

// The names of the keys, or of the sections if `section` is null. A repeated name is listed once: a program only finds
// the first.
std::vector<CString> Names(const Options& options, LPCTSTR section) {
  bool found = false;
  const Text path = options.Path();
  const Text list = ReadAll(options, found, [&](LPTSTR buffer, DWORD units) {
    return GetPrivateProfileStringW(section, nullptr, nullptr, buffer, units, path.c_str());
  });
  std::vector<CString> names;
  std::set<CString> met;
  for (LPCTSTR name = list.c_str(); *name; name += Text(name).size() + 1) {
    if (met.insert(CString(name).MakeLower()).second) names.emplace_back(name);
  }
  return names;
}

std::string Value(const Options& options, LPCTSTR section, LPCTSTR key, bool& found) {
  const Text path = options.Path();
  return ToUtf8(ReadAll(options, found, [&](LPTSTR buffer, DWORD units) {
    return GetPrivateProfileStringW(section, key, nullptr, buffer, units, path.c_str());
  }));
}

void Get(const Options& options) {
  bool found = false;
  const std::string value = Value(options, FromUtf8(options.section), FromUtf8(options.key), found);
  if (!found) throw NotFound(fmt::format("{} has no key \"{}\" in [{}]", options.file, options.key, options.section));
  fmt::print("{}\n", value);
}

void List(const Options& options) {
  Json all = Json::array();
  for (const CString& section : Names(options, nullptr)) {
    Json keys = Json::array();
    if (!options.json) fmt::print("[{}]\n", ToUtf8(section));
    for (const CString& key : Names(options, section)) {
      bool found = false;
      const std::string value = Value(options, section, key, found);
      if (!options.json) fmt::print("{}={}\n", ToUtf8(key), value);
      keys.push_back({{"key", ToUtf8(key)}, {"value", value}});
    }
    all.push_back({{"section", ToUtf8(section)}, {"keys", keys}});
  }
  if (options.json)
    fmt::print("{}\n",
               Json{{"file", options.file}, {"sections", all}}.dump(2, ' ', false, Json::error_handler_t::replace));
}

void Write(const Options& options, LPCTSTR key, LPCTSTR value) {
  if (!WritePrivateProfileStringW(FromUtf8(options.section), key, value, options.Path().c_str()))
    throw Failure(fmt::format("cannot write {}: {}", options.file, ErrorText(GetLastError())));
}

void Set(const Options& options) { Write(options, FromUtf8(options.key), FromUtf8(options.value)); }

void Remove(const Options& options) {
  const CString key = FromUtf8(options.key);
  Write(options, options.key.empty() ? nullptr : key.GetString(), nullptr);
}

}  // namespace

void AddIniCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* example, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(std::string("Example:\n  kestrova ini ") + example);
    command->add_option("FILE", options.file, "The INI file")->required();
    command->callback([run] { run(options); });
    return command;
  };
  const auto section = [](CLI::App* command) {
    command->add_option("SECTION", options.section, "The section's name, in any case")->required();
    return command;
  };
  add("list", "Print the sections and keys that a program finds in the file", "list shopfloor.ini --json", List)
      ->add_flag("--json", options.json, "As JSON");
  section(add("get", "Print the value of a key", "get shopfloor.ini Tool Diameter", Get))
      ->add_option("KEY", options.key, "The key's name, in any case")
      ->required();
  CLI::App* set = section(add("set", "Write the value of a key; all other lines stay as they are",
                              "set shopfloor.ini Tool Diameter 12.5", Set));
  set->add_option("KEY", options.key, "The key's name")->required();
  set->add_option("VALUE", options.value, "The new value")->required();
  section(add("remove", "Remove a key, or a whole section", "remove shopfloor.ini Tool Diameter", Remove))
      ->add_option("KEY", options.key, "The key's name; without one the section is removed")
      ->check([](const std::string& key) {  // from an unset variable of a script
        return std::string(key.empty() ? "it is empty; leave it out to remove the section" : "");
      });
}

}  // namespace kestrova
