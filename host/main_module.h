// The main module of the command line: what a product's own main module is to the library. It registers the callbacks,
// owns the application settings, and opens and closes the environment.
//
// It is started by the first command that needs it, and not by the others: starting writes missing switches back into
// the registry, which a mere query must not do. One per process, on the main thread.
#pragma once

class QFSettingsKey;

namespace kestrova {

// Starts the module if it isn't running: the library's link in the resource chain, the callbacks, the application
// settings from the registry, then the environment.
void StartMainModule();

// Closes the environment when main ends, on whatever road, if the module was started.
class MainModuleScope {
 public:
  MainModuleScope() = default;
  ~MainModuleScope();
  MainModuleScope(const MainModuleScope&) = delete;
  MainModuleScope& operator=(const MainModuleScope&) = delete;
};

}  // namespace kestrova
