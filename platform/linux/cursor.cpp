// The wait cursor of the host's windows.
#include <atomic>

#include "platform/linux/desktop_module.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/open_view.h"
#include "platform/windows.h"

namespace {

constinit std::atomic<HCURSOR> g_cursor = nullptr;

bool IsWait(HCURSOR cursor) { return cursor == reinterpret_cast<HCURSOR>(const_cast<LPWSTR>(IDC_WAIT)); }

}  // namespace

// A cursor's handle is its number.
HCURSOR LoadCursorW(HINSTANCE module, LPCWSTR name) {
  if (!module && (name == IDC_ARROW || name == IDC_WAIT)) return reinterpret_cast<HCURSOR>(const_cast<LPWSTR>(name));
  SetLastError(DWORD(ERROR_RESOURCE_NAME_NOT_FOUND));
  return nullptr;
}

HCURSOR SetCursor(HCURSOR cursor) {
  const HCURSOR former = g_cursor.exchange(cursor);
  Desktop* const desktop = IsWait(former) != IsWait(cursor) && IsQtLoaded() ? LoadedDesktop() : nullptr;
  if (desktop) desktop->ShowWaitCursor(IsWait(cursor));
  return former;
}
