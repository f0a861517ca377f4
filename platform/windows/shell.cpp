// Compiled help files, shown by the system's help control.
#include "platform/shell.h"

#include <string>

#include "platform/registry.h"

namespace {

using HelpEntry = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);

constexpr LPCWSTR kControlKey = L"CLSID\\{ADB880A6-D8FF-11CF-9377-00AA003B7A11}\\InprocServer32";
constexpr WORD kWideEntry = 15;  // its ordinal

HMODULE LoadControl() {
  WCHAR path[MAX_PATH] = {};
  DWORD bytes = sizeof path - sizeof(WCHAR);
  HKEY key = nullptr;
  LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, kControlKey, 0, KEY_QUERY_VALUE, &key);
  if (status == ERROR_SUCCESS) {
    status = RegQueryValueExW(key, nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path), &bytes);
    RegCloseKey(key);
  }
  HMODULE control = nullptr;
  if (status == ERROR_SUCCESS) {
    WCHAR expanded[MAX_PATH] = {};
    const DWORD units = ExpandEnvironmentStringsW(path, expanded, MAX_PATH);
    if (units > 0 && units <= MAX_PATH) control = LoadLibraryW(expanded);
  }
  return control ? control : LoadLibraryW(L"hhctrl.ocx");
}

// Null if the control can't be loaded. It stays loaded while the process runs.
HelpEntry LoadHelpEntry() {
  const HMODULE control = LoadControl();
  if (!control) return nullptr;
  return reinterpret_cast<HelpEntry>(
      reinterpret_cast<void*>(GetProcAddress(control, reinterpret_cast<LPCSTR>(std::uintptr_t{kWideEntry}))));
}

}  // namespace

bool OpenCompiledHelp(LPCWSTR file, UINT command, DWORD_PTR context) {
  static const HelpEntry entry = LoadHelpEntry();
  return entry && entry(nullptr, file, command, context) != nullptr;
}
