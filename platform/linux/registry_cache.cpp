#include "platform/linux/registry_cache.h"

#include <cstring>
#include <new>

namespace kvregistry {

namespace {

constexpr std::size_t kMaxItems = 4096;      // keys, and values
constexpr std::size_t kMaxValueBytes = 512;  // a larger value is not cached
constexpr std::size_t kMaxListed = 128;      // values of one list
constexpr std::size_t kMaxPositions = 1024;  // more than a tree has levels
constexpr int kRegionBytes = 32768;          // of the log's shared index, as SQLite maps it

// False for a file whose damaged head turns the log off: a shared index beside it would never change.
bool KeepsLog(sqlite3* connection) {
  sqlite3_stmt* query = nullptr;
  sqlite3_prepare_v2(connection, "PRAGMA journal_mode", -1, &query, nullptr);
  const bool row = sqlite3_step(query) == SQLITE_ROW;
  const auto* mode = row ? reinterpret_cast<const char*>(sqlite3_column_text(query, 0)) : nullptr;
  const bool keeps = mode && std::string_view(mode) == "wal";
  sqlite3_finalize(query);
  return keeps;
}

template <class Items>
auto& ItemIn(Items& items, std::int64_t key) {
  if (items.size() >= kMaxPositions && !items.contains(key)) items.clear();
  return items[key];
}

}  // namespace

// The shared index of the log begins with 48 bytes, documented as part of SQLite's file format, that every commit of
// every process changes. While they stay the same, cached items are valid without a look into the file.
void Cache::Watch(sqlite3* connection) {
  sqlite3_file* file = nullptr;
  void volatile* head = nullptr;
  if (!KeepsLog(connection)) return;
  if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK) return;
  if (!file->pMethods || file->pMethods->iVersion < 2) return;
  if (file->pMethods->xShmMap(file, 0, kRegionBytes, 0, &head) != SQLITE_OK) return;
  log_head_ = static_cast<const std::uint64_t*>(const_cast<void*>(head));
}

Cache::LogHead Cache::ReadLogHead() const {
  LogHead head;
  for (std::size_t i = 0; i < head.size(); ++i) head[i] = __atomic_load_n(log_head_ + i, __ATOMIC_ACQUIRE);
  return head;
}

void Cache::Clear() {
  log_head_ = nullptr;
  cached_head_ = {};
  ClearItems();
  ClearPositions();
}

void Cache::ClearItems() {
  sub_keys_.clear();
  keys_.clear();
  values_.clear();
  value_count_ = 0;
  lists_.clear();
  listed_ = 0;
}

bool Cache::IsCurrent() {
  if (!log_head_) return false;
  const LogHead head = ReadLogHead();
  if (head == cached_head_) return true;
  ClearItems();
  cached_head_ = head;
  return false;
}

// Each commit adds 1 to a counter in the log's head, and all commits of one log have the same salts.
void Cache::KeepAfterOwnChange() {
  const LogHead now = ReadLogHead();
  const auto count = [](const LogHead& head) {
    std::uint32_t commits;
    std::memcpy(&commits, &head[1], sizeof commits);
    return commits;
  };
  if (count(now) == count(cached_head_) + 1 && now[4] == cached_head_[4]) cached_head_ = now;
}

// ---- Keys and values ----

std::int64_t Cache::FindKey(std::string_view path) {
  if (!IsCurrent()) return -1;
  const auto found = keys_.find(path);
  return found == keys_.end() ? -1 : found->second;
}

void Cache::AddKey(std::string_view path, std::int64_t id) {
  if (!MayAdd()) return;
  if (keys_.size() >= kMaxItems) keys_.clear();
  keys_.emplace(path, id);
}

const Cache::Value* Cache::FindValue(std::int64_t key, std::string_view folded) {
  if (!IsCurrent()) return nullptr;
  const auto values = values_.find(key);
  if (values == values_.end()) return nullptr;
  const auto found = values->second.find(folded);
  return found == values->second.end() ? nullptr : &found->second;
}

std::size_t Cache::CountValues(std::int64_t key) const {
  const auto values = values_.find(key);
  return values == values_.end() ? 0 : values->second.size();
}

void Cache::AddValue(std::int64_t key, std::string_view folded, LSTATUS status, DWORD type, std::string_view data) {
  if (!MayAdd()) return;
  if (value_count_ >= kMaxItems) {
    values_.clear();
    value_count_ = 0;
  }
  ByName<Value>& values = values_[key];
  auto found = values.find(folded);
  if (data.size() > kMaxValueBytes) {
    if (found == values.end()) return;
    values.erase(found);
    --value_count_;
    return;
  }
  if (found == values.end()) {
    found = values.emplace(folded, Value()).first;
    ++value_count_;
  }
  found->second.status = status;
  found->second.type = type;
  found->second.data = data;
}

// Without memory it forgets everything: the value that it has may be the former one.
void Cache::AddWritten(std::int64_t key, std::string_view folded, DWORD type, std::string_view data) try {
  lists_.erase(key);
  AddValue(key, folded, ERROR_SUCCESS, type, data);
} catch (const std::bad_alloc&) {
  ClearItems();
}

const Cache::ValueList* Cache::FindList(std::int64_t key) {
  if (!IsCurrent()) return nullptr;
  const auto found = lists_.find(key);
  return found == lists_.end() ? nullptr : &found->second;
}

void Cache::AddToList(std::int64_t key, std::size_t index, std::string_view name, DWORD type, std::string_view data) {
  if (!MayAdd() || index >= kMaxListed || name.size() > kMaxValueBytes || data.size() > kMaxValueBytes) return;
  if (listed_ >= kMaxItems) {
    lists_.clear();
    listed_ = 0;
  }
  ValueList& list = lists_[key];
  if (list.is_whole || index != list.items.size()) return;
  list.items.push_back({std::string(name), type, std::string(data)});
  ++listed_;
}

void Cache::AddEndOfList(std::int64_t key, std::size_t index) {
  if (!MayAdd()) return;
  ValueList& list = ItemIn(lists_, key);
  list.is_whole = list.is_whole || index == list.items.size();
}

// ---- Walks ----

Cache::Position& Cache::ValuePositionIn(std::int64_t key) { return ItemIn(value_positions_, key); }

Cache::SubKeys& Cache::SubKeysIn(std::int64_t key) { return ItemIn(sub_keys_, key); }

void Cache::ClearPositions() {
  value_positions_.clear();
  sub_keys_.clear();
}

}  // namespace kvregistry
