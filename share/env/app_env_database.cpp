// The technology database: the current one, the program or forms file that serves it, the connection. The exchange with
// a forms file is in share/env/app_env_forms.cpp.
#include "platform/files.h"
#include "platform/process.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/settings/settings_key.h"
#include "share/utilities/files_and_folders.h"
#include "share/utilities/tech_db_config_file.h"

namespace {

constexpr LPCTSTR kForms = _T("TechDBForms");
constexpr LPCTSTR kAccess32 = _T("Access32bit");
constexpr LPCTSTR kAccess64 = _T("Access64bit");

constexpr LPCTSTR kApplication = _T("TechDB App");
constexpr LPCTSTR kForms32 = _T("TechDBForms.mde (32bit)");
constexpr LPCTSTR kBasicForms32 = _T("TechDBForms_basic.mde (32bit)");
constexpr LPCTSTR kForms64 = _T("TechDBFormsx64.mde (64bit)");

constexpr int kOfficeVersions[] = {16, 15, 14, 12, 11};
constexpr UINT kKilledExitCode = 999;

int IsAccessFound(int is32Bit) {
  for (const int version : kOfficeVersions) {
    if (CheckAccessVersionInstalled(version, is32Bit) == 1) return 1;
  }
  return 0;
}

// The program or forms file and the Access editions, as the registry has them; empty and 0 if missing.
struct Installation {
  CString forms;
  int access32 = 0;
  int access64 = 0;
  bool operator==(const Installation&) const = default;
};

Installation ReadInstallation() {
  QFSettingsKey key(CString(), kVersionKey);
  key.AddValue(kForms, CString());
  key.AddValue(kAccess32, 0);
  key.AddValue(kAccess64, 0);
  key.RestoreValuesFromRegistry();
  Installation stored;
  key.GetValue(kForms, stored.forms);
  key.GetValue(kAccess32, stored.access32);
  key.GetValue(kAccess64, stored.access64);
  return stored;
}

// Saves the differences in one write.
void SaveChanges(const Installation& stored, const Installation& found) {
  QFSettingsKey key(CString(), kVersionKey);
  if (found.forms != stored.forms) key.AddValue(kForms, found.forms);
  if (found.access32 != stored.access32) key.AddValue(kAccess32, found.access32);
  if (found.access64 != stored.access64) key.AddValue(kAccess64, found.access64);
  if (found != stored) key.SaveValuesToRegistry();
}

// Replaces the forms file of an edition that is not installed by that of the installed one.
CString FormsFor(const Installation& found) {
  const CString& forms = found.forms;
  if (found.access64 && !found.access32 && (forms == kForms32 || forms == kBasicForms32)) return kForms64;
  if (found.access32 && !found.access64 && forms == kForms64) return kForms32;
  return forms;
}

// 0 if the registry has the 32-bit edition, whether or not it has the 64-bit one. 1 without either, kept for existing
// modules.
int Is64BitEditionInUse() { return ReadInstallation().access32 != 1; }

}  // namespace

// ---- what is installed

void CKVEnvApp::SetDefaultTechDBForms() {
  if (!m_bStores) return;
  const Installation stored = ReadInstallation();
  Installation found{stored.forms, IsAccessFound(/*is32Bit=*/1), IsAccessFound(/*is32Bit=*/0)};
  if (found.forms.IsEmpty()) {
    found.forms = kApplication;
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kEdmDebugKey, _T("UseConfigData"), 1);
  }
  found.forms = FormsFor(found);
  SaveChanges(stored, found);
}

void CKVEnvApp::SetDatabaseInstallationData() {
  if (!m_bStores || !HasActiveTechDB(QF_TECHDB_ACCESS)) return;
  const Installation stored = ReadInstallation();
  SaveChanges(stored, {stored.forms, IsAccessFound(/*is32Bit=*/1), IsAccessFound(/*is32Bit=*/0)});
}

// In a registry that can't be written the value is still empty after SetDefaultTechDBForms.
void CKVEnvApp::SetConfigDataUseStatus() {
  const CString forms = GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, kForms);
  m_bConfigData = forms.IsEmpty() || forms == kApplication;
}

// ---- the list of databases

int CKVEnvApp::ReadDBConfigData() {
  return ReadTechDBConfig(GetTechDBConfigFilePath(), GetDefaultSQLiteDBPath(), m_TechDBConfig);
}

int CKVEnvApp::UpdateTechDBConfigInfo() {
  ClearDBConfigData();
  return ReadDBConfigData();
}

int CKVEnvApp::WriteDBConfigData() const { return WriteTechDBConfig(GetTechDBConfigFilePath(), m_TechDBConfig); }

