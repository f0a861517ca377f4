// The transaction of a transaction's store.
#include <utility>

#include "platform/linux/registry_store.h"

namespace kvregistry {

namespace {

constexpr std::size_t kMaxWritten = 4096;  // values that are added to the cache after the commit

}  // namespace

LSTATUS Store::BeginReading() {
  const LSTATUS status = connection_.Execute("BEGIN");
  reading_ = status == ERROR_SUCCESS;
  return status;
}

void Store::EndReading() {
  const bool reading = std::exchange(reading_, false);
  absent_ = false;
  // Without memory the statement does not run; closing ends the transaction too.
  if (reading && connection_.Execute("COMMIT") != ERROR_SUCCESS) Close();
}

LSTATUS Store::Begin() {
  const LSTATUS status = connection_.Execute("BEGIN IMMEDIATE");
  begun_ = status == ERROR_SUCCESS;
  return status;
}

void Store::RecordValue(std::int64_t key, std::string_view folded, DWORD type, std::string_view data) {
  if (written_.size() >= kMaxWritten) only_values_ = false;
  if (only_values_) written_.push_back({key, std::string(folded), {ERROR_SUCCESS, type, std::string(data)}});
}

// The plain store's cache stays valid if the transaction has only written values. The plain store's lock is only tried,
// because a fork takes the two locks in the other order.
LSTATUS Store::CommitOpen() {
  std::unique_lock<std::mutex> lock;
  if (only_values_) lock = std::unique_lock(plain_->mutex_, std::try_to_lock);
  const bool current = lock && plain_->cache_.IsCurrent();
  const LSTATUS status = connection_.Execute("COMMIT");
  if (!current || status != ERROR_SUCCESS) return status;
  plain_->cache_.KeepAfterOwnChange();
  for (const auto& [key, folded, value] : written_) plain_->cache_.AddWritten(key, folded, value.type, value.data);
  return status;
}

LSTATUS Store::Commit() {
  LSTATUS status = ended_ ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
  if (begun_) status = connection_.IsOutsideTransaction() ? ERROR_TRANSACTION_NOT_ACTIVE : CommitOpen();
  if (status != ERROR_SUCCESS) Close();  // rolls back
  EndReading();
  begun_ = false;
  ended_ = true;
  return Note(status, HiveFault::During::kWriting);
}

void Store::RollBack() {
  EndReading();
  if (begun_) Close();
  ended_ = true;
}

bool Store::PrepareForReuse() {
  if (!connection_.Handle() || begun_ || connection_.IsReadOnly() || connection_.IsImmutable()) return false;
  if (!connection_.IsOutsideTransaction() || connection_.WasReplaced()) return false;
  cache_.ClearPositions();
  absent_ = false;
  written_.clear();
  only_values_ = true;
  ended_ = false;
  return true;
}

void Store::ResetTransaction() {
  if (begun_ || reading_) ended_ = true;
  begun_ = reading_ = absent_ = false;
  written_.clear();
  only_values_ = true;
}

}  // namespace kvregistry
