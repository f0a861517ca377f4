// Handles of boxes and dialogs, the hooks of a thread, and the calls for windows and controls.
#include "platform/linux/dialog_windows.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <utility>

#include "platform/linux/desktop_module.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/open_view.h"

namespace {

// Above all addresses and the numbers of X windows, so that a window of the host is never taken for one of these.
constexpr std::uintptr_t kFirstHandle = std::uintptr_t(0x7E) << 56;

struct Hook {
  HHOOK handle;
  HOOKPROC procedure;
};

// A thread has its own windows and hooks.
thread_local std::map<HWND, FoundWindow> t_windows;
thread_local std::vector<Hook> t_hooks;
thread_local std::size_t t_running_hook = 0;  // its index
constinit std::atomic<std::uintptr_t> g_next_handle = kFirstHandle;

HWND AddWindow(const FoundWindow& window) {
  const auto handle = reinterpret_cast<HWND>(g_next_handle.fetch_add(4));
  t_windows.emplace(handle, window);
  return handle;
}

bool IsOurs(HWND handle) { return reinterpret_cast<std::uintptr_t>(handle) >= kFirstHandle; }

// Calls the thread's newest hook below `place`; 0 if there is none.
LRESULT CallHookBelow(std::size_t place, int code, WPARAM wParam, LPARAM lParam) {
  const std::size_t next = std::min(place, t_hooks.size());
  if (next == 0) return 0;
  const std::size_t outer = std::exchange(t_running_hook, next - 1);
  const LRESULT result = t_hooks[next - 1].procedure(code, wParam, lParam);
  t_running_hook = outer;
  return result;
}

void ReportActivation(HWND window) {
  CallHookBelow(t_hooks.size(), HCBT_ACTIVATE, reinterpret_cast<WPARAM>(window), 0);
}

// Where a window's or control's text is; null for an invalid handle.
std::u16string* TextPlace(HWND window) {
  const FoundWindow found = FindWindowOf(window);
  if (!found.window) return nullptr;
  return found.control ? &found.window->state.controls[*found.control].text : &found.window->state.title;
}

}  // namespace

// ---- windows

DialogWindow::DialogWindow(DialogState its) : state(std::move(its)), handle_(AddWindow({this, {}})) {
  state.window = handle_;
  for (std::size_t i = 0; i < state.controls.size(); ++i) handles_.push_back(AddWindow({this, i}));
}

DialogWindow::~DialogWindow() {
  t_windows.erase(handle_);
  for (const HWND handle : handles_) t_windows.erase(handle);
}

std::optional<std::size_t> DialogWindow::Find(int id) const {
  const auto at =
      std::find_if(state.controls.begin(), state.controls.end(), [&](const auto& control) { return control.id == id; });
  if (at == state.controls.end()) return {};
  return std::size_t(at - state.controls.begin());
}

void DialogWindow::End(INT_PTR result) {
  if (std::exchange(ended_, true)) return;
  result_ = result;
}

void DialogWindow::Post(UINT message, WPARAM wParam) { posted_.emplace_back(message, wParam); }

// To the next control that can have the focus; the first one follows the last.
void DialogWindow::MoveFocus(bool backwards) {
  const std::size_t count = state.controls.size();
  for (std::size_t step = 1; step < count; ++step) {
    const std::size_t at = (state.focus + (backwards ? count - step : step)) % count;
    const ControlState& control = state.controls[at];
    if (!control.IsPressable() || !control.tab_stop) continue;
    state.focus = at;
    return;
  }
}

bool DialogWindow::Run(const std::function<void(const DialogEvent&)>& handle) {
  if (ended_) return true;
  const std::unique_ptr<DialogView> view = OpenView(state);
  if (!view) return false;
  ReportActivation(handle_);
  while (!ended_) {
    for (; !posted_.empty(); posted_.pop_front())
      if (posted_.front().first == WM_NEXTDLGCTL) MoveFocus(posted_.front().second != 0);
    view->Show(state);
    const DialogEvent event = view->Wait();
    if (event.kind == DialogEvent::Kind::kFailed) return false;
    if (event.kind == DialogEvent::Kind::kPressed) {
      if (event.control >= state.controls.size() || !state.controls[event.control].IsPressable()) continue;
      state.focus = event.control;
    }
    handle(event);
  }
  return true;
}

