// Menus that pop up at a point of the screen: the library has no windows and shows them through this interface.
//
// The main module, or a module with windows, sets an implementation. Main thread only.
#pragma once

#include <vector>

#include "framework/rectangle.h"
#include "framework/text.h"

struct PopupMenuItem {
  UINT command = 0;  // not 0, unless the item opens a submenu
  CString text = {};
  bool opens_submenu = false;
  std::vector<PopupMenuItem> submenu = {};
};

class KVSHARE_API PopupMenus {
 public:
  virtual ~PopupMenus();
  // Shows the menu and waits. Returns the command of the chosen item, or 0 if the user chose none. Either button of the
  // mouse chooses.
  virtual UINT Track(const std::vector<PopupMenuItem>& items, const CPoint& onScreen) = 0;
};

// Sets the implementation and returns the earlier one, or null. It stays the caller's and is used until the next call;
// null means that menus can't be shown.
KVSHARE_API PopupMenus* SetPopupMenus(PopupMenus* menus);
KVSHARE_API PopupMenus* GetPopupMenus();
