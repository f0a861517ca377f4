// A small installation that a test may damage: the library under test with the languages, data and machines of the
// example installation. Commands of the test use it while the object lives.
#pragma once

#include "platform/process.h"
#include "tests/folders.h"
#include "tests/host/run_command.h"

namespace kvtest {

class ScratchInstallation {
 public:
  ScratchInstallation() {
    namespace fs = std::filesystem;
    const fs::path built = BuiltFile({});
    fs::create_directory(folder_.Path() / "lib");
    fs::create_directory(folder_.Path() / "registry");
    for (const auto& file : fs::directory_iterator(built / "lib"))
      if (file.path().filename().string().starts_with("libKVSHARE"))
        fs::create_symlink(file.path(), Lib(file.path().filename().string()));
    if (fs::exists(built / "etc")) fs::create_directory_symlink(built / "etc", folder_.Path() / "etc");
    for (const char* part : {"lang", "MachSim", "SubSpindleOps", "Edm", "TechDB"})
      if (fs::exists(built / "lib" / part)) fs::copy(built / "lib" / part, Lib(part), fs::copy_options::recursive);
    UseLibraryIn(Lib("").string());
  }
  ~ScratchInstallation() { SetEnvironmentVariableW(_T("LD_LIBRARY_PATH"), nullptr); }

  // Commands load the library from this folder.
  static void UseLibraryIn(const std::string& folder) {
    SetEnvironmentVariableW(_T("LD_LIBRARY_PATH"), std::filesystem::path(folder).string<TCHAR>().c_str());
  }
  std::filesystem::path Lib(const std::string& relative) const { return folder_.Path() / "lib" / relative; }
  const std::filesystem::path& Path() const { return folder_.Path(); }
  // The path as the product writes it.
  static std::string Product(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
  }

 private:
  ScratchFolder folder_;
  RegistryIn registry_{folder_.Path() / "registry"};
};

// Writes a text value.
inline void KeepText(HKEY hive, LPCTSTR path, LPCTSTR name, const std::string& utf8) {
  const Text text = std::filesystem::path(utf8).string<TCHAR>();
  Put(hive, path, name, {REG_SZ, Wide({text.c_str(), text.size() + 1})});
}

}  // namespace kvtest
