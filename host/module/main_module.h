// The main module of the command line. As a product's main module it registers the callbacks, owns the application
// settings, and opens and closes the environment.
//
// Only commands that need the environment start it: the start writes missing switches into the registry, which a query
// must not do. One per process, main thread only.
#pragma once

#include <chrono>
#include <optional>

#include "host/registry/registry_health.h"

namespace kestrova {

// Links the library into the resource chain and registers the callbacks; enough for a command that writes no settings.
// A second call does nothing.
void UseLibrary();

// Calls UseLibrary, reads the application settings from the registry and starts the environment. A second call does
// nothing. Throws Failure if a file of the registry is damaged; if one can't be read or written, prints that on stderr
// and goes on with defaults, or throws Failure if the command needs all stored values.
void StartMainModule(Needs needs = Needs::kDefaultsSuffice);

// Whether the library may show messages (GetAppDisplayAlerts); at first it may.
void WantMessages(bool wanted);

// The destructor closes the environment if the module was started. Keep one for the time of main.
class MainModuleScope {
 public:
  MainModuleScope() = default;
  ~MainModuleScope();
  MainModuleScope(const MainModuleScope&) = delete;
  MainModuleScope& operator=(const MainModuleScope&) = delete;
};

// Cancels the user's jobs: IsUserJobCancelled returns 1 until the UserJobScope ends. Any thread and a signal handler
// may call it. True if the jobs were cancelled already.
bool CancelUserJob();

// Jobs that the user may cancel run within this scope; its start and end clear the cancellation. With a time limit the
// jobs are also cancelled when it has passed since the start. Create and destroy the scope while no job runs.
class UserJobScope {
 public:
  explicit UserJobScope(std::optional<std::chrono::milliseconds> limit = {});
  ~UserJobScope();
  UserJobScope(const UserJobScope&) = delete;
  UserJobScope& operator=(const UserJobScope&) = delete;
};

}  // namespace kestrova
