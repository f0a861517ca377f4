// The steps of the environment's initialisation whose services are still to come: the technology database. Each has its
// place in the order already; what it would fill stays as it was built.
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
