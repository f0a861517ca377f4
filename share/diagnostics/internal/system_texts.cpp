// The user, the operating system and the graphics adapter for a crash report.
#include "platform/crash_system.h"
#include "platform/locale.h"
#include "platform/process.h"
#include "share/core/registry_access.h"
#include "share/core/registry_key_handle.h"
#include "share/diagnostics/internal/crash_names.h"
#include "share/diagnostics/internal/crash_report.h"

namespace {

constexpr int kRootPrefix = 18;  // "\Registry\Machine\"
constexpr DWORD kMostUserUnits = 257;
constexpr int kMegabyte = 0x100000;

std::string UserName() {
  TCHAR name[kMostUserUnits] = {};
  DWORD units = kMostUserUnits;
  return GetUserNameW(name, &units) ? ToUtf8(name) : "Unknown";
}

bool IsKeyThere(const CString& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

std::optional<GraphicsTexts> GraphicsOfRegistry() {
  const CString video(_T("HARDWARE\\DEVICEMAP\\VIDEO"));
  if (!IsKeyThere(video)) return {};
  const CString place = GetRegSettingStringValue(HKEY_LOCAL_MACHINE, video, _T("\\Device\\Video0"));
  const CString adapter = place.GetLength() > kRootPrefix ? place.Mid(kRootPrefix) : CString();
  if (adapter.IsEmpty() || !IsKeyThere(adapter)) return {};
  const auto text = [&](LPCTSTR name) { return ToUtf8(GetRegSettingStringValue(HKEY_LOCAL_MACHINE, adapter, name)); };
  GraphicsTexts texts;
  texts.card = text(_T("Device Description"));
  texts.adapter = text(_T("HardwareInformation.AdapterString"));
  texts.chip = text(_T("HardwareInformation.ChipType"));
  texts.dac = text(_T("HardwareInformation.DacType"));
  int found = 0;
  const int bytes = GetRegSettingDwordValue(HKEY_LOCAL_MACHINE, adapter, _T("HardwareInformation.MemorySize"), &found);
  texts.megabytes = found ? bytes / kMegabyte : 0;
  return texts;
}

std::optional<GraphicsTexts> GraphicsOfSystem() {
  GraphicsDevice device;
  if (!FindGraphicsDevice(device)) return {};
  GraphicsTexts texts;
  texts.card = device.card;
  texts.adapter = device.adapter;
  texts.chip = device.chip;
  return texts;
}

}  // namespace

SystemTexts GatherSystemTexts() {
  const SystemVersion version = VersionOfSystem();
  SystemTexts texts;
  texts.user = UserName();
  texts.system = SystemName(version);
  texts.version = version.version;
  texts.language = LanguageName(PRIMARYLANGID(GetUserDefaultLangID()));
  texts.graphics = GraphicsOfRegistry();
  if (!texts.graphics) texts.graphics = GraphicsOfSystem();
  return texts;
}
