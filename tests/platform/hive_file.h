// A hive's file, read and changed without the registry's calls.
#pragma once

#include <sqlite3.h>

#include "tests/registry_calls.h"

namespace kvtest {

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

}  // namespace kvtest
