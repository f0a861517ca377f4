// What was read from a hive before: ids of keys, values, and where walks by number have got to. Internal to
// platform/linux.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/registry.h"

namespace kvregistry {

// Used by one thread at a time.
class Cache {
 public:
  // Begins to watch the file of an open connection for changes by other processes. Without this call, and where the
  // file can't be watched, no key and no value is cached.
  void Watch(sqlite3* connection);
  // Forgets everything, and stops watching.
  void Clear();
  bool IsWatching() const { return log_head_ != nullptr; }
  // Whether the hive is the same as at the last call of IsCurrent. Forgets nothing.
  bool IsUnchanged() const { return MayAdd(); }

  // Cached id of a folded path; 0: known missing; -1: not cached.
  std::int64_t FindKey(std::string_view path);
  // Adds what was read after FindKey returned -1; does nothing if the hive has changed since.
  void AddKey(std::string_view path, std::int64_t id);

  struct Value {
    LSTATUS status = ERROR_SUCCESS;  // or ERROR_FILE_NOT_FOUND: known missing
    DWORD type = REG_NONE;
    std::string data;
  };
  // Cached value of a key by its folded name; null: not cached. The pointer is valid until the next call.
  const Value* FindValue(std::int64_t key, std::string_view folded);
  // Adds what was read after FindValue returned null; does nothing if the hive has changed since.
  void AddValue(std::int64_t key, std::string_view folded, LSTATUS status, DWORD type, std::string_view data);
  std::size_t CountValues(std::int64_t key) const;

  // The first values of a key in the order of their numbers, as far as walks by number have read them.
  struct ValueList {
    struct Item {
      std::string name;
      DWORD type;
      std::string data;
    };
    std::vector<Item> items;
    bool is_whole = false;  // the key has no more values
  };
  // The cached list of a key; null: not cached. The pointer is valid until the next call.
  const ValueList* FindList(std::int64_t key);
  // Add what was read after FindList did not have it: value number `index`, or that there is none. They do nothing if
  // the hive has changed since.
  void AddToList(std::int64_t key, std::size_t index, std::string_view name, DWORD type, std::string_view data);
  void AddEndOfList(std::int64_t key, std::size_t index);

  // Whether the cache holds for the hive as it is now; otherwise forgets keys and values. A caller that commits one
  // change of its own asks before it, and calls KeepAfterOwnChange after it.
  bool IsCurrent();
  // Keeps keys, values and lists if the hive has had exactly one commit since IsCurrent returned true. The caller then
  // adds each value that its change wrote.
  void KeepAfterOwnChange();
  void AddWritten(std::int64_t key, std::string_view folded, DWORD type, std::string_view data);

  // The version of a hive's content: changes with every commit, and with every change of the own transaction.
  struct Content {
    unsigned file = 0;
    int own_changes = 0;
    bool operator==(const Content&) const = default;
  };
  // The value that a walk by number has returned last.
  struct Position {
    std::int64_t index = 0;
    std::int64_t number = std::numeric_limits<std::int64_t>::min();
    Content content;  // that the value was read from
  };
  // The sub-keys that a walk by number has read in one statement. The ends are those in `text`.
  struct SubKeys {
    struct Item {
      std::size_t name_end, class_end, path_end;
      std::int64_t written;
    };
    std::int64_t first = 0;  // number of the first item
    std::vector<Item> items;
    std::string text;
    Content content;        // that the items were read from
    bool is_whole = false;  // the items may be used for later calls while the content is current

    bool Has(std::int64_t index) const { return index >= first && index - first < std::int64_t(items.size()); }
    std::int64_t End() const { return first + std::int64_t(items.size()); }
    std::string_view Name(std::size_t i) const { return Part(i ? items[i - 1].path_end : 0, items[i].name_end); }
    std::string_view Class(std::size_t i) const { return Part(items[i].name_end, items[i].class_end); }
    std::string_view Path(std::size_t i) const { return Part(items[i].class_end, items[i].path_end); }
    std::string_view Part(std::size_t from, std::size_t to) const {
      return std::string_view(text).substr(from, to - from);
    }
  };
  // What a walk through a key has read last, to be read and changed by the caller; valid until the next call.
  Position& ValuePositionIn(std::int64_t key);
  SubKeys& SubKeysIn(std::int64_t key);
  void ClearPositions();

 private:
  // The head of the shared index of the write-ahead log, which identifies the last commit.
  using LogHead = std::array<std::uint64_t, 6>;
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  template <class Item>
  using ByName = std::unordered_map<std::string, Item, TextHash, std::equal_to<>>;

  LogHead ReadLogHead() const;
  bool MayAdd() const { return log_head_ && ReadLogHead() == cached_head_; }
  void ClearItems();

  const std::uint64_t* log_head_ = nullptr;  // in memory that all processes share
  LogHead cached_head_{};                    // when keys and values were read
  ByName<std::int64_t> keys_;
  std::unordered_map<std::int64_t, ByName<Value>> values_;
  std::size_t value_count_ = 0;
  std::unordered_map<std::int64_t, ValueList> lists_;
  std::size_t listed_ = 0;  // items of all lists, those of dropped ones included
  std::unordered_map<std::int64_t, Position> value_positions_;
  std::unordered_map<std::int64_t, SubKeys> sub_keys_;
};

}  // namespace kvregistry
