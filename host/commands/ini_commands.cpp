// kestrova ini: reads and writes INI files as the product does.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/safe_file.h"
#include "platform/text.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;
using Text = std::basic_string<TCHAR>;

constexpr LPCTSTR kBlanks = _T(" \t\v");
constexpr DWORD kMostUnits = 1 << 26;  // above the largest file that is read

struct Options {
  std::string file, section, key, value;
  bool json = false;

  // A name alone would mean another folder than the current one to the calls of some systems.
  Text Path() const {
    const Text path = ProductPathFromSystem(file);
    return path.empty() || path.find_first_of(_T("\\:")) != path.npos ? path : _T(".\\") + path;
  }
};

std::string ReasonOf(LONG status) {
  switch (status) {
    case ERROR_NOT_SUPPORTED:
      return "it is UTF-16 without the mark FF FE, or UTF-32; save it as UTF-8, or as UTF-16 in little-endian order "
             "with a mark";
    case ERROR_NO_UNICODE_TRANSLATION:
      return "the file is not UTF-8, and its encoding lacks a character of the text; save the file as UTF-8 first";
    case ERROR_SHARING_VIOLATION:
      return fmt::format("another program held the lock of its folder for {} seconds; end it, or try again",
                         kProfileLockSeconds);
    default: return ErrorText(DWORD(status));
  }
}

CString TextOf(const char* what, const std::string& argument) {
  RequireUtf8(what, argument);
  return FromUtf8(argument);
}

// ---- reading

// The memory of a list. It is not touched where a list does not fill it.
struct Buffer {
  // For the lists of a file, none of which has more units than the file has bytes.
  explicit Buffer(const Text& path) {
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &facts);
    Resize(std::min(facts.nFileSizeLow, kMostUnits) + 2);
  }
  void Resize(DWORD wanted) {
    text.reset();
    text = std::make_unique_for_overwrite<TCHAR[]>(units = wanted);
  }

  DWORD units = 0;
  std::unique_ptr<TCHAR[]> text;
};

// Calls `call` with a growing buffer until its whole text fits. Returns false for a missing name; a file that cannot be
// read is a failure.
template <class Call>
bool Read(const Options& options, const Text& path, Buffer& buffer, Call call) {
  for (;; buffer.Resize(buffer.units * 2)) {  // the file may grow meanwhile
    SetLastError(0);
    call(buffer.text.get(), buffer.units);
    if (GetLastError() != ERROR_MORE_DATA) break;
  }
  const LONG status = LONG(GetLastError());
  const bool missing_name = status == ERROR_FILE_NOT_FOUND && _waccess(path.c_str(), 0) == 0;
  if (status != ERROR_SUCCESS && !missing_name)
    throw Failure(fmt::format("cannot read {}: {}", options.file, ReasonOf(status)), {.file = options.file});
  return status == ERROR_SUCCESS;
}

// The names of a list and, if it has values, the values after them: the "=" of key=value becomes a NUL; a line without
// "=" is no key. A program finds the first of several equal names, so the others are left out, and so are empty names.
// A list may have millions of names, so there is one number for each.
class Entries {
 public:
  Entries(LPTSTR list, bool withValues) : list_(list) {
    for (LPTSTR next = list; *next;) {
      LPTSTR const name = next;
      const TextView whole = name;
      next += whole.size() + 1;
      const std::size_t sign = withValues ? whole.find(_T('=')) : whole.size();
      if (sign == whole.npos) continue;
      name[sign] = 0;
      if (sign > 0) starts_.push_back(std::uint32_t(name - list));
    }
    LeaveOutRepeated();
  }

  std::size_t Count() const { return starts_.size(); }
  LPCTSTR Name(std::size_t i) const { return list_ + starts_[i]; }
  LPCTSTR Value(std::size_t i) const { return Name(i) + TextView(Name(i)).size() + 1; }

