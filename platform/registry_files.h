// The registry's files: what is wrong with them, and how long calls wait for other processes. The platform's own calls
// (platform/registry.h) have no place for this; a program that reports to a user needs it.
#pragma once

#include <string>

#include "platform/registry.h"

// The file of a predefined key's hive in the folder that the environment names at this moment, as a system path in
// UTF-8. The file may be missing. On Windows, where no program reads the files, the name of the key that stands for the
// hive.
KVSHARE_API std::string HiveFile(HKEY hive);

// Reads the whole file of a predefined key's hive: ERROR_SUCCESS, ERROR_FILE_NOT_FOUND without a file, ERROR_BADDB for
// damage anywhere in it, or the status with which opening fails.
KVSHARE_API LSTATUS CheckHive(HKEY hive);

// Puts both hives where the environment variable KV_REGISTRY says. A program calls it at its start, a test after each
// change of the variable. On this system it does nothing, because each use of a predefined key reads the variable. On
// Windows the two predefined keys become keys of this process below HKEY_CURRENT_USER\Software\Kestrova Registries, one
// pair for each text of the variable, and without the variable the machine's own keys again. Returns the status of a
// failure; then the process uses the machine's own keys.
KVSHARE_API LSTATUS UseRegistryOfEnvironment();

// A failure of a hive's file that a call of this process has met.
struct HiveFault {
  // Damage (ERROR_BADDB) and a later format (ERROR_UNKNOWN_REVISION) count as kReading, whichever call has met them.
  enum class During { kReading, kWriting };

  LSTATUS status = ERROR_SUCCESS;
  std::string file;  // as HiveFile
};

// Returns the first failure since the last call with these arguments, and forgets it; ERROR_SUCCESS without a failure.
// Callers that read settings don't see the status of each call: the library goes on with defaults.
KVSHARE_API HiveFault TakeHiveFault(HKEY hive, HiveFault::During during);

// Limits how long the registry calls of its thread wait for other processes, all calls together. Afterwards a call that
// would have to wait returns ERROR_BUSY immediately. Within another limit both hold. Without a limit each call waits up
// to half a minute. Use it as a local variable.
class KVSHARE_API RegistryWaitLimit {
 public:
  explicit RegistryWaitLimit(int most_ms);
  ~RegistryWaitLimit();
  RegistryWaitLimit(const RegistryWaitLimit&) = delete;
  RegistryWaitLimit& operator=(const RegistryWaitLimit&) = delete;

  // Sleeps once, unless a limit of the calling thread is used up; then returns false. Only for the platform's own
  // sources.
  static bool Sleep(LONGLONG step_us);

 private:
  RegistryWaitLimit* const outer_;
  LONGLONG left_us_;
};
