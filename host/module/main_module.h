// The main module of the command line: what a product's own main module is to the library. It registers the callbacks,
// owns the application settings, and opens and closes the environment.
//
// It is started by the first command that needs it, and not by the others: starting writes missing switches back into
// the registry, which a mere query must not do. One per process, on the main thread.
#pragma once

namespace kestrova {

// Makes the library usable for a command that writes no settings: its link in the resource chain, and the callbacks.
// A second call does nothing.
void UseLibrary();

// Starts the module if it isn't running: what UseLibrary does, the application settings from the registry, then the
// environment.
void StartMainModule();

// Closes the environment when main ends, on whatever road, if the module was started.
class MainModuleScope {
 public:
  MainModuleScope() = default;
  ~MainModuleScope();
  MainModuleScope(const MainModuleScope&) = delete;
  MainModuleScope& operator=(const MainModuleScope&) = delete;
};

// The user doesn't want the running jobs any more: IsUserJobCancelled says so until the scope's end. Any thread may
// call, and a signal's handler. True if it had been said before.
bool CancelUserJob();

// Within it jobs run that the user may cancel.
class UserJobScope {
 public:
  UserJobScope();
  ~UserJobScope();
  UserJobScope(const UserJobScope&) = delete;
  UserJobScope& operator=(const UserJobScope&) = delete;
};

}  // namespace kestrova
