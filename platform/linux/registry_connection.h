// The connection to one hive file: makes, opens and closes the file, and keeps the prepared statements. Internal to
// platform/linux.
#pragma once

#include <sqlite3.h>

#include <array>
#include <string>

#include "platform/registry.h"

namespace kvregistry {

enum class Hive { kUser, kMachine };

// A statement: prepared once per connection, in its own slot.
struct Sql {
  int slot;
  const char* text;
};
inline constexpr int kFirstFreeSlot = 8;  // the slots before it belong to registry_query.cpp and registry_faults.cpp
inline constexpr int kSqlSlots = 32;

// The status code for a result code of SQLite.
LSTATUS StatusOf(sqlite3* connection, int result);

// SQLite's busy handler.
int WaitForOthers(void*, int tries);

// Used by one thread at a time.
class Connection {
 public:
  Connection(Hive hive, std::string folder) : hive_(hive), folder_(std::move(folder)) {}
  ~Connection() { Close(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  Hive WhichHive() const { return hive_; }
  const std::string& Folder() const { return folder_; }
  std::string File() const;
  // Null while the connection is closed.
  sqlite3* Handle() const { return handle_; }

  // Opens the file, for reading only where it can't be written; ERROR_FILE_NOT_FOUND if there is no file.
  LSTATUS Open();
  // Makes the folder and an empty hive file. A file that another process has made meanwhile is kept.
  LSTATUS Create() const;
  // Ends an open transaction of SQLite without its changes.
  void Close();
  // In a child process: forgets a connection that belongs to the parent.
  void Abandon();

  bool IsReadOnly() const { return read_only_; }
  // Why the open file can only be read: ERROR_ACCESS_DENIED or ERROR_DISK_FULL.
  LSTATUS Refusal() const { return refusal_; }
  // The file was opened as unchanging: no log could be made beside it.
  bool IsImmutable() const { return immutable_; }
  // The file was opened for reading in format 1 (registry_names.h). Opening it for writing brings it to the latest one.
  bool IsFormat1() const { return is_format_1_; }
  // A writer has made a log since the file was opened as unchanging.
  bool IsOutdated() const;
  // The file was removed or another one has its name.
  bool WasReplaced() const;
  // No statement has begun a transaction that is still open.
  bool IsOutsideTransaction() const { return sqlite3_get_autocommit(handle_) != 0; }

  // The statement, reset; null if it cannot be prepared.
  sqlite3_stmt* Prepared(const Sql& sql);
  // Runs a statement without arguments and rows.
  LSTATUS Execute(const char* sql);

 private:
  LSTATUS Connect(int flags, const std::string& name);
  // SQLite's progress handler: ends a statement that takes more steps than an intact file of this size has work for.
  static int CountSteps(void* self);

  const Hive hive_;
  const std::string folder_;
  sqlite3* handle_ = nullptr;
  std::array<sqlite3_stmt*, kSqlSlots> prepared_{};
  bool read_only_ = false;
  bool immutable_ = false;
  bool is_format_1_ = false;
  LSTATUS refusal_ = ERROR_ACCESS_DENIED;
  int rounds_ = 0;  // of steps of the current statement
};

}  // namespace kvregistry
