// Raw registry access, and reading switches through a settings key.
#include "share/env/registry_access.h"

#include <array>

#include "share/env/registry_keys.h"
#include "share/settings/settings_key.h"

namespace {

constexpr DWORD kTextBufferBytes = 2000;
constexpr DWORD kNameUnits = 2048;

// An opened registry key, closed at the end of the scope.
class OpenKey {
 public:
  OpenKey(HKEY hive, LPCTSTR path, REGSAM rights) { status_ = RegOpenKeyExW(hive, path, 0, rights, &handle_); }
  ~OpenKey() {
    if (handle_) RegCloseKey(handle_);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  void Create(HKEY hive, LPCTSTR path, REGSAM rights) {
    TCHAR noClass[] = _T("");
    DWORD disposition = 0;
    status_ = RegCreateKeyExW(hive, path, 0, noClass, REG_OPTION_NON_VOLATILE, rights, nullptr, &handle_, &disposition);
  }
  LSTATUS Status() const { return status_; }
  HKEY Handle() const { return handle_; }

  // Reads into a buffer of that many bytes.
  bool Read(LPCTSTR name, void* buffer, DWORD bytes) const {
    return status_ == ERROR_SUCCESS &&
           RegQueryValueExW(handle_, name, nullptr, nullptr, static_cast<BYTE*>(buffer), &bytes) == ERROR_SUCCESS;
  }
  // Reads a text that fits the buffer; its last unit stays a terminator.
  template <std::size_t kUnits>
  CString ReadText(LPCTSTR name) const {
    std::array<TCHAR, kUnits> buffer = {};
    if (!Read(name, buffer.data(), DWORD(kUnits * sizeof(TCHAR)))) return CString();
    buffer.back() = 0;  // a text as long as the buffer may come without one
    return CString(buffer.data());
  }

 private:
  HKEY handle_ = nullptr;
  LSTATUS status_;
};

// Reads one value through a settings key; what isn't there keeps the default.
template <class Value>
Value ReadSwitch(LPCTSTR path, const CString& name, Value value) {
  QFSettingsKey key(_T("Debug"), path);
  key.AddValue(name, value);
  if (key.RestoreValuesFromRegistry()) key.GetValue(name, value);
  return value;
}

}  // namespace

int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name) {
  return GetRegSettingDwordValue(hive, path, name, nullptr);
}

int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int* found) {
  int value = 0;
  const bool read = OpenKey(hive, path, KEY_QUERY_VALUE).Read(name, &value, sizeof value);
  if (found) *found = read;
  return read ? value : 1;  // 1 for a missing value is required
}

void SetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int value) {
  OpenKey key(hive, path, KEY_WRITE);
  if (key.Status() == ERROR_FILE_NOT_FOUND) key.Create(hive, path, KEY_WRITE);
  if (key.Status() == ERROR_SUCCESS)
    RegSetValueExW(key.Handle(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

CString GetRegSettingStringValue(HKEY hive, const CString& path, const CString& name) {
  return OpenKey(hive, path, KEY_QUERY_VALUE).ReadText<kTextBufferBytes / sizeof(TCHAR)>(name);
}

int SetRegistryValueForString(HKEY hive, const CString& path, const CString& name, const CString& value) {
  const OpenKey key(hive, path, KEY_WRITE);
  if (key.Status() != ERROR_SUCCESS) return 0;  // a missing key is not created: that is required
  return RegSetValueExW(key.Handle(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.GetString()),
                        DWORD(value.GetLength()) * sizeof(TCHAR)) == ERROR_SUCCESS;
}

void RegSettingDeleteValue(HKEY hive, const CString& path, const CString& name) {
  const OpenKey key(hive, path, KEY_WRITE);
  if (key.Status() == ERROR_SUCCESS) RegDeleteValueW(key.Handle(), name);
}

int GetDebugRegistryVal(const CString& name, int defaultValue) {
  return ReadSwitch(kVersionDebugKey, name, defaultValue);
}

CString GetDebugRegistryVal(const CString& name, const CString& defaultValue) {
  return ReadSwitch(kVersionDebugKey, name, defaultValue);
}

int GetVersionIndependentDebugRegistryVal(const CString& name, int defaultValue) {
  return ReadSwitch(kProductDebugKey, name, defaultValue);
}

void GetLegacyTurnDataRegistryData(int& found, int& value) {
  constexpr LPCTSTR kName = _T("LegacyTurnDataCorrection");
  found = 0;
  value = 0;
  QFSettingsKey key(_T("Debug"), kVersionDebugKey);
  key.AddValue(kName, 0);
  if (!key.RestoreValuesFromRegistry()) return;
  found = 1;
  key.GetValue(kName, value);
}

int CheckAccessVersionInstalled(int officeVersion, int is32Bit) {
  CString path;
  path.Format(is32Bit == 1 ? _T("Software\\Wow6432Node\\Microsoft\\Office\\%d.0\\Access\\InstallRoot")
                           : _T("Software\\Microsoft\\Office\\%d.0\\Access\\InstallRoot"),
              officeVersion);
  return OpenKey(HKEY_LOCAL_MACHINE, path, KEY_READ).Status() == ERROR_SUCCESS;
}

CString GetAppInstallPathFromReg(const CString& displayName, int is32Bit, const CString& fileName) {
  const OpenKey list(HKEY_LOCAL_MACHINE,
                     is32Bit == 1 ? _T("Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall")
                                  : _T("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall"),
                     KEY_READ);
  if (list.Status() != ERROR_SUCCESS) return CString();
  TCHAR name[kNameUnits];
  DWORD units = kNameUnits;
  for (DWORD i = 0; RegEnumKeyExW(list.Handle(), i, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++i, units = kNameUnits) {
    const OpenKey program(list.Handle(), name, KEY_READ);
    CString displayed = program.ReadText<kNameUnits>(_T("DisplayName"));
    if (!displayed.IsEmpty() && displayed.CompareNoCase(displayName) == 0)
      return program.ReadText<kNameUnits>(_T("InstallLocation")) + fileName;
  }
  return CString();
}
