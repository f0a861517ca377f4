#include "platform/linux/registry_store.h"

namespace kvregistry {

LSTATUS Store::Open() {
  Close();
  const LSTATUS status = connection_.Open();
  // A transaction's own changes are not in the log yet, so its store caches no keys and values.
  if (status == ERROR_SUCCESS && !connection_.IsReadOnly() && !IsTransacted()) cache_.Watch(connection_.Handle());
  return status;
}

LSTATUS Store::ReadyToRead() {
  if (ended_) return ERROR_TRANSACTION_NOT_ACTIVE;
  if (connection_.IsOutdated()) Close();
  return connection_.Handle() ? ERROR_SUCCESS : Open();
}

LSTATUS Store::ReadyToWrite() {
  if (ended_) return ERROR_TRANSACTION_NOT_ACTIVE;
  if (begun_) return connection_.IsOutsideTransaction() ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  if (connection_.Handle() && connection_.WasReplaced()) Close();
  LSTATUS status = connection_.Handle() ? ERROR_SUCCESS : Open();
  if (status == ERROR_FILE_NOT_FOUND) {
    status = connection_.Create();
    if (status == ERROR_SUCCESS) status = Open();
  }
  if (status == ERROR_SUCCESS) status = CheckWritable();
  return status == ERROR_SUCCESS && IsTransacted() ? Begin() : status;
}

LSTATUS Store::CheckWritable() {
  if (!connection_.IsReadOnly()) return ERROR_SUCCESS;
  const LSTATUS status = Open();  // the rights may have changed since
  return status == ERROR_SUCCESS && connection_.IsReadOnly() ? ERROR_ACCESS_DENIED : status;
}

std::shared_ptr<Store> Store::Plain() const {
  return plain_ ? plain_->shared_from_this() : std::const_pointer_cast<Store>(shared_from_this());
}

Cache::Content Store::LastContent() const {
  Cache::Content content;
  sqlite3_file_control(connection_.Handle(), "main", SQLITE_FCNTL_DATA_VERSION, &content.file);
  content.own_changes = sqlite3_total_changes(connection_.Handle());  // those of an open transaction, too
  return content;
}

void Store::Close() {
  connection_.Close();
  Abandon();
}

void Store::Abandon() {
  connection_.Abandon();
  cache_.Clear();
  ResetTransaction();
}

}  // namespace kvregistry
