// CWnd: a window by its handle. CCmdTarget: the base of all classes that handle commands.
#pragma once

#include "framework/object.h"
#include "platform/windows.h"

class KVSHARE_API CCmdTarget : public CObject {
  DECLARE_DYNAMIC(CCmdTarget)
};

// Does not own the window.
class KVSHARE_API CWnd : public CCmdTarget {
  DECLARE_DYNAMIC(CWnd)

 public:
  CWnd() = default;
  explicit CWnd(HWND window) : m_hWnd(window) {}

  // Null without a window.
  HWND GetSafeHwnd() const { return m_hWnd; }

  HWND m_hWnd = nullptr;
};
