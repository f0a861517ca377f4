// Facts about the system for a crash report. Any thread may call; not in a translator on Linux.
#pragma once

#include <string>

#include "platform/types.h"

struct SystemVersion {
  std::string name;     // the system's own name; empty: it is known by its version
  std::string version;  // on Linux the kernel's
  DWORD platform = 0;   // 2 for Windows NT
  DWORD major = 0, minor = 0, build = 0;
  DWORD architecture = 0;  // 9 for 64-bit x86
  bool isWorkstation = false;
  bool isServerR2 = false;
  std::string servicePack;
};

KVSHARE_API SystemVersion VersionOfSystem();

// The graphics adapter by the system's device files; false if the system has none.
struct GraphicsDevice {
  std::string card, adapter, chip;
};
KVSHARE_API bool FindGraphicsDevice(GraphicsDevice& device);
