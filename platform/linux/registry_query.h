// Uses of a store's statements: one query, and several that belong together. Internal to platform/linux.
#pragma once

#include "platform/linux/registry_store.h"

namespace kvregistry {

// One use of a prepared statement; the destructor resets it, which ends the reading.
class Query {
 public:
  Query(Store& store, const Sql& sql) : store_(store), statement_(store.Link().Prepared(sql)) {}
  ~Query() {
    if (statement_) sqlite3_reset(statement_);
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // Arguments in order. Text and bytes have to outlive the query.
  Query& Add(std::int64_t number);
  Query& Add(std::string_view text);
  Query& AddBytes(const void* bytes, std::size_t size);

  // True at each row. False at the end, or on failure: see Status.
  bool Next();
  // Begins anew, with other arguments.
  void Restart();
  // For a statement without rows.
  LSTATUS Run();
  LSTATUS Status() const { return status_; }

  std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  // Without memory it is empty, and Status reports that.
  std::string_view Text(int column);
  bool IsText(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_TEXT; }
  // Whether the column and the one after it hold the type and the bytes of a value, as writing stores them.
  bool HasValue(int column) const;
  // Bytes of a value; valid until the query ends.
  std::string_view Bytes(int column) const;

 private:
  bool Step();

  Store& store_;
  sqlite3_stmt* statement_;
  int next_argument_ = 1;
  LSTATUS status_ = ERROR_SUCCESS;
};

// Several writing statements that belong together: rolled back unless committed. In a transaction's store they are a
// savepoint of its transaction.
class Batch {
 public:
  explicit Batch(Store& store);
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
