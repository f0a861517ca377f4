// The connection to a hive file.
//
// A new hive is written whole beside its place and linked into it, so that a hive file is either absent or complete,
// whoever dies when. Connections are never closed at the end of the process: the log takes what a commit wrote, and
// another process goes on from there. The log and its index stay in the folder for good, because without them a reader
// that may not write the folder could not read.
#include "platform/linux/registry_store.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <list>
#include <random>
#include <vector>

#include "platform/linux/user.h"

namespace kvregistry {

namespace {

// Format of the hive file. A changed schema gets the next number; a number is never used again.
//   1  keys by path, values by key and name
constexpr int kFormat = 1;
constexpr int kApplicationId = 0x4B565247;

constexpr const char* kSchema = R"(
  CREATE TABLE key(
    id INTEGER PRIMARY KEY AUTOINCREMENT,  -- never used again: a handle notices that its key was deleted
    parent INTEGER NOT NULL,
    path TEXT NOT NULL UNIQUE,             -- folded, of the whole way down: opening is one look-up
    name TEXT NOT NULL,
    class TEXT NOT NULL,
    written INTEGER NOT NULL);
  CREATE UNIQUE INDEX sub_keys ON key(parent, path);
  CREATE TABLE value(
    key INTEGER NOT NULL,
    folded TEXT NOT NULL,
    number INTEGER NOT NULL,               -- rises with each new value of the key
    name TEXT NOT NULL,
    type INTEGER NOT NULL,
    data BLOB NOT NULL,
    written INTEGER NOT NULL,
    PRIMARY KEY(key, folded)) WITHOUT ROWID;
  CREATE UNIQUE INDEX values_by_number ON value(key, number);
  INSERT INTO key VALUES(1, 0, '', '', '', 0);
)";

constexpr const char* kSettings = R"(
  PRAGMA synchronous = NORMAL;
  PRAGMA temp_store = MEMORY;
  PRAGMA trusted_schema = OFF;
  PRAGMA cell_size_check = ON;
)";

constexpr std::size_t kMostKnown = 4096;      // keys, and values
constexpr std::size_t kMostKnownBytes = 512;  // of a value
constexpr std::size_t kMostPositions = 1024;  // more than a tree has levels
constexpr int kLongestWait_us = 30'000'000;
constexpr int kStep_us = 100;
constexpr int kLongestStep_us = 3'000;

// Waits a little longer each time. Short steps matter more than fairness: a write takes some twenty microseconds.
int WaitForOthers(void*, int tries) {
  const int step = std::min(kStep_us * (tries + 1), kLongestStep_us);
  if (LONGLONG(tries) * step > kLongestWait_us) return 0;
  const timespec time{0, step * 1000L};
  nanosleep(&time, nullptr);
  return 1;
}

std::string UriOf(const std::string& file) {
  std::string uri = "file:";
  for (const char c : file) {
    if (c == '%' || c == '?' || c == '#') {
      constexpr char kDigits[] = "0123456789ABCDEF";
      uri += {'%', kDigits[c >> 4 & 15], kDigits[c & 15]};
    } else {
      uri += c;
    }
  }
  return uri;
}

bool Exists(const std::string& file) {
  struct stat about;
  return stat(file.c_str(), &about) == 0;
}

bool HasContent(const std::string& file) {
  struct stat about;
  return stat(file.c_str(), &about) == 0 && about.st_size > 0;
}

LSTATUS StatusOfErrno(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR: return ERROR_FILE_NOT_FOUND;
    case ENOSPC:
    case EDQUOT: return ERROR_DISK_FULL;
    case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
    case EIO: return ERROR_REGISTRY_IO_FAILED;
    default: return ERROR_ACCESS_DENIED;
  }
}

// Where a new hive's ids begin: elsewhere in each, so that a handle of a hive that was removed or replaced names no key
// of the next one.
std::int64_t FirstId() {
  std::random_device random;
  return std::int64_t{random()} << 8;
}