FoundWindow FindWindowOf(HWND handle) {
  const auto found = t_windows.find(handle);
  if (found != t_windows.end()) return found->second;
  SetLastError(DWORD(ERROR_INVALID_WINDOW_HANDLE));
  return {};
}

// ---- hooks

HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread) {
  if (kind != WH_CBT || !procedure || module || thread != GetCurrentThreadId()) {
    SetLastError(DWORD(ERROR_INVALID_PARAMETER));
    return nullptr;
  }
  const auto handle = reinterpret_cast<HHOOK>(g_next_handle.fetch_add(4));
  t_hooks.push_back({handle, procedure});
  return handle;
}

BOOL UnhookWindowsHookEx(HHOOK hook) {
  const bool removed = std::erase_if(t_hooks, [&](const Hook& row) { return row.handle == hook; }) != 0;
  return removed || FailWithStatus(ERROR_INVALID_HANDLE);
}

LRESULT CallNextHookEx(HHOOK, int code, WPARAM wParam, LPARAM lParam) {
  return CallHookBelow(t_running_hook, code, wParam, lParam);
}

// ---- controls

HWND GetDlgItem(HWND dialog, int control) {
  const FoundWindow found = FindWindowOf(dialog);
  const auto place = found.window && !found.control ? found.window->Find(control) : std::nullopt;
  if (place) return found.window->HandleOf(*place);
  if (found.window) SetLastError(DWORD(ERROR_CONTROL_ID_NOT_FOUND));
  return nullptr;
}

BOOL SetDlgItemTextW(HWND dialog, int control, LPCWSTR text) {
  const HWND window = GetDlgItem(dialog, control);
  return window && SetWindowTextW(window, text);
}

BOOL EnableWindow(HWND window, BOOL enable) {
  if (!IsOurs(window)) {
    Desktop* const desktop = window && IsQtLoaded() ? LoadedDesktop() : nullptr;
    return desktop && desktop->EnableHostWindow(window, enable != FALSE);
  }
  const FoundWindow found = FindWindowOf(window);
  if (!found.control) return FALSE;
  return !std::exchange(found.window->state.controls[*found.control].enabled, enable != FALSE);
}

BOOL IsWindowEnabled(HWND window) {
  const FoundWindow found = FindWindowOf(window);
  return found.window && (!found.control || found.window->state.controls[*found.control].enabled);
}

BOOL ShowWindow(HWND window, int show) {
  const FoundWindow found = FindWindowOf(window);
  if (!found.control) return FALSE;
  return std::exchange(found.window->state.controls[*found.control].visible, show != SW_HIDE);
}

BOOL IsWindowVisible(HWND window) {
  const FoundWindow found = FindWindowOf(window);
  return found.window && (!found.control || found.window->state.controls[*found.control].visible);
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
  std::u16string* const place = TextPlace(window);
  if (place) *place = text ? text : u"";
  return place != nullptr;
}

int GetWindowTextLengthW(HWND window) {
  const std::u16string* const text = TextPlace(window);
  return text ? int(text->size()) : 0;
}

int GetWindowTextW(HWND window, LPWSTR buffer, int units) {
  const std::u16string* const text = TextPlace(window);
  if (!text || !buffer || units <= 0) return 0;
  const std::size_t length = std::min(text->size(), std::size_t(units) - 1);
  text->copy(buffer, length);
  buffer[length] = 0;
  return int(length);
}

BOOL CheckDlgButton(HWND dialog, int control, UINT check) {
  const FoundWindow found = FindWindowOf(GetDlgItem(dialog, control));
  if (!found.control) return FALSE;
  found.window->state.controls[*found.control].checked = check != BST_UNCHECKED;
  return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int control) {
  const FoundWindow found = FindWindowOf(GetDlgItem(dialog, control));
  return found.control && found.window->state.controls[*found.control].checked ? BST_CHECKED : BST_UNCHECKED;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM) {
  const FoundWindow found = FindWindowOf(window);
  if (!found.window || found.control) return FALSE;
  found.window->Post(message, wParam);
  return TRUE;
}
