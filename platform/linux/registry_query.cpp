#include "platform/linux/registry_query.h"

#include <algorithm>

namespace kvregistry {

// ---- Query ----

Query& Query::Add(std::int64_t number) {
  sqlite3_bind_int64(statement_, next_argument_++, number);
  return *this;
}

Query& Query::Add(std::string_view text) {
  sqlite3_bind_text(statement_, next_argument_++, text.data(), int(text.size()), SQLITE_STATIC);
  return *this;
}

Query& Query::AddBytes(const void* bytes, std::size_t size) {
  if (!statement_) return *this;  // see Step
  const int result = sqlite3_bind_blob64(statement_, next_argument_++, size ? bytes : "", size, SQLITE_STATIC);
  if (result != SQLITE_OK) status_ = StatusOf(store_.Link().Handle(), result);
  return *this;
}

bool Query::Step() {
  if (status_ != ERROR_SUCCESS) return false;
  const int result =
      statement_ ? sqlite3_step(statement_) : std::max(sqlite3_extended_errcode(store_.Link().Handle()), SQLITE_ERROR);
  if (result == SQLITE_ROW) return true;
  status_ = StatusOf(store_.Link().Handle(), result);
  return false;
}

bool Query::Next() {
  if (Step()) return true;
  store_.Note(status_, HiveFault::During::kReading);
  return false;
}

void Query::Restart() {
  sqlite3_reset(statement_);
  next_argument_ = 1;
  status_ = ERROR_SUCCESS;
}

LSTATUS Query::Run() {
  while (Step()) continue;
  return store_.Note(status_, HiveFault::During::kWriting);
}

std::string_view Query::Text(int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (!text && sqlite3_errcode(store_.Link().Handle()) == SQLITE_NOMEM) status_ = ERROR_NOT_ENOUGH_MEMORY;
  return {text ? text : "", std::size_t(sqlite3_column_bytes(statement_, column))};
}

bool Query::HasValue(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_INTEGER && Number(column) >= 0 &&
         Number(column) <= 0xFFFFFFFF && sqlite3_column_type(statement_, column + 1) == SQLITE_BLOB;
}

std::string_view Query::Bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  return {bytes, bytes ? std::size_t(sqlite3_column_bytes(statement_, column)) : 0};
}

// ---- Batch ----

namespace {

struct Bounds {
  Sql begin;
  Sql commit;
  Sql roll_back;
};
constexpr Bounds kOwnTransaction{{0, "BEGIN IMMEDIATE"}, {1, "COMMIT"}, {2, "ROLLBACK"}};
constexpr Bounds kSavepoint{{3, "SAVEPOINT step"}, {4, "RELEASE step"}, {5, "ROLLBACK TO step"}};

const Bounds& BoundsIn(const Store& store) { return store.IsTransacted() ? kSavepoint : kOwnTransaction; }

}  // namespace

Batch::Batch(Store& store) : store_(store) {
  store_.RecordOtherChange();
  status_ = Query(store_, BoundsIn(store_).begin).Run();
  open_ = status_ == ERROR_SUCCESS;
}

Batch::~Batch() {
  if (!open_ || store_.Link().IsOutsideTransaction()) return;
  Query(store_, BoundsIn(store_).roll_back).Run();
  if (store_.IsTransacted()) Query(store_, BoundsIn(store_).commit).Run();  // takes the savepoint away
}

LSTATUS Batch::Commit() {
  const LSTATUS status = Query(store_, BoundsIn(store_).commit).Run();
  open_ = status != ERROR_SUCCESS;
  return status;
}

}  // namespace kvregistry
