// The steps of the environment's initialisation whose services are still to come: folders and their repair, the
// technology database, the NC editor. Each has its place in the order already; what it would fill stays as it was
// built.
#include "share/env/app_env.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"

// ---- technology database

void CKVEnvApp::SetConfigDataUseStatus() {
  m_bConfigData = GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")) == _T("TechDB App");
}

void CKVEnvApp::SetDefaultTechDBForms() {}
void CKVEnvApp::ReadDBConfigData() {}
void CKVEnvApp::SetKVTechDBFormsName() {}
void CKVEnvApp::SetKVTechDBName() {}
void CKVEnvApp::Set64BitDatabaseInUseStatus() {}
void CKVEnvApp::SetSQLiteDatabaseInUseStatus() {}
void CKVEnvApp::Set64BitAccessDatabaseInstallStatus() {}
void CKVEnvApp::SetErrorIfTechDBFileNotFound() {}
void CKVEnvApp::SetKVTechDBPath(int) {}

// ---- folders: 0, nothing was written

int CKVEnvApp::SetDefaultKVDataPath() { return 0; }
int CKVEnvApp::SetDefaultSetupSheetImagePath() { return 0; }
int CKVEnvApp::SetDefaultSetupSheetTemplatePath() { return 0; }
int CKVEnvApp::SetDefaultSubSpndleOperFolderPath() { return 0; }
int CKVEnvApp::SetDefaultMachineSimulationApplicationPath() { return 0; }
int CKVEnvApp::SetDefaultSimulationMachineFolderPath() { return 0; }
int CKVEnvApp::SetDefaultSimulationControllerFolderPath() { return 0; }
int CKVEnvApp::SetDefaultSimulationJobFolderPath() { return 0; }
void CKVEnvApp::SetDefaultControllerPath() {}

// ---- NC editor

void CKVEnvApp::SetCIMCOEditorPath() {}
