// Saving and restoring in batches: adjacent values of a settings key are read through one open registry key. A tree
// writes all its changes in one transaction if there are several, so that the registry has all of them or none. Not
// public.
#pragma once

#include <list>
#include <vector>

#include "platform/handles.h"
#include "share/core/registry_key_handle.h"
#include "share/settings/settings_value.h"

class QFSettingsKey;

// False if the value is missing or the call fails; so for a null handle.
bool ReadStored(HKEY key, LPCTSTR name, StoredValue& stored);
bool WriteStored(HKEY key, LPCTSTR name, const StoredValue& stored);

// Adjacent values of one key, in list order.
class RegistryBatch {
 public:
  explicit RegistryBatch(const QFSettingsKey& key) : key_(key) {}

  // The registry key, open for reading; the first call opens it. Null if that fails.
  HKEY OpenForReading();
  // Adds a value to save. The name must outlive the batch.
  void Add(const CString& name, StoredValue&& stored);

 private:
  friend class RegistrySave;
  struct Value {
    const CString* name;
    StoredValue stored;
  };

  bool HasSameKey(const RegistryBatch& other) const;
  bool AreAllStored() const;
  bool IsWholeKeyStored() const;
  bool Write(HKEY opened, bool looks) const;
  bool Write() const;
  bool WriteIn(HANDLE transaction) const;

  const QFSettingsKey& key_;
  bool clears_ = false;   // deletes all values of the registry key before writing
  bool changes_ = false;  // differs from the registry
  bool tried_ = false;
  RegistryKeyHandle opened_;
  std::vector<Value> values_;
};

// The batches of one save of a tree, in the order of writing.
class RegistrySave {
 public:
  // A new, empty batch. With `clears` all values of the registry key are deleted before writing.
  RegistryBatch& AddBatch(const QFSettingsKey& key, bool clears);
  // Writes the values that differ from the registry, creating the registry keys they need, and drops the batches. False
  // if a value could not be written; the others are written all the same.
  bool Finish();

 private:
  using Batch = std::list<RegistryBatch>::const_iterator;
  bool IsOverwrittenLater(Batch batch, std::size_t value) const;
  void FindChanges();
  bool WriteInTransaction() const;
  bool WriteEach() const;

  std::list<RegistryBatch> batches_;
  std::size_t changes_ = 0;
};
