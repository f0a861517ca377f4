// A run of values that a settings key saves or restores one behind the other: the registry key is opened once for all
// of them, and where many have changed they are written in one transaction, so that all of them are new or none. Not
// public.
#pragma once

#include <vector>

#include "share/settings/open_key.h"
#include "share/settings/settings_value.h"

class QFSettingsKey;

// Each gives false if there is no such value, or it couldn't be read or written. A null handle gives false.
bool ReadStored(HKEY key, LPCTSTR name, StoredValue& stored);
bool WriteStored(HKEY key, LPCTSTR name, const StoredValue& stored);

class RegistryRun {
 public:
  // With `clearing`, the first Finish deletes what the registry key holds ahead of writing.
  RegistryRun(const QFSettingsKey& key, bool clearing) : key_(key), clearing_(clearing) {}

  // The key for reading, opened at the first call; null if it can't be opened.
  HKEY ToRead();
  // Takes a value for the next Finish.
  void Add(const CString& name, StoredValue&& stored) { values_.push_back({name, std::move(stored)}); }
  // Writes the values in their order, making the registry key if there are any, and closes it. False if one of them
  // could not be written; the others are.
  bool Finish();

 private:
  struct Value {
    CString name;
    StoredValue stored;
  };

  bool IsClear() const;
  bool HaveManyChanged() const;
  bool WriteAtOnce() const;
  bool WriteEach() const;

  const QFSettingsKey& key_;
  bool clearing_;
  bool tried_ = false;
  OpenKey opened_;
  std::vector<Value> values_;
};
