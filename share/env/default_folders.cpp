// The folders that a user or an administrator may move: where their paths are stored, their defaults, and the repair of
// missing paths at start.
#include "share/core/document_callbacks.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/env/internal/stored_paths.h"
#include "share/settings/settings_key.h"

namespace {

constexpr LPCTSTR kDataPath = _T("KVDataPath");
constexpr LPCTSTR kSimulatorPath = _T("EurekaExePath");
constexpr LPCTSTR kSimulation = _T("MachineSimulationApplicationPath");
constexpr LPCTSTR kControllerPath = _T("ControllerPath");
constexpr LPCTSTR kEdmKey = _T("EDMApp");
constexpr LPCTSTR kEdmCuttingConditions = _T("EdmCutCondPath");
constexpr LPCTSTR kEdmPosts = _T("EdmPostFilePath");

// A folder whose path is in the application settings, or, if there are none, in the registry.
struct MovableFolder {
  LPCTSTR name;
  enum Hives { kUser, kUserThenMachine } hives;
  // The default is below the language folder of the install folder, or below the folder of data.
  enum Root { kLanguage, kData } root;
  LPCTSTR rest;
};

constexpr MovableFolder kSetupSheetImages = {_T("SSImgPath"), MovableFolder::kUser, MovableFolder::kLanguage,
                                             _T("Setup_Sheet_Images\\")};
constexpr MovableFolder kSetupSheetTemplates = {_T("SSTemplatePath"), MovableFolder::kUser, MovableFolder::kLanguage,
                                                _T("Setup_Sheet_Templates\\")};
constexpr MovableFolder kSubSpindleOperations = {_T("SSOperationPath"), MovableFolder::kUser, MovableFolder::kData,
                                                 _T("SubSpindleOps")};
constexpr MovableFolder kMachines = {_T("SimulationMachinePath"), MovableFolder::kUserThenMachine, MovableFolder::kData,
                                     _T("MachSim\\Machines")};
// The same folder as the machines', kept for existing installations.
constexpr MovableFolder kControllers = {_T("SimulationControllerPath"), MovableFolder::kUserThenMachine,
                                        MovableFolder::kData, _T("MachSim\\Machines")};
constexpr MovableFolder kJobs = {_T("SimulationJobPath"), MovableFolder::kUserThenMachine, MovableFolder::kData,
                                 _T("MachSim\\Jobs")};

// Writes the default to the user's hive if the path is missing there; then copies the user's path to settings that lack
// it. 1 if the registry was written. If the environment does not store, there is no default either.
template <class MakeDefault>
int Repair(bool stores, LPCTSTR name, MakeDefault makeDefault) {
  CString path = ReadStoredText(HKEY_CURRENT_USER, kVersionKey, name);
  const bool missing = path.IsEmpty();
  if (missing && !stores) return 0;
  if (missing) {
    path = makeDefault();
    StoreText(HKEY_CURRENT_USER, kVersionKey, name, path);
  }
  QFSettingsKey* settings = GetAppSettingsCB();
  if (settings && TextOf(settings, name).IsEmpty()) settings->SetValue(name, path);
  return missing;
}

int Repair(bool stores, const CKVEnvApp& env, const MovableFolder& folder) {
  return Repair(stores, folder.name, [&] {
    return folder.root == MovableFolder::kData
               ? env.GetKVDataPath() + folder.rest
               : env.GetKVDrive() + env.GetKVPath() + env.GetKVDefDataRelPath() + folder.rest;
  });
}

CString ReadFolder(const MovableFolder& folder) {
  if (const QFSettingsKey* settings = GetAppSettingsCB()) return EndingInBackslash(TextOf(settings, folder.name));
  return EndingInBackslash(folder.hives == MovableFolder::kUser
                               ? ReadStoredText(HKEY_CURRENT_USER, kVersionKey, folder.name)
                               : ReadStoredTextOfUserOrMachine(kVersionKey, folder.name));
}

QFSettingsKey* EdmSettings() {
  const QFSettingsKey* settings = GetAppSettingsCB();
  return settings ? settings->GetKey(kEdmKey) : nullptr;
}

// The folder from the EDM application's settings, or the default below the folder of data. Empty without these
// settings.
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
  CString path = ReadStoredTextOfUserOrMachine(kVersionKey, kDataPath);
  if (path.IsEmpty()) {
    path = InInstall(CString());
    if (m_bStores) StoreText(HKEY_LOCAL_MACHINE, kVersionKey, kDataPath, path);
  }
  return EndingInBackslash(path);
}

