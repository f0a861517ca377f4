#include "host/registry/registry_switches.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/nearest_names.h"

namespace kestrova {

std::vector<std::string> NamesIn(const char* list) {
  std::istringstream in(list);
  return {std::istream_iterator<std::string>(in), {}};
}

bool IsIn(const char* list, const std::string& name) {
  const std::vector<std::string> names = NamesIn(list);
  return std::find(names.begin(), names.end(), name) != names.end();
}

namespace {

// All switches of a command, written with the mark / or -; --json has no form with /.
std::vector<std::string> SwitchesOf(const SwitchForm& form, char mark) {
  std::vector<std::string> switches;
  for (const char* list : {form.with_value, form.without_value}) {
    for (const std::string& name : NamesIn(list)) switches.push_back((name[0] == '-' ? '-' : mark) + name);
  }
  return switches;
}

}  // namespace

Switches ReadSwitches(const SwitchForm& form, const std::vector<std::string>& words, const std::string& help) {
  Switches read;
  const auto wrong = [&](const std::string& what) { return WrongUsage(fmt::format("{}; {}", what, help)); };
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const std::string name = LowerAscii(word.substr(std::min<std::size_t>(1, word.size())));
    const bool marked = word.size() > 1 && (word[0] == '/' || word[0] == '-');
    if (marked && IsIn(form.with_value, name)) {
      if (i + 1 == words.size()) throw wrong(fmt::format("{} needs a value", word));
      if (!read.given.emplace(name, words[++i]).second) throw wrong(fmt::format("{} is given twice", word));
    } else if (marked && IsIn(form.without_value, name)) {
      read.given.emplace(name, "");
    } else if (read.words.size() < form.words.size()) {
      read.words.push_back(word);
    } else {
      throw WrongUsage(word + " is unexpected" +
                       (marked ? NearestOr(SwitchesOf(form, word[0]), word, help) : "; " + help));
    }
  }
  if (read.words.size() < form.words.size()) throw wrong(fmt::format("{} is missing", form.words[read.words.size()]));
  if (int(read.Has("v")) + int(read.Has("ve")) + int(read.Has("va")) > 1)
    throw wrong("only one of /v, /ve and /va can be given");
  for (std::size_t i = 0; i < read.words.size(); ++i)
    if (form.words[i] != std::string_view("FILE")) RequireUtf8(form.words[i], read.words[i]);
  for (const auto& [name, value] : read.given) RequireUtf8("value of /" + name, value);
  return read;
}

}  // namespace kestrova
