// Paths below the install folder and the folder of data: libraries, manuals, reports, the NC editor.
#include <algorithm>

#include "platform/files.h"
#include "share/core/version_info.h"
#include "share/env/app_env.h"
#include "share/env/internal/stored_paths.h"
#include "share/env/language_choice.h"

namespace {

constexpr LPCTSTR kNCEditor = _T("nceditor\\KestrovaNCEditor.exe");

// The languages whose tutorials are translated.
constexpr QFDatabaseLang_e kTutorialLanguages[] = {QF_DBLANG_GERMAN,
                                                   QF_DBLANG_FRENCH,
                                                   QF_DBLANG_JAPANESE,
                                                   QF_DBLANG_CHINESE,
                                                   QF_DBLANG_CHINESE_TRADITIONAL,
                                                   QF_DBLANG_PORTUGUESE_BRAZILIAN};

bool Exists(const CString& path) { return _waccess(path, 0) == 0; }

// The parent folder. Both paths end in a backslash.
CString FolderAbove(const CString& folder) {
  const CString name = folder.Left(folder.GetLength() - 1);
  return name.Left(name.ReverseFind(_T('\\')) + 1);
}

}  // namespace

void KVGetInstallPath(CString& path) { path = AppEnv()->GetKVPath(); }

CString CKVEnvApp::InEnglish(LPCTSTR rest) const { return InInstall(GetLanguageFolder(QF_DBLANG_ENGLISH)) + rest; }

// ---- libraries and applications

CString CKVEnvApp::GetKV5AxisDllPath() const { return InInstall(m_LanguageFolder + m_FiveAxisDllName); }
CString CKVEnvApp::GetEDMResourceDllPath() const { return InInstall(m_LanguageFolder); }
CString CKVEnvApp::GetUtilitiesDllPath() const { return InInstall(_T("KVUtilities\\")); }
CString CKVEnvApp::GetUtilitiesDllName() const { return _T("KVUtilitiesu.dll"); }
CString CKVEnvApp::GetTechDBAppPath() const { return InInstall(_T("TechDBApp\\")); }

// ---- help and manuals

CString CKVEnvApp::GetKVAMHelpPath() const { return InEnglish(_T("AM.chm")); }
CString CKVEnvApp::GetManualPDFFilePath() const { return InEnglish(_T("Manuals\\")); }
CString CKVEnvApp::GetWhatsNewPDFFilePath() const { return InEnglish(_T("Manuals\\kv_whats_new.pdf")); }

CString CKVEnvApp::GetTutorialsPath() const {
  const auto* end = std::end(kTutorialLanguages);
  if (std::find(std::begin(kTutorialLanguages), end, m_TechDBLang) != end) {
    CString folder = InInstall(m_LanguageFolder + _T("Manuals"));
    if (Exists(folder)) return folder;
  }
  return InEnglish(_T("Manuals"));
}

// ---- in the folder of data

CString CKVEnvApp::GetKVTaskPaneINIFilePath() const { return GetKVDataPath() + _T("KVTaskPaneWebCtrl.ini"); }
CString CKVEnvApp::GetTechDBConfigFilePath() const { return GetKVDataPath() + _T("TechDB\\"); }
CString CKVEnvApp::GetDefaultSQLiteDBPath() const { return GetTechDBConfigFilePath() + _T("TechDB.kvdb"); }

void CKVEnvApp::SetKVDefaultToolInsertPath() { m_DefaultToolInsertPath = GetKVDataPath() + m_LanguageFolder; }

CString CKVEnvApp::GetKVDefaultToolInsertPath() {
  SetKVDefaultToolInsertPath();
  return m_DefaultToolInsertPath;
}

CString CKVEnvApp::SetKVDefaultTechDBPath() {
  m_TechDBPath = GetKVDataPath() + m_LanguageFolder + m_TechDBName;
  return m_TechDBPath;
}

CString CKVEnvApp::GetSimulationRecordingFolderPath() const {
  const CString folder = GetKVDataPath() + _T("SimulationRecordings");
  if (m_bStores) ::CreateDirectoryW(folder, nullptr);  // usually exists already
  return EndingInBackslash(folder);
}

// ---- reports

CString CKVEnvApp::GetXMLReportRelativePathInfo() const { return _T("Setup_Sheet_Images\\") + m_PartFileName; }

// ---- NC editor

// The editor in the install folder if it exists, else the one in the folder above, even if it is missing.
void CKVEnvApp::SetCIMCOEditorPath() {
  const CString install = InInstall(CString());
  m_NCEditorPath = install + kNCEditor;
  if (!Exists(m_NCEditorPath)) m_NCEditorPath = FolderAbove(install) + kNCEditor;
  m_NCEditorArguments = _T("/lang=") + GetLanguageForSIMCO();
}

// ---- the same for code without an environment pointer

CString CKVVersionInfo::OnKestrovaAllPDFFilePath() {
  const CKVEnvApp* env = AppEnv();
  return env ? env->GetManualPDFFilePath() : CString();
}

CString CKVVersionInfo::OnKestrovaTaskPaneINIFFilePath() {
  const CKVEnvApp* env = AppEnv();
  return env ? env->GetKVTaskPaneINIFilePath() : CString();
}

CString CKVVersionInfo::GetTaskPaneTabStringName() {
  const CKVEnvApp* env = AppEnv();
  return env ? env->GetTaskPaneTabStringID() : CString();
}

int GetCorrectToolFilePath(const CString& path, CString& result) {
  const int at = path.Find(_T("Tooling"));
  if (at <= 0) return 0;
  result = AppEnv()->GetKVDataPath() + path.Mid(at);
  return 1;
}
