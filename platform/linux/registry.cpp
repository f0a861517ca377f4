// The registry's calls. Each finds its handle, locks the store and runs one statement, or a batch of them.
#include "platform/registry.h"

#include <algorithm>
#include <ctime>

#include "platform/linux/registry_calls.h"
#include "platform/linux/registry_names.h"

namespace kvregistry {

namespace {

// ---- The statements ----

constexpr int S = kFirstFreeSlot;

constexpr Sql kFindKey{S + 0, "SELECT id FROM key WHERE path = ?1"};
constexpr Sql kKeyExists{S + 1, "SELECT 1 FROM key WHERE id = ?1"};
constexpr Sql kAddKey{S + 2, "INSERT INTO key(parent, path, name, class, written) VALUES(?1, ?2, ?3, ?4, ?5)"};
constexpr Sql kTouchKey{S + 3, "UPDATE key SET written = ?2 WHERE id = ?1"};
constexpr Sql kDeleteKey{S + 4, "DELETE FROM key WHERE id = ?1"};
// All keys below a path lie between the path with "\" and the path with the character behind "\".
constexpr Sql kDeleteBelow{S + 5, "DELETE FROM key WHERE path > ?1 || '\\' AND path < ?1 || ']'"};
constexpr Sql kDeleteValuesBelow{
    S + 6, "DELETE FROM value WHERE key IN (SELECT id FROM key WHERE path > ?1 || '\\' AND path < ?1 || ']')"};

constexpr Sql kSubKeyAt{
    S + 7,
    "SELECT name, class, max(written, (SELECT coalesce(max(written), 0) FROM value WHERE key = id)),"
    " path FROM key WHERE parent = ?1 AND path >= ?3 ORDER BY path LIMIT 1 OFFSET ?2"};
constexpr Sql kHasSubKey{S + 8, "SELECT 1 FROM key WHERE parent = ?1 LIMIT 1"};

constexpr Sql kReadValue{S + 9, "SELECT type, data FROM value WHERE key = ?1 AND folded = ?2"};
// Writes nothing if the key is gone; a value that is there keeps its place and the case of its name.
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
                       "SELECT name, type, data, number FROM value WHERE key = ?1 AND number >= ?3"
                       " ORDER BY number LIMIT 1 OFFSET ?2"};
static_assert(S + 15 < kSqlSlots);

constexpr std::size_t kAskedBeforeAll = 3;

// ---- Arguments ----

constexpr std::size_t kMostKeyUnits = 255;
constexpr std::size_t kMostValueUnits = 16383;
constexpr int kMostLevels = 512;

constexpr REGSAM kChangingRights = KEY_ALL_ACCESS & ~KEY_READ;

// Memory that a thread uses again in each call.
struct Scratch {
  std::string path;  // folded, of the whole way down
  std::string name;
  std::string folded;
};
thread_local Scratch scratch;

// Takes the next name of a path, or an empty one at its end. Doubled separators count once.
std::u16string_view TakeName(std::u16string_view& path) {
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
  for (auto name = TakeName(rest); !name.empty(); name = TakeName(rest)) {
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

// Hundreds of nanoseconds since 1601, as a FILETIME counts.
std::int64_t Now() {
  constexpr std::int64_t kUntil1970 = 116444736000000000;
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return kUntil1970 + now.tv_sec * std::int64_t{10'000'000} + now.tv_nsec / 100;
}

void GiveTime(std::int64_t time, FILETIME* out) {
  if (out) *out = {DWORD(time), DWORD(time >> 32)};
}

// ---- Results ----

// Whether a text fits a caller's buffer; so does one that isn't asked for.
bool Fits(std::string_view kept, LPCWSTR out, const DWORD* units) { return !out || UnitsOf(kept) < *units; }

// Gives a text that fits, and its length.
void GiveText(std::string_view kept, LPWSTR out, DWORD* units) {
  if (units) *units = UnitsOf(kept);
  if (out) Decode(kept, out);
}

LSTATUS GiveData(std::string_view data, BYTE* out, DWORD* bytes) {
  if (!bytes) return ERROR_SUCCESS;
  const DWORD room = *bytes;
  *bytes = DWORD(data.size());
  if (!out) return ERROR_SUCCESS;
  if (room < data.size()) return ERROR_MORE_DATA;
  std::copy(data.begin(), data.end(), out);
  return ERROR_SUCCESS;
}

// ---- Keys in a store ----

// A key handle in use: looked up, its rights checked, its store locked.
class Use {
 public:
  Use(HKEY key, REGSAM needed, std::string* path = nullptr) {
    status_ = FindHandle(key, key_, path);
    if (status_ == ERROR_SUCCESS && (key_.rights & needed) != needed) status_ = ERROR_ACCESS_DENIED;
    if (status_ == ERROR_SUCCESS) lock_ = std::unique_lock(key_.store->Mutex());
  }

  LSTATUS ReadyToRead() { return status_ == ERROR_SUCCESS ? key_.store->ReadyToRead() : status_; }
  LSTATUS ReadyToWrite() { return status_ == ERROR_SUCCESS ? key_.store->ReadyToWrite() : status_; }
  Store& InStore() { return *key_.store; }
  std::int64_t Id() const { return key_.id; }

  // What a missing item means: `missing`, or that the whole key is gone.
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

// Calls visit(type, data) with the value of the name in scratch.folded, which comes from memory if it is known there;
// gives what visit gives, or why there is no value.
template <class Visit>
LSTATUS VisitValue(Use& use, Visit visit) {
  Store& store = use.InStore();
  if (const auto* known = store.RecallValue(use.Id(), scratch.folded)) {
    return known->status == ERROR_SUCCESS ? visit(known->type, known->data) : known->status;
  }
  // Whoever has asked for a few values of a key asks for most of them, as when a tree of settings is restored.
  if (store.KnownValuesOf(use.Id()) == kAskedBeforeAll) {
    Query all(store, kFirstValues);
    for (all.Add(use.Id()); all.Next();)
      store.RememberValue(use.Id(), all.Text(0), ERROR_SUCCESS, DWORD(all.Number(1)), all.Bytes(2));
    if (const auto* known = store.RecallValue(use.Id(), scratch.folded)) return visit(known->type, known->data);
  }
  Query query(store, kReadValue);
  if (query.Add(use.Id()).Add(scratch.folded).Next()) {
    const DWORD type = DWORD(query.Number(0));
    store.RememberValue(use.Id(), scratch.folded, ERROR_SUCCESS, type, query.Bytes(1));
    return visit(type, query.Bytes(1));
  }
  if (query.Status() != ERROR_SUCCESS) return query.Status();
  const LSTATUS missing = use.Missing(ERROR_FILE_NOT_FOUND);
  if (missing == ERROR_FILE_NOT_FOUND) store.RememberValue(use.Id(), scratch.folded, missing, REG_NONE, {});
  return missing;
}

// Writes the value of the name in scratch.folded, most often in the place of one that is there.
LSTATUS WriteValue(Use& use, LPCWSTR name, DWORD type, std::string_view data) {
  Store& store = use.InStore();
  {
    Query change(store, kChangeValue);
    change.Add(use.Id()).Add(scratch.folded).Add(std::int64_t(type)).AddBytes(data.data(), data.size()).Add(Now());
    if (const LSTATUS status = change.Run()) return status;
    if (sqlite3_changes(store.Connection()) > 0) return ERROR_SUCCESS;
  }
  scratch.name.clear();
  AppendName(scratch.name, name ? name : u"");
  Query write(store, kWriteValue);
  write.Add(use.Id()).Add(scratch.folded).Add(scratch.name).Add(std::int64_t(type));
  if (const LSTATUS status = write.AddBytes(data.data(), data.size()).Add(Now()).Run()) return status;
  return sqlite3_changes(store.Connection()) == 0 ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

// Steps to item number `index` of a key by a statement whose arguments are the key, how many items to skip, and the
// place to begin at, which `add_place` adds. A walk goes on from the item given last; only where it goes back, or the
// items may have other numbers by now, they are counted from the first one.
template <class AddPlace>
bool StepTo(Query& query, Use& use, Store::Position& last, DWORD index, AddPlace add_place) {
  if (index > 0 && index >= last.index) {
    add_place(query.Add(use.Id()).Add(index - last.index), last);
    const bool found = query.Next();
    if (query.Status() != ERROR_SUCCESS || use.InStore().LastContent() == last.content) return found;
    query.Restart();
  }
  last = {};
  add_place(query.Add(use.Id()).Add(std::int64_t{index}), last);
  return query.Next();
}

// The id of a folded path, 0 for none. `inside` a batch nothing is taken from or left in memory.
LSTATUS FindKey(Store& store, std::string_view path, bool inside, std::int64_t& id) {
  id = path.empty() ? kRootId : inside ? -1 : store.RecallKey(path);
  if (id >= 0) return ERROR_SUCCESS;
  Query query(store, kFindKey);
  id = query.Add(path).Next() ? query.Number(0) : 0;
  if (query.Status() == ERROR_SUCCESS && !inside) store.RememberKey(path, id);
  return query.Status();
}

// A path that a call was given: the store to look in, the key it starts from, and in scratch.path the whole way down.
struct Place {
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

  // The key at the end of the path, within the store's lock.
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

// The rights that a handle of a key in the store gets, or why it gets none.
LSTATUS Grant(Store& store, REGSAM asked, REGSAM& rights) {
  // The hive's own key can be had without a file; its first write will tell.
  const bool ready = store.Connection() != nullptr;
  rights = asked & KEY_ALL_ACCESS;
  return (rights & kChangingRights) && ready ? store.CheckWritable() : ERROR_SUCCESS;
}

// Makes the keys of a path that are missing; `made` tells whether the last one was.
LSTATUS AddKeys(const Place& place, LPCWSTR path, LPCWSTR class_name, std::int64_t& id, bool& made) {
  std::u16string_view rest = path;
  const std::string_view whole = scratch.path;
  std::string class_text;
  AppendName(class_text, class_name ? class_name : u"");
  std::size_t end = place.base_size;
  LSTATUS status = FindKey(*place.store, place.Base(), /*inside=*/true, id);
  if (status == ERROR_SUCCESS && id != place.base.id) return ERROR_KEY_DELETED;
  for (auto name = TakeName(rest); status == ERROR_SUCCESS && !name.empty(); name = TakeName(rest)) {
    end = std::min(whole.find('\\', end + 1), whole.size());
    const std::int64_t parent = id;
    status = FindKey(*place.store, whole.substr(0, end), /*inside=*/true, id);
    made = status == ERROR_SUCCESS && id == 0;
    if (!made) continue;
    scratch.name.clear();
    AppendName(scratch.name, name);
    const std::string_view own_class = end == whole.size() ? std::string_view(class_text) : "";
    Query add(*place.store, kAddKey);
    status = add.Add(parent).Add(whole.substr(0, end)).Add(scratch.name).Add(own_class).Add(Now()).Run();
    id = sqlite3_last_insert_rowid(place.store->Connection());
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

Scope& Outside() {
  // A handle of a transaction leads to the hive itself.
  class OutsideScope : public Scope {
    std::shared_ptr<Store> StoreFor(const Store& store) override { return store.Plain(); }
  };
  static OutsideScope scope;
  return scope;
}

LSTATUS OpenKey(Scope& scope, HKEY key, LPCWSTR path, const OpenArguments& arguments) {
  if (!arguments.opened || arguments.options != 0) return ERROR_INVALID_PARAMETER;
  Place place;
  if (const LSTATUS status = place.Find(scope, key, path)) return status;
  KeyRef opened{place.store, kRootId, 0};
  {
    const std::lock_guard lock(place.store->Mutex());
    LSTATUS status = place.store->ReadyToRead();
    if (status == ERROR_SUCCESS) status = place.FindId(/*inside=*/false, opened.id);
    if (status == ERROR_FILE_NOT_FOUND && scratch.path.empty()) status = ERROR_SUCCESS;
    if (status == ERROR_SUCCESS) status = Grant(*place.store, arguments.rights, opened.rights);
    if (status != ERROR_SUCCESS) return status;
  }
  *arguments.opened = NewHandle(opened, scratch.path);  // not within the lock: a fork takes both the other way round
  return ERROR_SUCCESS;
}

namespace {

// The id of the key at the end of a place's path, made if it is missing; `made` tells. Within the store's lock.
LSTATUS FindOrAddKey(const Place& place, LPCWSTR path, LPCWSTR class_name, std::int64_t& id, bool& made) {
  LSTATUS status = place.store->ReadyToRead();
  if (status == ERROR_SUCCESS) status = place.FindId(/*inside=*/false, id);
  if (status != ERROR_FILE_NOT_FOUND) return status;
  status = place.store->ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(*place.store);
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = AddKeys(place, path, class_name, id, made);
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

}  // namespace

LSTATUS CreateKey(Scope& scope, HKEY key, LPCWSTR path, LPCWSTR class_name, const OpenArguments& arguments,
                  DWORD* disposition) {
  if (!path) return ERROR_BADKEY;
  if (!arguments.opened || arguments.options != 0) return ERROR_INVALID_PARAMETER;
  Place place;
  if (const LSTATUS status = place.Find(scope, key, path)) return status;
  KeyRef opened{place.store, kRootId, 0};
  bool made = false;
  {
    const std::lock_guard lock(place.store->Mutex());
    LSTATUS status = FindOrAddKey(place, path, class_name, opened.id, made);
    if (status == ERROR_SUCCESS) status = Grant(*place.store, arguments.rights, opened.rights);
    if (status != ERROR_SUCCESS) return status;
  }
  *arguments.opened = NewHandle(opened, scratch.path);
  if (disposition) *disposition = made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  return ERROR_SUCCESS;
}

LSTATUS DeleteKey(Scope& scope, HKEY key, LPCWSTR path) {
  if (!path) return ERROR_INVALID_PARAMETER;
  Place place;
  if (const LSTATUS status = place.Find(scope, key, path)) return status;
  const std::lock_guard lock(place.store->Mutex());
  std::int64_t id = kRootId;
  LSTATUS status = place.store->ReadyToRead();
  if (status == ERROR_SUCCESS) status = place.FindId(/*inside=*/false, id);
  if (status == ERROR_SUCCESS && id == kRootId) status = ERROR_ACCESS_DENIED;
  if (status == ERROR_SUCCESS) status = place.store->ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(*place.store);
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = place.FindId(/*inside=*/true, id);
  if (status == ERROR_SUCCESS) status = CheckNoSubKeys(*place.store, id);
  if (status == ERROR_SUCCESS) status = Query(*place.store, kDeleteValues).Add(id).Run();
  if (status == ERROR_SUCCESS) status = Query(*place.store, kDeleteKey).Add(id).Run();
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

}  // namespace kvregistry

using namespace kvregistry;

// ---- Keys ----

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened) {
  return OpenKey(Outside(), key, path, {options, rights, opened});
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options, REGSAM rights,
                        SECURITY_ATTRIBUTES*, PHKEY opened, DWORD* disposition) {
  if (reserved != 0) return ERROR_INVALID_PARAMETER;
  return CreateKey(Outside(), key, path, className, {options, rights, opened}, disposition);
}

LSTATUS RegCloseKey(HKEY key) { return CloseHandleOf(key); }

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) {
  const bool itself = !path || !*path;
  Use use(key, KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | (itself ? KEY_SET_VALUE : 0), &scratch.path);
  LSTATUS status = use.ReadyToRead();
  if (status == ERROR_SUCCESS) status = AppendPath(scratch.path, path);
  if (status == ERROR_SUCCESS) status = use.ReadyToWrite();
  if (status == ERROR_FILE_NOT_FOUND && itself) return ERROR_SUCCESS;
  if (status != ERROR_SUCCESS) return status;
  Batch batch(use.InStore());
  std::int64_t id = 0;
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = use.Missing(ERROR_SUCCESS);
  if (status == ERROR_SUCCESS) status = FindKey(use.InStore(), scratch.path, /*inside=*/true, id);
  if (status == ERROR_SUCCESS && id == 0) status = ERROR_FILE_NOT_FOUND;
  if (status == ERROR_SUCCESS) status = DeleteTreeBelow(use.InStore(), scratch.path, id, /*with_key=*/id != use.Id());
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, LPWSTR className,
                      DWORD* classUnits, FILETIME* written) {
  if (reserved || !name || !nameUnits || (className && !classUnits)) return ERROR_INVALID_PARAMETER;
  Use use(key, KEY_ENUMERATE_SUB_KEYS);
  LSTATUS status = use.ReadyToRead();
  if (status == ERROR_FILE_NOT_FOUND) return ERROR_NO_MORE_ITEMS;
  if (status != ERROR_SUCCESS) return status;
  Store::Position& last = use.InStore().PositionIn(use.Id(), Store::Items::kSubKeys);
  Query query(use.InStore(), kSubKeyAt);
  const bool found = StepTo(query, use, last, index, [](Query& to, const Store::Position& from) {
    scratch.path = from.path;  // what outlives the query
    to.Add(scratch.path);
  });
  if (!found) return query.Status() == ERROR_SUCCESS ? use.Missing(ERROR_NO_MORE_ITEMS) : query.Status();
  last = {index, std::string(query.Text(3)), 0, use.InStore().LastContent()};
  if (!Fits(query.Text(0), name, nameUnits) || !Fits(query.Text(1), className, classUnits)) return ERROR_MORE_DATA;
  GiveText(query.Text(0), name, nameUnits);
  GiveText(query.Text(1), className, classUnits);
  GiveTime(query.Number(2), written);
  return ERROR_SUCCESS;
}

// ---- Values ----

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes) {
  if (reserved || (data && !bytes)) return ERROR_INVALID_PARAMETER;
  if (const LSTATUS status = FoldValueName(name)) return status;
  Use use(key, KEY_QUERY_VALUE);
  if (const LSTATUS status = use.ReadyToRead()) return status;
  return VisitValue(use, [&](DWORD stored_type, std::string_view stored) {
    if (type) *type = stored_type;
    return GiveData(stored, data, bytes);
  });
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes) {
  if (reserved != 0 || (!data && bytes != 0)) return ERROR_INVALID_PARAMETER;
  if (const LSTATUS status = FoldValueName(name)) return status;
  Use use(key, KEY_SET_VALUE);
  if (const LSTATUS status = use.ReadyToWrite()) return status;
  const std::string_view wanted(reinterpret_cast<const char*>(data), bytes);
  Store& store = use.InStore();
  if (store.IsTransacted()) {  // a change costs no more there than looking
    const LSTATUS status = WriteValue(use, name, type, wanted);
    if (status == ERROR_SUCCESS) store.NoteWritten(use.Id(), scratch.folded, type, wanted);
    return status;
  }
  // What stands there already needs no writing, as with most values when a whole tree is saved.
  const LSTATUS same = VisitValue(use, [&](DWORD stored_type, std::string_view stored) {
    return stored_type == type && stored == wanted ? ERROR_SUCCESS : ERROR_MORE_DATA;
  });
  if (same == ERROR_SUCCESS) return ERROR_SUCCESS;
  const bool known = store.BeginOwnChange();
  const LSTATUS status = WriteValue(use, name, type, wanted);
  if (!known || status != ERROR_SUCCESS) return status;
  store.EndOwnChange();
  store.RememberValue(use.Id(), scratch.folded, ERROR_SUCCESS, type, wanted);
  return ERROR_SUCCESS;
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) {
  if (const LSTATUS status = FoldValueName(name)) return status;
  Use use(key, KEY_SET_VALUE);
  LSTATUS status = use.ReadyToRead();
  if (status == ERROR_SUCCESS) status = use.ReadyToWrite();
  if (status != ERROR_SUCCESS) return status;
  Batch batch(use.InStore());
  status = batch.Status();
  if (status == ERROR_SUCCESS) status = Query(use.InStore(), kDeleteValue).Add(use.Id()).Add(scratch.folded).Run();
  if (status != ERROR_SUCCESS) return status;
  if (sqlite3_changes(use.InStore().Connection()) == 0) return use.Missing(ERROR_FILE_NOT_FOUND);
  status = Query(use.InStore(), kTouchKey).Add(use.Id()).Add(Now()).Run();
  return status == ERROR_SUCCESS ? batch.Commit() : status;
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* bytes) {
  if (reserved || !name || !nameUnits || (data && !bytes)) return ERROR_INVALID_PARAMETER;
  Use use(key, KEY_QUERY_VALUE);
  const LSTATUS ready = use.ReadyToRead();
  if (ready == ERROR_FILE_NOT_FOUND) return ERROR_NO_MORE_ITEMS;
  if (ready != ERROR_SUCCESS) return ready;
  Store::Position& last = use.InStore().PositionIn(use.Id(), Store::Items::kValues);
  Query query(use.InStore(), kValueAt);
  const bool found =
      StepTo(query, use, last, index, [](Query& to, const Store::Position& from) { to.Add(from.number); });
  if (!found) return query.Status() == ERROR_SUCCESS ? use.Missing(ERROR_NO_MORE_ITEMS) : query.Status();
  last = {index, {}, query.Number(3), use.InStore().LastContent()};
  if (!Fits(query.Text(0), name, nameUnits)) return ERROR_MORE_DATA;
  GiveText(query.Text(0), name, nameUnits);
  if (type) *type = DWORD(query.Number(1));
  return GiveData(query.Bytes(2), data, bytes);
}
