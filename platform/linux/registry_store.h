// The store of one hive: its connection, its cache and, in a transaction's store, the transaction. Internal to
// platform/linux.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/registry_cache.h"
#include "platform/linux/registry_connection.h"
#include "platform/registry_files.h"

namespace kvregistry {

// The id of a hive's own key, whose path is empty. Every other path begins with a backslash.
inline constexpr std::int64_t kRootId = 1;

class Store : public std::enable_shared_from_this<Store> {
 public:
  // A plain store: each statement commits by itself.
  Store(Hive hive, std::string folder) : connection_(hive, std::move(folder)) {}
  // The store of a transaction, with a connection of its own to the file of a plain store, which must outlive it.
  explicit Store(Store* plain) : connection_(plain->WhichHive(), plain->Folder()), plain_(plain) {}
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // The caller holds it during every call below.
  std::mutex& Mutex() { return mutex_; }

  Hive WhichHive() const { return connection_.WhichHive(); }
  const std::string& Folder() const { return connection_.Folder(); }
  Connection& Link() { return connection_; }
  Cache& Known() { return cache_; }

  // Open the connection as needed. ReadyToRead returns ERROR_FILE_NOT_FOUND if there is no file; ReadyToWrite makes
  // folder and file, and begins a transaction's transaction.
  LSTATUS ReadyToRead();
  LSTATUS ReadyToWrite();
  // Of an open connection: 0, ERROR_ACCESS_DENIED or ERROR_DISK_FULL.
  LSTATUS CheckWritable();

  // Keep a failure of the file for TakeHiveFault. They return the status, and ERROR_BADDB.
  LSTATUS Note(LSTATUS status, HiveFault::During during) const;
  LSTATUS NoteDamage() const { return Note(ERROR_BADDB, HiveFault::During::kReading); }

  bool IsTransacted() const { return plain_ != nullptr; }
  // This store, or the plain store of a transaction's.
  std::shared_ptr<Store> Plain() const;
  // The content that the last statement has read.
  Cache::Content LastContent() const;
  // Whether rows of that content are still those of the hive. True also inside a transaction that has read or written.
  bool IsCurrent(const Cache::Content& content);

  // Closes the connection, which the next call opens again. Drops the changes of an open transaction.
  void Close();
  // In a child process: forgets a connection that belongs to the parent.
  void Abandon();

  // ---- of a transaction's store (registry_transacted_store.cpp)

  // Record what the transaction has changed: a value, or anything else.
  void RecordValue(std::int64_t key, std::string_view folded, DWORD type, std::string_view data);
  void RecordOtherChange() { only_values_ = false; }
  // End the transaction; every later call returns ERROR_TRANSACTION_NOT_ACTIVE.
  LSTATUS Commit();
  void RollBack();
  // Makes an unused store ready for another transaction. False if that is impossible.
  bool PrepareForReuse();

 private:
  LSTATUS Open();
  LSTATUS BeginReading();
  LSTATUS Begin();
  void EndReading();
  LSTATUS CommitOpen();
  void ResetTransaction();

  std::mutex mutex_;
  Connection connection_;
  Cache cache_;

  Store* const plain_ = nullptr;
  bool reading_ = false;  // a transaction of SQLite that has not written: all calls read one state
  bool absent_ = false;   // that state is the one before the file was made
  bool begun_ = false;    // one that writes
  bool ended_ = false;
  struct WrittenValue {
    std::int64_t key;
    std::string folded;
    Cache::Value value;
  };
  std::vector<WrittenValue> written_;  // by the transaction, while only_values_
  bool only_values_ = true;
};

}  // namespace kvregistry
