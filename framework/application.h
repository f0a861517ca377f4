// CWinApp: the application that a process is, and CWinThread: a thread with windows; and their messages to the user.
#pragma once

#include "framework/window.h"

// The thread's object from its construction to its destruction, on the same thread; the one before is then used again.
class KVSHARE_API CWinThread : public CCmdTarget {
  DECLARE_DYNAMIC(CWinThread)

 public:
  CWinThread();
  ~CWinThread() override;

  virtual CWnd* GetMainWnd() { return m_pMainWnd; }

  CWnd* m_pMainWnd = nullptr;  // may be null; not owned

 private:
  CWinThread* const m_pFormer;
};

// The process's application from its construction to its destruction; the one before is then used again. Main thread
// only.
class KVSHARE_API CWinApp : public CWinThread {
  DECLARE_DYNAMIC(CWinApp)

 public:
  CWinApp();
  ~CWinApp() override;

  // Shows a text with the buttons and the icon of `style`, and returns the pressed button (platform/windows.h).
  virtual int DoMessageBox(LPCTSTR text, UINT style);
  // The wait cursor: 1 shows it, -1 ends the last 1, 0 shows it again after something else has changed the cursor.
  virtual void DoWaitCursor(int code);

 private:
  CWinApp* const m_pFormerApp;
  int m_nWaiting = 0;
};

// Null without an application.
KVSHARE_API CWinApp* AfxGetApp();
// The object of the calling thread, else the application; null if there is none.
KVSHARE_API CWinThread* AfxGetThread();
// The main window of the calling thread's object; null if there is none.
KVSHARE_API CWnd* AfxGetMainWnd();

// The caption of AfxMessageBox. The caller may change it. Main thread only.
KVSHARE_API CString& MessageBoxCaption();

// Shows a text through the application's DoMessageBox; without an application in a box without an owner. A style
// without an icon gets the exclamation mark. Returns the pressed button, 0 if the box cannot appear.
KVSHARE_API int AfxMessageBox(LPCTSTR text, UINT style = MB_OK);
