// The folders that a user or an administrator may move: where they are kept, what they are by default, and the repair
// of those defaults at start.
#include "share/core/document_callbacks.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/env/internal/kept_paths.h"
#include "share/settings/settings_key.h"

namespace {

constexpr LPCTSTR kDataPath = _T("KVDataPath");
constexpr LPCTSTR kSimulatorPath = _T("EurekaExePath");
constexpr LPCTSTR kSimulation = _T("MachineSimulationApplicationPath");
constexpr LPCTSTR kControllerPath = _T("ControllerPath");
constexpr LPCTSTR kEdmKey = _T("EDMApp");
constexpr LPCTSTR kEdmCuttingConditions = _T("EdmCutCondPath");
constexpr LPCTSTR kEdmPosts = _T("EdmPostFilePath");

// A folder that is looked up in the application settings, without them in the registry.
struct KeptFolder {
  LPCTSTR name;
  enum Hives { kUser, kUserThenMachine } hives;
  // The default: below the language folder of the install folder, or below the folder of data.
  enum Root { kLanguage, kData } root;
  LPCTSTR rest;
};

constexpr KeptFolder kSetupSheetImages = {_T("SSImgPath"), KeptFolder::kUser, KeptFolder::kLanguage,
                                          _T("Setup_Sheet_Images\\")};
constexpr KeptFolder kSetupSheetTemplates = {_T("SSTemplatePath"), KeptFolder::kUser, KeptFolder::kLanguage,
                                             _T("Setup_Sheet_Templates\\")};
constexpr KeptFolder kSubSpindleOperations = {_T("SSOperationPath"), KeptFolder::kUser, KeptFolder::kData,
                                              _T("SubSpindleOps")};
constexpr KeptFolder kMachines = {_T("SimulationMachinePath"), KeptFolder::kUserThenMachine, KeptFolder::kData,
                                  _T("MachSim\\Machines")};
// The same folder as the machines': that is required.
constexpr KeptFolder kControllers = {_T("SimulationControllerPath"), KeptFolder::kUserThenMachine, KeptFolder::kData,
                                     _T("MachSim\\Machines")};
constexpr KeptFolder kJobs = {_T("SimulationJobPath"), KeptFolder::kUserThenMachine, KeptFolder::kData,
                              _T("MachSim\\Jobs")};

// The form that all repairs share: a missing value gets its default in the user's key, and settings that lack it get
// what the key holds then. 1 if the key was written.
template <class MakeDefault>
int Repair(LPCTSTR name, MakeDefault makeDefault) {
  CString path = ReadKeptText(HKEY_CURRENT_USER, kVersionKey, name);
  const bool missing = path.IsEmpty();
  if (missing) {
    path = makeDefault();
    KeepText(HKEY_CURRENT_USER, kVersionKey, name, path);
  }
  QFSettingsKey* settings = GetAppSettingsCB();
  if (settings && TextOf(settings, name).IsEmpty()) settings->SetValue(name, path);
  return missing;
}

int Repair(const CKVEnvApp& env, const KeptFolder& folder) {
  return Repair(folder.name, [&] {
    return folder.root == KeptFolder::kData
               ? env.GetKVDataPath() + folder.rest
               : env.GetKVDrive() + env.GetKVPath() + env.GetKVDefDataRelPath() + folder.rest;
  });
}

CString Look(const KeptFolder& folder) {
  if (const QFSettingsKey* settings = GetAppSettingsCB()) return EndingInBackslash(TextOf(settings, folder.name));
  return EndingInBackslash(folder.hives == KeptFolder::kUser ? ReadKeptText(HKEY_CURRENT_USER, kVersionKey, folder.name)
                                                             : ReadKeptTextOfUserOrMachine(kVersionKey, folder.name));
}

QFSettingsKey* EdmSettings() {
  const QFSettingsKey* settings = GetAppSettingsCB();
  return settings ? settings->GetKey(kEdmKey) : nullptr;
}

// The EDM application's own folder, or the one below the folder of data. Empty without its settings.
CString ExtractEdmPath(const CKVEnvApp& env, LPCTSTR name, LPCTSTR rest) {
  const QFSettingsKey* settings = EdmSettings();
  if (!settings) return CString();
  CString path = TextOf(settings, name);
  return path.IsEmpty() ? env.GetKVDataPath() + rest : path;
}

void CopyToEdmSettings(LPCTSTR name, const CString& path) {
  if (QFSettingsKey* settings = EdmSettings()) settings->SetValue(name, path);
}

}  // namespace

// ---- the folder of data

CString CKVEnvApp::GetKVDataPath() const {
  CString path = ReadKeptTextOfUserOrMachine(kVersionKey, kDataPath);
  if (path.IsEmpty()) {
    path = InInstall(CString());
    KeepText(HKEY_LOCAL_MACHINE, kVersionKey, kDataPath, path);
  }
  return EndingInBackslash(path);
}

