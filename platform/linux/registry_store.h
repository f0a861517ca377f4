// One hive file: its connection, its prepared statements, and the rules for making, opening and giving it up. Internal
// to platform/linux.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/registry.h"

namespace kvregistry {

enum class Hive { kUser, kMachine };

// The id of a hive's own key, whose path is empty. Every other path begins with a backslash.
inline constexpr std::int64_t kRootId = 1;

// A statement of the table in registry.cpp: prepared once per connection, in its own slot.
struct Sql {
  int slot;
  const char* text;
};
inline constexpr int kFirstFreeSlot = 7;  // the ones before bound batches
inline constexpr int kSqlSlots = 32;

// The status code for a result code of SQLite.
LSTATUS StatusOf(sqlite3* connection, int result);

class Store : public std::enable_shared_from_this<Store> {
 public:
  // A store of its own connection. That of a transaction, on the file of a plain one, which outlives it, begins one
  // before it writes.
  Store(Hive hive, std::string folder);
  explicit Store(Store* plain);
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // Held by the caller around everything below.
  std::mutex& Mutex() { return mutex_; }

  Hive WhichHive() const { return hive_; }
  const std::string& Folder() const { return folder_; }

  // Make the connection ready: ERROR_FILE_NOT_FOUND if there is no file to read; writing makes folder and file.
  LSTATUS ReadyToRead();
  LSTATUS ReadyToWrite();
  // Once it is ready: may the file be written? 0 or ERROR_ACCESS_DENIED.
  LSTATUS CheckWritable();

  sqlite3* Connection() const { return connection_; }
  // The statement, reset; null if it cannot be prepared.
  sqlite3_stmt* Prepared(const Sql& sql);
  bool IsTransacted() const { return plain_ != nullptr; }
  // The one of the process for the file.
  std::shared_ptr<Store> Plain() const;

  // The key of a folded path from memory, valid at this moment: its id, 0 for "no such key", -1 for "ask the file".
  // RememberKey takes the answer found since then.
  std::int64_t RecallKey(std::string_view path);
  void RememberKey(std::string_view path, std::int64_t id);
  // The same for a key's value, whose reading gave 0 or ERROR_FILE_NOT_FOUND; null for "ask the file". What the pointer
  // leads to lives until the store is used again.
  struct KnownValue {
    LSTATUS status = ERROR_SUCCESS;
    DWORD type = REG_NONE;
    std::string data;
  };
  const KnownValue* RecallValue(std::int64_t key, std::string_view folded);
  std::size_t KnownValuesOf(std::int64_t key) const;
  // Ahead of and behind a change that is committed by a call of this process: if nobody else's came between, what is
  // known stays known, and only what was changed has to be remembered anew. Begin is false if nothing is known.
  bool BeginOwnChange() { return IsAsKnown(); }
  void EndOwnChange();
  void RememberValue(std::int64_t key, std::string_view folded, LSTATUS status, DWORD type, std::string_view data);

  // Where a walk by number through one key's items stands: the item given last, its place in the items' order and, to
  // tell whether the items have their numbers still, the content that it was read from.
  struct Content {
    unsigned file = 0;
    int own_changes = 0;
    bool operator==(const Content&) const = default;
  };
  struct Position {
    std::int64_t index = 0;
    std::string path;                                                // of a sub-key; "" is ahead of the first one
    std::int64_t number = std::numeric_limits<std::int64_t>::min();  // of a value
    Content content;
  };
  enum class Items { kSubKeys, kValues };
  Position& PositionIn(std::int64_t key, Items items);
  // The content that the statement executed last has seen.
  Content LastContent() const;

  // Gives the connection up; the next use opens it anew. Ends an open transaction without its changes.
  void Close();
  // Of a transacted store: a value that its transaction has written; and that it has changed something else, too.
  void NoteWritten(std::int64_t key, std::string_view folded, DWORD type, std::string_view data);
  void NoteOtherChange() { only_values_ = false; }
  // End the transaction of a transacted store; every later use gives ERROR_TRANSACTION_NOT_ACTIVE.
  LSTATUS Commit();
  void RollBack();
  // For a transacted store that nobody uses any more: makes it ready for another transaction; false if it can't be.
  bool MakeSpare();
  // In a child process: forgets a connection that belongs to the parent.
  void Abandon();

 private:
  // What identifies the last committed change: the head of the shared index of the write-ahead log.
  using Change = std::array<std::uint64_t, 6>;
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  std::string File() const;
  LSTATUS Open();
  LSTATUS CommitBegun();
  LSTATUS Connect(int flags, const std::string& name);
  LSTATUS Create();
  bool WasReplaced();
  void FindLogHead();
  Change LastChange() const;
  bool IsAsKnown();

  const Hive hive_;
  const std::string folder_;
  Store* const plain_ = nullptr;  // of a transacted one
  std::mutex mutex_;
  sqlite3* connection_ = nullptr;
  std::array<sqlite3_stmt*, kSqlSlots> prepared_{};
  bool read_only_ = false;
  bool immutable_ = false;
  bool begun_ = false;
  bool ended_ = false;
  const std::uint64_t* log_head_ = nullptr;
  Change known_change_{};
  template <class Item>
  using ByName = std::unordered_map<std::string, Item, TextHash, std::equal_to<>>;
  ByName<std::int64_t> known_keys_;
  std::unordered_map<std::int64_t, ByName<KnownValue>> known_values_;
  std::size_t known_value_count_ = 0;
  std::unordered_map<std::int64_t, Position> positions_[2];
  struct Written {
    std::int64_t key;
    std::string folded;
    KnownValue value;
  };
  std::vector<Written> written_;  // by the transaction, while it has changed nothing else
  bool only_values_ = true;
};

// The store of a hive in the folder that the environment names at this moment.
std::shared_ptr<Store> CurrentStore(Hive hive);

// A store of its own on the same file, for one transaction.
std::shared_ptr<Store> TransactedStore(const Store& store);

// One use of a prepared statement; its destructor resets it, which ends the reading.
class Query {
 public:
  Query(Store& store, const Sql& sql) : store_(store), statement_(store.Prepared(sql)) {}
  ~Query() {
    if (statement_) sqlite3_reset(statement_);
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // Arguments in order. Text and bytes have to outlive the query.
  Query& Add(std::int64_t number);
  Query& Add(std::string_view text);
  Query& AddBytes(const void* bytes, std::size_t size);

  // True at each row. False at the end, or on failure, which Status tells.
  bool Next();
  // Begins anew, with other arguments.
  void Restart();
  // For a statement without rows.
  LSTATUS Run();
  LSTATUS Status() const { return status_; }

  std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string_view Text(int column) const;
  // Bytes of a value; valid until the query ends.
  std::string_view Bytes(int column) const;

 private:
  Store& store_;
  sqlite3_stmt* statement_;
  int next_argument_ = 1;
  LSTATUS status_ = ERROR_SUCCESS;
};

// Several statements that belong together: rolled back unless committed. Within a transacted store they are a step of
// its transaction. Begins for writing unless `reading` is set.
class Batch {
 public:
  explicit Batch(Store& store, bool reading = false);
  ~Batch();
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  LSTATUS Status() const { return status_; }
  LSTATUS Commit();

 private:
  Store& store_;
  bool open_ = false;
  LSTATUS status_;
};

}  // namespace kvregistry
