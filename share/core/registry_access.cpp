// Direct access to single registry values.
#include "share/core/registry_access.h"

#include <fmt/format.h>

#include <array>

#include "share/core/registry_key_handle.h"

namespace {

constexpr DWORD kTextBufferBytes = 2000;
constexpr DWORD kNameUnits = 2048;

// Reads a value of at most that many bytes.
bool Read(HKEY key, LPCTSTR name, void* buffer, DWORD bytes) {
  return RegQueryValueExW(key, name, nullptr, nullptr, static_cast<BYTE*>(buffer), &bytes) == ERROR_SUCCESS;
}

// Reads a text of at most kUnits units with its terminator; empty for a longer one.
template <std::size_t kUnits>
CString ReadText(HKEY key, LPCTSTR name) {
  std::array<TCHAR, kUnits> buffer = {};
  if (!Read(key, name, buffer.data(), DWORD(kUnits * sizeof(TCHAR)))) return CString();
  buffer.back() = 0;  // a stored text may lack its terminator
  return CString(buffer.data());
}

// Null if the key can't be opened with these rights.
RegistryKeyHandle Open(HKEY hive, LPCTSTR path, REGSAM rights) {
  RegistryKeyHandle key;
  RegOpenKeyExW(hive, path, 0, rights, key.Receive());
  return key;
}

}  // namespace

int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name) {
  return GetRegSettingDwordValue(hive, path, name, nullptr);
}

int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int* found) {
  int value = 0;
  const bool read = Read(Open(hive, path, KEY_QUERY_VALUE), name, &value, sizeof value);
  if (found) *found = read;
  return read ? value : 1;  // 1 for a missing value, kept for existing modules
}

void SetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int value) {
  RegistryKeyHandle key;
  TCHAR noClass[] = _T("");
  DWORD disposition = 0;
  if (RegOpenKeyExW(hive, path, 0, KEY_WRITE, key.Receive()) == ERROR_FILE_NOT_FOUND)
    RegCreateKeyExW(hive, path, 0, noClass, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, key.Receive(), &disposition);
  if (key) RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

CString GetRegSettingStringValue(HKEY hive, const CString& path, const CString& name) {
  return ReadText<kTextBufferBytes / sizeof(TCHAR)>(Open(hive, path, KEY_QUERY_VALUE), name);
}

int SetRegistryValueForString(HKEY hive, const CString& path, const CString& name, const CString& value) {
  const RegistryKeyHandle key = Open(hive, path, KEY_WRITE);
  if (!key) return 0;  // creates no key, kept for existing modules
  return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.GetString()),
                        DWORD(value.GetLength()) * sizeof(TCHAR)) == ERROR_SUCCESS;
}

void RegSettingDeleteValue(HKEY hive, const CString& path, const CString& name) {
  if (const RegistryKeyHandle key = Open(hive, path, KEY_WRITE)) RegDeleteValueW(key, name);
}

int CheckAccessVersionInstalled(int officeVersion, int is32Bit) {
  const CString office(is32Bit == 1 ? _T("Software\\Wow6432Node\\Microsoft\\Office\\")
                                    : _T("Software\\Microsoft\\Office\\"));
  const CString version(fmt::format_int(officeVersion).c_str());
  return Open(HKEY_LOCAL_MACHINE, office + version + _T(".0\\Access\\InstallRoot"), KEY_READ) != nullptr;
}

CString GetAppInstallPathFromReg(const CString& displayName, int is32Bit, const CString& fileName) {
  const RegistryKeyHandle list =
      Open(HKEY_LOCAL_MACHINE,
           is32Bit == 1 ? _T("Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall")
                        : _T("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall"),
           KEY_READ);
  if (!list) return CString();
  TCHAR name[kNameUnits];
  DWORD units = kNameUnits;
  for (DWORD i = 0; RegEnumKeyExW(list, i, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++i, units = kNameUnits) {
    const RegistryKeyHandle program = Open(list, name, KEY_READ);
    CString displayed = ReadText<kNameUnits>(program, _T("DisplayName"));
    if (!displayed.IsEmpty() && displayed.CompareNoCase(displayName) == 0)
      return ReadText<kNameUnits>(program, _T("InstallLocation")) + fileName;
  }
  return CString();
}
