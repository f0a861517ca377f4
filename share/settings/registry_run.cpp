// How the runs of a save are written: each value by itself, or many in a transaction.
#include "share/settings/internal/registry_run.h"

#include <algorithm>

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

// ---- one run

HKEY RegistryRun::ToRead() {
  if (!tried_) *opened_.Receive() = key_.GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  tried_ = true;
  return opened_;
}

bool RegistryRun::IsBeside(const RegistryRun& other) const {
  return key_.m_Key == other.key_.m_Key && key_.m_Path.CompareNoCase(other.key_.m_Path) == 0;
}

bool RegistryRun::IsStored(const Value& value) const {
  StoredValue stored;
  return ReadStored(opened_, value.name, stored) && stored == value.stored;
}

// Whether the registry key holds the run's values in their order and nothing else.
bool RegistryRun::HoldsThese() const {
  TCHAR name[kNameUnits];
  for (std::size_t i = 0;; ++i) {
    DWORD units = kNameUnits;
    const LSTATUS status = RegEnumValueW(opened_, DWORD(i), name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return status == ERROR_NO_MORE_ITEMS && i == values_.size();
    if (i == values_.size() || values_[i].name != name || !IsStored(values_[i])) return false;
  }
}

bool RegistryRun::Write(HKEY opened) const {
  if (clears_) DeleteAllValues(opened);
  bool all = true;
  for (const Value& value : values_) all = WriteStored(opened, value.name, value.stored) && all;
  return all;
}

bool RegistryRun::Write() const { return Write(RegistryKeyHandle(key_.GetHandleToKey(/*create=*/1, /*readOnly=*/0))); }

bool RegistryRun::WriteIn(HANDLE transaction) const {
  RegistryKeyHandle opened;
  TCHAR noClass[] = _T("");
  return RegCreateKeyTransactedW(key_.m_Key, key_.m_Path, 0, noClass, 0, KEY_ALL_ACCESS, nullptr, opened.Receive(),
                                 nullptr, transaction, nullptr) == ERROR_SUCCESS &&
         Write(opened);
}

// ---- all of them

RegistryRun& RegistrySave::Begin(const QFSettingsKey& key, bool clears) {
  RegistryRun& run = runs_.emplace_back(key);
  run.clears_ = clears;
  return run;
}

// Whether the registry holds another value of that name, which one that is saved later decides: some names are
// declared twice.
bool RegistrySave::IsDecidedLater(Run run, std::size_t value) const {
  const CString& name = run->values_[value].name;
  StoredValue stored;
  if (!ReadStored(run->opened_, name, stored)) return false;
  const auto has = [&](const RegistryRun& later, std::size_t from) {
    return std::any_of(later.values_.begin() + std::ptrdiff_t(from), later.values_.end(),
                       [&](const RegistryRun::Value& other) { return other.name.CompareNoCase(name) == 0; });
  };
  if (has(*run, value + 1)) return true;
  return std::any_of(std::next(run), runs_.end(),
                     [&](const RegistryRun& later) { return later.IsBeside(*run) && has(later, 0); });
}

// Beyond what is worth a transaction the changes of a run aren't counted.
void RegistrySave::FindChanges() {
  for (auto run = runs_.begin(); run != runs_.end(); ++run) {
    if (run->values_.empty() && !run->clears_) continue;
    *run->opened_.Receive() = run->key_.GetHandleToKey(/*create=*/0, /*readOnly=*/0);
    if (run->clears_) {
      run->changes_ = !run->HoldsThese();
      changes_ += run->changes_ ? kWorthATransaction : 0;
      continue;
    }
    for (std::size_t i = 0; i < run->values_.size() && (!run->changes_ || changes_ < kWorthATransaction); ++i) {
      if (run->IsStored(run->values_[i]) || IsDecidedLater(run, i)) continue;
      run->changes_ = true;
      ++changes_;
    }
  }
  // Where a name is declared twice in one registry key, the last one holds only if it is written again.
  for (RegistryRun& run : runs_) {
    run.changes_ =
        run.changes_ || (!run.values_.empty() && std::any_of(runs_.begin(), runs_.end(), [&](const auto& other) {
          return other.changes_ && other.IsBeside(run);
        }));
  }
}

bool RegistrySave::WriteAtOnce() const {
  const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
  if (transaction == INVALID_HANDLE_VALUE) return false;
  const bool all = std::all_of(runs_.begin(), runs_.end(),
                               [&](const RegistryRun& run) { return !run.changes_ || run.WriteIn(transaction); }) &&
                   CommitTransaction(transaction);
  CloseHandle(transaction);
  return all;
}

bool RegistrySave::WriteEach() const {
  bool all = true;
  for (const RegistryRun& run : runs_) all = (!run.changes_ || run.Write()) && all;
  return all;
}

bool RegistrySave::Finish() {
  FindChanges();
  bool all = changes_ == 0;
  if (changes_ >= kWorthATransaction) all = WriteAtOnce();
  if (!all) all = WriteEach();  // one that can't be written takes the others of its transaction with it
  runs_.clear();
  changes_ = 0;
  return all;
}
