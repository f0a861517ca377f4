// CWnd: a window or control by its handle, and the table of a class's commands. CCmdTarget: the base of all classes
// that handle commands.
#pragma once

#include <map>
#include <memory>

#include "framework/object.h"
#include "platform/windows.h"

class KVSHARE_API CCmdTarget : public CObject {
  DECLARE_DYNAMIC(CCmdTarget)
};

class CWnd;

// A class's functions for clicks of its buttons; the base class's table follows.
//
//   class ToolDlg : public CDialog {                BEGIN_MESSAGE_MAP(ToolDlg, CDialog)
//     void OnDelete();                                ON_BN_CLICKED(kDelete, OnDelete)
//     DECLARE_MESSAGE_MAP()                         END_MESSAGE_MAP()
struct AFX_MSGMAP_ENTRY {
  int id;
  void (CWnd::*function)();  // null ends a table
};
struct AFX_MSGMAP {
  const AFX_MSGMAP* base;
  const AFX_MSGMAP_ENTRY* entries;
};

#define DECLARE_MESSAGE_MAP()                \
 protected:                                  \
  static const AFX_MSGMAP* ThisMessageMap(); \
  const AFX_MSGMAP* GetMessageMap() const override;
#define BEGIN_MESSAGE_MAP(class_name, base_class_name)                             \
  const AFX_MSGMAP* class_name::GetMessageMap() const { return ThisMessageMap(); } \
  const AFX_MSGMAP* class_name::ThisMessageMap() {                                 \
    using ThisClass = class_name;                                                  \
    using BaseClass = base_class_name;                                             \
    static const AFX_MSGMAP_ENTRY entries[] = {
#define ON_BN_CLICKED(id, function) {id, static_cast<void (CWnd::*)()>(&ThisClass::function)},
#define END_MESSAGE_MAP()                                               \
  { 0, nullptr }                                                        \
  }                                                                     \
  ;                                                                     \
  static const AFX_MSGMAP map = {BaseClass::ThisMessageMap(), entries}; \
  return &map;                                                          \
  }

// Does not own the window. The operations call the platform (platform/windows.h); without a window they do nothing.
class KVSHARE_API CWnd : public CCmdTarget {
  DECLARE_DYNAMIC(CWnd)

 public:
  CWnd() = default;
  explicit CWnd(HWND window) : m_hWnd(window) {}

  // Null without a window.
  HWND GetSafeHwnd() const { return m_hWnd; }

  void SetWindowText(LPCTSTR text) { ::SetWindowTextW(m_hWnd, text); }
  void GetWindowText(CString& text) const;
  // TRUE if it was disabled before.
  BOOL EnableWindow(BOOL enable = TRUE) { return ::EnableWindow(m_hWnd, enable); }
  BOOL IsWindowEnabled() const { return ::IsWindowEnabled(m_hWnd); }
  // show: SW_HIDE or SW_SHOW. TRUE if it was visible before.
  BOOL ShowWindow(int show) { return ::ShowWindow(m_hWnd, show); }
  BOOL IsWindowVisible() const { return ::IsWindowVisible(m_hWnd); }

  // The control of that number; null if there is none. Valid as long as this object and its window.
  CWnd* GetDlgItem(int id) const;
  void SetDlgItemText(int id, LPCTSTR text) { ::SetDlgItemTextW(m_hWnd, id, text); }
  int GetDlgItemText(int id, CString& text) const;
  // BST_CHECKED or BST_UNCHECKED.
  void CheckDlgButton(int id, UINT check) { ::CheckDlgButton(m_hWnd, id, check); }
  UINT IsDlgButtonChecked(int id) const { return ::IsDlgButtonChecked(m_hWnd, id); }

  HWND m_hWnd = nullptr;

 protected:
  static const AFX_MSGMAP* ThisMessageMap() { return nullptr; }
  virtual const AFX_MSGMAP* GetMessageMap() const { return ThisMessageMap(); }
  // Calls the function of that button; false if the tables have none.
  bool OnButtonClicked(int id);
  // Forgets the controls of the last window.
  void ForgetControls() { m_Controls.clear(); }

 private:
  mutable std::map<int, std::unique_ptr<CWnd>> m_Controls;
};
