// The environment: creation, the order of its initialisation, the switches that it writes to the registry.
#include "share/env/app_env.h"

#include "platform/registry_files.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/feature_switches.h"
#include "share/settings/settings_key.h"

namespace {

constexpr int kMostWait_ms = 2000;  // for other writers of the registry, in a whole start

}  // namespace

// ---- life

int CKVEnvApp::m_IsEnvObjectCreated = 0;
CKVEnvApp* CKVEnvApp::m_envAppInstance = nullptr;

CKVEnvApp* CKVEnvApp::Instance() {
  if (!m_IsEnvObjectCreated) {
    // Set before Init, so that code called by Init gets this object and builds no second one.
    const RegistryWaitLimit limit(kMostWait_ms);
    m_IsEnvObjectCreated = 1;
    m_envAppInstance = new CKVEnvApp;
    m_envAppInstance->Init();
  }
  return m_envAppInstance;
}

void CKVEnvApp::DestroyInstance() {
  delete m_envAppInstance;
  m_envAppInstance = nullptr;
  m_IsEnvObjectCreated = 0;
}

CKVEnvApp* InitAppEnv() { return CKVEnvApp::Instance(); }
CKVEnvApp* AppEnv() { return CKVEnvApp::Instance(); }
void CloseAppEnv() { CKVEnvApp::DestroyInstance(); }

CKVEnvApp::CKVEnvApp() {
  SetKVModuleDllName();
  StoreLocation();
  m_bStores = !m_InstallPath.IsEmpty();  // folders below an unknown one would stay in the registry for other installs
  SetDefaultTechDBForms();
  SetConfigDataUseStatus();
}

// ---- initialisation

void CKVEnvApp::Init() {
  SetKVResourceDllName();
  SetKVDebugResourceDllName();

  // Configuration mode reads the database's names from a file, forms mode from the registry.
  if (m_bConfigData) {
    SetKVDefLangAndDataRelPath();
    ReadDBConfigData();
    SetTechDBNamesAndFlags();
    SetErrorIfTechDBFileNotFound();
  } else {
    SetTechDBNamesAndFlags();
    SetKVDefLangAndDataRelPath();
  }

  SetDefaultFolders();
  if (m_bStores) SetFirstSwitches();
  SetCIMCOEditorPath();
  SetDefaultControllerPath();
  if (m_bStores) SetSecondSwitches();
  try {
    SetKVTechDBPath(/*write=*/0);
  } catch (...) {
    m_InitResult = ENVAPP_INIT_TECHDB_FAILED;  // the start continues: the main module decides
  }
  SetUserName();
  SetResourcePaths();
  LoadResources();
  FindHelp();
  SetVisiDllName();
  m_VisiDllPath = InInstall(_T("MS\\"));
  SetEDConnectorDllName();
  m_EDConnectorDllPath = InInstall(m_EDConnectorDllName);
  m_EDConnectorPngDllPath = InInstall(m_EDConnectorPngDllName);
  SetKVEDConnectorDllName();
  m_KVEDConnectorDllPath = InInstall(m_KVEDConnectorDllName);
  SetDebugFlag();
  if (m_bStores) SetPostPerformanceImprovements();

  QFSettingsKey key(_T("MultiSurface"), kVersionKey);
  key.AddValue(_T("MultiSurfaceByID"), 0);
  if (key.RestoreValuesFromRegistry()) key.GetValue(_T("MultiSurfaceByID"), m_nMultiSurfaceByID);
}

void CKVEnvApp::SetTechDBNamesAndFlags() {
  SetKVTechDBFormsName();
  SetKVTechDBName();
  Set64BitDatabaseInUseStatus();
  SetSQLiteDatabaseInUseStatus();
  Set64BitAccessDatabaseInstallStatus();
}

void CKVEnvApp::SetDefaultFolders() {
  SetDefaultKVDataPath();
  SetDefaultSetupSheetImagePath();
  SetDefaultSetupSheetTemplatePath();
  SetDefaultSubSpndleOperFolderPath();
  SetDefaultMachineSimulationApplicationPath();
  SetDefaultSimulationMachineFolderPath();
  SetDefaultSimulationControllerFolderPath();
  SetDefaultSimulationJobFolderPath();
}