CString CKVEnvApp::GetKVCommonDataPath() const {
  return EndingInBackslash(ReadStoredText(HKEY_CURRENT_USER, kVersionKey, _T("KVCommonDataPath")));
}

int CKVEnvApp::SetDefaultKVDataPath() {
  if (!m_bStores || !ReadStoredText(HKEY_CURRENT_USER, kVersionKey, kDataPath).IsEmpty()) return 0;
  StoreText(HKEY_CURRENT_USER, kVersionKey, kDataPath, GetKVDataPath());
  return 1;
}

// ---- repairs at start

int CKVEnvApp::SetDefaultSetupSheetImagePath() { return Repair(m_bStores, *this, kSetupSheetImages); }
int CKVEnvApp::SetDefaultSetupSheetTemplatePath() { return Repair(m_bStores, *this, kSetupSheetTemplates); }
int CKVEnvApp::SetDefaultSubSpndleOperFolderPath() { return Repair(m_bStores, *this, kSubSpindleOperations); }

// Without a simulator in the machine's hive the default is empty and is stored as an empty text.
int CKVEnvApp::SetDefaultMachineSimulationApplicationPath() {
  return Repair(m_bStores, kSimulation, [this] {
    return GetVirtualMachinePath().IsEmpty() ? CString() : InInstall(_T("KVVirtualMachine\\KVVirtualMachine.exe"));
  });
}

int CKVEnvApp::SetDefaultSimulationMachineFolderPath() { return Repair(m_bStores, *this, kMachines); }
int CKVEnvApp::SetDefaultSimulationControllerFolderPath() { return Repair(m_bStores, *this, kControllers); }
int CKVEnvApp::SetDefaultSimulationJobFolderPath() { return Repair(m_bStores, *this, kJobs); }

// The post processor reads its folder from the settings or from the user's hive. If only the machine's hive has it, it
// is copied to both, provided that there are settings.
void CKVEnvApp::SetDefaultControllerPath() {
  QFSettingsKey* settings = GetAppSettingsCB();
  if (!TextOf(settings, kControllerPath).IsEmpty()) return;
  if (!ReadStoredText(HKEY_CURRENT_USER, kPostDataKey, kControllerPath).IsEmpty()) return;
  const CString path = ReadStoredText(HKEY_LOCAL_MACHINE, kPostDataKey, kControllerPath);
  if (path.IsEmpty() || !settings) return;
  settings->SetValue(kControllerPath, path);
  if (m_bStores) StoreText(HKEY_CURRENT_USER, kPostDataKey, kControllerPath, path);
}

// ---- reading

CString CKVEnvApp::GetSetupSheetImagePath() const { return ReadFolder(kSetupSheetImages); }
CString CKVEnvApp::GetSetupSheetTemplatePath() const { return ReadFolder(kSetupSheetTemplates); }
CString CKVEnvApp::GetSubSpindleOperFolderPath() const { return ReadFolder(kSubSpindleOperations); }
CString CKVEnvApp::GetDefaultSimulationMachineFolderPath() const { return ReadFolder(kMachines); }
CString CKVEnvApp::GetDefaultSimulationControllerFolderPath() const { return ReadFolder(kControllers); }
CString CKVEnvApp::GetDefaultSimulationJobFolderPath() const { return ReadFolder(kJobs); }

CString CKVEnvApp::GetVersionIndependentSetupSheetTemplatePath() const {
  constexpr LPCTSTR kName = _T("SaveStyleSheetTo");
  CString path = TextOf(GetAppSettingsCB(), kName);
  return path.IsEmpty() ? ReadStoredText(HKEY_LOCAL_MACHINE, kSetupSheetKey, kName) : path;
}

// ---- simulator

CString CKVEnvApp::GetVirtualMachinePath() const {
  return GetRegSettingStringValue(HKEY_LOCAL_MACHINE, kVersionKey, kSimulatorPath);
}

// Appends a backslash even to the name of a program, kept for existing modules.
CString CKVEnvApp::GetIMSExePath() const {
  const QFSettingsKey* settings = GetAppSettingsCB();
  CString path =
      settings ? TextOf(settings, kSimulatorPath) : ReadStoredTextOfUserOrMachine(kVersionKey, kSimulatorPath);
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
