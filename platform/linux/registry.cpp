// The registry's calls. Each call finds its handle, locks the store and runs one statement or a batch.
#include "platform/registry.h"

#include <algorithm>
#include <ctime>
#include <new>

#include "platform/linux/registry_calls.h"
#include "platform/linux/registry_names.h"
#include "platform/linux/registry_query.h"

namespace kvregistry {

namespace {

// ---- The statements ----

constexpr int S = kFirstFreeSlot;

constexpr Sql kFindKey{S + 0, "SELECT id FROM key WHERE path = ?1"};
constexpr Sql kKeyExists{S + 1, "SELECT 1 FROM key WHERE id = ?1"};
constexpr Sql kAddKey{S + 2, "INSERT INTO key(parent, path, name, class, written) VALUES(?1, ?2, ?3, ?4, ?5)"};
constexpr Sql kTouchKey{S + 3, "UPDATE key SET written = ?2 WHERE id = ?1"};
constexpr Sql kDeleteKey{S + 4, "DELETE FROM key WHERE id = ?1"};
// The paths of all keys below a path sort between the path with "\" and the path with the next character, "]".
constexpr Sql kDeleteBelow{S + 5, "DELETE FROM key WHERE path > ?1 || '\\' AND path < ?1 || ']'"};
constexpr Sql kDeleteValuesBelow{
    S + 6, "DELETE FROM value WHERE key IN (SELECT id FROM key WHERE path > ?1 || '\\' AND path < ?1 || ']')"};

// The time is that of the key or of its latest value; finding it takes as long as the rest.
constexpr Sql kSubKeys{S + 7,
                       "SELECT path, name, class, CASE WHEN ?5 THEN"
                       " max(written, (SELECT coalesce(max(written), 0) FROM value WHERE key = id)) END"
                       " FROM key WHERE parent = ?1 AND path > ?2 ORDER BY path LIMIT ?4 OFFSET ?3"};
constexpr Sql kHasSubKey{S + 8, "SELECT 1 FROM key WHERE parent = ?1 LIMIT 1"};

constexpr Sql kReadValue{S + 9, "SELECT type, data FROM value WHERE key = ?1 AND folded = ?2"};
// Writes nothing if the key was deleted; an existing value keeps its number and the case of its name.
constexpr Sql kWriteValue{
    S + 10,
    "INSERT INTO value(key, folded, number, name, type, data, written)"
    " SELECT id, ?2, (SELECT coalesce(max(number), 0) + 1 FROM value WHERE key = ?1), ?3, ?4, ?5, ?6"
    " FROM key WHERE id = ?1"
    " ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, data = excluded.data, written = excluded.written"};
constexpr Sql kChangeValue{S + 11,
                           "UPDATE value SET type = ?3, data = ?4, written = ?5 WHERE key = ?1 AND folded = ?2"};
constexpr Sql kFirstValues{S + 12, "SELECT folded, type, data FROM value WHERE key = ?1 LIMIT 128"};
constexpr Sql kDeleteValue{S + 13, "DELETE FROM value WHERE key = ?1 AND folded = ?2"};
constexpr Sql kDeleteValues{S + 14, "DELETE FROM value WHERE key = ?1"};
constexpr Sql kValueAt{S + 15,
                       "SELECT name, type, data, number, folded FROM value WHERE key = ?1 AND number >= ?3"
                       " ORDER BY number LIMIT 1 OFFSET ?2"};
static_assert(S + 15 < kSqlSlots);

// So many values of a key are read one by one; at the next one the first 128 are read in one statement.
constexpr std::size_t kReadsBeforePrefetch = 3;

// A walk through sub-keys reads a few in its first statement, and twice as many in each further one.
constexpr std::size_t kFirstSubKeys = 4;
constexpr std::size_t kMostSubKeys = 64;
constexpr std::size_t kMostSubKeyBytes = 8192;

// ---- Arguments ----

constexpr std::size_t kMostKeyUnits = 255;
constexpr std::size_t kMostValueUnits = 16383;
constexpr std::size_t kMostBytesAtOnce = 1 << 20;  // of several values
constexpr int kMostLevels = 512;

constexpr REGSAM kChangingRights = KEY_ALL_ACCESS & ~KEY_READ;

// Memory that a thread reuses in each call.
struct Scratch {
  std::string path;  // folded, from the root
  std::string name;
  std::string folded;
};
thread_local Scratch scratch;

// Removes the next name from a path; empty at the end. Doubled separators count once.
std::u16string_view NextName(std::u16string_view& path) {
  const std::size_t start = std::min(path.find_first_not_of(u'\\'), path.size());
  path.remove_prefix(start);
  const std::u16string_view name = path.substr(0, path.find(u'\\'));
  path.remove_prefix(name.size());
  return name;
}

LSTATUS AppendPath(std::string& out, LPCWSTR path) {
  std::u16string_view rest = path ? path : u"";
  if (rest.starts_with(u'\\')) return ERROR_BAD_PATHNAME;
  auto levels = std::count(out.begin(), out.end(), '\\');
  for (auto name = NextName(rest); !name.empty(); name = NextName(rest)) {
    if (name.size() > kMostKeyUnits || ++levels > kMostLevels) return ERROR_INVALID_PARAMETER;
    out += '\\';
    AppendFolded(out, name);
  }
  return ERROR_SUCCESS;
}

LSTATUS FoldValueName(LPCWSTR name) {
  const std::u16string_view text = name ? name : u"";
  scratch.folded.clear();
  if (text.size() > kMostValueUnits) return ERROR_INVALID_PARAMETER;
  AppendFolded(scratch.folded, text);
  return ERROR_SUCCESS;
}

// In the units of a FILETIME: 100 ns since 1601.
std::int64_t Now() {
  constexpr std::int64_t kUntil1970 = 116444736000000000;
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return kUntil1970 + now.tv_sec * std::int64_t{10'000'000} + now.tv_nsec / 100;
}

void CopyTime(std::int64_t time, FILETIME* out) {
  if (out) *out = {DWORD(time), DWORD(time >> 32)};
}

// ---- Results ----

// Whether a text fits a caller's buffer; true without a buffer.
bool Fits(std::string_view kept, LPCWSTR out, const DWORD* units) { return !out || UnitsOf(kept) < *units; }

// Copies a text that fits, and its length.
void CopyText(std::string_view kept, LPWSTR out, DWORD* units) {
  if (units) *units = UnitsOf(kept);
  if (out) Decode(kept, out);
}

LSTATUS CopyData(std::string_view data, BYTE* out, DWORD* bytes) {
  if (!bytes) return ERROR_SUCCESS;
  const DWORD room = *bytes;
  *bytes = DWORD(data.size());
  if (!out) return ERROR_SUCCESS;
  if (room < data.size()) return ERROR_MORE_DATA;
  std::copy(data.begin(), data.end(), out);
  return ERROR_SUCCESS;
}

// ---- Keys in a store ----

// A key during a call: its handle looked up, its rights checked, its store locked.
class LockedKey {
 public:
  LockedKey(HKEY key, REGSAM needed, std::string* path = nullptr) {
    status_ = FindHandle(key, key_, path);
    if (status_ == ERROR_SUCCESS && (key_.rights & needed) != needed) status_ = ERROR_ACCESS_DENIED;
    if (status_ == ERROR_SUCCESS) lock_ = std::unique_lock(key_.store->Mutex());
  }