bool CKVEnvApp::HasActiveTechDB(int type) const {
  const QFTechDBConfigData* active = m_bConfigData ? GetActiveTechDBConfigData() : nullptr;
  return active && active->GetDatabaseType() == type;
}

void CKVEnvApp::SetErrorIfTechDBFileNotFound() {
  const QFTechDBConfigData* active = GetActiveTechDBConfigData();
  if (!active) {
    m_InitResult = ENVAPP_INIT_TECHDB_FAILED;
  } else if (active->GetDatabaseType() != QF_TECHDB_SQLSERVER &&
             !QFFileAndFolderUtilities().DoesFileExist(active->GetFilePath())) {
    m_InitResult = ENVAPP_INIT_TECHDB_FILE_MISSING;
  }
}

// ---- names

CString CKVEnvApp::GetKVNameOnlyOfTechDB() const { return _T("TechDB"); }

CString CKVEnvApp::GetKVExtOfTechDB() const {
  if (!m_bConfigData || HasActiveTechDB(QF_TECHDB_ACCESS)) return _T(".mdb");
  return HasActiveTechDB(QF_TECHDB_SQLITE) ? _T(".kvdb") : _T("");
}

void CKVEnvApp::SetKVTechDBName() { m_TechDBName = GetKVNameOnlyOfTechDB() + GetKVExtOfTechDB(); }

CString CKVEnvApp::GetKVNameOnlyOfTechDBForms() const {
  if (m_bConfigData) return _T("TechDB-App");
  return GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, kForms).SpanExcluding(_T("."));
}

CString CKVEnvApp::GetKVDataFileExtOfTechDBForms() const { return m_bConfigData ? _T(".exe") : _T(".mde"); }

void CKVEnvApp::SetKVTechDBFormsName() {
  m_TechDBFormsName = GetKVNameOnlyOfTechDBForms() + GetKVDataFileExtOfTechDBForms();
}

// In configuration mode the application is in the install folder or in the folder above.
CString CKVEnvApp::GetKVTechDBFormsPath() const {
  if (!m_bConfigData) return GetKVDataPath() + m_LanguageFolder + m_TechDBFormsName;
  CString inside = GetTechDBAppPath() + m_TechDBFormsName;
  if (_waccess(inside, 0) == 0) return inside;
  CString folder = InInstall(CString());
  folder = folder.Left(folder.GetLength() - 1);
  return folder.Left(folder.ReverseFind(_T('\\')) + 1) + _T("TechDBApp\\") + m_TechDBFormsName;
}

// ---- flags

int CKVEnvApp::IsFormsFile64Bit() const { return m_TechDBFormsName.Find(_T("x64")) >= 0; }

void CKVEnvApp::Set64BitDatabaseInUseStatus() {
  m_b64BitDatabase = !m_bConfigData                      ? IsFormsFile64Bit()
                     : HasActiveTechDB(QF_TECHDB_ACCESS) ? Is64BitEditionInUse()
                                                         : 1;
}

void CKVEnvApp::Set64BitAccessDatabaseInstallStatus() {
  m_b64BitAccess = m_bConfigData ? Is64BitEditionInUse() : IsFormsFile64Bit();
}

void CKVEnvApp::SetSQLiteDatabaseInUseStatus() { m_bSQLiteDatabase = HasActiveTechDB(QF_TECHDB_SQLITE); }

// ---- the server

int CKVEnvApp::IsConnectedToTechDBSQLServerDirectly() const { return HasActiveTechDB(QF_TECHDB_SQLSERVER); }

int CKVEnvApp::IsConnectedToTechDBSQL() const {
  return m_bConfigData ? IsConnectedToTechDBSQLServerDirectly() : m_TechDBPath.Left(6) == _T("DRIVER");
}

CString CKVEnvApp::GetTechDBSQLInfo() const {
  if (!IsConnectedToTechDBSQL()) return CString();
  return ServerPartsOfConnection(m_bConfigData ? GetActiveTechDBConfigData()->GetConnectionString() : m_TechDBPath);
}

CString CKVEnvApp::GetActiveDBname() const {
  const QFTechDBConfigData* active = GetActiveTechDBConfigData();
  if (!active) return CString();
  return active->GetDatabaseType() == QF_TECHDB_SQLSERVER ? GetTechDBSQLInfo() : active->GetFilePath();
}

int CKVEnvApp::KillTechDBProcess() const {
  const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, m_TechDBProcessID);
  if (!process) return 1;
  TerminateProcess(process, kKilledExitCode);
  return CloseHandle(process);
}
