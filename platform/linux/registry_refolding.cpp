#include "platform/linux/registry_refolding.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/registry_connection.h"
#include "platform/linux/registry_names.h"

namespace kvregistry {

namespace {

// A key's path is longer than that of the key above it, which comes first.
constexpr const char* kKeys = "SELECT id, parent, path, name FROM key WHERE id <> 1 ORDER BY length(path)";
// Only names with characters that are not ASCII can change: these have more bytes than characters.
constexpr const char* kValues =
    "SELECT key, 0, folded, name FROM value WHERE length(CAST(name AS BLOB)) <> length(name)";
constexpr const char* kChangeKey = "UPDATE OR IGNORE key SET path = ?3 WHERE id = ?1 AND path = ?2";
constexpr const char* kChangeValue = "UPDATE OR IGNORE value SET folded = ?3 WHERE key = ?1 AND folded = ?2";

struct Change {
  std::int64_t key;
  std::string before;
  std::string after;
};

class Statement {
 public:
  Statement(sqlite3* connection, const char* sql) { sqlite3_prepare_v2(connection, sql, -1, &statement_, nullptr); }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  bool Next() { return statement_ && (result_ = sqlite3_step(statement_)) == SQLITE_ROW; }
  // SQLITE_DONE after the last row.
  int Result() const { return result_; }
  std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return text ? std::string(text, std::size_t(sqlite3_column_bytes(statement_, column))) : std::string();
  }
  int Run(const Change& change) {
    sqlite3_bind_int64(statement_, 1, change.key);
    sqlite3_bind_text(statement_, 2, change.before.data(), int(change.before.size()), SQLITE_STATIC);
    sqlite3_bind_text(statement_, 3, change.after.data(), int(change.after.size()), SQLITE_STATIC);
    const int result = statement_ ? sqlite3_step(statement_) : SQLITE_ERROR;
    sqlite3_reset(statement_);
    return result == SQLITE_DONE ? SQLITE_OK : result;
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
  int result_ = SQLITE_ERROR;
};

std::string Folded(std::string_view kept) {
  std::u16string units(UnitsOf(kept), u'\0');
  Decode(kept, units.data());
  std::string folded;
  AppendFolded(folded, units);
  return folded;
}

// The changes of the rows (key, key above, folded path or name, name) that a statement returns.
int FindChanges(sqlite3* connection, const char* sql, bool has_paths, std::vector<Change>& changes) {
  std::unordered_map<std::int64_t, std::string> paths;  // those that change
  Statement rows(connection, sql);
  while (rows.Next()) {
    const std::string before = rows.Text(2), name = rows.Text(3);
    const std::size_t own = has_paths ? before.rfind('\\') + 1 : 0;  // npos + 1 is 0
    if (before.substr(own) != FoldedInFormat1(name)) continue;
    const auto above = paths.find(rows.Number(1));
    std::string after = has_paths && above != paths.end() ? above->second + '\\' : before.substr(0, own);
    after += Folded(name);
    if (after == before) continue;
    if (has_paths) paths[rows.Number(0)] = after;
    changes.push_back({rows.Number(0), before, after});
  }
  return rows.Result() == SQLITE_DONE ? SQLITE_OK : rows.Result();
}

int Apply(sqlite3* connection, const char* sql, const std::vector<Change>& changes) {
  Statement change(connection, sql);
  int result = SQLITE_OK;
  for (std::size_t i = 0; i < changes.size() && result == SQLITE_OK; ++i) result = change.Run(changes[i]);
  return result;
}

bool IsStillFormat1(sqlite3* connection) {
  Statement version(connection, "PRAGMA user_version");
  return version.Next() && version.Number(0) == 1;
}

int Refold(sqlite3* connection) {
  if (!IsStillFormat1(connection)) return SQLITE_OK;  // another process was faster
  std::vector<Change> keys, values;
  int result = FindChanges(connection, kKeys, /*has_paths=*/true, keys);
  if (result == SQLITE_OK) result = FindChanges(connection, kValues, /*has_paths=*/false, values);
  if (result == SQLITE_OK) result = Apply(connection, kChangeKey, keys);
  if (result == SQLITE_OK) result = Apply(connection, kChangeValue, values);
  const std::string mark = "PRAGMA user_version = " + std::to_string(kFormatOfNames);
  return result == SQLITE_OK ? sqlite3_exec(connection, mark.c_str(), nullptr, nullptr, nullptr) : result;
}

}  // namespace

LSTATUS RefoldNames(sqlite3* connection) {
  int result = sqlite3_exec(connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  if (result == SQLITE_OK) result = Refold(connection);
  if (result == SQLITE_OK) result = sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr);
  const LSTATUS status = StatusOf(connection, result);
  if (!sqlite3_get_autocommit(connection)) sqlite3_exec(connection, "ROLLBACK", nullptr, nullptr, nullptr);
  return status;
}

}  // namespace kvregistry
