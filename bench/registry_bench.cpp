// The registry compared with SQLite on the same row of the same hive, and with settings in an INI file.
#include <sqlite3.h>

#include <QSettings>
#include <QString>
#include <filesystem>
#include <string>

#include "bench/ratio.h"
#include "platform/process.h"
#include "platform/registry.h"

namespace {

namespace fs = std::filesystem;

constexpr LPCTSTR kPath = _T("Software\\Zemlor\\Kestrova\\Debug");
constexpr int kValues = 500;
constexpr int kFewValues = 50;  // of the 500, because each save of an INI file takes milliseconds

std::basic_string<TCHAR> NameOf(int number) {
  const std::string text = "Value" + std::to_string(number);
  return {text.begin(), text.end()};
}

DWORD OpenQueryClose(LPCTSTR name) {
  HKEY key = nullptr;
  DWORD number = 0, size = sizeof number;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_READ, &key) != ERROR_SUCCESS) return 0;
  RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
  RegCloseKey(key);
  return number;
}

void OpenSetClose(LPCTSTR name, DWORD number) {
  HKEY key = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
  RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
  RegCloseKey(key);
}

// Enumerates the sub-keys of a key by index; the peer steps one statement through the same rows.
void BenchWalk(kvbench::Table& table, sqlite3* connection, int count) {
  const auto path = NameOf(count);
  HKEY key = nullptr;
  const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
  RegCreateKeyTransactedW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr, transaction,
                          nullptr);
  for (int i = 0; i < count; ++i) {
    HKEY made = nullptr;
    RegCreateKeyTransactedW(key, NameOf(i).c_str(), 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr, transaction,
                            nullptr);
    RegCloseKey(made);
  }
  RegCloseKey(key);
  CommitTransaction(transaction);
  CloseHandle(transaction);
  RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key);
  sqlite3_stmt* walk = nullptr;
  sqlite3_prepare_v2(connection,
                     "SELECT name FROM key WHERE parent = (SELECT id FROM key WHERE path = ?1) ORDER BY path", -1,
                     &walk, nullptr);
  const std::string folded = "\\VALUE" + std::to_string(count);
  sqlite3_bind_text(walk, 1, folded.data(), int(folded.size()), SQLITE_STATIC);
  table.Pair(
      {.name = "walk through sub-keys",
       .size = std::size_t(count),
       .peer = "SQLite C interface, one statement",
       .operations = std::size_t(count)},
      [&] {
        TCHAR name[256];
        DWORD units = 256;
        for (DWORD i = 0; RegEnumKeyExW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr) == 0; ++i)
          units = 256;
      },
      [&] {
        while (sqlite3_step(walk) == SQLITE_ROW) kvbench::Keep(sqlite3_column_text(walk, 0));
        sqlite3_reset(walk);
      });
  sqlite3_finalize(walk);
  RegCloseKey(key);
}

}  // namespace

int main() {
  const fs::path folder = fs::temp_directory_path() / "kv-registry-bench";
  fs::remove_all(folder);
  SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str());
  for (int i = 0; i < kValues; ++i) OpenSetClose(NameOf(i).c_str(), DWORD(i));

  sqlite3* connection = nullptr;
  sqlite3_stmt* read = nullptr;
  sqlite3_stmt* write = nullptr;
  sqlite3_open((folder / "user.hive").c_str(), &connection);
  sqlite3_exec(connection, "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
  // The peer already knows the key's id, so it only looks up one row by the primary key.
  sqlite3_prepare_v2(connection, "SELECT max(id) FROM key", -1, &read, nullptr);
  sqlite3_step(read);
  const sqlite3_int64 id = sqlite3_column_int64(read, 0);
  sqlite3_finalize(read);
  sqlite3_prepare_v2(connection, "SELECT data FROM value WHERE key = ?2 AND folded = ?1", -1, &read, nullptr);
  sqlite3_prepare_v2(connection, "UPDATE value SET data = ?2 WHERE key = ?3 AND folded = ?1", -1, &write, nullptr);
  const QString ini = QString::fromStdString((folder / "settings.ini").string());
  {
    QSettings settings(ini, QSettings::IniFormat);
    for (int i = 0; i < kValues; ++i) settings.setValue(QString("Debug/Value%1").arg(i), i);
  }

  kvbench::Table table("Registry");
  const auto name = NameOf(250);
  const auto read_row = [&] {
    sqlite3_bind_text(read, 1, "VALUE250", 8, SQLITE_STATIC);
    sqlite3_bind_int64(read, 2, id);
    sqlite3_step(read);
    kvbench::Keep(sqlite3_column_blob(read, 0));
    sqlite3_reset(read);
  };
  table.Pair(
      {.name = "open, query, close", .size = kValues, .peer = "SQLite C interface, same row", .goal = 2.0},
      [&] { kvbench::Keep(OpenQueryClose(name.c_str())); }, read_row);
  table.Pair(
      {.name = "open, query, close", .size = kValues, .peer = "QSettings on an INI file, read anew"},
      [&] { kvbench::Keep(OpenQueryClose(name.c_str())); },
      [&] {
        QSettings settings(ini, QSettings::IniFormat);
        kvbench::Keep(settings.value("Debug/Value250").toInt());
      });
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_READ, &key);
  table.Pair(
      {.name = "query", .size = kValues, .peer = "SQLite C interface, same row"},
      [&] {
        DWORD number = 0, size = sizeof number;
        RegQueryValueExW(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
        kvbench::Keep(number);
      },
      read_row);
  RegCloseKey(key);

  DWORD round = 0;
  table.Pair(
      {.name = "save values one by one", .size = kValues, .peer = "SQLite C interface", .operations = kValues},
      [&] {
        ++round;
        for (int i = 0; i < kValues; ++i) OpenSetClose(NameOf(i).c_str(), DWORD(i) + round);
      },
      [&] {
        ++round;
        for (int i = 0; i < kValues; ++i) {
          const std::string folded = "VALUE" + std::to_string(i);
          const DWORD number = DWORD(i) + round;
          sqlite3_bind_text(write, 1, folded.data(), int(folded.size()), SQLITE_STATIC);
          sqlite3_bind_blob(write, 2, &number, sizeof number, SQLITE_STATIC);
          sqlite3_bind_int64(write, 3, id);
          sqlite3_step(write);
          sqlite3_reset(write);
        }
      });
  table.Pair(
      {.name = "save values one by one",
       .size = kFewValues,
       .peer = "QSettings, an INI file",
       .operations = kFewValues},
      [&] {
        ++round;
        for (int i = 0; i < kFewValues; ++i) OpenSetClose(NameOf(i).c_str(), DWORD(i) + round);
      },
      [&] {
        ++round;
        for (int i = 0; i < kFewValues; ++i) {
          QSettings settings(ini, QSettings::IniFormat);
          settings.setValue(QString("Debug/Value%1").arg(i), DWORD(i) + round);
        }
      });
  for (const int count : {100, 1000, 10000}) BenchWalk(table, connection, count);
  sqlite3_finalize(read);
  sqlite3_finalize(write);
  sqlite3_close(connection);
  fs::remove_all(folder);
}