CString CKVEnvApp::GetKVCommonDataPath() const {
  return EndingInBackslash(ReadKeptText(HKEY_CURRENT_USER, kVersionKey, _T("KVCommonDataPath")));
}

int CKVEnvApp::SetDefaultKVDataPath() {
  if (!ReadKeptText(HKEY_CURRENT_USER, kVersionKey, kDataPath).IsEmpty()) return 0;
  KeepText(HKEY_CURRENT_USER, kVersionKey, kDataPath, GetKVDataPath());
  return 1;
}

// ---- repairs at start

int CKVEnvApp::SetDefaultSetupSheetImagePath() { return Repair(*this, kSetupSheetImages); }
int CKVEnvApp::SetDefaultSetupSheetTemplatePath() { return Repair(*this, kSetupSheetTemplates); }
int CKVEnvApp::SetDefaultSubSpndleOperFolderPath() { return Repair(*this, kSubSpindleOperations); }

// Without a simulator on the machine the default is empty, and is kept so.
int CKVEnvApp::SetDefaultMachineSimulationApplicationPath() {
  return Repair(kSimulation, [this] {
    return GetVirtualMachinePath().IsEmpty() ? CString() : InInstall(_T("KVVirtualMachine\\KVVirtualMachine.exe"));
  });
}

int CKVEnvApp::SetDefaultSimulationMachineFolderPath() { return Repair(*this, kMachines); }
int CKVEnvApp::SetDefaultSimulationControllerFolderPath() { return Repair(*this, kControllers); }
int CKVEnvApp::SetDefaultSimulationJobFolderPath() { return Repair(*this, kJobs); }

// The post processor finds its folder in the settings or in the user's key. What only the machine's key has is copied
// to both, if there are settings.
void CKVEnvApp::SetDefaultControllerPath() {
  QFSettingsKey* settings = GetAppSettingsCB();
  if (!TextOf(settings, kControllerPath).IsEmpty()) return;
  if (!ReadKeptText(HKEY_CURRENT_USER, kPostDataKey, kControllerPath).IsEmpty()) return;
  const CString path = ReadKeptText(HKEY_LOCAL_MACHINE, kPostDataKey, kControllerPath);
  if (path.IsEmpty() || !settings) return;
  settings->SetValue(kControllerPath, path);
  KeepText(HKEY_CURRENT_USER, kPostDataKey, kControllerPath, path);
}

// ---- reading them later

CString CKVEnvApp::GetSetupSheetImagePath() const { return Look(kSetupSheetImages); }
CString CKVEnvApp::GetSetupSheetTemplatePath() const { return Look(kSetupSheetTemplates); }
CString CKVEnvApp::GetSubSpindleOperFolderPath() const { return Look(kSubSpindleOperations); }
CString CKVEnvApp::GetDefaultSimulationMachineFolderPath() const { return Look(kMachines); }
CString CKVEnvApp::GetDefaultSimulationControllerFolderPath() const { return Look(kControllers); }
CString CKVEnvApp::GetDefaultSimulationJobFolderPath() const { return Look(kJobs); }

CString CKVEnvApp::GetVersionIndependentSetupSheetTemplatePath() const {
  constexpr LPCTSTR kName = _T("SaveStyleSheetTo");
  CString path = TextOf(GetAppSettingsCB(), kName);
  return path.IsEmpty() ? ReadKeptText(HKEY_LOCAL_MACHINE, kSetupSheetKey, kName) : path;
}

// ---- simulator

CString CKVEnvApp::GetVirtualMachinePath() const {
  return GetRegSettingStringValue(HKEY_LOCAL_MACHINE, kVersionKey, kSimulatorPath);
}

// The backslash goes behind the name of a program too: that is required.
CString CKVEnvApp::GetIMSExePath() const {
  const QFSettingsKey* settings = GetAppSettingsCB();
  CString path = settings ? TextOf(settings, kSimulatorPath) : ReadKeptTextOfUserOrMachine(kVersionKey, kSimulatorPath);
  if (path.IsEmpty()) {
    path = TextOf(settings, kSimulation);
    if (path.Find(_T("Eureka.exe")) < 0) path.Empty();
  }
  return path.IsEmpty() ? path : EndingInBackslash(path);
}

// ---- EDM

CString CKVEnvApp::ExtractEDMCuttingConditionPath() const {
  return ExtractEdmPath(*this, kEdmCuttingConditions, _T("Edm\\EDMCuttingConditions\\"));
}
CString CKVEnvApp::ExtractEDMPostFilePath() const { return ExtractEdmPath(*this, kEdmPosts, _T("Edm\\Posts\\")); }

void CKVEnvApp::SetEDMCuttingConditionPath(const CString& path) {
  m_EDMCuttingConditionPath = path;
  CopyToEdmSettings(kEdmCuttingConditions, path);
}

void CKVEnvApp::SetEDMPostFilePath(const CString& path) {
  m_EDMPostFilePath = path;
  CopyToEdmSettings(kEdmPosts, path);
}