// The bytes of an empty hive, which lies in the mode of a write-ahead log from its first byte on.
std::string EmptyHive() {
  sqlite3* memory = nullptr;
  std::string bytes;
  if (sqlite3_open_v2(":memory:", &memory, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK &&
      sqlite3_exec(memory, kSchema, nullptr, nullptr, nullptr) == SQLITE_OK) {
    const std::string marks = "PRAGMA application_id = " + std::to_string(kApplicationId) +
                              "; PRAGMA user_version = " + std::to_string(kFormat) +
                              "; UPDATE sqlite_sequence SET seq = " + std::to_string(FirstId());
    sqlite3_int64 size = 0;
    sqlite3_exec(memory, marks.c_str(), nullptr, nullptr, nullptr);
    if (unsigned char* image = sqlite3_serialize(memory, "main", &size, 0)) {
      bytes.assign(reinterpret_cast<char*>(image), std::size_t(size));
      sqlite3_free(image);
      bytes[18] = bytes[19] = 2;  // the file format numbers for writing and reading: 2 is the write-ahead log
    }
  }
  sqlite3_close(memory);
  return bytes;
}

LSTATUS WriteWhole(const std::string& file, const std::string& bytes, mode_t mode) {
  const int fd = open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
  if (fd < 0) return StatusOfErrno(errno);
  LSTATUS status = ERROR_SUCCESS;
  for (std::size_t done = 0; done < bytes.size() && status == ERROR_SUCCESS;) {
    const ssize_t written = write(fd, bytes.data() + done, bytes.size() - done);
    if (written < 0 && errno != EINTR) status = StatusOfErrno(errno);
    if (written > 0) done += std::size_t(written);
  }
  if (status == ERROR_SUCCESS && fsync(fd) != 0) status = StatusOfErrno(errno);
  close(fd);
  return status;
}

LSTATUS MakeFolders(const std::string& folder, mode_t mode) {
  for (std::size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
    const std::string part = folder.substr(0, end);
    if (mkdir(part.c_str(), mode) != 0 && errno != EEXIST && !Exists(part)) {
      return errno == ENOENT ? ERROR_ACCESS_DENIED : StatusOfErrno(errno);
    }
    if (end == std::string::npos) return ERROR_SUCCESS;
  }
}

}  // namespace

LSTATUS StatusOf(sqlite3* connection, int result) {
  const int system_error = connection ? sqlite3_system_errno(connection) : 0;
  switch (result & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE: return ERROR_SUCCESS;
    case SQLITE_FULL: return ERROR_DISK_FULL;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH: return ERROR_ACCESS_DENIED;
    case SQLITE_CANTOPEN: return system_error == ENOSPC ? ERROR_DISK_FULL : ERROR_ACCESS_DENIED;
    case SQLITE_IOERR:
      if (result == SQLITE_IOERR_NOMEM) return ERROR_NOT_ENOUGH_MEMORY;
      return system_error == ENOSPC || system_error == EDQUOT ? ERROR_DISK_FULL : ERROR_REGISTRY_IO_FAILED;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL: return ERROR_BUSY;
    case SQLITE_NOMEM: return ERROR_NOT_ENOUGH_MEMORY;
    case SQLITE_TOOBIG: return ERROR_INVALID_PARAMETER;
    default: return ERROR_BADDB;
  }
}

// ---- Opening ----

std::string Store::File() const { return folder_ + (hive_ == Hive::kUser ? "/user.hive" : "/machine.hive"); }

LSTATUS Store::ReadyToRead() {
  if (ended_) return ERROR_TRANSACTION_NOT_ACTIVE;
  // A file that was opened as unchanging is no longer so once a writer has made a log beside it.
  if (immutable_ && HasContent(File() + "-wal")) Close();
  return connection_ ? ERROR_SUCCESS : Open();
}