 private:
  void LeaveOutRepeated() {
    std::vector<std::uint32_t> sorted = starts_;
    const auto compare = [this](std::uint32_t a, std::uint32_t b) {
      return CompareStringOrdinal(list_ + a, -1, list_ + b, -1, TRUE) - CSTR_EQUAL;
    };
    std::sort(sorted.begin(), sorted.end(), [&](std::uint32_t a, std::uint32_t b) {
      const int difference = compare(a, b);
      return difference != 0 ? difference < 0 : a < b;
    });
    std::vector<std::uint32_t> repeated;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
      if (compare(sorted[i - 1], sorted[i]) == 0) repeated.push_back(sorted[i]);
    }
    std::sort(repeated.begin(), repeated.end());
    std::erase_if(starts_,
                  [&](std::uint32_t start) { return std::binary_search(repeated.begin(), repeated.end(), start); });
  }

  LPCTSTR list_;
  std::vector<std::uint32_t> starts_;
};

bool IsQuoted(TextView value) {
  return value.size() > 1 && value.front() == value.back() && (value.front() == _T('"') || value.front() == _T('\''));
}

// A value without one pair of quotes around it.
std::string Unquoted(TextView value) { return ToUtf8(IsQuoted(value) ? value.substr(1, value.size() - 2) : value); }

bool Find(const Options& options, LPCTSTR section, LPCTSTR key, std::string& value) {
  const Text path = options.Path();
  Buffer buffer(path);
  if (!Read(options, path, buffer, [&](LPTSTR text, DWORD units) {
        GetPrivateProfileStringW(section, key, nullptr, text, units, path.c_str());
      }))
    return false;
  value = ToUtf8(TextView(buffer.text.get()));
  return true;
}

Json EntryJson(const Options& options, const std::string& value) {
  return {{"file", options.file}, {"section", options.section}, {"key", options.key}, {"value", value}};
}

[[noreturn]] void ThrowNoKey(const Options& options) {
  throw NotFound(fmt::format("{} has no key \"{}\" in [{}]", options.file, options.key, options.section));
}

void Get(const Options& options) {
  std::string value;
  if (!Find(options, TextOf("section", options.section), TextOf("key", options.key), value)) ThrowNoKey(options);
  options.json ? PrintJson(EntryJson(options, value)) : Print("{}\n", value);
}

// Ends an array and the object that has it.
void CloseListAndObject(JsonPrinter& json) {
  json.Close();
  json.Close();
}

// Prints entry by entry: a file may have a million.
void List(const Options& options) {
  const Text path = options.Path();
  Buffer names(path);
  Read(options, path, names,
       [&](LPTSTR text, DWORD units) { GetPrivateProfileSectionNamesW(text, units, path.c_str()); });
  std::optional<JsonPrinter> json;
  if (options.json) {
    json.emplace();
    json->Add("file", options.file);
    json->Open("sections", '[');
  }
  Buffer lines(path);
  const Entries sections(names.text.get(), /*withValues=*/false);
  for (std::size_t i = 0; i < sections.Count(); ++i) {
    const CString section = sections.Name(i);
    const bool found = Read(options, path, lines, [&](LPTSTR text, DWORD units) {
      GetPrivateProfileSectionW(section, text, units, path.c_str());
    });
    if (!found) continue;  // removed meanwhile
    if (json) {
      json->Open({}, '{');
      json->Add("section", ToUtf8(section));
      json->Open("keys", '[');
    } else {
      Print("[{}]\n", ToUtf8(section));
    }
    const Entries entries(lines.text.get(), /*withValues=*/true);
    for (std::size_t k = 0; k < entries.Count(); ++k) {
      const std::string key = ToUtf8(TextView(entries.Name(k))), value = Unquoted(entries.Value(k));
      json ? json->Add({}, {{"key", key}, {"value", value}}) : Print("{}={}\n", key, value);
    }
    if (json) CloseListAndObject(*json);
  }
  if (json) CloseListAndObject(*json);
}

// ---- writing

