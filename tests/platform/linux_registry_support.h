// What the tests of the registry's files share: short calls on one key, child processes, a folder of their own.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/platform/registry_support.h"
#include "tests/scratch.h"

namespace kvtest {

inline constexpr LPCTSTR kPath = _T("Software\\Test");

inline LSTATUS Open(HKEY hive, REGSAM rights) {
  Key key;
  return RegOpenKeyExW(hive, kPath, 0, rights, &key);
}

inline LSTATUS Create(HKEY hive, LPCTSTR path = kPath) {
  Key key;
  return RegCreateKeyExW(hive, path, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
}

inline LSTATUS Set(HKEY hive, const Text& name, DWORD number) {
  Key key;
  const LSTATUS status = RegCreateKeyExW(hive, kPath, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
  if (status != ERROR_SUCCESS) return status;
  return RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
}

// The number, or the negative status.
inline LONGLONG Get(HKEY hive, const Text& name) {
  Key key;
  LSTATUS status = RegOpenKeyExW(hive, kPath, 0, KEY_READ, &key);
  DWORD number = 0, size = sizeof number;
  if (status == ERROR_SUCCESS) {
    status = RegQueryValueExW(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
  }
  return status == ERROR_SUCCESS ? LONGLONG(number) : -LONGLONG(status);
}

inline Text NameOf(int number) {
  const std::string digits = std::to_string(number);
  return Text(digits.begin(), digits.end());
}

inline std::string IntegrityOf(const std::filesystem::path& hive) {
  sqlite3* connection = nullptr;
  std::string answer;
  const auto take = [](void* out, int, char** text, char**) { return *static_cast<std::string*>(out) += *text, 0; };
  sqlite3_open(hive.c_str(), &connection);
  sqlite3_busy_timeout(connection, 10000);
  if (sqlite3_exec(connection, "PRAGMA integrity_check", take, &answer, nullptr) != SQLITE_OK) {
    answer = sqlite3_errmsg(connection);
  }
  sqlite3_close(connection);
  return answer;
}

// Runs the body in a child process; true in it means success.
inline pid_t InChild(const std::function<bool()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit([&]() noexcept { return body() ? 0 : 1; }());
  return child;
}
inline int ExitCode(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A registry of its own, whose folder doesn't exist yet.
class LinuxRegistry : public testing::Test {
 protected:
  void SetUp() override { UseRegistry(folder_); }
  void TearDown() override { UseRegistry(before_); }

  const std::string before_ = std::getenv("KV_REGISTRY");
  const ScratchFolder scratch_;
  const std::filesystem::path folder_ = scratch_.Path() / "deep/registry";
};

}  // namespace kvtest
