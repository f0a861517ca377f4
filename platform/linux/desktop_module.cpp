// Loads the desktop module from the folder of this library.
#include "platform/linux/desktop_module.h"

#include <dlfcn.h>

#include <string>

namespace {

Desktop* Load() {
  Dl_info self = {};
  if (!dladdr(reinterpret_cast<const void*>(&LoadedDesktop), &self) || !self.dli_fname) return nullptr;
  std::string file = self.dli_fname;
  const std::size_t folder = file.rfind('/');
  if (folder == std::string::npos) return nullptr;
  file.replace(folder + 1, std::string::npos, kDesktopFile);
  // It is never unloaded: Qt does not allow it. Its names are not visible to other libraries, which may use another Qt.
  void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  auto* const entry = module ? reinterpret_cast<DesktopEntry*>(dlsym(module, kDesktopEntry)) : nullptr;
  return entry ? entry() : nullptr;
}

}  // namespace

Desktop* LoadedDesktop() {
  static Desktop* const desktop = Load();
  return desktop;
}