void Write(const Options& options, const CString& section, LPCTSTR key, LPCTSTR value) {
  if (WritePrivateProfileStringW(section, key, value, options.Path().c_str())) return;
  const LONG status = LONG(GetLastError());
  throw Failure(status == kWrittenButNotFlushed ? WrittenButNotFlushed(options.file)
                                                : fmt::format("cannot write {}: {}", options.file, ReasonOf(status)),
                {.file = options.file});
}

// Refuses a name that would be another one when it is read.
CString WritableName(const char* what, const std::string& argument, LPCTSTR marks, LPCTSTR firstMarks) {
  CString name = TextOf(what, argument).Trim(_T(' '));
  const auto refuse = [&](const char* reason) {
    throw WrongUsage(fmt::format("the {} \"{}\" {}, so it could not be found again", what, argument, reason));
  };
  if (name.IsEmpty()) refuse("is empty");
  if (name.FindOneOf(_T("\r\n")) >= 0) refuse("has a line end");
  if (CString(name).Trim(kBlanks) != name) refuse("begins or ends with a tab");
  if (name.FindOneOf(marks) >= 0) refuse("has a \"]\" or \"=\"");
  if (CString(firstMarks).Find(name[0]) >= 0) refuse("begins with \";\" or \"[\"");
  return name;
}

void Set(const Options& options) {
  const CString section = WritableName("section", options.section, _T("]"), _T(""));
  const CString key = WritableName("key", options.key, _T("="), _T(";["));
  CString value = TextOf("value", options.value);
  if (value.FindOneOf(_T("\r\n")) >= 0) throw WrongUsage("a value cannot have line ends");
  // Blanks around a value do not count unless it is in quotes, nor does one pair of quotes.
  const CString trimmed = CString(value).Trim(kBlanks);
  if (trimmed != value || IsQuoted(value.View())) value = _T("\"") + value + _T("\"");
  Write(options, section, key, value);
  if (options.json) PrintJson(EntryJson(options, options.value));
}

void Remove(const Options& options) {
  const CString section = TextOf("section", options.section), key = TextOf("key", options.key);
  const Text path = options.Path();
  Buffer lines(path);
  const bool has_section = Read(options, path, lines, [&](LPTSTR text, DWORD units) {
    GetPrivateProfileSectionW(section, text, units, path.c_str());
  });
  if (!has_section) throw NotFound(fmt::format("{} has no section [{}]", options.file, options.section));
  std::string value;
  if (!options.key.empty() && !Find(options, section, key, value)) ThrowNoKey(options);
  Write(options, section, options.key.empty() ? nullptr : key.GetString(), nullptr);
  if (!options.json) return;
  Json removed = {{"file", options.file}, {"section", options.section}};
  if (!options.key.empty()) removed["key"] = options.key;
  PrintJson(removed);
}

}  // namespace

void AddIniCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* example, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(std::string("Example:\n  kestrova ini ") + example);
    command->add_option("FILE", options.file, "The INI file")->required();
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  const auto section = [](CLI::App* command) {
    command->add_option("SECTION", options.section, "The section's name, in any case")->required();
    return command;
  };
  add("list", "Print the sections and keys that a program finds in the file", "list shopfloor.ini --json", List);
  section(add("get", "Print the value of a key", "get shopfloor.ini Tool Diameter", Get))
      ->add_option("KEY", options.key, "The key's name, in any case")
      ->required();
  CLI::App* set = section(add("set", "Write the value of a key; all other lines stay as they are",
                              "set shopfloor.ini Tool Diameter 12.5", Set));
  set->add_option("KEY", options.key, "The key's name")->required();
  set->add_option("VALUE", options.value, "The new value; with blanks or quotes at its ends it is written in quotes")
      ->required();
  section(add("remove", "Remove a key, or a whole section", "remove shopfloor.ini Tool Diameter", Remove))
      ->add_option("KEY", options.key, "The key's name; without one the section is removed")
      ->check([](const std::string& key) {  // from an unset variable of a script
        return std::string(key.empty() ? "it is empty; leave it out to remove the section" : "");
      });
}

}  // namespace kestrova
