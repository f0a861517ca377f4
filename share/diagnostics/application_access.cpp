#include "share/diagnostics/application_access.h"

CWinApp* QFAfx::m_pApp = nullptr;
HWND QFAfx::m_hMainWnd = nullptr;
AFX_MODULE_STATE* QFAfx::m_pModuleState = nullptr;
int QFAfx::m_bUseOwnState = 0;

CWinApp* QFAfx::GetWinApp() { return m_pApp ? m_pApp : AfxGetApp(); }

void QFAfx::SetWinApp(CWinApp* app) {
  if (!app) return;
  m_pApp = app;
  const CWnd* const main = GetUseOwnState() ? AfxGetMainWnd() : nullptr;
  if (main) SetMainHWnd(main->GetSafeHwnd());
}

CWnd* QFAfx::GetMainWnd() {
  CWinApp* const app = GetWinApp();
  return app ? app->GetMainWnd() : nullptr;
}

HWND QFAfx::GetMainHWnd() {
  if (m_hMainWnd) return m_hMainWnd;
  const CWnd* const main = GetMainWnd();
  return main ? main->GetSafeHwnd() : nullptr;
}
