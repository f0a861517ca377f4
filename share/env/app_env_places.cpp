// The location of the product and of its libraries; user, time, flags from environment variables.
#include <utility>

#include "framework/resources.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "share/env/app_env.h"
#include "share/env/help_contexts.h"

namespace {

constexpr DWORD kFlagUnits = 50;

// This library's link in the chain of resource modules, which owns it. Null before InitShareDll.
CDynLinkLibrary* g_link = nullptr;

HelpContexts* g_helpContexts = nullptr;

bool IsYes(LPCTSTR variable) {
  TCHAR value[kFlagUnits] = {};
  const DWORD length = GetEnvironmentVariableW(variable, value, kFlagUnits);
  return length > 0 && length < kFlagUnits && CString(value).CompareNoCase(_T("YES")) == 0;
}

// The full path of a loaded library; empty if it is too long for the platform's buffers.
CString FileOfLibrary(LPCTSTR name) {
  TCHAR loadedFrom[MAX_PATH] = {};
  TCHAR file[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(name), loadedFrom, MAX_PATH);
  // The loader's path may contain ".."; resolve it before other paths are built from it.
  const bool fits = length > 0 && length < MAX_PATH && GetFullPathNameW(loadedFrom, MAX_PATH, file, nullptr) < MAX_PATH;
  return fits ? CString(file) : CString();
}

// This library's file, which stays the same while the library is loaded. Never destroyed: an environment may be built
// while the process ends.
const CString& OwnFile(LPCTSTR name) {
  static const CString& file = *new CString(FileOfLibrary(name));
  return file;
}

}  // namespace

void CKVEnvApp::LinkResources() {
  g_link = new CDynLinkLibrary(GetModuleHandleW(_T("KVSHAREu")));  // the chain owns it
}

// ---- this library's own file

// A path that is too long for the platform's buffers leaves all parts empty.
void CKVEnvApp::StoreLocation() {
  TCHAR drive[_MAX_DRIVE] = {};
  TCHAR folder[_MAX_DIR] = {};
  TCHAR name[_MAX_FNAME] = {};
  TCHAR extension[_MAX_EXT] = {};
  const CString& file = OwnFile(m_ShareDllName);
  if (!file.IsEmpty()) _wsplitpath(file, drive, folder, name, extension);
  m_Drive = drive;
  m_InstallPath = folder;
  m_ModuleName = m_ModuleDllName;  // not the name of the file, kept for existing modules
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

// Loads the language library, so that CString::LoadString finds its texts if this library is in the chain. It stays
// loaded after CloseAppEnv, because texts may still be needed; the next start replaces it.
void CKVEnvApp::LoadResources() const {
  if (!g_link) return;
  const HMODULE resources = LoadLibraryExW(m_ResourceDllPath, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  if (!resources) return;
  if (const HMODULE former = std::exchange(g_link->m_hResource, resources)) FreeLibrary(former);
}

void SetHelpContexts(HelpContexts* contexts) { g_helpContexts = contexts; }

void CKVEnvApp::FindHelp() {
  CString folder = InInstall(m_LanguageFolder);
  const CString english = InEnglish(_T(""));
  if (folder != english && _waccess(folder + _T("Milling.chm"), 0) != 0) folder = english;
  SetKVHelpPath(folder);
  if (g_helpContexts) g_helpContexts->Load(folder);
}

// ---- user, time

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
