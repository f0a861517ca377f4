// How a run of values is written: each by itself, or many in a transaction.
#include "share/settings/registry_run.h"

#include "platform/handles.h"
#include "share/settings/settings_key.h"

namespace {

// The longest value that is read, in bytes; a longer one counts as unreadable.
constexpr DWORD kMostBytes = 0x1FFFFFFF;
// As many changed values take longer one by one than a transaction takes to begin and end.
constexpr std::size_t kWorthATransaction = 3;
constexpr DWORD kNameUnits = 256;

void DeleteAllValues(HKEY key) {
  TCHAR name[kNameUnits];
  for (DWORD units = kNameUnits;
       RegEnumValueW(key, 0, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; units = kNameUnits) {
    if (RegDeleteValueW(key, name) != ERROR_SUCCESS) return;
  }
}

}  // namespace

bool ReadStored(HKEY key, LPCTSTR name, StoredValue& stored) {
  DWORD size = 8;  // most values are numbers
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA && size <= kMostBytes) {
    stored.bytes.resize(size);
    status = RegQueryValueExW(key, name, nullptr, &stored.type, reinterpret_cast<BYTE*>(stored.bytes.data()), &size);
  }
  if (status == ERROR_SUCCESS) stored.bytes.resize(size);
  return status == ERROR_SUCCESS;
}

bool WriteStored(HKEY key, LPCTSTR name, const StoredValue& stored) {
  return RegSetValueExW(key, name, 0, stored.type, reinterpret_cast<const BYTE*>(stored.bytes.data()),
                        DWORD(stored.bytes.size())) == ERROR_SUCCESS;
}

HKEY RegistryRun::ToRead() {
  if (!tried_) *opened_.Receive() = key_.GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  tried_ = true;
  return opened_;
}

// Whether the registry key holds the run's values in their order and nothing else.
bool RegistryRun::IsClear() const {
  StoredValue stored;
  TCHAR name[kNameUnits];
  for (std::size_t i = 0;; ++i) {
    DWORD units = kNameUnits;
    const LSTATUS status = RegEnumValueW(opened_, DWORD(i), name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return status == ERROR_NO_MORE_ITEMS && i == values_.size();
    if (i == values_.size() || values_[i].name != name) return false;
    if (!ReadStored(opened_, name, stored) || stored != values_[i].stored) return false;
  }
}

bool RegistryRun::HaveManyChanged() const {
  std::size_t changed = 0;
  StoredValue stored;
  for (const Value& value : values_) {
    changed += !ReadStored(opened_, value.name, stored) || stored != value.stored;
    if (changed == kWorthATransaction) return true;
  }
  return false;
}

bool RegistryRun::WriteAtOnce() const {
  const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
  if (transaction == INVALID_HANDLE_VALUE) return false;
  bool all = false;
  {
    OpenKey key;
    all = RegOpenKeyTransactedW(opened_, nullptr, 0, KEY_ALL_ACCESS, key.Receive(), transaction, nullptr) ==
          ERROR_SUCCESS;
    if (all && clearing_) DeleteAllValues(key);
    for (std::size_t i = 0; i < values_.size() && all; ++i) all = WriteStored(key, values_[i].name, values_[i].stored);
  }
  all = all && CommitTransaction(transaction);
  CloseHandle(transaction);
  return all;
}

bool RegistryRun::WriteEach() const {
  if (clearing_) DeleteAllValues(opened_);
  bool all = true;
  for (const Value& value : values_) all = WriteStored(opened_, value.name, value.stored) && all;
  return all;
}

bool RegistryRun::Finish() {
  if (values_.empty() && !clearing_) return true;
  *opened_.Receive() = key_.GetHandleToKey(/*create=*/1, /*readOnly=*/0);
  bool all = clearing_ && IsClear();
  if (!all && (clearing_ || HaveManyChanged())) all = WriteAtOnce();
  if (!all) all = WriteEach();  // one that can't be written takes the others of its transaction with it
  opened_.Close();
  values_.clear();
  clearing_ = false;
  return all;
}
