// ODBC drivers for tests: those of the build's own registration, under other names if need be.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/paths.h"
#include "platform/process.h"
#include "tests/scratch.h"

namespace kvtest {

inline CString ProductPath(const std::filesystem::path& path) { return ProductPathFromSystem(path.string()).c_str(); }

// The library that the build registered for a driver's name.
inline std::string DriverLibrary(const std::string& name) {
  const std::string text = ReadFile(KV_BIN_DIR "/../etc/kestrova/odbcinst.ini");
  const std::size_t section = text.find("[" + name + "]\nDriver=");
  if (section == std::string::npos) {
    ADD_FAILURE() << "the build registered no driver " << name;
    return {};
  }
  const std::size_t begin = text.find('=', section) + 1;
  return text.substr(begin, text.find('\n', begin) - begin);
}

// Makes SQLite the driver of Access files, in an odbcinst.ini of the tests' own, for this process and those that it
// starts. The driver manager looks for that file once in a process: so this has to come ahead of every connection.
inline void RegisterSQLiteForAccessFiles() {
  static const ScratchFolder folder;
  folder.Write("odbcinst.ini", "[Microsoft Access Driver (*.mdb, *.accdb)]\nDriver=" +
                                   DriverLibrary("Kestrova SQLite3 ODBC Driver") + "\n");
  SetEnvironmentVariableW(_T("ODBCSYSINI"), folder.Path().u16string().c_str());
}

}  // namespace kvtest
