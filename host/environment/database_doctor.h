// Finds faults of the technology database: of the list in database.config, and of the active database.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/environment/environment_doctor.h"
#include "host/shell/failure.h"

namespace kestrova {

struct TechDatabaseFault {
  std::string text;  // one line that begins with the file, its line if known, or the path of a database
  std::string remedy;
  FilePlace place;
};

// The system path of database.config, which may be missing.
std::string TechDatabaseList(const CKVEnvApp& env);
// The first fault because of which the environment's list lacks an entry or all of them.
std::optional<TechDatabaseFault> FaultOfTechDatabaseList(const CKVEnvApp& env);
// Why the environment has no active database; only for configuration mode, without an active database.
TechDatabaseFault NoTechDatabase(const CKVEnvApp& env);

// Appends the findings. Opens the active database if it is a file.
void ExamineTechDatabase(const CKVEnvApp& env, std::vector<EnvironmentFinding>& findings);

}  // namespace kestrova
