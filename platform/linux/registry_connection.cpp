// The hive file.
//
// A new hive is written under another name and linked to its own, so that a hive file is either absent or complete,
// whichever process dies when. Connections are not closed at the end of the process: what a commit wrote is in the log,
// and another process continues from there. The log and its index are never removed, because a reader that may not
// write the folder needs them.
#include "platform/linux/registry_connection.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <new>
#include <random>

#include "platform/linux/registry_refolding.h"

namespace kvregistry {

namespace {

// Format of the hive file. A changed schema gets the next number; a number is never reused.
//   1  keys by path, values by key and name
//   2  paths and names are folded by the platform's case pairs (registry_names.h)
constexpr int kFormat = kFormatOfNames;
constexpr int kApplicationId = 0x4B565247;

constexpr const char* kSchema = R"(
  CREATE TABLE key(
    id INTEGER PRIMARY KEY AUTOINCREMENT,  -- never reused: a handle notices that its key was deleted
    parent INTEGER NOT NULL,
    path TEXT NOT NULL UNIQUE,             -- folded, from the root: opening is one look-up
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

// A statement may take kStepsPerRound * (kFreeRounds + kRoundsPerMiB * size) steps. Reading every row of an intact hive
// takes a hundredth of that; a tree of pages that leads back into itself never ends.
constexpr int kStepsPerRound = 1'000'000;
constexpr int kFreeRounds = 50;
constexpr int kRoundsPerMiB = 50;

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

off_t SizeOf(const std::string& file) {
  struct stat about;
  return stat(file.c_str(), &about) == 0 ? about.st_size : 0;
}

bool HasContent(const std::string& file) { return SizeOf(file) > 0; }

// Without these rights, or without room for the log beside it, a hive can still be read.
bool IsRefusal(LSTATUS status) { return status == ERROR_ACCESS_DENIED || status == ERROR_DISK_FULL; }

LSTATUS StatusOfErrno(int error) {
  switch (error) {
    case ENOENT: return ERROR_FILE_NOT_FOUND;
    case ENOTDIR: return ERROR_PATH_NOT_FOUND;
    case ENOSPC:
    case EDQUOT: return ERROR_DISK_FULL;
    case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
    case EIO: return ERROR_REGISTRY_IO_FAILED;
    default: return ERROR_ACCESS_DENIED;
  }
}

// The first id of a new hive. It is random, so that a handle of a removed hive's key names no key of the next hive.
std::int64_t FirstId() {
  std::random_device random;
  return std::int64_t{random()} << 8;
}

// The bytes of an empty hive, already in the mode of a write-ahead log.
std::string EmptyHive() {
  sqlite3* memory = nullptr;
  std::string bytes;
  if (sqlite3_open_v2(":memory:", &memory, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK &&
      sqlite3_exec(memory, kSchema, nullptr, nullptr, nullptr) == SQLITE_OK) {
    const std::string marks = "PRAGMA application_id = " + std::to_string(kApplicationId) +
                              "; PRAGMA user_version = " + std::to_string(kFormat) +
                              "; UPDATE sqlite_sequence SET seq = " + std::to_string(FirstId());
    sqlite3_int64 size = 0;
    const bool marked = sqlite3_exec(memory, marks.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    if (unsigned char* image = marked ? sqlite3_serialize(memory, "main", &size, 0) : nullptr) {
      bytes.assign(reinterpret_cast<char*>(image), std::size_t(size));
      sqlite3_free(image);
      bytes[18] = bytes[19] = 2;  // the file format numbers for writing and reading: 2 is the write-ahead log
    }
  }
  sqlite3_close(memory);
  return bytes;
}

int ReadFormat(sqlite3* connection, int& format) {
  sqlite3_stmt* query = nullptr;
  sqlite3_prepare_v2(connection, "PRAGMA user_version", -1, &query, nullptr);
  if (sqlite3_step(query) == SQLITE_ROW) format = sqlite3_column_int(query, 0);
  const int result = sqlite3_finalize(query);
  return query ? result : sqlite3_extended_errcode(connection);
}

LSTATUS WriteNewFile(const std::string& file, const std::string& bytes, mode_t mode) {
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

// ---- Opening and closing ----

std::string Connection::File() const { return folder_ + (hive_ == Hive::kUser ? "/user.hive" : "/machine.hive"); }

bool Connection::IsOutdated() const { return immutable_ && HasContent(File() + "-wal"); }

bool Connection::WasReplaced() const {
  int moved = 0;
  sqlite3_file_control(handle_, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved != 0;
}

LSTATUS Connection::Open() {
  const std::string file = File();
  if (!Exists(file)) return StatusOfErrno(errno);
  const LSTATUS first = Connect(SQLITE_OPEN_READWRITE, file);
  LSTATUS status = first;
  if (IsRefusal(status)) status = Connect(SQLITE_OPEN_READONLY, file);
  if (IsRefusal(status) && !HasContent(file + "-wal")) {
    status = Connect(SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, UriOf(file) + "?immutable=1");
    immutable_ = status == ERROR_SUCCESS;
  }
  refusal_ = first == ERROR_DISK_FULL ? first : ERROR_ACCESS_DENIED;
  return status;
}

LSTATUS Connection::Connect(int flags, const std::string& name) {
  Close();
  rounds_ = 0;
  int result = sqlite3_open_v2(name.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  int format = 0;
  if (result == SQLITE_OK) {
    sqlite3_extended_result_codes(handle_, 1);
    sqlite3_busy_handler(handle_, WaitForOthers, nullptr);
    sqlite3_progress_handler(handle_, kStepsPerRound, CountSteps, this);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);  // a hive has none
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    result = sqlite3_exec(handle_, kSettings, nullptr, nullptr, nullptr);
  }
  if (result == SQLITE_OK) result = ReadFormat(handle_, format);
  LSTATUS status = StatusOf(handle_, result);
  if (status == ERROR_SUCCESS && format < 1) status = ERROR_BADDB;
  if (status == ERROR_SUCCESS && format > kFormat) status = ERROR_UNKNOWN_REVISION;
  if (status == ERROR_SUCCESS) {
    int keep_log = 1;
    sqlite3_file_control(handle_, "main", SQLITE_FCNTL_PERSIST_WAL, &keep_log);
    read_only_ = sqlite3_db_readonly(handle_, "main") != 0;
    is_format_1_ = format == 1 && read_only_;
    if (format == 1 && !read_only_) status = RefoldNames(handle_);
  }
  if (status != ERROR_SUCCESS) Close();
  return status;
}

LSTATUS Connection::Create() const {
  if (const LSTATUS status = MakeFolders(folder_, hive_ == Hive::kUser ? 0700 : 0755)) return status;
  const std::string bytes = EmptyHive();
  if (bytes.empty()) return ERROR_NOT_ENOUGH_MEMORY;
  const std::string file = File();
  const std::string fresh =
      file + "." + std::to_string(getpid()) + "-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".new";
  unlink(fresh.c_str());
  LSTATUS status = WriteNewFile(fresh, bytes, hive_ == Hive::kUser ? 0600 : 0644);
  if (status == ERROR_FILE_NOT_FOUND) status = ERROR_ACCESS_DENIED;
  // Linking never replaces: if another process was faster, its hive is used.
  if (status == ERROR_SUCCESS && link(fresh.c_str(), file.c_str()) != 0 && errno != EEXIST) {
    const bool cannot_link = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!cannot_link || rename(fresh.c_str(), file.c_str()) != 0) status = StatusOfErrno(errno);
  }
  unlink(fresh.c_str());
  return status;
}

// No exception may pass through SQLite. Without memory for the file's name the statement goes on.
int Connection::CountSteps(void* self) try {
  Connection& connection = *static_cast<Connection*>(self);
  if (++connection.rounds_ <= kFreeRounds) return 0;
  const std::string file = connection.File();
  const auto mebibytes = (SizeOf(file) + SizeOf(file + "-wal")) >> 20;
  return connection.rounds_ > kFreeRounds + kRoundsPerMiB * mebibytes;
} catch (const std::bad_alloc&) {
  return 0;
}

void Connection::Close() {
  for (sqlite3_stmt* statement : prepared_) sqlite3_finalize(statement);
  sqlite3_close(handle_);
  Abandon();
}

void Connection::Abandon() {
  handle_ = nullptr;
  prepared_.fill(nullptr);
  read_only_ = immutable_ = is_format_1_ = false;
}

// ---- Statements ----

sqlite3_stmt* Connection::Prepared(const Sql& sql) {
  rounds_ = 0;
  sqlite3_stmt*& statement = prepared_[std::size_t(sql.slot)];
  if (!statement) sqlite3_prepare_v3(handle_, sql.text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  return statement;
}

LSTATUS Connection::Execute(const char* sql) {
  return StatusOf(handle_, sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr));
}

}  // namespace kvregistry
