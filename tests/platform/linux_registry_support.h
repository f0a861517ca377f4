// What the tests of the registry's files share: short calls on one key, child processes, a folder of their own.
#pragma once

#include <sqlite3.h>

#include <filesystem>

#include "tests/child_process.h"
#include "tests/registry_calls.h"

namespace kvtest {

inline constexpr LPCTSTR kPath = _T("Software\\Test");

// Open the key, or make it, and read or write a number in it.
inline LSTATUS Set(HKEY hive, const Text& name, DWORD number) {
  Key key;
  const LSTATUS status = RegCreateKeyExW(hive, kPath, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
  return status == ERROR_SUCCESS ? SetNumber(key, name.c_str(), number) : status;
}
inline LONGLONG Get(HKEY hive, const Text& name) {
  Key key;
  const LSTATUS status = RegOpenKeyExW(hive, kPath, 0, KEY_READ, &key);
  return status == ERROR_SUCCESS ? Number(key, name.c_str()) : -LONGLONG(status);
}

inline Text NameOf(int number) {
  const std::string digits = std::to_string(number);
  return Text(digits.begin(), digits.end());
}

// What a statement answers on the hive's file, or why it doesn't.
inline std::string Ask(const std::filesystem::path& hive, const char* sql) {
  sqlite3* connection = nullptr;
  std::string answer;
  const auto take = [](void* out, int, char** text, char**) { return *static_cast<std::string*>(out) += *text, 0; };
  sqlite3_open(hive.c_str(), &connection);
  sqlite3_busy_timeout(connection, 10000);
  if (sqlite3_exec(connection, sql, take, &answer, nullptr) != SQLITE_OK) answer = sqlite3_errmsg(connection);
  sqlite3_close(connection);
  return answer;
}

// A registry of its own, whose folder doesn't exist yet.
class LinuxRegistry : public testing::Test {
 protected:
  const ScratchFolder scratch_;
  const std::filesystem::path folder_ = scratch_.Path() / "deep/registry";
  const RegistryIn registry_{folder_};
};

}  // namespace kvtest