LSTATUS Store::ReadyToWrite() {
  if (ended_) return ERROR_TRANSACTION_NOT_ACTIVE;
  if (begun_) return sqlite3_get_autocommit(connection_) ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  if (connection_ && WasReplaced()) Close();
  LSTATUS status = connection_ ? ERROR_SUCCESS : Open();
  if (status == ERROR_FILE_NOT_FOUND) {
    status = Create();
    if (status == ERROR_SUCCESS) status = Open();
  }
  if (status == ERROR_SUCCESS) status = CheckWritable();
  if (status != ERROR_SUCCESS || !IsTransacted()) return status;
  status = StatusOf(connection_, sqlite3_exec(connection_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
  begun_ = status == ERROR_SUCCESS;
  return status;
}

LSTATUS Store::CheckWritable() {
  if (!read_only_) return ERROR_SUCCESS;
  Close();  // the rights may have changed since
  const LSTATUS status = Open();
  return status == ERROR_SUCCESS && read_only_ ? ERROR_ACCESS_DENIED : status;
}

bool Store::WasReplaced() {
  int moved = 0;
  sqlite3_file_control(connection_, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved != 0;
}

LSTATUS Store::Open() {
  const std::string file = File();
  if (!Exists(file)) return StatusOfErrno(errno);
  LSTATUS status = Connect(SQLITE_OPEN_READWRITE, file);
  if (status == ERROR_ACCESS_DENIED) status = Connect(SQLITE_OPEN_READONLY, file);
  if (status == ERROR_ACCESS_DENIED && !HasContent(file + "-wal")) {
    status = Connect(SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, UriOf(file) + "?immutable=1");
    immutable_ = status == ERROR_SUCCESS;
  }
  return status;
}

LSTATUS Store::Connect(int flags, const std::string& name) {
  Close();
  int result = sqlite3_open_v2(name.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  int format = 0;
  if (result == SQLITE_OK) {
    sqlite3_extended_result_codes(connection_, 1);
    sqlite3_busy_handler(connection_, WaitForOthers, nullptr);
    sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    result = sqlite3_exec(connection_, kSettings, nullptr, nullptr, nullptr);
  }
  if (result == SQLITE_OK) {
    const auto take = [](void* out, int, char** text, char**) { return *static_cast<int*>(out) = std::atoi(*text), 0; };
    result = sqlite3_exec(connection_, "PRAGMA user_version", take, &format, nullptr);
  }
  LSTATUS status = StatusOf(connection_, result);
  if (status == ERROR_SUCCESS && format != kFormat) status = ERROR_BADDB;
  if (status != ERROR_SUCCESS) {
    Close();
    return status;
  }
  int keep_log = 1;
  sqlite3_file_control(connection_, "main", SQLITE_FCNTL_PERSIST_WAL, &keep_log);
  read_only_ = sqlite3_db_readonly(connection_, "main") != 0;
  FindLogHead();
  return ERROR_SUCCESS;
}

LSTATUS Store::Create() {
  if (const LSTATUS status = MakeFolders(folder_, hive_ == Hive::kUser ? 0700 : 0755)) return status;
  const std::string bytes = EmptyHive();
  if (bytes.empty()) return ERROR_NOT_ENOUGH_MEMORY;
  const std::string file = File();
  const std::string fresh =
      file + "." + std::to_string(getpid()) + "-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".new";
  unlink(fresh.c_str());
  LSTATUS status = WriteWhole(fresh, bytes, hive_ == Hive::kUser ? 0600 : 0644);
  if (status == ERROR_FILE_NOT_FOUND) status = ERROR_ACCESS_DENIED;
  // Linking never replaces: if another process was faster, its hive is the one.
  if (status == ERROR_SUCCESS && link(fresh.c_str(), file.c_str()) != 0 && errno != EEXIST) {
    const bool cannot_link = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!cannot_link || rename(fresh.c_str(), file.c_str()) != 0) status = StatusOfErrno(errno);
  }
  unlink(fresh.c_str());
  return status;
}

void Store::Close() {
  for (sqlite3_stmt*& statement : prepared_) {
    sqlite3_finalize(statement);
    statement = nullptr;
  }
  sqlite3_close(connection_);
  Abandon();
}

void Store::Abandon() {
  connection_ = nullptr;
  prepared_.fill(nullptr);
  log_head_ = nullptr;
  known_change_ = {};
  known_keys_.clear();
  known_values_.clear();
  known_value_count_ = 0;
  for (auto& positions : positions_) positions.clear();
  read_only_ = immutable_ = false;
  if (begun_) ended_ = true;
  begun_ = false;
  written_.clear();
  only_values_ = true;
}

// ---- What was found before ----

// The shared index of the log begins with 48 bytes (documented as part of SQLite's file format) that every commit of
// every process changes. While they stay, what was found before is as it was, without a look into the file.
void Store::FindLogHead() {
  constexpr int kRegionBytes = 32768;
  sqlite3_file* file = nullptr;
  void volatile* head = nullptr;
  if (read_only_ || IsTransacted()) return;
  if (sqlite3_file_control(connection_, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK) return;
  if (!file->pMethods || file->pMethods->iVersion < 2) return;
  if (file->pMethods->xShmMap(file, 0, kRegionBytes, 0, &head) != SQLITE_OK) return;
  log_head_ = static_cast<const std::uint64_t*>(const_cast<void*>(head));
}

Store::Change Store::LastChange() const {
  Change change;
  for (std::size_t i = 0; i < change.size(); ++i) change[i] = __atomic_load_n(log_head_ + i, __ATOMIC_ACQUIRE);
  return change;
}

// Whether nothing has changed since what is known was read. If not, it is forgotten.
bool Store::IsAsKnown() {
  if (!log_head_) return false;
  const Change change = LastChange();
  if (change == known_change_) return true;
  known_keys_.clear();
  known_values_.clear();
  known_value_count_ = 0;
  known_change_ = change;
  return false;
}

std::int64_t Store::RecallKey(std::string_view path) {
  if (!IsAsKnown()) return -1;
  const auto found = known_keys_.find(path);
  return found == known_keys_.end() ? -1 : found->second;
}

void Store::RememberKey(std::string_view path, std::int64_t id) {
  if (!log_head_ || LastChange() != known_change_) return;
  if (known_keys_.size() >= kMostKnown) known_keys_.clear();
  known_keys_.emplace(path, id);
}

const Store::KnownValue* Store::RecallValue(std::int64_t key, std::string_view folded) {
  if (!IsAsKnown()) return nullptr;
  const auto values = known_values_.find(key);
  if (values == known_values_.end()) return nullptr;
  const auto found = values->second.find(folded);
  return found == values->second.end() ? nullptr : &found->second;
}

std::size_t Store::KnownValuesOf(std::int64_t key) const {
  const auto values = known_values_.find(key);
  return values == known_values_.end() ? 0 : values->second.size();
}

void Store::RememberValue(std::int64_t key, std::string_view folded, LSTATUS status, DWORD type,
                          std::string_view data) {
  if (!log_head_ || LastChange() != known_change_) return;
  if (known_value_count_ >= kMostKnown) {
    known_values_.clear();
    known_value_count_ = 0;
  }
  ByName<KnownValue>& values = known_values_[key];
  auto found = values.find(folded);
  if (data.size() > kMostKnownBytes) {
    if (found == values.end()) return;
    values.erase(found);
    --known_value_count_;
    return;
  }
  if (found == values.end()) {
    found = values.emplace(folded, KnownValue()).first;
    ++known_value_count_;
  }
  found->second.status = status;
  found->second.type = type;
  found->second.data = data;
}

// Each commit counts one up in the log's head, and all of one log have one pair of salts.
void Store::EndOwnChange() {
  const Change now = LastChange();
  const auto count = [](const Change& change) {
    std::uint32_t commits;
    std::memcpy(&commits, &change[1], sizeof commits);
    return commits;
  };
  if (count(now) == count(known_change_) + 1 && now[4] == known_change_[4]) known_change_ = now;
}

void Store::NoteWritten(std::int64_t key, std::string_view folded, DWORD type, std::string_view data) {
  if (written_.size() >= kMostKnown) only_values_ = false;
  if (only_values_) written_.push_back({key, std::string(folded), {ERROR_SUCCESS, type, std::string(data)}});
}

Store::Position& Store::PositionIn(std::int64_t key, Items items) {
  auto& positions = positions_[items == Items::kValues];
  if (positions.size() >= kMostPositions && !positions.contains(key)) positions.clear();
  return positions[key];
}

Store::Content Store::LastContent() const {
  Content content;
  sqlite3_file_control(connection_, "main", SQLITE_FCNTL_DATA_VERSION, &content.file);
  content.own_changes = sqlite3_total_changes(connection_);  // those of an open transaction, too
  return content;
}

// ---- Statements ----

sqlite3_stmt* Store::Prepared(const Sql& sql) {
  sqlite3_stmt*& statement = prepared_[std::size_t(sql.slot)];
  if (!statement) sqlite3_prepare_v3(connection_, sql.text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  return statement;
}

Query& Query::Add(std::int64_t number) {
  sqlite3_bind_int64(statement_, next_argument_++, number);
  return *this;
}

Query& Query::Add(std::string_view text) {
  sqlite3_bind_text(statement_, next_argument_++, text.data(), int(text.size()), SQLITE_STATIC);
  return *this;
}

Query& Query::AddBytes(const void* bytes, std::size_t size) {
  const int result = sqlite3_bind_blob64(statement_, next_argument_++, size ? bytes : "", size, SQLITE_STATIC);
  if (result != SQLITE_OK) status_ = StatusOf(store_.Connection(), result);
  return *this;
}

bool Query::Next() {
  if (status_ != ERROR_SUCCESS) return false;
  const int result =
      statement_ ? sqlite3_step(statement_) : std::max(sqlite3_extended_errcode(store_.Connection()), SQLITE_ERROR);
  if (result == SQLITE_ROW) return true;
  status_ = StatusOf(store_.Connection(), result);
  return false;
}

void Query::Restart() {
  sqlite3_reset(statement_);
  next_argument_ = 1;
  status_ = ERROR_SUCCESS;
}

LSTATUS Query::Run() {
  while (Next()) continue;
  return status_;
}

std::string_view Query::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return {text ? text : "", std::size_t(sqlite3_column_bytes(statement_, column))};
}

std::string_view Query::Bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  return {bytes, bytes ? std::size_t(sqlite3_column_bytes(statement_, column)) : 0};
}

namespace {

struct Bounds {
  Sql begin;
  Sql commit;
  Sql roll_back;
};
constexpr Bounds kWriting{{0, "BEGIN IMMEDIATE"}, {1, "COMMIT"}, {2, "ROLLBACK"}};
constexpr Bounds kReading{{3, "BEGIN"}, {1, "COMMIT"}, {2, "ROLLBACK"}};
constexpr Bounds kStep{{4, "SAVEPOINT step"}, {5, "RELEASE step"}, {6, "ROLLBACK TO step"}};

}  // namespace

Batch::Batch(Store& store, bool reading) : store_(store) {
  if (!reading) store_.NoteOtherChange();
  status_ = Query(store_, (store_.IsTransacted() ? kStep : reading ? kReading : kWriting).begin).Run();
  open_ = status_ == ERROR_SUCCESS;
}

Batch::~Batch() {
  if (!open_ || sqlite3_get_autocommit(store_.Connection())) return;
  const Bounds& bounds = store_.IsTransacted() ? kStep : kWriting;
  Query(store_, bounds.roll_back).Run();
  if (store_.IsTransacted()) Query(store_, bounds.commit).Run();
}

LSTATUS Batch::Commit() {
  const LSTATUS status = Query(store_, (store_.IsTransacted() ? kStep : kWriting).commit).Run();
  open_ = status != ERROR_SUCCESS;
  return status;
}

// What the plain store knows stays known if the transaction has only written values. Its lock is only tried: a fork
// takes both locks the other way round.
LSTATUS Store::CommitBegun() {
  std::unique_lock<std::mutex> lock;
  if (only_values_) lock = std::unique_lock(plain_->mutex_, std::try_to_lock);
  const bool known = lock && plain_->BeginOwnChange();
  const LSTATUS status = StatusOf(connection_, sqlite3_exec(connection_, "COMMIT", nullptr, nullptr, nullptr));
  if (!known || status != ERROR_SUCCESS) return status;
  plain_->EndOwnChange();
  for (const auto& [key, folded, value] : written_)
    plain_->RememberValue(key, folded, value.status, value.type, value.data);
  return status;
}

LSTATUS Store::Commit() {
  LSTATUS status = ended_ ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  if (begun_) status = sqlite3_get_autocommit(connection_) ? ERROR_TRANSACTION_NOT_ACTIVE : CommitBegun();
  if (status != ERROR_SUCCESS) Close();  // rolls back what could not be committed
  begun_ = false;
  ended_ = true;
  return status;
}

bool Store::MakeSpare() {
  if (!connection_ || begun_ || read_only_ || immutable_ || !sqlite3_get_autocommit(connection_)) return false;
  if (WasReplaced()) return false;
  for (auto& positions : positions_) positions.clear();
  written_.clear();
  only_values_ = true;
  ended_ = false;
  return true;
}

void Store::RollBack() {
  Close();
  ended_ = true;
}

// ---- All stores of the process ----

namespace {

// Where the folder of a hive comes from: which variable, and its text.
struct FolderSource {
  char kind = 0;
  std::string text;
};

struct Current {
  FolderSource source;
  std::shared_ptr<Store> store;
};

// Never destroyed: other objects' destructors may still use the registry at the end of the process.
struct Stores {
  std::mutex mutex;
  Current current[2];
  std::vector<std::shared_ptr<Store>> by_folder;
  std::list<Store*> all;
  // The connection of the last transaction of each hive: opening one takes as long as writing thirty values.
  std::unique_ptr<Store> spare[2];
};

void PrepareFork();
void GoOnInParent();
void GoOnInChild();

Stores& AllStores() {
  static Stores* const stores = [] {
    pthread_atfork(PrepareFork, GoOnInParent, GoOnInChild);
    return new Stores;
  }();
  return *stores;
}

// A connection must not cross a fork, so there is none while one happens. Only a transaction keeps its own.
void PrepareFork() {
  Stores& stores = AllStores();
  stores.mutex.lock();
  for (auto& spare : stores.spare) spare.reset();
  for (Store* store : stores.all) {
    store->Mutex().lock();
    if (!store->IsTransacted()) store->Close();
  }
}

void GoOnInParent() {
  Stores& stores = AllStores();
  for (Store* store : stores.all) store->Mutex().unlock();
  stores.mutex.unlock();
}

void GoOnInChild() {
  for (Store* store : AllStores().all) store->Abandon();
  GoOnInParent();
}

const char* Variable(const char* name) {
  const char* text = std::getenv(name);
  return text && *text ? text : nullptr;
}

std::string FolderOf(const FolderSource& source) {
  switch (source.kind) {
    case 'r': {
      std::error_code none;  // without a current folder a relative one is nowhere, and opening it tells
      const std::string whole = std::filesystem::absolute(source.text, none).string();
      return whole.empty() ? source.text : whole;
    }
    case 'x': return source.text + "/kestrova/registry";
    case 'h': return (source.text.empty() ? EffectiveUser().home : source.text) + "/.config/kestrova/registry";
    default: return "/var/lib/kestrova/registry";
  }
}

std::shared_ptr<Store> StoreIn(Stores& stores, Hive hive, const std::string& folder) {
  for (const auto& store : stores.by_folder) {
    if (store->WhichHive() == hive && store->Folder() == folder) return store;
  }
  return nullptr;
}

}  // namespace

Store::Store(Hive hive, std::string folder) : hive_(hive), folder_(std::move(folder)) {}

Store::Store(Store* plain) : hive_(plain->hive_), folder_(plain->folder_), plain_(plain) {}

Store::~Store() { Close(); }

std::shared_ptr<Store> CurrentStore(Hive hive) {
  char kind = 'r';
  const char* text = Variable("KV_REGISTRY");
  if (!text && hive == Hive::kMachine) {
    kind = 'm';
  } else if (!text) {
    text = Variable("XDG_CONFIG_HOME");
    kind = text && *text == '/' ? 'x' : 'h';
    if (kind == 'h') text = Variable("HOME");
  }
  Stores& stores = AllStores();
  const std::lock_guard lock(stores.mutex);
  Current& current = stores.current[hive == Hive::kMachine];
  if (current.store && current.source.kind == kind && current.source.text == (text ? text : "")) return current.store;
  if (current.store) {  // many folders one behind the other must not use up the process's files
    const std::lock_guard store_lock(current.store->Mutex());
    current.store->Close();
  }
  current.source = {kind, text ? text : ""};
  const std::string folder = FolderOf(current.source);
  current.store = StoreIn(stores, hive, folder);
  if (!current.store) {
    current.store = std::make_shared<Store>(hive, folder);
    stores.by_folder.push_back(current.store);
    stores.all.push_back(current.store.get());
  }
  return current.store;
}

std::shared_ptr<Store> Store::Plain() const {
  return plain_ ? plain_->shared_from_this() : std::const_pointer_cast<Store>(shared_from_this());
}

std::shared_ptr<Store> TransactedStore(const Store& store) {
  Stores& stores = AllStores();
  const std::shared_ptr<Store> plain = store.Plain();
  const auto give_up = [&stores](Store* used) {
    std::unique_ptr<Store> last(used);  // destroyed outside the lock
    const std::lock_guard lock(stores.mutex);
    stores.all.remove(used);
    if (used->MakeSpare()) stores.spare[used->WhichHive() == Hive::kMachine].swap(last);
  };
  std::unique_ptr<Store> own;
  {
    const std::lock_guard lock(stores.mutex);
    own.swap(stores.spare[plain->WhichHive() == Hive::kMachine]);
  }
  if (!own || own->Plain() != plain || !own->MakeSpare()) own = std::make_unique<Store>(plain.get());
  std::shared_ptr<Store> transacted(own.release(), give_up);
  const std::lock_guard lock(stores.mutex);
  stores.all.push_back(transacted.get());
  return transacted;
}

}  // namespace kvregistry
