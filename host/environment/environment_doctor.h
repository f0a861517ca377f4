// What is missing or suspicious in an installation and its registry, and what to do about it.
#pragma once

#include <string>
#include <vector>

class CKVEnvApp;

namespace kestrova {

enum class FindingGrade {
  kError,    // the product doesn't work
  kWarning,  // a part of it doesn't, or not as somebody meant it
  kNote,     // worth knowing when something looks odd
};

// "error", "warning" or "note".
const char* TextOf(FindingGrade grade);

// All texts are one line; paths are the system's.
struct EnvironmentFinding {
  FindingGrade grade = FindingGrade::kNote;
  std::string subject;  // "language", "folders", "technology database", ...
  std::string text;     // what, and where
  std::string remedy;   // what to do
};

// Looks at the running environment. Nothing is changed, but the folder of recordings is made if it is missing, and a
// file is made and deleted again in the folder of data to see whether that works.
std::vector<EnvironmentFinding> ExamineEnvironment(CKVEnvApp& env);

}  // namespace kestrova