  LSTATUS ReadyToRead() { return status_ == ERROR_SUCCESS ? key_.store->ReadyToRead() : status_; }
  LSTATUS ReadyToWrite() { return status_ == ERROR_SUCCESS ? key_.store->ReadyToWrite() : status_; }
  Store& InStore() { return *key_.store; }
  std::int64_t Id() const { return key_.id; }

  // The status for a missing item: `missing`, or ERROR_KEY_DELETED if the key itself was deleted.
  LSTATUS Missing(LSTATUS missing) {
    if (key_.id == kRootId) return missing;
    Query query(*key_.store, kKeyExists);
    if (query.Add(key_.id).Next()) return missing;
    return query.Status() == ERROR_SUCCESS ? ERROR_KEY_DELETED : query.Status();
  }

 private:
  KeyRef key_;
  LSTATUS status_;
  std::unique_lock<std::mutex> lock_;
};

// Calls visit(type, data) with the value of the name in scratch.folded, from the cache if it is there. Returns the
// result of visit, or the status of a missing value.
template <class Visit>
LSTATUS VisitValue(LockedKey& locked, Visit visit) {
  Store& store = locked.InStore();
  if (const auto* known = store.Known().FindValue(locked.Id(), scratch.folded)) {
    return known->status == ERROR_SUCCESS ? visit(known->type, known->data) : known->status;
  }
  // A caller that reads a few values of a key mostly reads them all, as when a tree of settings is restored.
  if (store.Known().CountValues(locked.Id()) == kReadsBeforePrefetch) {
    Query all(store, kFirstValues);
    for (all.Add(locked.Id()); all.Next();)
      if (all.HasValue(1))
        store.Known().AddValue(locked.Id(), all.Text(0), ERROR_SUCCESS, DWORD(all.Number(1)), all.Bytes(2));
    if (const auto* known = store.Known().FindValue(locked.Id(), scratch.folded))
      return visit(known->type, known->data);
  }
  Query query(store, kReadValue);
  bool found = query.Add(locked.Id()).Add(scratch.folded).Next();
  std::string folded;
  if (!found && query.Status() == ERROR_SUCCESS && store.Link().IsFormat1()) {
    folded = FoldedInFormat1(scratch.folded);
    query.Restart();
    found = query.Add(locked.Id()).Add(folded).Next();
  }
  if (found) {
    if (!query.HasValue(0)) return store.NoteDamage();
    const DWORD type = DWORD(query.Number(0));
    store.Known().AddValue(locked.Id(), scratch.folded, ERROR_SUCCESS, type, query.Bytes(1));
    return visit(type, query.Bytes(1));
  }
  if (query.Status() != ERROR_SUCCESS) return query.Status();
  const LSTATUS missing = locked.Missing(ERROR_FILE_NOT_FOUND);
  if (missing == ERROR_FILE_NOT_FOUND) store.Known().AddValue(locked.Id(), scratch.folded, missing, REG_NONE, {});
  return missing;
}

// Writes the value of the name in scratch.folded. Most writes replace an existing value.
LSTATUS WriteValue(LockedKey& locked, LPCWSTR name, DWORD type, std::string_view data) {
  Store& store = locked.InStore();
  {
    Query change(store, kChangeValue);
    change.Add(locked.Id()).Add(scratch.folded).Add(std::int64_t(type)).AddBytes(data.data(), data.size()).Add(Now());
    if (const LSTATUS status = change.Run()) return status;
    if (sqlite3_changes(store.Link().Handle()) > 0) return ERROR_SUCCESS;
  }
  scratch.name.clear();
  AppendName(scratch.name, name ? name : u"");
  Query write(store, kWriteValue);
  write.Add(locked.Id()).Add(scratch.folded).Add(scratch.name).Add(std::int64_t(type));
  if (const LSTATUS status = write.AddBytes(data.data(), data.size()).Add(Now()).Run()) return status;
  return sqlite3_changes(store.Link().Handle()) == 0 ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

// ---- Walks
//
// A damaged file can hold rows that contradict each other. Each row is compared with the key that it belongs to and
// with the row before it, so that a walk ends and never comes to a key twice.

// Whether `folded` is the folded form of the kept name of a key or a value in the store.
bool IsFolded(Store& store, std::string_view folded, std::string_view name) {
  const auto is_ascii = [](char c) { return std::uint8_t(c) < 0x80; };
  if (std::all_of(name.begin(), name.end(), is_ascii)) {
    const auto same = [](char a, char b) { return a == (b >= 'a' && b <= 'z' ? b - ('a' - 'A') : b); };
    return std::equal(folded.begin(), folded.end(), name.begin(), name.end(), same);
  }
  Text units(UnitsOf(name), u'\0');
  Decode(name, units.data());
  std::string again;
  AppendFolded(again, units);
  return again == folded || (store.Link().IsFormat1() && FoldedInFormat1(name) == folded);
}

// Whether a sub-key can have that name and that path: a name of 1 to 255 units, the path of its parent with the name.
bool IsSubKey(Store& store, std::string_view parent, std::string_view path, std::string_view name) {
  if (name.empty() || UnitsOf(name) > kMostKeyUnits) return false;
  if (name.find('\\') != name.npos || name.find('\0') != name.npos) return false;
  const std::size_t end = path.rfind('\\');
  if (end == path.npos || !IsFolded(store, path.substr(end + 1), name)) return false;
  const std::string_view above = path.substr(0, end);
  return above == parent || (store.Link().IsFormat1() && above == FoldedInFormat1(parent));
}

bool IsValue(Store& store, std::string_view folded, std::string_view name) {
  return UnitsOf(name) <= kMostValueUnits && name.find('\0') == name.npos && IsFolded(store, folded, name);
}

// Reads `most` sub-keys into `read`: those after a path, without the first `skipped` of them. scratch.path is the path
// of the key. Without memory `read` is empty.
LSTATUS ReadSubKeys(LockedKey& locked, std::string_view after, std::int64_t skipped, std::size_t most, bool timed,
                    Cache::SubKeys& read) try {
  Store& store = locked.InStore();
  std::string last(after);
  read.items.clear();
  read.text.clear();
  Query query(store, kSubKeys);
  query.Add(locked.Id()).Add(after).Add(skipped).Add(std::int64_t(most)).Add(std::int64_t{timed});
  while (read.text.size() < kMostSubKeyBytes && query.Next()) {
    const bool texts = query.IsText(0) && query.IsText(1);
    const std::string_view path = query.Text(0), name = query.Text(1), class_name = query.Text(2);
    if (query.Status() != ERROR_SUCCESS) return query.Status();
    if (!texts || path <= last || !IsSubKey(store, scratch.path, path, name)) return store.NoteDamage();
    last = path;
    Cache::SubKeys::Item item{read.text.size() + name.size(), 0, 0, query.Number(3)};
    item.class_end = item.name_end + class_name.size();
    item.path_end = item.class_end + path.size();
    read.text.append(name).append(class_name).append(path);
    read.items.push_back(item);
  }
  read.content = store.LastContent();
  return query.Status();
} catch (const std::bad_alloc&) {
  read.items.clear();
  throw;
}

// Sets `found` to the sub-keys that were read together with number `index` of a key.
LSTATUS FindSubKey(LockedKey& locked, DWORD index, bool timed, Cache::SubKeys*& found) {
  Store& store = locked.InStore();
  const bool current = store.Known().IsCurrent();  // may forget sub-keys, so it comes first
  Cache::SubKeys& read = store.Known().SubKeysIn(locked.Id());
  found = &read;
  const bool usable = store.IsTransacted() ? store.IsCurrent(read.content) : current;
  if (!timed && read.is_whole && usable && read.Has(index)) return ERROR_SUCCESS;
  const bool keeps = store.IsTransacted() || store.Known().IsWatching();
  const std::size_t most = timed || !keeps ? 1 : std::clamp(2 * read.items.size(), kFirstSubKeys, kMostSubKeys);
  const std::int64_t end = read.End();
  LSTATUS status = ERROR_SUCCESS;
  bool good = false;
  if (!read.items.empty() && index >= end) {
    const Cache::Content before = read.content;
    const std::string after(read.Path(read.items.size() - 1));
    status = ReadSubKeys(locked, after, index - end, most, timed, read);
    good = status != ERROR_SUCCESS || read.content == before;
  }
  if (!good) status = ReadSubKeys(locked, "", index, most, timed, read);
  if (status != ERROR_SUCCESS) read.items.clear();
  read.first = index;
  read.is_whole = !timed && (store.IsTransacted() || store.Known().IsUnchanged());
  if (status != ERROR_SUCCESS) return status;
  return read.items.empty() ? locked.Missing(ERROR_NO_MORE_ITEMS) : ERROR_SUCCESS;
}

// Steps to value number `index` of a key. A walk continues from the last value; values are counted from the first one
// only for a step back, or if the hive has changed.
LSTATUS StepToValue(Query& query, LockedKey& locked, DWORD index) {
  Cache::Position& last = locked.InStore().Known().ValuePositionIn(locked.Id());
  bool found = false;
  if (index > 0 && index >= last.index) {
    found = query.Add(locked.Id()).Add(index - last.index).Add(last.number).Next();
    if (query.Status() != ERROR_SUCCESS) return query.Status();
    if (locked.InStore().LastContent() == last.content) {
      if (found && (query.Number(3) <= last.number) != (index == last.index)) return locked.InStore().NoteDamage();
      if (!found) return locked.Missing(ERROR_NO_MORE_ITEMS);
    } else {
      query.Restart();
      found = false;
    }
  }
  if (!found) {
    last = {};
    if (!query.Add(locked.Id()).Add(std::int64_t{index}).Add(last.number).Next())
      return query.Status() == ERROR_SUCCESS ? locked.Missing(ERROR_NO_MORE_ITEMS) : query.Status();
  }
  if (!query.HasValue(1) || !IsValue(locked.InStore(), query.Text(4), query.Text(0)))
    return query.Status() == ERROR_SUCCESS ? locked.InStore().NoteDamage() : query.Status();
  last = {index, query.Number(3), locked.InStore().LastContent()};
  return ERROR_SUCCESS;
}

LSTATUS ReadKey(Store& store, std::string_view path, std::int64_t& id) {
  Query query(store, kFindKey);
  id = query.Add(path).Next() ? query.Number(0) : 0;
  return query.Status();
}

// The id of a folded path, 0 if there is no such key. `inside` a batch the cache is not used.
LSTATUS FindKey(Store& store, std::string_view path, bool inside, std::int64_t& id) {
  id = path.empty() ? kRootId : inside ? -1 : store.Known().FindKey(path);
  if (id >= 0) return ERROR_SUCCESS;
  LSTATUS status = ReadKey(store, path, id);
  if (status == ERROR_SUCCESS && id == 0 && store.Link().IsFormat1())
    status = ReadKey(store, FoldedInFormat1(path), id);
  if (status == ERROR_SUCCESS && !inside) store.Known().AddKey(path, id);
  return status;
}

// The path argument of a call: the store to look in, the key that it starts from, and in scratch.path the folded path
// from the root.
struct KeyPath {
  KeyRef base;
  std::size_t base_size = 0;
  std::shared_ptr<Store> store;

  LSTATUS Find(Scope& scope, HKEY key, LPCWSTR path) {
    LSTATUS status = FindHandle(key, base, &scratch.path);
    base_size = scratch.path.size();
    if (status == ERROR_SUCCESS) status = AppendPath(scratch.path, path);
    if (status == ERROR_SUCCESS) store = scope.StoreFor(*base.store);
    return status == ERROR_SUCCESS && !store ? ERROR_TRANSACTION_NOT_ACTIVE : status;
  }

  std::string_view Base() const { return std::string_view(scratch.path).substr(0, base_size); }

  // The key at the end of the path. The store must be locked.
  LSTATUS FindId(bool inside, std::int64_t& id) const {
    LSTATUS status = FindKey(*store, Base(), inside, id);
    if (status == ERROR_SUCCESS && id != base.id) status = ERROR_KEY_DELETED;
    if (status == ERROR_SUCCESS && scratch.path.size() != base_size) {
      status = FindKey(*store, scratch.path, inside, id);
      if (status == ERROR_SUCCESS && id == 0) status = ERROR_FILE_NOT_FOUND;
    }
    return status;
  }
};

// Makes a store ready to open a key. Opening one to write locks the hive for a transaction, so that nothing that the
// transaction then reads can change before it writes.
LSTATUS ReadyFor(Store& store, REGSAM asked) {
  const LSTATUS status = store.ReadyToRead();
  return status == ERROR_SUCCESS && store.IsTransacted() && (asked & kChangingRights) ? store.ReadyToWrite() : status;
}

// The rights of a new handle of a key in the store; ERROR_ACCESS_DENIED if the hive can't be written.
LSTATUS GrantRights(Store& store, REGSAM asked, REGSAM& rights) {
  // The hive's own key opens without a file too; then the first write reports what is wrong.
  const bool ready = store.Link().Handle() != nullptr;
  rights = asked & KEY_ALL_ACCESS;
  if (!(rights & kChangingRights) || !ready) return ERROR_SUCCESS;
  return store.Note(store.CheckWritable(), HiveFault::During::kWriting);
}

// Creates the missing keys of a path; `created` is true if the last one was missing.
LSTATUS AddKeys(const KeyPath& target, LPCWSTR path, LPCWSTR class_name, std::int64_t& id, bool& created) {
  std::u16string_view rest = path;
  const std::string_view whole = scratch.path;
  std::string class_text;
  AppendName(class_text, class_name ? class_name : u"");
  std::size_t end = target.base_size;
  LSTATUS status = FindKey(*target.store, target.Base(), /*inside=*/true, id);
  if (status == ERROR_SUCCESS && id != target.base.id) return ERROR_KEY_DELETED;
  for (auto name = NextName(rest); status == ERROR_SUCCESS && !name.empty(); name = NextName(rest)) {
    end = std::min(whole.find('\\', end + 1), whole.size());
    const std::int64_t parent = id;
    status = FindKey(*target.store, whole.substr(0, end), /*inside=*/true, id);
    created = status == ERROR_SUCCESS && id == 0;
    if (!created) continue;
    scratch.name.clear();
    AppendName(scratch.name, name);
    const std::string_view own_class = end == whole.size() ? std::string_view(class_text) : "";
    Query add(*target.store, kAddKey);
    status = add.Add(parent).Add(whole.substr(0, end)).Add(scratch.name).Add(own_class).Add(Now()).Run();
    id = sqlite3_last_insert_rowid(target.store->Link().Handle());
  }
  return status;
}

LSTATUS DeleteTreeBelow(Store& store, std::string_view path, std::int64_t id, bool with_key) {
  LSTATUS status = Query(store, kDeleteValuesBelow).Add(path).Run();
  if (status == ERROR_SUCCESS) status = Query(store, kDeleteBelow).Add(path).Run();
  if (status == ERROR_SUCCESS) status = Query(store, kDeleteValues).Add(id).Run();
  if (status != ERROR_SUCCESS) return status;
  return with_key ? Query(store, kDeleteKey).Add(id).Run() : Query(store, kTouchKey).Add(id).Add(Now()).Run();
}

LSTATUS CheckNoSubKeys(Store& store, std::int64_t id) {
  Query query(store, kHasSubKey);
  return query.Add(id).Next() ? ERROR_ACCESS_DENIED : query.Status();
}

}  // namespace

Scope& NoTransaction() {
  // A transaction's handle leads to the plain store.
  class HiveScope : public Scope {
    std::shared_ptr<Store> StoreFor(const Store& store) override { return store.Plain(); }
  };
  static HiveScope scope;
  return scope;
}

LSTATUS OpenKey(Scope& scope, HKEY key, LPCWSTR path, const OpenArguments& arguments) {
  if (!arguments.opened || (arguments.options & ~REG_OPTION_OPEN_LINK) != 0) return ERROR_INVALID_PARAMETER;
  KeyPath target;
  if (const LSTATUS status = target.Find(scope, key, path)) return status;
  KeyRef opened{target.store, kRootId, 0};
  {
    const std::lock_guard lock(target.store->Mutex());
    LSTATUS status = ReadyFor(*target.store, arguments.rights);
    if (status == ERROR_SUCCESS) status = target.FindId(/*inside=*/false, opened.id);
    if (status == ERROR_FILE_NOT_FOUND && scratch.path.empty()) status = ERROR_SUCCESS;
    if (status == ERROR_SUCCESS) status = GrantRights(*target.store, arguments.rights, opened.rights);
    if (status != ERROR_SUCCESS) return status;
  }
  *arguments.opened = NewHandle(opened, scratch.path);  // after the lock: a fork takes the two locks in the other order
  return ERROR_SUCCESS;
}

namespace {

// The id of the key at the end of a path, which is created if it is missing; then `created` is true. The store must be
// locked.
LSTATUS FindOrAddKey(const KeyPath& target, LPCWSTR path, LPCWSTR class_name, REGSAM rights, std::int64_t& id,
                     bool& created) {
  LSTATUS status = ReadyFor(*target.store, rights);
  if (status == ERROR_SUCCESS) status = target.FindId(/*inside=*/false, id);
  if (status != ERROR_FILE_NOT_FOUND) return status;
  status = target.store->ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(*target.store);
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = AddKeys(target, path, class_name, id, created);
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

}  // namespace

LSTATUS CreateKey(Scope& scope, HKEY key, LPCWSTR path, LPCWSTR class_name, const OpenArguments& arguments,
                  DWORD* disposition) {
  if (!path) return ERROR_BADKEY;
  if (!arguments.opened || arguments.options != 0) return ERROR_INVALID_PARAMETER;
  KeyPath target;
  if (const LSTATUS status = target.Find(scope, key, path)) return status;
  KeyRef opened{target.store, kRootId, 0};
  bool created = false;
  {
    const std::lock_guard lock(target.store->Mutex());
    LSTATUS status = FindOrAddKey(target, path, class_name, arguments.rights, opened.id, created);
    if (status == ERROR_SUCCESS) status = GrantRights(*target.store, arguments.rights, opened.rights);
    if (status != ERROR_SUCCESS) return status;
  }
  *arguments.opened = NewHandle(opened, scratch.path);
  if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  return ERROR_SUCCESS;
}

LSTATUS DeleteKey(Scope& scope, HKEY key, LPCWSTR path) {
  if (!path) return ERROR_INVALID_PARAMETER;
  KeyPath target;
  if (const LSTATUS status = target.Find(scope, key, path)) return status;
  const std::lock_guard lock(target.store->Mutex());
  std::int64_t id = kRootId;
  LSTATUS status = target.store->ReadyToRead();
  if (status == ERROR_SUCCESS) status = target.FindId(/*inside=*/false, id);
  if (status == ERROR_SUCCESS && id == kRootId) status = ERROR_ACCESS_DENIED;
  if (status == ERROR_SUCCESS) status = target.store->ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(*target.store);
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = target.FindId(/*inside=*/true, id);
  if (status == ERROR_SUCCESS) status = CheckNoSubKeys(*target.store, id);
  if (status == ERROR_SUCCESS) status = Query(*target.store, kDeleteValues).Add(id).Run();
  if (status == ERROR_SUCCESS) status = Query(*target.store, kDeleteKey).Add(id).Run();
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

}  // namespace kvregistry

using namespace kvregistry;

// ---- Keys ----

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened) {
  return OpenKey(NoTransaction(), key, path, {options, rights, opened});
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options, REGSAM rights,
                        SECURITY_ATTRIBUTES*, PHKEY opened, DWORD* disposition) {
  if (reserved != 0) return ERROR_INVALID_PARAMETER;
  return CreateKey(NoTransaction(), key, path, className, {options, rights, opened}, disposition);
}

LSTATUS RegCloseKey(HKEY key) { return CloseHandleOf(key); }

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) {
  const bool itself = !path || !*path;
  LockedKey locked(key, KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | (itself ? KEY_SET_VALUE : 0), &scratch.path);
  LSTATUS status = locked.ReadyToRead();
  if (status == ERROR_SUCCESS) status = AppendPath(scratch.path, path);
  if (status == ERROR_SUCCESS) status = locked.ReadyToWrite();
  if (status == ERROR_FILE_NOT_FOUND && itself) return ERROR_SUCCESS;
  if (status != ERROR_SUCCESS) return status;
  Batch batch(locked.InStore());
  std::int64_t id = 0;
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = locked.Missing(ERROR_SUCCESS);
  if (status == ERROR_SUCCESS) status = FindKey(locked.InStore(), scratch.path, /*inside=*/true, id);
  if (status == ERROR_SUCCESS && id == 0) status = ERROR_FILE_NOT_FOUND;
  if (status == ERROR_SUCCESS)
    status = DeleteTreeBelow(locked.InStore(), scratch.path, id, /*with_key=*/id != locked.Id());
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, LPWSTR className,
                      DWORD* classUnits, FILETIME* written) {
  if (reserved || !name || !nameUnits || (className && !classUnits)) return ERROR_INVALID_PARAMETER;
  LockedKey locked(key, KEY_ENUMERATE_SUB_KEYS, &scratch.path);
  LSTATUS status = locked.ReadyToRead();
  if (status == ERROR_FILE_NOT_FOUND) return ERROR_NO_MORE_ITEMS;
  if (status != ERROR_SUCCESS) return status;
  Cache::SubKeys* found = nullptr;
  if ((status = FindSubKey(locked, index, written != nullptr, found))) return status;
  const std::size_t i = std::size_t(index - found->first);
  if (!Fits(found->Name(i), name, nameUnits) || !Fits(found->Class(i), className, classUnits)) return ERROR_MORE_DATA;
  CopyText(found->Name(i), name, nameUnits);
  CopyText(found->Class(i), className, classUnits);
  CopyTime(found->items[i].written, written);
  return ERROR_SUCCESS;
}

// ---- Values ----

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes) {
  if (reserved || (data && !bytes)) return ERROR_INVALID_PARAMETER;
  if (const LSTATUS status = FoldValueName(name)) return status;
  LockedKey locked(key, KEY_QUERY_VALUE);
  if (const LSTATUS status = locked.ReadyToRead()) return status;
  return VisitValue(locked, [&](DWORD stored_type, std::string_view stored) {
    if (type) *type = stored_type;
    return CopyData(stored, data, bytes);
  });
}

