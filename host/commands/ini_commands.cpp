// `kestrova ini`: INI files as the product reads and writes them.
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

struct Given {
  std::string file, section, key, value;
  bool json = false;

  Text Path() const { return ProductPathFromSystem(file); }
};

// What a call gives to a buffer that grows until all fits. A missing file is a failure, a missing name an empty text.
template <class Call>
Text Whole(const Given& given, bool& found, Call call) {
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
  const bool missing_name = status == ERROR_FILE_NOT_FOUND && std::filesystem::exists(given.file);
  if (!found && !missing_name) throw Failure(fmt::format("cannot read {}: {}", given.file, ErrorText(DWORD(status))));
  return text;
}

// The names of the keys, of the sections for null, each once: the others of a name are never found.
std::vector<CString> Names(const Given& given, LPCTSTR section) {
  bool found = false;
  const Text path = given.Path();
  const Text list = Whole(given, found, [&](LPTSTR buffer, DWORD units) {
    return GetPrivateProfileStringW(section, nullptr, nullptr, buffer, units, path.c_str());
  });
  std::vector<CString> names;
  std::set<CString> met;
  for (LPCTSTR name = list.c_str(); *name; name += Text(name).size() + 1) {
    if (met.insert(CString(name).MakeLower()).second) names.emplace_back(name);
  }
  return names;
}

std::string Value(const Given& given, LPCTSTR section, LPCTSTR key, bool& found) {
  const Text path = given.Path();
  return ToUtf8(Whole(given, found, [&](LPTSTR buffer, DWORD units) {
    return GetPrivateProfileStringW(section, key, nullptr, buffer, units, path.c_str());
  }));
}

void Get(const Given& given) {
  bool found = false;
  const std::string value = Value(given, FromUtf8(given.section), FromUtf8(given.key), found);
  if (!found) throw Failure(fmt::format("{} has no key \"{}\" in [{}]", given.file, given.key, given.section));
  fmt::print("{}\n", value);
}

void List(const Given& given) {
  Json all = Json::array();
  for (const CString& section : Names(given, nullptr)) {
    Json keys = Json::array();
    if (!given.json) fmt::print("[{}]\n", ToUtf8(section));
    for (const CString& key : Names(given, section)) {
      bool found = false;
      const std::string value = Value(given, section, key, found);
      if (!given.json) fmt::print("{}={}\n", ToUtf8(key), value);
      keys.push_back({{"key", ToUtf8(key)}, {"value", value}});
    }
    all.push_back({{"section", ToUtf8(section)}, {"keys", keys}});
  }
  if (given.json)
    fmt::print("{}\n",
               Json{{"file", given.file}, {"sections", all}}.dump(2, ' ', false, Json::error_handler_t::replace));
}

void Write(const Given& given, LPCTSTR key, LPCTSTR value) {
  if (!WritePrivateProfileStringW(FromUtf8(given.section), key, value, given.Path().c_str()))
    throw Failure(fmt::format("cannot write {}: {}", given.file, ErrorText(GetLastError())));
}

void Set(const Given& given) { Write(given, FromUtf8(given.key), FromUtf8(given.value)); }

void Remove(const Given& given) {
  const CString key = FromUtf8(given.key);
  Write(given, given.key.empty() ? nullptr : key.GetString(), nullptr);
}

}  // namespace

void AddIniCommands(CLI::App& group) {
  static Given given;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* example, void (*run)(const Given&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(std::string("Example:\n  kestrova ini ") + example);
    command->add_option("FILE", given.file, "The INI file")->required();
    command->callback([run] { run(given); });
    return command;
  };
  const auto section = [](CLI::App* command) {
    command->add_option("SECTION", given.section, "The section's name, in any case")->required();
    return command;
  };
  add("list", "Print all that a program finds in the file", "list shopfloor.ini --json", List)
      ->add_flag("--json", given.json, "As JSON");
  section(add("get", "Print the value of a key", "get shopfloor.ini Tool Diameter", Get))
      ->add_option("KEY", given.key, "The key's name, in any case")
      ->required();
  CLI::App* set = section(add("set", "Write the value of a key; all other lines stay as they are",
                              "set shopfloor.ini Tool Diameter 12.5", Set));
  set->add_option("KEY", given.key, "The key's name")->required();
  set->add_option("VALUE", given.value, "The new value")->required();
  section(add("remove", "Remove a key, or a whole section", "remove shopfloor.ini Tool Diameter", Remove))
      ->add_option("KEY", given.key, "The key's name; without one the section is removed")
      ->check([](const std::string& key) {  // such as a script's variable that was never set
        return std::string(key.empty() ? "it is empty; leave it out to remove the section" : "");
      });
}

}  // namespace kestrova
