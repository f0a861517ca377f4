// One function per subject.
#include "host/environment/environment_doctor.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <span>

#include "host/environment/database_doctor.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/registry_files.h"
#include "platform/resources.h"
#include "share/core/registry_access.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/log_files.h"
#include "share/env/app_env.h"
#include "share/env/feature_switches.h"
#include "share/env/language_choice.h"
#include "share/settings/settings_key.h"
#include "share/utilities/files_and_folders.h"

namespace kestrova {

namespace {

using Findings = std::vector<EnvironmentFinding>;

constexpr FindingGrade kError = FindingGrade::kError;
constexpr FindingGrade kWarning = FindingGrade::kWarning;
constexpr FindingGrade kNote = FindingGrade::kNote;

constexpr DWORD kLongestPath = 32768;

std::string System(const CString& path) { return SystemPathFromProduct(path); }
std::string Utf8(LPCTSTR text) { return ToUtf8(CString(text)); }

bool Exists(const CString& path) { return _waccess(path, 0) == 0; }
bool IsFolder(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

// A text as one word of a shell's command.
std::string Quoted(std::string_view text) {
  const auto is_plain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '/' || c == '.' || c == '-';
  };
  if (!text.empty() && std::all_of(text.begin(), text.end(), is_plain)) return std::string(text);
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + '\'';
}

std::string SetCommand(LPCTSTR key, LPCTSTR name, std::string_view value) {
  return fmt::format("kestrova reg add 'HKCU\\{}' /v {} /d {} /f", Utf8(key), Utf8(name), Quoted(value));
}
std::string DeleteCommand(LPCTSTR key, LPCTSTR name) {
  return fmt::format("kestrova reg delete 'HKCU\\{}' /v {} /f", Utf8(key), Utf8(name));
}

// ---- installation

// The path of this library's file, however long it is.
CString LibraryFile() {
  std::vector<TCHAR> path(kLongestPath);
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(_T("KVSHAREu")), path.data(), kLongestPath);
  return CString(TextView(path.data(), length));
}

// Returns false if the place of the installation is unknown; the faults that follow from this are not worth a look.
bool ExamineInstallation(const CKVEnvApp& env, Findings& findings) {
  if (!env.GetKVPath().IsEmpty()) return true;
  const CString file = LibraryFile();
  findings.push_back({kError, "installation",
                      fmt::format("the path of the library has {} characters, and the product can use {}: {}",
                                  file.GetLength(), MAX_PATH - 1, System(file)),
                      "move the installation to a folder with a shorter path; until then the start saves no "
                      "path to the registry"});
  return false;
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

CString InstallFolder(const CKVEnvApp& env) { return env.GetKVDrive() + env.GetKVPath(); }

bool IsSameFolder(const CString& a, const CString& b) {
  std::error_code unknown;
  return System(a) == System(b) || std::filesystem::equivalent(System(a), System(b), unknown);
}

// The command that sets this installation's own folder. The start restores a folder that is not in the registry below
// the folder of data or of the language.
std::string OwnFolderCommand(const CKVEnvApp& env, const FolderToExamine& folder) {
  if (folder.get == &CKVEnvApp::GetKVDataPath) return SetCommand(kVersionKey, folder.name, ToUtf8(InstallFolder(env)));
  return DeleteCommand(kVersionKey, folder.name);
}

void ExamineFolder(const CKVEnvApp& env, const FolderToExamine& folder, Findings& findings) {
  const CString path = (env.*folder.get)();
  const std::string name = Utf8(folder.name), own = OwnFolderCommand(env, folder);
  if (!IsFullPath(path)) {
    findings.push_back({folder.grade, "folders",
                        fmt::format("the folder of {}, {} in the registry, is not a full path: {}", folder.purpose,
                                    name, ToUtf8(path)),
                        "use this installation's own folder: " + own});
  } else if (!IsFolder(path)) {
    // A folder below the own one is the default already, or was chosen.
    const bool foreign = !path.View().starts_with(InstallFolder(env).View());
    findings.push_back(
        {folder.grade, "folders",
         fmt::format("the folder of {}, {} in the registry, is missing: {}", folder.purpose, name, System(path)),
         (foreign ? "use this installation's own folder: " + own + "; or create it" : std::string("create it")) +
             ": mkdir -p " + Quoted(System(path))});
  }
}

// Reports a data folder that belongs to another installation.
void ExamineOwner(const CKVEnvApp& env, Findings& findings) {
  const CString data = env.GetKVDataPath();
  const CString resources = env.GetKVDefDataRelPath() + env.GetKVResourceDllName();
  if (IsSameFolder(data, InstallFolder(env)) || !Exists(data + resources)) return;
  findings.push_back(
      {kWarning, "folders",
       fmt::format("the folder of data, KVDataPath in the registry, is another installation's: {}", System(data)),
       "use this installation's own folder: " + OwnFolderCommand(env, kFolders[0])});
}

void ExamineFolders(const CKVEnvApp& env, Findings& findings) {
  const CString data = env.GetKVDataPath();
  for (const FolderToExamine& folder : kFolders) {
    const CString path = (env.*folder.get)();
    if (!IsFolder(data) && path != data && path.View().starts_with(data.View()))
      continue;  // the missing data folder is reported
    ExamineFolder(env, folder, findings);
  }
  ExamineOwner(env, findings);
  if (IsFolder(data) && !QFFileAndFolderUtilities().HasCreateFilePermission(data)) {
    findings.push_back({kWarning, "folders", fmt::format("no file can be created in the data folder: {}", System(data)),
                        "give the user write permission: chmod u+rwx " + Quoted(System(data))});
  }
  const CString recordings = env.GetSimulationRecordingFolderPath();
  if (IsFolder(data) && !IsFolder(recordings)) {
    findings.push_back(
        {kWarning, "folders", fmt::format("the folder of recordings cannot be created: {}", System(recordings)),
         "remove what has its name, and give the user write permission: chmod u+rwx " + Quoted(System(data))});
  }
  const CString machines = env.GetDefaultSimulationMachineFolderPath();
  if (IsFolder(machines) && !HasMachines(machines)) {
    findings.push_back({kWarning, "folders", fmt::format("there is no machine definition below {}", System(machines)),
                        "put definitions there, such as Mill/NAME/KestrovaAPT.xml"});
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
    if (!Exists(library)) missing += (missing.empty() ? "" : ", ") + System(library);
  }
  if (!missing.empty()) {
    findings.push_back(
        {kNote, "modules", fmt::format("not installed: {}", missing), "install the modules that you need"});
  }
  const CString simulator = env.GetIMSExePath();
  if (!simulator.IsEmpty() && !Exists(simulator.Left(simulator.GetLength() - 1))) {
    findings.push_back({kWarning, "simulator", fmt::format("there is no simulator at {}", System(simulator)),
                        "install it there, or remove the setting: " + DeleteCommand(kVersionKey, _T("EurekaExePath"))});
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

void ExamineRegistry(const CKVEnvApp& env, Findings& findings) {
  RegistryKeyHandle key;
  const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, kVersionKey, 0, KEY_WRITE, key.Receive());
  const std::string file = HiveFile(HKEY_CURRENT_USER);
  if (status == ERROR_BADDB) {
    findings.push_back(
        {kError, "registry", fmt::format("the file {} is damaged; no setting can be read or stored", file),
         fmt::format("move it away and import a saved copy: mv {0} {0}.damaged; kestrova reg import FILE",
                     Quoted(file))});
  } else if (status == ERROR_UNKNOWN_REVISION) {
    findings.push_back({kError, "registry", fmt::format("the file {} was written by a later release", file),
                        "use that release, or set KV_REGISTRY to another folder"});
  } else if (status == ERROR_FILE_NOT_FOUND && env.GetKVPath().IsEmpty()) {
    // Nothing was stored, because the installation's place is unknown.
  } else if (status != ERROR_SUCCESS) {
    findings.push_back({kError, "registry",
                        fmt::format("the user's settings cannot be stored in {}: {}", file, ErrorText(DWORD(status))),
                        "give the user write permission for the file and its folder"});
  }
  ExamineSwitches(kStartSwitches, kVersionDebugKey, findings);
  ExamineSwitches(kVersionSwitches, kVersionDebugKey, findings);
  ExamineSwitches(kProductSwitches, kProductDebugKey, findings);
}

void ExamineLogs(Findings& findings) {
  const auto is_on = [](LPCTSTR name) { return GetVersionIndependentDebugRegistryVal(name, 0) != 0; };
  if (!is_on(kTimeLogSwitch) && !is_on(kTurretLogSwitch) && !is_on(kAsmTurnLogSwitch) && !is_on(kMemoryLeakLogSwitch) &&
      GetDebugRegistryVal(kFunctionLogSwitch, 0) == 0)
    return;
  const std::string folder = System(kLogFolder), off = "switch them off: kestrova log off";
  if (QFFileAndFolderUtilities().HasCreateFilePermission(kLogFolder)) {
    findings.push_back({kNote, "logs",
                        fmt::format("logs of developers are switched on, which takes time; they are in {}", folder),
                        off});
  } else {
    findings.push_back(
        {kWarning, "logs",
         fmt::format("logs of developers are switched on, and no file can be created in their folder: {}", folder),
         "create it: kestrova log on; or " + off});
  }
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

std::vector<EnvironmentSource> SourcesOf(const CKVEnvApp& env) {
  const CString library = LibraryFile();
  return {{"install folder", "installFolder", System(library.Left(library.ReverseFind(_T('\\')) + 1))},
          {"data folder", "dataFolder", System(env.GetKVDataPath())},
          {"user's registry", "userHive", HiveFile(HKEY_CURRENT_USER)},
          {"machine's registry", "machineHive", HiveFile(HKEY_LOCAL_MACHINE)}};
}

std::vector<EnvironmentFinding> ExamineEnvironment(CKVEnvApp& env) {
  Findings findings;
  ExamineRegistry(env, findings);
  if (!ExamineInstallation(env, findings)) return findings;
  ExamineLanguage(env, findings);
  ExamineFolders(env, findings);
  ExamineTechDatabase(env, findings);
  ExamineApplications(env, findings);
  ExamineLogs(findings);
  ExamineProcess(env, findings);
  return findings;
}

}  // namespace kestrova
