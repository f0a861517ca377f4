// One function per subject.
#include "host/environment/environment_doctor.h"

#include <fmt/format.h>

#include <span>

#include "companions/database/connection_strings.h"
#include "companions/database/database.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "share/core/registry_access.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/env/feature_switches.h"
#include "share/env/language_choice.h"
#include "share/settings/settings_key.h"
#include "share/utilities/files_and_folders.h"
#include "share/utilities/tech_db_config_file.h"

namespace kestrova {

namespace {

using Findings = std::vector<EnvironmentFinding>;

constexpr FindingGrade kError = FindingGrade::kError;
constexpr FindingGrade kWarning = FindingGrade::kWarning;
constexpr FindingGrade kNote = FindingGrade::kNote;

std::string System(const CString& path) { return SystemPathFromProduct(path); }
std::string Utf8(LPCTSTR text) { return ToUtf8(CString(text)); }

bool Exists(const CString& path) { return _waccess(path, 0) == 0; }
bool IsFolder(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

std::string SetCommand(LPCTSTR key, LPCTSTR name, const char* value) {
  return fmt::format("kestrova reg add 'HKCU\\{}' /v {} /d {} /f", Utf8(key), Utf8(name), value);
}
std::string DeleteCommand(LPCTSTR key, LPCTSTR name) {
  return fmt::format("kestrova reg delete 'HKCU\\{}' /v {} /f", Utf8(key), Utf8(name));
}

// ---- language

int CountTexts(HMODULE library, UINT& firstMissing, HMODULE other) {
  int count = 0;
  for (UINT id = 0xFFFF; id > 0; --id) {
    LPCWSTR text = nullptr;
    if (LoadStringW(library, id, reinterpret_cast<LPWSTR>(&text), 0) == 0) continue;
    if (LoadStringW(other, id, reinterpret_cast<LPWSTR>(&text), 0) > 0) continue;
    ++count;
    firstMissing = id;
  }
  return count;
}

// Reports texts of the English library that this one does not have.
void CompareWithEnglish(const CKVEnvApp& env, HMODULE library, Findings& findings) {
  const CString path =
      env.GetKVDrive() + env.GetKVPath() + GetLanguageFolder(QF_DBLANG_ENGLISH) + env.GetKVResourceDllName();
  const HMODULE english = LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  if (!english) {
    findings.push_back({kWarning, "language",
                        fmt::format("there is no English library to fall back to at {}", System(path)),
                        "install the English language beside the others"});
    return;
  }
  UINT first = 0;
  if (const int missing = CountTexts(english, first, library)) {
    findings.push_back({kWarning, "language",
                        fmt::format("{} texts are missing in {}, the first is number {}", missing,
                                    System(env.GetKVResourceDllPath()), first),
                        "install this release's language library"});
  }
  FreeLibrary(english);
}

void ExamineLanguage(const CKVEnvApp& env, Findings& findings) {
  constexpr LPCTSTR kName = _T("Language");
  const CString chosen = GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, kName);
  const bool isAutomatic = chosen.IsEmpty() || chosen == _T("Automatic");
  if (!isAutomatic && env.GetKVDefDataRelPath() != _T("lang\\") + chosen + _T("\\")) {
    findings.push_back(
        {kWarning, "language",
         fmt::format("the chosen language \"{}\" has no resource library below {}; English is used", ToUtf8(chosen),
                     System(env.GetKVDrive() + env.GetKVPath() + _T("lang"))),
         "install that language, or choose an installed one: " + SetCommand(kVersionKey, kName, "Automatic")});
  } else if (!isAutomatic && chosen != _T("English") && env.GetTechDBLang() == QF_DBLANG_ENGLISH) {
    findings.push_back(
        {kNote, "language",
         fmt::format("the technology database does not know the language \"{}\" and is queried in English",
                     ToUtf8(chosen)),
         "nothing to do if this is intended"});
  }
  const HMODULE library = LoadLibraryExW(env.GetKVResourceDllPath(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  if (!library) {
    findings.push_back(
        {kError, "language",
         fmt::format("{} {}; the product has no texts", System(env.GetKVResourceDllPath()),
                     Exists(env.GetKVResourceDllPath()) ? "is not a readable resource library" : "is missing"),
         "install the language again, or choose another: " + SetCommand(kVersionKey, kName, "English")});
    return;
  }
  CompareWithEnglish(env, library, findings);
  FreeLibrary(library);
}

// ---- folders

struct FolderToExamine {
  CString (CKVEnvApp::*get)() const;
  LPCTSTR name;
  FindingGrade grade;
  const char* purpose;
};

constexpr FolderToExamine kFolders[] = {
    {&CKVEnvApp::GetKVDataPath, _T("KVDataPath"), kError, "data"},
    {&CKVEnvApp::GetSetupSheetImagePath, _T("SSImgPath"), kWarning, "setup sheet images"},
    {&CKVEnvApp::GetSetupSheetTemplatePath, _T("SSTemplatePath"), kWarning, "setup sheet templates"},
    {&CKVEnvApp::GetSubSpindleOperFolderPath, _T("SSOperationPath"), kWarning, "sub-spindle operations"},
    {&CKVEnvApp::GetDefaultSimulationMachineFolderPath, _T("SimulationMachinePath"), kWarning, "simulation machines"},
    {&CKVEnvApp::GetDefaultSimulationControllerFolderPath, _T("SimulationControllerPath"), kWarning,
     "simulation controllers"},
    {&CKVEnvApp::GetDefaultSimulationJobFolderPath, _T("SimulationJobPath"), kWarning, "simulation jobs"},
};

// An empty value reads as the root alone.
bool IsFullPath(const CString& path) {
  if (path == _T("\\")) return false;
  const bool hasDrive = path.GetLength() > 2 && path[1] == ':';
  const TCHAR first = path[hasDrive ? 2 : 0];
  return first == '\\' || first == '/';
}

// True if the folder, which exists, has a machine definition.
bool HasMachines(const CString& folder) {
  QFFileAndFolderUtilities files;
  for (LPCTSTR type : {_T("Mill\\"), _T("Turn\\"), _T("MillTurn\\")}) {
    CList<CString> names;
    files.GetDirectoriesInFolder(folder + type, names);
    for (POSITION at = names.GetHeadPosition(); at;)
      if (Exists(folder + type + names.GetNext(at) + _T("\\KestrovaAPT.xml"))) return true;
  }
  return false;
}

void ExamineFolders(const CKVEnvApp& env, Findings& findings) {
  const CString data = env.GetKVDataPath();
  for (const FolderToExamine& folder : kFolders) {
    const CString path = (env.*folder.get)();
    if (!IsFolder(data) && path != data && path.View().starts_with(data.View()))
      continue;  // the missing data folder is reported
    const std::string name = Utf8(folder.name);
    if (!IsFullPath(path)) {
      findings.push_back({folder.grade, "folders",
                          fmt::format("the folder of {}, {} in the registry, is not a full path: {}", folder.purpose,
                                      name, ToUtf8(path)),
                          "set a full path: " + SetCommand(kVersionKey, folder.name, "'C:\\...'")});
    } else if (!IsFolder(path)) {
      findings.push_back(
          {folder.grade, "folders",
           fmt::format("the folder of {}, {} in the registry, is missing: {}", folder.purpose, name, System(path)),
           "create it, or set another: " + SetCommand(kVersionKey, folder.name, "'C:\\...'")});
    }
  }
  if (IsFolder(data) && !QFFileAndFolderUtilities().HasCreateFilePermission(data)) {
    findings.push_back({kWarning, "folders", fmt::format("no file can be created in the data folder: {}", System(data)),
                        "give the user write permission, or copy the folder elsewhere and set the copy: " +
                            SetCommand(kVersionKey, _T("KVDataPath"), "'C:\\...'")});
  }
  const CString recordings = env.GetSimulationRecordingFolderPath();
  if (IsFolder(data) && !IsFolder(recordings)) {
    findings.push_back({kWarning, "folders",
                        fmt::format("the folder of recordings cannot be created: {}", System(recordings)),
                        "create it, and give the user write permission"});
  }
  const CString machines = env.GetDefaultSimulationMachineFolderPath();
  if (IsFolder(machines) && !HasMachines(machines)) {
    findings.push_back({kWarning, "folders", fmt::format("there is no machine definition below {}", System(machines)),
                        "put definitions there, such as Mill/NAME/KestrovaAPT.xml"});
  }
}

// ---- technology database

// Opens a database file. Not for a server, which may take as long as the connection string allows.
void OpenDatabase(const CKVEnvApp& env, const CString& target, const std::string& remedy, Findings& findings) try {
  CDaoDatabase(env.Is64BitDatabaseInUse(), env.IsSQLiteDatabaseInUse()).Open(target);
} catch (const CDaoException& failure) {
  findings.push_back({kError, "technology database", failure.what(), remedy});
}

void ExamineForms(const CKVEnvApp& env, Findings& findings) {
  const CString forms = env.GetKVTechDBFormsPath();
  const CString& target = env.GetKVTechDBPath();
  const std::string remedy = "put it there, or switch to the stand-alone application: " +
                             SetCommand(kVersionKey, _T("TechDBForms"), "'TechDB App'");
  if (!Exists(forms)) {
    findings.push_back(
        {kError, "technology database", fmt::format("the forms file is missing: {}", System(forms)), remedy});
  } else if (target.IsEmpty()) {
    findings.push_back({kError, "technology database",
                        fmt::format("the forms file names no database, or cannot be read: {}", System(forms)),
                        "enter the database's path in its table TechDBFormsPathTable"});
  } else if (ShownTarget(target) == target) {
    OpenDatabase(env, target, remedy, findings);
  }
}

void ExamineDatabase(const CKVEnvApp& env, Findings& findings) {
  if (!env.GetConfigDataUseStatus()) {
    ExamineForms(env, findings);
    return;
  }
  const QFTechDBConfigData* active = env.GetActiveTechDBConfigData();
  const std::string list = System(env.GetTechDBConfigFilePath() + kTechDBConfigFile);
  switch (env.GetEnvAPPInitResult()) {
    case ENVAPP_INIT_OK:
      if (active && active->GetDatabaseType() != QF_TECHDB_SQLSERVER)
        OpenDatabase(env, active->GetConnectionString(),
                     "correct this, or choose another database: kestrova techdb list, kestrova techdb activate N",
                     findings);
      return;
    case ENVAPP_INIT_TECHDB_FILE_MISSING:
      findings.push_back({kError, "technology database",
                          fmt::format("the file of the active database is missing: {}", System(env.GetKVTechDBPath())),
                          "put the file there, or choose another database in " + list});
      return;
    case ENVAPP_INIT_TECHDB_FAILED:
      findings.push_back(
          {kError, "technology database", "no database is active, or the active one could not be opened",
           "add one to " + list + ", or put the file " + System(env.GetDefaultSQLiteDBPath()) + " there"});
      return;
  }
}

// ---- help, editor, modules

void ExamineApplications(const CKVEnvApp& env, Findings& findings) {
  if (!Exists(env.GetKVHelpPath() + _T("Milling.chm"))) {
    findings.push_back({kNote, "help", fmt::format("there is no Milling.chm in {}", System(env.GetKVHelpPath())),
                        "install the help if you need it"});
  }
  if (!IsFolder(env.GetTutorialsPath())) {
    findings.push_back({kNote, "help", fmt::format("there are no manuals at {}", System(env.GetTutorialsPath())),
                        "install them if you need them"});
  }
  if (!Exists(env.GetCIMCOEditorPath())) {
    findings.push_back({kNote, "NC editor", fmt::format("not installed: {}", System(env.GetCIMCOEditorPath())),
                        "install it if you need it"});
  }
  std::string missing;
  for (const CString& library :
       {env.GetKVAPIDllPath(), env.GetKVImagesResourceDllPath(), env.GetKV5AxisDllPath(),
        env.GetVisiDllPath() + env.GetVisiDllName(), env.GetEDConnectorDllPath(), env.GetEDConnectorPngDllPath(),
        env.GetKVEDConnectorDllPath(), env.GetUtilitiesDllPath() + env.GetUtilitiesDllName()}) {
    if (!Exists(library)) missing += (missing.empty() ? "" : ", ") + ToUtf8(library.Mid(library.ReverseFind('\\') + 1));
  }
  if (!missing.empty()) {
    findings.push_back(
        {kNote, "modules", fmt::format("not installed: {}", missing), "install the modules that you need"});
  }
  const CString simulator = env.GetIMSExePath();
  if (!simulator.IsEmpty() && !Exists(simulator.Left(simulator.GetLength() - 1))) {
    findings.push_back({kWarning, "simulator", fmt::format("there is no simulator at {}", System(simulator)),
                        "install it there, or correct EurekaExePath in the registry"});
  }
}

// ---- registry

void ExamineSwitches(std::span<const FeatureSwitch> switches, LPCTSTR path, Findings& findings) {
  RegistryKeyHandle key;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) return;
  for (const FeatureSwitch& feature : switches) {
    int value = 0;
    DWORD type = 0, bytes = sizeof value;
    const LSTATUS status = RegQueryValueExW(key, feature.name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &bytes);
    if (status == ERROR_FILE_NOT_FOUND) continue;
    const std::string name = Utf8(feature.name);
    const std::string remedy = "restore the default: " + DeleteCommand(path, feature.name);
    if (status != ERROR_SUCCESS || type != REG_DWORD || bytes != sizeof value) {
      findings.push_back(
          {kWarning, "switches", fmt::format("{} is not a number of 32 bits (REG_DWORD)", name), remedy});
    } else if (value != feature.defaultValue) {
      findings.push_back(
          {kNote, "switches", fmt::format("{} is {}; the default is {}", name, value, feature.defaultValue), remedy});
    }
  }
}

void ExamineRegistry(Findings& findings) {
  RegistryKeyHandle key;
  const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, kVersionKey, 0, KEY_WRITE, key.Receive());
  if (status == ERROR_BADDB) {
    findings.push_back(
        {kError, "registry", "the file user.hive is damaged; no setting can be read or stored",
         "move the file away (KV_REGISTRY names its folder) and import a saved copy: kestrova reg import FILE"});
  } else if (status != ERROR_SUCCESS) {
    findings.push_back({kError, "registry", fmt::format("the user's settings cannot be stored (status {})", status),
                        "give the user write permission in the registry's folder, which KV_REGISTRY names"});
  }
  ExamineSwitches(kStartSwitches, kVersionDebugKey, findings);
  ExamineSwitches(kVersionSwitches, kVersionDebugKey, findings);
  ExamineSwitches(kProductSwitches, kProductDebugKey, findings);
}

void ExamineProcess(const CKVEnvApp& env, Findings& findings) {
  if (env.IsKVDebugEnabled()) {
    findings.push_back({kNote, "process", "the environment variable _KVDEBUG switches debugging on", "unset _KVDEBUG"});
  }
  TCHAR value[50] = {};
  if (GetEnvironmentVariableW(_T("KV_TESTING"), value, 50) > 0)
    findings.push_back({kNote, "process", "the environment variable KV_TESTING is set", "unset KV_TESTING"});
}

}  // namespace

const char* TextOf(FindingGrade grade) {
  switch (grade) {
    case FindingGrade::kError: return "error";
    case FindingGrade::kWarning: return "warning";
    case FindingGrade::kNote: return "note";
  }
  return "";
}

std::vector<EnvironmentFinding> ExamineEnvironment(CKVEnvApp& env) {
  Findings findings;
  ExamineRegistry(findings);
  ExamineLanguage(env, findings);
  ExamineFolders(env, findings);
  ExamineDatabase(env, findings);
  ExamineApplications(env, findings);
  ExamineProcess(env, findings);
  return findings;
}

}  // namespace kestrova
