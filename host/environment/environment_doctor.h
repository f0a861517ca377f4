// Finds missing and suspicious things in an installation and its registry, with a remedy for each.
#pragma once

#include <string>
#include <vector>

class CKVEnvApp;

namespace kestrova {

enum class FindingGrade {
  kError,    // the product does not work
  kWarning,  // a part of the product does not work, or not as configured
  kNote,     // may explain odd behaviour
};

// "error", "warning" or "note".
const char* TextOf(FindingGrade grade);

// Each text is one line; a path is the system's.
struct EnvironmentFinding {
  FindingGrade grade = FindingGrade::kNote;
  std::string subject;  // "language", "folders", "technology database", ...
  std::string text;     // the fault and its place
  std::string remedy;   // the next step
};

// A folder or file that the environment reads.
struct EnvironmentSource {
  const char* name;       // "install folder"
  const char* json_name;  // "installFolder"
  std::string path;       // the system's; it may not exist
};
std::vector<EnvironmentSource> SourcesOf(const CKVEnvApp& env);

// Examines the running environment. Creates the recordings folder if it is missing, and creates and deletes a file in
// the data folder to test the permission; changes nothing else.
std::vector<EnvironmentFinding> ExamineEnvironment(CKVEnvApp& env);

}  // namespace kestrova
