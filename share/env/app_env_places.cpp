// Where the product lies and what lies beside it; the user, the time, the flags of the process's environment.
#include "framework/resources.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "platform/process.h"
#include "share/env/app_env.h"

namespace {

constexpr LPCTSTR kEnglishFolder = _T("lang\\English\\");
constexpr DWORD kFlagUnits = 50;

bool IsYes(LPCTSTR variable) {
  TCHAR value[kFlagUnits] = {};
  const DWORD length = GetEnvironmentVariableW(variable, value, kFlagUnits);
  return length > 0 && length < kFlagUnits && CString(value).CompareNoCase(_T("YES")) == 0;
}

}  // namespace

void InitShareDll() {
  new CDynLinkLibrary(GetModuleHandleW(_T("KVSHAREu")));  // the chain's own from here on
}

// ---- this library's own file

// A path too long for the platform's buffers leaves all of it empty.
void CKVEnvApp::StoreLocation() {
  TCHAR file[MAX_PATH] = {};
  TCHAR drive[_MAX_DRIVE] = {};
  TCHAR folder[_MAX_DIR] = {};
  TCHAR name[_MAX_FNAME] = {};
  TCHAR extension[_MAX_EXT] = {};
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(m_ShareDllName), file, MAX_PATH);
  if (length < MAX_PATH) _wsplitpath(file, drive, folder, name, extension);
  m_Drive = drive;
  m_InstallPath = folder;
  m_ModuleName = m_ModuleDllName;  // and not the name of the file: that is required
  m_ModuleExt = extension;
}

// ---- libraries

void CKVEnvApp::SetKVModuleDllName() {
  m_ModuleDllName = _T("KESTROVAu");
  m_ShareDllName = _T("KVSHAREu");
  m_ImagesDllName = _T("KVImagesResu.dll");
  m_InterfaceDllName = _T("KVAPIu.DLL");
  m_FiveAxisDllName = _T("KV5AxisResu.dll");
}

void CKVEnvApp::SetKVResourceDllName() { m_ResourceDllName = _T("KVRESu.DLL"); }

void CKVEnvApp::SetKVDebugResourceDllName() { m_DebugResourceDllName = _T("KVDEBUGRESu.DLL"); }

void CKVEnvApp::SetVisiDllName() { m_VisiDllName = _T("MS.DLL"); }

void CKVEnvApp::SetEDConnectorDllName() {
  m_EDConnectorDllName = _T("eDConnector.DLL");
  m_EDConnectorPngDllName = _T("libpng13.dll");
}

void CKVEnvApp::SetKVEDConnectorDllName() { m_KVEDConnectorDllName = _T("KVEDConnectoru.DLL"); }

void CKVEnvApp::SetResourcePaths() {
  m_ResourceDllPath = InInstall(m_LanguageFolder + m_ResourceDllName);
  m_InterfaceDllPath = InInstall(m_InterfaceDllName);
  m_ImagesDllPath = InInstall(m_ImagesDllName);
  m_DebugResourceDllPath = InInstall(m_LanguageFolder + m_DebugResourceDllName);
}

void CKVEnvApp::FindHelp() {
  CString folder = InInstall(m_LanguageFolder);
  if (_waccess(folder + _T("Milling.chm"), 0) != 0) folder = InInstall(kEnglishFolder);
  SetKVHelpPath(folder);
  // The help system's context table is loaded from there once there is a help system.
}

// ---- language, user, time

// English to begin with. The registry's and the host's choice join here.
void CKVEnvApp::SetKVDefLangAndDataRelPath() {
  m_LanguageFolder = kEnglishFolder;
  m_TechDBLang = QF_DBLANG_ENGLISH;
}

void CKVEnvApp::SetUserName() {
  TCHAR name[100] = {};
  DWORD units = 100;
  if (::GetUserNameW(name, &units)) m_UserName = name;
}

CString CKVEnvApp::GetCurrentDate() const {
  TCHAR date[32] = {};
  GetDateFormatW(LOCALE_USER_DEFAULT, 0, nullptr, _T("MM'/'dd'/'yyyy"), date, 32);
  return CString(date);
}

CString CKVEnvApp::GetTickCount() const {
  TCHAR time[32] = {};
  GetTimeFormatW(LOCALE_USER_DEFAULT, 0, nullptr, _T("HH':'mm"), time, 32);
  return CString(time);
}

void CKVEnvApp::SetDebugFlag() { m_bDebug = IsYes(_T("_KVDEBUG")); }

int CKVEnvApp::IsKVRunningInTestMode() const { return m_bTesting && IsYes(_T("KV_TESTING")); }

CString CKVEnvApp::GetTreeTabProgID() const { return _T("QFSWTREETAB.QFSWTreeTabCtrlVS2019.21"); }

CString CKVEnvApp::GetTaskPaneTabStringID() const { return _T("KVTASKPANE.KVTaskPaneWebCtrlVS2019.6"); }
