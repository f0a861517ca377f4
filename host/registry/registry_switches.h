// The words after a command of `kestrova reg`: a switch may be written with / or -, in any case, and the word after a
// switch with a value is its value, even if it begins with / or -.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace kestrova {

struct Switches {
  std::vector<std::string> words;  // that are not switches
  std::map<std::string, std::string> given;

  bool Has(const char* name) const { return given.count(name) != 0; }
  std::string Get(const char* name) const { return Has(name) ? given.at(name) : ""; }
};

// What a command takes. The names of switches are in lower case, without / and -, separated by blanks.
struct SwitchForm {
  std::vector<const char*> words;  // the names of the words, all of which are needed
  const char* with_value;
  const char* without_value;
};

std::vector<std::string> NamesIn(const char* list);
bool IsIn(const char* list, const std::string& name);

// Reads all words. Throws WrongUsage with the end of the sentence `help`, "see kestrova reg query --help".
Switches ReadSwitches(const SwitchForm& form, const std::vector<std::string>& words, const std::string& help);

}  // namespace kestrova
