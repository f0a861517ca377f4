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
  if (reading_ || begun_) return connection_.IsOutsideTransaction() ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  if (absent_) return ERROR_FILE_NOT_FOUND;
  if (connection_.IsOutdated()) Close();
  LSTATUS status = connection_.Handle() ? ERROR_SUCCESS : Open();
  if (status == ERROR_SUCCESS && IsTransacted()) status = BeginReading();
  absent_ = status == ERROR_FILE_NOT_FOUND && IsTransacted();
  return Note(status, HiveFault::During::kReading);
}

LSTATUS Store::ReadyToWrite() {
  if (ended_) return ERROR_TRANSACTION_NOT_ACTIVE;
  if (begun_) return connection_.IsOutsideTransaction() ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  EndReading();
  if (connection_.Handle() && connection_.WasReplaced()) Close();
  LSTATUS status = connection_.Handle() ? ERROR_SUCCESS : Open();
  if (status == ERROR_FILE_NOT_FOUND) {
    status = connection_.Create();
    if (status == ERROR_SUCCESS) status = Open();
  }
  if (status == ERROR_SUCCESS) status = CheckWritable();
  if (status == ERROR_SUCCESS && IsTransacted()) status = Begin();
  return Note(status, HiveFault::During::kWriting);
}

LSTATUS Store::CheckWritable() {
  if (!connection_.IsReadOnly()) return ERROR_SUCCESS;
  const LSTATUS status = Open();  // the rights may have changed since
  return status == ERROR_SUCCESS && connection_.IsReadOnly() ? connection_.Refusal() : status;
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

bool Store::IsCurrent(const Cache::Content& content) {
  if (!IsTransacted()) return cache_.IsCurrent();
  return (reading_ || begun_) && !connection_.IsOutsideTransaction() && LastContent() == content;
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
