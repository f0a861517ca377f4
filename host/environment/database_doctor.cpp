// The library reads a faulty list without a word, so the faults are looked for again here.
#include "host/environment/database_doctor.h"

#include <fmt/format.h>

#include "companions/database/connection_strings.h"
#include "companions/database/database.h"
#include "platform/files.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/utilities/tech_db_config_file.h"

namespace kestrova {

namespace {

using Findings = std::vector<EnvironmentFinding>;

constexpr const char* kSubject = "technology database";
constexpr const char* kChoose = "choose another database: kestrova techdb list, then kestrova techdb activate N";

std::string System(const CString& path) { return SystemPathFromProduct(path); }
bool Exists(const CString& path) { return _waccess(path, 0) == 0; }
bool IsFolder(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

TechDatabaseFault FaultAt(const std::string& file, const TechDBConfigFault& fault) {
  return {fault.line > 0 ? fmt::format("{}:{}: {}", file, fault.line, fault.text)
                         : fmt::format("cannot read {}: {}", file, fault.text),
          "correct the file",
          {file, fault.line, fault.column}};
}

// Opens a database file. Not for a server, which may take as long as the connection string allows.
void OpenDatabase(const CKVEnvApp& env, const CString& target, const std::string& remedy, Findings& findings) try {
  CDaoDatabase(env.Is64BitDatabaseInUse(), env.IsSQLiteDatabaseInUse()).Open(target);
} catch (const CDaoException& failure) {
  findings.push_back({FindingGrade::kError, kSubject, failure.what(), remedy});
}

void ExamineForms(const CKVEnvApp& env, Findings& findings) {
  const CString forms = env.GetKVTechDBFormsPath();
  const CString& target = env.GetKVTechDBPath();
  const std::string remedy = fmt::format(
      "put it there, or use the stand-alone application: kestrova reg add 'HKCU\\{}' /v TechDBForms /d "
      "'TechDB App' /f",
      ToUtf8(CString(kVersionKey)));
  if (!Exists(forms)) {
    findings.push_back(
        {FindingGrade::kError, kSubject, fmt::format("the forms file is missing: {}", System(forms)), remedy});
  } else if (target.IsEmpty()) {
    findings.push_back({FindingGrade::kError, kSubject,
                        fmt::format("the forms file names no database, or cannot be read: {}", System(forms)),
                        "enter the database's path in its table TechDBFormsPathTable"});
  } else if (ShownTarget(target) == target) {
    OpenDatabase(env, target, "correct the path in the table TechDBFormsPathTable of " + System(forms), findings);
  }
}

// The faults of the list. Returns false if there is no list because of them.
bool ExamineList(const CKVEnvApp& env, Findings& findings) {
  bool whole = true;
  for (const TechDBConfigFault& fault : FindTechDBConfigFaults(env.GetTechDBConfigFilePath())) {
    const TechDatabaseFault found = FaultAt(TechDatabaseList(env), fault);
    const bool all = fault.dropped && env.GetTechDBConfigInfo()->GetCount() == 0;
    findings.push_back({all ? FindingGrade::kError : FindingGrade::kWarning, kSubject, found.text, found.remedy});
    whole = whole && !all;
  }
  return whole;
}

void ExamineActive(const CKVEnvApp& env, const QFTechDBConfigData& active, Findings& findings) {
  if (active.GetDatabaseType() == QF_TECHDB_SQLSERVER) return;
  const CString& path = active.GetFilePath();
  if (IsFolder(path)) {
    findings.push_back({FindingGrade::kError, kSubject,
                        fmt::format("the file of the active database is missing: {} is a folder", System(path)),
                        std::string("put the file in the folder's place, or ") + kChoose});
  } else if (!Exists(path)) {
    findings.push_back({FindingGrade::kError, kSubject,
                        fmt::format("the file of the active database is missing: {}", System(path)),
                        std::string("put the file there, or ") + kChoose});
  } else {
    OpenDatabase(env, active.GetConnectionString(), std::string("correct this, or ") + kChoose, findings);
  }
}

}  // namespace

std::string TechDatabaseList(const CKVEnvApp& env) { return System(env.GetTechDBConfigFilePath() + kTechDBConfigFile); }

std::optional<TechDatabaseFault> FaultOfTechDatabaseList(const CKVEnvApp& env) {
  for (const TechDBConfigFault& fault : FindTechDBConfigFaults(env.GetTechDBConfigFilePath())) {
    if (fault.dropped) return FaultAt(TechDatabaseList(env), fault);
  }
  return std::nullopt;
}

TechDatabaseFault NoTechDatabase(const CKVEnvApp& env) {
  if (const auto fault = FaultOfTechDatabaseList(env)) return *fault;
  const std::string list = TechDatabaseList(env);
  const CString standard = env.GetDefaultSQLiteDBPath();
  const std::string head = "there is no technology database: ";
  if (Exists(env.GetTechDBConfigFilePath() + kTechDBConfigFile)) {
    const bool usable = Exists(standard) && !IsFolder(standard);
    return {head + list + " names none",
            usable ? "add one, or remove the file: then " + System(standard) + " is used" : "add one",
            {list}};
  }
  if (IsFolder(standard)) return {head + System(standard) + " is a folder", "put the database file in its place", {}};
  return {head + "neither " + list + " nor " + System(standard) + " exists", "install one of them", {}};
}

void ExamineTechDatabase(const CKVEnvApp& env, std::vector<EnvironmentFinding>& findings) {
  if (!env.GetConfigDataUseStatus()) return ExamineForms(env, findings);
  if (!ExamineList(env, findings)) return;
  if (const QFTechDBConfigData* active = env.GetActiveTechDBConfigData()) {
    ExamineActive(env, *active, findings);
  } else {
    const TechDatabaseFault fault = NoTechDatabase(env);
    findings.push_back({FindingGrade::kError, kSubject, fault.text, fault.remedy});
  }
}

}  // namespace kestrova
