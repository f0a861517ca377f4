// The current application and thread objects.
#include "framework/application.h"

#include <algorithm>
#include <utility>

IMPLEMENT_DYNAMIC(CWinThread, CCmdTarget)
IMPLEMENT_DYNAMIC(CWinApp, CWinThread)

namespace {

constexpr UINT kIconMask = 0xF0;

CWinApp* g_app = nullptr;
thread_local CWinThread* t_thread = nullptr;

}  // namespace

CWinThread::CWinThread() : m_pFormer(std::exchange(t_thread, this)) {}
CWinThread::~CWinThread() { t_thread = m_pFormer; }

CWinApp::CWinApp() : m_pFormerApp(std::exchange(g_app, this)) {}
CWinApp::~CWinApp() { g_app = m_pFormerApp; }

int CWinApp::DoMessageBox(LPCTSTR text, UINT style) {
  const CWnd* const main = GetMainWnd();
  return MessageBoxW(main ? main->GetSafeHwnd() : nullptr, text, MessageBoxCaption(), style);
}

void CWinApp::DoWaitCursor(int code) {
  m_nWaiting = std::max(m_nWaiting + code, 0);
  SetCursor(LoadCursorW(nullptr, m_nWaiting > 0 ? IDC_WAIT : IDC_ARROW));
}

CWinApp* AfxGetApp() { return g_app; }

CWinThread* AfxGetThread() { return t_thread ? t_thread : g_app; }

CWnd* AfxGetMainWnd() {
  CWinThread* const thread = AfxGetThread();
  return thread ? thread->GetMainWnd() : nullptr;
}

CString& MessageBoxCaption() {
  static CString caption(_T("Kestrova"));
  return caption;
}

int AfxMessageBox(LPCTSTR text, UINT style) {
  if ((style & kIconMask) == 0) style |= MB_ICONEXCLAMATION;
  if (g_app) return g_app->DoMessageBox(text, style);
  return MessageBoxW(nullptr, text, MessageBoxCaption(), style);
}
