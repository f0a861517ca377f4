// Saving and restoring in runs: the values that a settings key holds one behind the other are read through one open
// registry key, and all that a tree saves is written in one transaction if much of it has changed, so that all of it is
// new or nothing. Not public.
#pragma once

#include <list>
#include <vector>

#include "platform/handles.h"
#include "share/core/registry_key_handle.h"
#include "share/settings/settings_value.h"

class QFSettingsKey;

// Each gives false if there is no such value, or it couldn't be read or written. A null handle gives false.
bool ReadStored(HKEY key, LPCTSTR name, StoredValue& stored);
bool WriteStored(HKEY key, LPCTSTR name, const StoredValue& stored);

// Values of one key, in their order.
class RegistryRun {
 public:
  explicit RegistryRun(const QFSettingsKey& key) : key_(key) {}

  // The key for reading, opened at the first call; null if it can't be opened.
  HKEY ToRead();
  // Takes a value to be saved.
  void Add(const CString& name, StoredValue&& stored) { values_.push_back({name, std::move(stored)}); }

 private:
  friend class RegistrySave;
  struct Value {
    CString name;
    StoredValue stored;
  };

  bool IsBeside(const RegistryRun& other) const;  // in the same registry key
  bool IsStored(const Value& value) const;
  bool HoldsThese() const;
  bool Write(HKEY opened) const;
  bool Write() const;
  bool WriteIn(HANDLE transaction) const;

  const QFSettingsKey& key_;
  bool clears_ = false;   // deletes what the registry key holds ahead of writing
  bool changes_ = false;  // has something to write
  bool tried_ = false;
  RegistryKeyHandle opened_;
  std::vector<Value> values_;
};

// The runs of a tree that is saved, in the order in which they are to be written.
class RegistrySave {
 public:
  // A new run, to be filled. With `clears`, what the registry key holds is deleted ahead of writing.
  RegistryRun& Begin(const QFSettingsKey& key, bool clears);
  // Writes what the runs hold and the registry doesn't, making the registry keys for it, and drops the runs. False if a
  // value could not be written; the others are.
  bool Finish();

 private:
  using Run = std::list<RegistryRun>::const_iterator;
  bool IsDecidedLater(Run run, std::size_t value) const;
  void FindChanges();
  bool WriteAtOnce() const;
  bool WriteEach() const;

  std::list<RegistryRun> runs_;
  std::size_t changes_ = 0;
};
