#include "framework/popup_menu.h"

#include <utility>

namespace {

PopupMenus* g_menus = nullptr;

}  // namespace

PopupMenus::~PopupMenus() = default;

PopupMenus* SetPopupMenus(PopupMenus* menus) { return std::exchange(g_menus, menus); }
PopupMenus* GetPopupMenus() { return g_menus; }
