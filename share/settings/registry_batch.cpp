// Writes the batches of a save: one by one, or in one transaction.
#include "share/settings/internal/registry_batch.h"

#include <algorithm>
#include <cstring>

#include "platform/registry_files.h"
#include "share/core/registry_transaction.h"
#include "share/settings/settings_key.h"
#include "share/settings/settings_transaction.h"

namespace {

// Longer values count as unreadable.
constexpr DWORD kMostBytes = 0x1FFFFFFF;
// From this number of changed values on a transaction is faster than single writes.
constexpr std::size_t kLeastForTransaction = 3;
constexpr DWORD kNameUnits = 256;
constexpr DWORD kUsualBytes = 256;    // most values are not larger
constexpr int kMostWait_ms = 30'000;  // for other writers, in one save

thread_local const SettingsTransaction* t_transaction = nullptr;

void DeleteAllValues(HKEY key) {
  TCHAR name[kNameUnits];
  for (DWORD units = kNameUnits;
       RegEnumValueW(key, 0, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; units = kNameUnits) {
    if (RegDeleteValueW(key, name) != ERROR_SUCCESS) return;
  }
}

// Folding the case of a name keeps its length.
bool IsSameName(const CString& a, const CString& b) {
  return a.GetLength() == b.GetLength() && a.CompareNoCase(b) == 0;
}

// Whether the registry has exactly that value.
bool IsStored(HKEY key, LPCTSTR name, const StoredValue& wanted) {
  BYTE usual[kUsualBytes];
  std::string large;
  if (wanted.bytes.size() > kUsualBytes) large.resize(wanted.bytes.size());
  BYTE* const found = large.empty() ? usual : reinterpret_cast<BYTE*>(large.data());
  DWORD type = REG_NONE, size = DWORD(wanted.bytes.size());
  return RegQueryValueExW(key, name, nullptr, &type, found, &size) == ERROR_SUCCESS && type == wanted.type &&
         size == wanted.bytes.size() && std::memcmp(found, wanted.bytes.data(), size) == 0;
}

}  // namespace

SettingsTransaction::SettingsTransaction(For use) : use_(use) { t_transaction = this; }

SettingsTransaction::~SettingsTransaction() { t_transaction = nullptr; }

HANDLE SettingsTransaction::Current() { return t_transaction ? HANDLE(t_transaction->transaction_) : nullptr; }

bool SettingsTransaction::IsReading() { return t_transaction && t_transaction->use_ == For::kReading; }

bool ReadStored(HKEY key, LPCTSTR name, StoredValue& stored) {
  BYTE usual[kUsualBytes];
  DWORD size = kUsualBytes;
  LSTATUS status = RegQueryValueExW(key, name, nullptr, &stored.type, usual, &size);
  if (status == ERROR_SUCCESS) stored.bytes.assign(reinterpret_cast<const char*>(usual), size);
  while (status == ERROR_MORE_DATA && size <= kMostBytes) {
    stored.bytes.resize(size);
    status = RegQueryValueExW(key, name, nullptr, &stored.type, reinterpret_cast<BYTE*>(stored.bytes.data()), &size);
  }
  if (status != ERROR_SUCCESS) return false;
  stored.bytes.resize(size);
  return true;
}

bool WriteStored(HKEY key, LPCTSTR name, const StoredValue& stored) {
  return RegSetValueExW(key, name, 0, stored.type, reinterpret_cast<const BYTE*>(stored.bytes.data()),
                        DWORD(stored.bytes.size())) == ERROR_SUCCESS;
}

// ---- one batch

HKEY RegistryBatch::OpenForReading() {
  if (!tried_) *opened_.Receive() = key_.GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  tried_ = true;
  return opened_;
}

void RegistryBatch::Add(const CString& name, StoredValue&& stored) {
  if (values_.empty()) values_.reserve(std::size_t(key_.GetList().GetCount()));
  values_.push_back({&name, std::move(stored)});
}

bool RegistryBatch::HasSameKey(const RegistryBatch& other) const {
  return key_.m_Key == other.key_.m_Key && IsSameName(key_.m_Path, other.key_.m_Path);
}

// Whether the registry key has all values of the batch. May be false for very large values that it has.
bool RegistryBatch::AreAllStored() const {
  std::vector<VALENTW> found;
  std::size_t size = 0;
  found.reserve(values_.size());
  for (const Value& value : values_) {
    found.push_back({const_cast<LPTSTR>(value.name->GetString()), 0, 0, REG_NONE});
    size += value.stored.bytes.size();
  }
  Text buffer(size / sizeof(TCHAR) + 1, TCHAR(0));
  DWORD bytes = DWORD(size);
  const auto same = [](const Value& value, const VALENTW& entry) {
    return entry.ve_type == value.stored.type && entry.ve_valuelen == value.stored.bytes.size() &&
           std::memcmp(reinterpret_cast<const void*>(entry.ve_valueptr), value.stored.bytes.data(),
                       entry.ve_valuelen) == 0;
  };
  return RegQueryMultipleValuesW(opened_, found.data(), DWORD(found.size()), buffer.data(), &bytes) == ERROR_SUCCESS &&
         std::equal(values_.begin(), values_.end(), found.begin(), same);
}

// Whether the registry key holds exactly the values of the batch, in order.
bool RegistryBatch::IsWholeKeyStored() const {
  TCHAR name[kNameUnits];
  for (std::size_t i = 0;; ++i) {
    DWORD units = kNameUnits;
    const LSTATUS status = RegEnumValueW(opened_, DWORD(i), name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return status == ERROR_NO_MORE_ITEMS && i == values_.size();
    if (i == values_.size() || *values_[i].name != name || !IsStored(opened_, name, values_[i].stored)) return false;
  }
}

// With `looks` writes only values that the registry lacks.
bool RegistryBatch::Write(HKEY opened, bool looks) const {
  if (clears_) DeleteAllValues(opened);
  bool all = true;
  for (const Value& value : values_) {
    if (looks && IsStored(opened, *value.name, value.stored)) continue;
    all = WriteStored(opened, *value.name, value.stored) && all;
  }
  return all;
}

// Outside a transaction each write asks the system for the hive's file, and a look doesn't.
bool RegistryBatch::Write() const {
  const bool looks = !clears_ && !SettingsTransaction::Current();
  return Write(RegistryKeyHandle(key_.GetHandleToKey(/*create=*/1, /*readOnly=*/0)), looks);
}

bool RegistryBatch::WriteIn(HANDLE transaction) const {
  RegistryKeyHandle opened;
  return CreateKeyIn(transaction, key_.m_Key, key_.m_Path, KEY_ALL_ACCESS, opened.Receive()) == ERROR_SUCCESS &&
         Write(opened, /*looks=*/false);
}

// ---- the save

RegistryBatch& RegistrySave::AddBatch(const QFSettingsKey& key, bool clears) {
  RegistryBatch& batch = batches_.emplace_back(key);
  batch.clears_ = clears;
  return batch;
}

// Whether the registry has a value of that name, and the save writes another value to it later: some names are declared
// twice, and the last write decides.
bool RegistrySave::IsOverwrittenLater(Batch batch, std::size_t value) const {
  const CString& name = *batch->values_[value].name;
  StoredValue stored;
  if (!ReadStored(batch->opened_, name, stored)) return false;
  const auto has = [&](const RegistryBatch& later, std::size_t from) {
    return std::any_of(later.values_.begin() + std::ptrdiff_t(from), later.values_.end(),
                       [&](const RegistryBatch::Value& other) { return IsSameName(*other.name, name); });
  };
  if (has(*batch, value + 1)) return true;
  return std::any_of(std::next(batch), batches_.end(),
                     [&](const RegistryBatch& later) { return later.HasSameKey(*batch) && has(later, 0); });
}

// Stops counting in a batch once there are enough changes for a transaction.
void RegistrySave::FindChanges() {
  for (auto batch = batches_.begin(); batch != batches_.end(); ++batch) {
    if (batch->values_.empty() && !batch->clears_) continue;
    *batch->opened_.Receive() = batch->key_.GetHandleToKey(/*create=*/0, /*readOnly=*/0);
    if (batch->clears_) {
      batch->changes_ = !batch->IsWholeKeyStored();
      changes_ += batch->changes_ ? kLeastForTransaction : 0;
      continue;
    }
    const bool counts = changes_ < kLeastForTransaction;
    if (counts && batch->AreAllStored()) continue;
    for (std::size_t i = 0; i < batch->values_.size() && (!batch->changes_ || changes_ < kLeastForTransaction); ++i) {
      const RegistryBatch::Value& value = batch->values_[i];
      if (IsStored(batch->opened_, *value.name, value.stored) || IsOverwrittenLater(batch, i)) continue;
      batch->changes_ = true;
      ++changes_;
    }
  }
  // A change in one batch may overwrite a name of another batch of the same registry key: write that one again too.
  for (RegistryBatch& batch : batches_) {
    batch.changes_ = batch.changes_ ||
                     (!batch.values_.empty() && std::any_of(batches_.begin(), batches_.end(), [&](const auto& other) {
                       return other.changes_ && other.HasSameKey(batch);
                     }));
  }
}

bool RegistrySave::WriteInTransaction() const {
  RegistryTransaction transaction;
  return std::all_of(batches_.begin(), batches_.end(),
                     [&](const RegistryBatch& batch) { return !batch.changes_ || batch.WriteIn(transaction); }) &&
         transaction.Commit() == ERROR_SUCCESS;
}

bool RegistrySave::WriteEach() const {
  bool all = true;
  for (const RegistryBatch& batch : batches_) all = (!batch.changes_ || batch.Write()) && all;
  return all;
}

bool RegistrySave::Finish() {
  const RegistryWaitLimit limit(kMostWait_ms);
  FindChanges();
  bool all = changes_ == 0;
  if (changes_ >= kLeastForTransaction && !SettingsTransaction::Current()) all = WriteInTransaction();
  if (!all) all = WriteEach();  // one value that can't be written makes the whole transaction fail
  batches_.clear();
  changes_ = 0;
  return all;
}
