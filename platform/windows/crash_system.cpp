#include "platform/crash_system.h"

#include "platform/utf8.h"

namespace {

constexpr int kMetricServerR2 = 89;

}  // namespace

SystemVersion VersionOfSystem() {
  SystemVersion version;
  OSVERSIONINFOEXW facts = {};
  facts.dwOSVersionInfoSize = sizeof facts;
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  version.architecture = system.wProcessorArchitecture;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&facts))) return version;
#pragma GCC diagnostic pop
  version.platform = facts.dwPlatformId;
  version.major = facts.dwMajorVersion;
  version.minor = facts.dwMinorVersion;
  version.build = facts.dwBuildNumber;
  version.isWorkstation = facts.wProductType == VER_NT_WORKSTATION;
  version.isServerR2 = GetSystemMetrics(kMetricServerR2) != 0;
  version.servicePack = Utf8FromWide(facts.szCSDVersion);
  version.version =
      std::to_string(version.major) + '.' + std::to_string(version.minor) + '.' + std::to_string(version.build);
  return version;
}

// The registry has what the system knows.
bool FindGraphicsDevice(GraphicsDevice&) { return false; }