void CKVEnvApp::SetFirstSwitches() {
  SetShowCustomChuckOptionsDisplayRegistry();
  SetDefaultCalMaxFitCirInThread();
  SetDefaultTurnVariableBAxisSupport();
  SetTurnBAxisConTlpKeepArcMove();
  SetTurnBAxisConLLForArcFacet();
  SetBAxisFaceFinishOperSupport();
  SetSpindleDirForTurnMillTurnSupport();
}

void CKVEnvApp::SetSecondSwitches() {
  SetToolpathShowHideSupportKeyValue();
  SetTlpColorSupportKeyValue();
  SetTlpHiddenMoveColorSupportKeyValue();
  SetCRF1478StepThruSupportKeyValue();
  SetCRF1478TurnSupportKeyValue();
  SetCRF1478For2axSupportKeyValue();
  SetWIPArcRegistrySupportKeyValue();
}

// ---- switches

void CKVEnvApp::SetShowCustomChuckOptionsDisplayRegistry() {
  WriteBackStartSwitch(StartSwitch(_T("ShowCustomChuckOptions")));
}
void CKVEnvApp::SetDefaultCalMaxFitCirInThread() { WriteBackStartSwitch(StartSwitch(_T("CalMaxFitCirInThreads"))); }
void CKVEnvApp::SetDefaultTurnVariableBAxisSupport() {
  WriteBackStartSwitch(StartSwitch(_T("BAxisContinuousSupport")));
}
void CKVEnvApp::SetTurnBAxisConTlpKeepArcMove() {
  WriteBackStartSwitch(StartSwitch(_T("ContinuousBAxisTlpKeepArcMoves")));
}

// Reads the text into four bytes, so a text of more than one character counts as missing and gets the default at each
// start. A missing key is not created. Both are kept for existing installations.
void CKVEnvApp::SetTurnBAxisConLLForArcFacet() {
  constexpr LPCTSTR kName = _T("LinearLengthForArcFacet");
  int found = 0;
  GetRegSettingDwordValue(HKEY_CURRENT_USER, kPostDataKey, kName, &found);
  if (!found) SetRegistryValueForString(HKEY_CURRENT_USER, kPostDataKey, kName, _T("0.01"));
}

void CKVEnvApp::SetBAxisFaceFinishOperSupport() {
  WriteBackStartSwitch(StartSwitch(_T("BAxisFaceFinishOperationSupport")));
}
void CKVEnvApp::SetSpindleDirForTurnMillTurnSupport() {
  WriteBackStartSwitch(StartSwitch(_T("NewSetSpindleDirForTurnMillTurnMachineSupport")));
}
void CKVEnvApp::SetToolpathShowHideSupportKeyValue() {
  WriteBackStartSwitch(StartSwitch(_T("ShowHideToolpathSegmentsSupport")));
}
void CKVEnvApp::SetTlpColorSupportKeyValue() { WriteBackStartSwitch(StartSwitch(_T("ColorToolpathSegmentsSupport"))); }
void CKVEnvApp::SetTlpHiddenMoveColorSupportKeyValue() {
  WriteBackStartSwitch(StartSwitch(_T("ColorHiddenTlpMoveSupport")));
}
void CKVEnvApp::SetCRF1478StepThruSupportKeyValue() { WriteBackStartSwitch(StartSwitch(_T("StepThruTlpCRFSupport"))); }
void CKVEnvApp::SetCRF1478TurnSupportKeyValue() { WriteBackStartSwitch(StartSwitch(_T("CRF1478TurnSupport"))); }
void CKVEnvApp::SetCRF1478For2axSupportKeyValue() { WriteBackStartSwitch(StartSwitch(_T("CRF1478For2axSupport"))); }
void CKVEnvApp::SetWIPArcRegistrySupportKeyValue() { WriteBackStartSwitch(StartSwitch(_T("GetWIPArcSupport"))); }

void CKVEnvApp::SetPostPerformanceImprovements() {
  constexpr FeatureSwitch kSwitch = kStartSwitches.back();
  QFSettingsKey key(_T("Debug"), kVersionDebugKey);
  key.AddValue(kSwitch.name, kSwitch.defaultValue);
  if (!key.RestoreValuesFromRegistry()) key.SaveValuesToRegistry();
}
