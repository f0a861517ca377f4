// QFAfx: the library's view of the application that hosts it. QFWaitCursor: the wait cursor for a scope.
//
// Main thread only.
#pragma once

#include "framework/application.h"

// State of an application's module; the library only keeps the pointer.
struct AFX_MODULE_STATE;

class KVSHARE_API QFAfx {
 public:
  QFAfx() = delete;

  // The stored application, else the framework's current one; null if there is none. Set ignores null; in own-state
  // mode it also stores the main window of the calling thread.
  static CWinApp* GetWinApp();
  static void SetWinApp(CWinApp* app);

  // The main window of GetWinApp; null if there is none.
  static CWnd* GetMainWnd();
  // The stored window, else the window of GetMainWnd, or null.
  static HWND GetMainHWnd();
  static void SetMainHWnd(HWND window) { m_hMainWnd = window; }

  static AFX_MODULE_STATE* GetModuleState() { return m_pModuleState; }
  static void SetModuleState(AFX_MODULE_STATE* state) { m_pModuleState = state; }

  // Own-state mode: messages of a thread with its own main window belong to that window.
  static int GetUseOwnState() { return m_bUseOwnState; }
  static void SetUseOwnState(int use) { m_bUseOwnState = use; }

 private:
  static CWinApp* m_pApp;
  static HWND m_hMainWnd;
  static AFX_MODULE_STATE* m_pModuleState;
  static int m_bUseOwnState;
};

// Without an application it does nothing.
class KVSHARE_API QFWaitCursor {
 public:
  QFWaitCursor() { Call(1); }
  ~QFWaitCursor() { Call(-1); }
  QFWaitCursor(const QFWaitCursor&) = delete;
  QFWaitCursor& operator=(const QFWaitCursor&) = delete;
  // Shows it again after something else has changed the cursor.
  void Restore() { Call(0); }

 private:
  static void Call(int code) {
    if (CWinApp* const app = QFAfx::GetWinApp()) app->DoWaitCursor(code);
  }
};
