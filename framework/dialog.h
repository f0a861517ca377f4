// CDialog: a modal dialog from a template of the resource libraries (framework/resources.h).
//
// A derived class has functions for its buttons (framework/window.h). OK and Cancel call OnOK and OnCancel; Escape and
// the window's close button are Cancel. The dialog belongs to the thread that calls DoModal.
#pragma once

#include <exception>

#include "framework/window.h"

class KVSHARE_API CDialog : public CWnd {
  DECLARE_DYNAMIC(CDialog)

 public:
  explicit CDialog(UINT templateId, CWnd* parent = nullptr);

  // Shows the dialog until EndDialog and returns its result; -1 if no library has the template or the dialog cannot
  // appear. An exception of the dialog's own functions ends it and is raised from here.
  virtual INT_PTR DoModal();
  void EndDialog(int result);

 protected:
  // Called before the dialog is shown. The base class's returns TRUE: the first control gets the focus.
  virtual BOOL OnInitDialog() { return TRUE; }
  virtual void OnOK() { EndDialog(IDOK); }
  virtual void OnCancel() { EndDialog(IDCANCEL); }
  // F1. Returns TRUE if it was handled.
  virtual BOOL OnHelpInfo(HELPINFO*) { return FALSE; }

  UINT m_nTemplateId;
  CWnd* m_pParent;  // the owner; null for the application's main window

 private:
  static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  void OnCommand(int id);

  std::exception_ptr m_pException;
};
