// The system has no file of a hive that a program could read, and its calls don't wait for other processes.
#include "platform/registry_files.h"

#include <algorithm>

#include "platform/process.h"
#include "platform/utf8.h"

namespace {

constexpr LPCWSTR kUser = L"\\user";
constexpr LPCWSTR kMachine = L"\\machine";
Text g_redirected;  // the key below which both hives are; empty without KV_REGISTRY

constexpr DWORD kMostUnits = 200;  // of the variable; a key's name has 255

// Makes a predefined key another name of a key of the user.
LSTATUS Redirect(HKEY predefined, const Text& path) {
  HKEY opened = nullptr;
  LSTATUS status =
      RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, nullptr);
  if (status != ERROR_SUCCESS) return status;
  status = RegOverridePredefKey(predefined, opened);
  RegCloseKey(opened);
  return status;
}

}  // namespace

LSTATUS UseRegistryOfEnvironment() {
  for (const HKEY predefined : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) RegOverridePredefKey(predefined, nullptr);
  g_redirected.clear();
  WCHAR name[kMostUnits] = {};
  const DWORD units = GetEnvironmentVariableW(L"KV_REGISTRY", name, kMostUnits);
  if (units == 0) return ERROR_SUCCESS;
  if (units >= kMostUnits) return ERROR_FILENAME_EXCED_RANGE;
  std::replace(name, name + units, L'\\', L'/');
  const Text path = Text(L"Software\\Kestrova Registries\\") + name;
  LSTATUS status = Redirect(HKEY_LOCAL_MACHINE, path + kMachine);
  if (status == ERROR_SUCCESS) status = Redirect(HKEY_CURRENT_USER, path + kUser);
  if (status == ERROR_SUCCESS) {
    g_redirected = L"HKEY_CURRENT_USER\\" + path;
  } else {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  }
  return status;
}

std::string HiveFile(HKEY hive) {
  if (!g_redirected.empty()) return Utf8FromWide(g_redirected + (hive == HKEY_CURRENT_USER ? kUser : kMachine));
  return hive == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE";
}

// A hive without keys counts as one without a file.
LSTATUS CheckHive(HKEY hive) {
  WCHAR name[256];
  DWORD units = 256;
  const LSTATUS status = RegEnumKeyExW(hive, 0, name, &units, nullptr, nullptr, nullptr, nullptr);
  return status == ERROR_NO_MORE_ITEMS ? ERROR_FILE_NOT_FOUND : status;
}

HiveFault TakeHiveFault(HKEY, HiveFault::During) { return {}; }

RegistryWaitLimit::RegistryWaitLimit(int most_ms) : outer_(nullptr), left_us_(LONGLONG(most_ms) * 1000) {}

RegistryWaitLimit::~RegistryWaitLimit() = default;

bool RegistryWaitLimit::Sleep(LONGLONG) { return false; }
