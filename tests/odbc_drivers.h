// ODBC drivers for tests: those that the build registers, also under other names.
#pragma once

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/process.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace kvtest {

inline CString ProductPath(const std::filesystem::path& path) { return ProductPathFromSystem(path.string()).c_str(); }

// The library that the build registered for a driver name.
inline std::string DriverLibrary(const std::string& name) {
  const std::string text = ReadFile(BuiltFile("etc/kestrova/odbcinst.ini"));
  const std::size_t section = text.find("[" + name + "]\nDriver=");
  if (section == std::string::npos) {
    ADD_FAILURE() << "the build registered no driver " << name;
    return {};
  }
  const std::size_t begin = text.find('=', section) + 1;
  return text.substr(begin, text.find('\n', begin) - begin);
}

// Registers SQLite as the driver of Access files for this process and its children, in an odbcinst.ini of the tests.
// The driver manager reads this file once per process, so call this before any connection.
inline void RegisterSQLiteForAccessFiles() {
  static const ScratchFolder folder;
  folder.Write("odbcinst.ini", "[Microsoft Access Driver (*.mdb, *.accdb)]\nDriver=" +
                                   DriverLibrary("Kestrova SQLite3 ODBC Driver") + "\n");
  SetEnvironmentVariableW(_T("ODBCSYSINI"), folder.Path().string<TCHAR>().c_str());
}

}  // namespace kvtest