LSTATUS RegQueryMultipleValuesW(HKEY key, VALENTW* values, DWORD count, LPWSTR buffer, DWORD* bytes) {
  if ((!values && count != 0) || !bytes) return ERROR_INVALID_PARAMETER;
  LockedKey locked(key, KEY_QUERY_VALUE);
  if (const LSTATUS status = locked.ReadyToRead()) return status;
  auto* const out = reinterpret_cast<BYTE*>(buffer);
  const std::size_t room = out ? *bytes : 0;
  std::size_t used = 0;
  for (VALENTW* value = values; value != values + count; ++value) {
    if (const LSTATUS status = FoldValueName(value->ve_valuename)) return status;
    const LSTATUS status = VisitValue(locked, [&](DWORD type, std::string_view stored) {
      if (stored.size() > kMostBytesAtOnce - used) return LSTATUS(ERROR_TRANSFER_TOO_LONG);
      value->ve_type = type;
      value->ve_valuelen = DWORD(stored.size());
      value->ve_valueptr = reinterpret_cast<std::uintptr_t>(out) + used;
      if (out && stored.size() <= room - std::min(used, room)) std::copy(stored.begin(), stored.end(), out + used);
      used += stored.size();
      return LSTATUS(ERROR_SUCCESS);
    });
    if (status != ERROR_SUCCESS) return status;
  }
  *bytes = DWORD(used);
  return used > room ? ERROR_MORE_DATA : ERROR_SUCCESS;
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes) {
  if (reserved != 0) return ERROR_INVALID_PARAMETER;
  if (!data && bytes != 0) return ERROR_NOACCESS;
  if (const LSTATUS status = FoldValueName(name)) return status;
  LockedKey locked(key, KEY_SET_VALUE);
  if (const LSTATUS status = locked.ReadyToWrite()) return status;
  const std::string_view wanted(reinterpret_cast<const char*>(data), bytes);
  Store& store = locked.InStore();
  if (store.IsTransacted()) {  // where a write costs no more than a look
    const LSTATUS status = WriteValue(locked, name, type, wanted);
    if (status == ERROR_SUCCESS) store.RecordValue(locked.Id(), scratch.folded, type, wanted);
    return status;
  }
  // A value that is the same already is not written, as most values when a whole tree is saved.
  const LSTATUS same = VisitValue(locked, [&](DWORD stored_type, std::string_view stored) {
    return stored_type == type && stored == wanted ? ERROR_SUCCESS : ERROR_MORE_DATA;
  });
  if (same == ERROR_SUCCESS) return ERROR_SUCCESS;
  const bool current = store.Known().IsCurrent();
  const LSTATUS status = WriteValue(locked, name, type, wanted);
  if (!current || status != ERROR_SUCCESS) return status;
  store.Known().KeepAfterOwnChange();
  store.Known().AddWritten(locked.Id(), scratch.folded, type, wanted);
  return ERROR_SUCCESS;
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) {
  if (const LSTATUS status = FoldValueName(name)) return status;
  LockedKey locked(key, KEY_SET_VALUE);
  LSTATUS status = locked.ReadyToRead();
  if (status == ERROR_SUCCESS) status = locked.ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(locked.InStore());
  status = batch.Status();
  if (status == ERROR_SUCCESS)
    status = Query(locked.InStore(), kDeleteValue).Add(locked.Id()).Add(scratch.folded).Run();
  if (status != ERROR_SUCCESS) return status;
  if (sqlite3_changes(locked.InStore().Link().Handle()) == 0) return locked.Missing(ERROR_FILE_NOT_FOUND);
  status = Query(locked.InStore(), kTouchKey).Add(locked.Id()).Add(Now()).Run();
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* bytes) {
  if (reserved || !name || !nameUnits || (data && !bytes)) return ERROR_INVALID_PARAMETER;
  LockedKey locked(key, KEY_QUERY_VALUE);
  const LSTATUS ready = locked.ReadyToRead();
  if (ready == ERROR_FILE_NOT_FOUND) return ERROR_NO_MORE_ITEMS;
  if (ready != ERROR_SUCCESS) return ready;
  const auto give = [&](std::string_view kept, DWORD stored_type, std::string_view stored) {
    if (!Fits(kept, name, nameUnits)) return LSTATUS(ERROR_MORE_DATA);
    CopyText(kept, name, nameUnits);
    if (type) *type = stored_type;
    return CopyData(stored, data, bytes);
  };
  Cache& cache = locked.InStore().Known();
  if (const auto* known = cache.FindList(locked.Id())) {
    if (index < known->items.size()) {
      const auto& item = known->items[index];
      return give(item.name, item.type, item.data);
    }
    if (known->is_whole) return ERROR_NO_MORE_ITEMS;
  }
  Query query(locked.InStore(), kValueAt);
  const LSTATUS status = StepToValue(query, locked, index);
  if (status == ERROR_NO_MORE_ITEMS) cache.AddEndOfList(locked.Id(), index);
  if (status != ERROR_SUCCESS) return status;
  cache.AddToList(locked.Id(), index, query.Text(0), DWORD(query.Number(1)), query.Bytes(2));
  return give(query.Text(0), DWORD(query.Number(1)), query.Bytes(2));
}
