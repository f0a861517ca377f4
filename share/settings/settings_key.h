// QFSettingsKey: a named key of settings. Keys form a tree; its leaves are typed values
// (share/settings/settings_value.h).
//
// A tree can be saved to the registry (one registry key per key, at the key's own absolute path and hive) and to a
// document's archive. A key is also the simplest way to read a single registry value:
//
//   QFSettingsKey key(_T("Path"), _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64"));
//   key.AddValue(_T("KVDataPath"), CString());            // the name and the default
//   key.RestoreValuesFromRegistry();                      // 0 if the value is missing: the default stays
//   CString path;
//   key.GetValue(_T("KVDataPath"), path);
//
// Names compare exactly, case included. A search walks depth first, each list from its head. Adding puts an item at the
// head, so a list is in reverse order of declaration: of several values with one name the search finds the one declared
// last, and it searches a sub-key before the values declared before that sub-key. The second search after a change
// builds an index of names; later searches take the same time in a tree of any size.
//
// A key owns everything below it. A tree has no lock: several threads may read it while no thread changes it.
#pragma once

#include <atomic>
#include <memory>
#include <typeinfo>

#include "framework/ob_list.h"
#include "platform/registry.h"
#include "share/settings/settings_value.h"
#include "share/utilities/object_lists.h"

class RegistrySave;

class KVSHARE_API QFSettingsKey : public QFBaseObject {
  DECLARE_SERIAL(QFSettingsKey)

 public:
  // The default constructor leaves name and path empty; an empty path means the hive itself. The hive of a new key is
  // HKEY_CURRENT_USER (see SetKey).
  QFSettingsKey();
  QFSettingsKey(const CString& name, const CString& path);
  ~QFSettingsKey() override;

  // ---- shape

  // Add a value at the head of the list. Several values may have one name.
  void AddValue(const CString& name, int value);
  void AddValue(const CString& name, double value);
  void AddValue(const CString& name, const CString& value);
  void AddValue(const CString& name, unsigned long color);
  void AddValue(const CString& name, const CPoint& value);
  void AddValue(const CString& name, const CRect& value);
  void AddValue(const CString& name, const CTime& value);
  void AddValue(const CString& name, long double value);
  void AddValue(const CString& name, const CArray<int, int>& value);
  // Adds a sub-key at the head of the list and takes ownership; allocate it with new. Does nothing, and takes no
  // ownership, for null, for a key that has an owner, for this key and for a key above it, or if it raises
  // std::bad_alloc.
  void AddKey(QFSettingsKey* key);

  // ---- access

  // Search for the value of that name at any depth. SetValue changes it; GetValue copies it to the variable. Nothing
  // happens if the value is missing or has another type, so set the variable to your default before GetValue.
  void SetValue(const CString& name, int value);
  void SetValue(const CString& name, double value);
  void SetValue(const CString& name, const CString& value);
  void SetValue(const CString& name, unsigned long color);
  void SetValue(const CString& name, const CPoint& value);
  void SetValue(const CString& name, const CRect& value);
  void SetValue(const CString& name, const CTime& value);
  void SetValue(const CString& name, long double value);
  void SetValue(const CString& name, const CArray<int, int>& value);
  void GetValue(const CString& name, int& value) const;
  void GetValue(const CString& name, double& value) const;
  void GetValue(const CString& name, CString& value) const;
  void GetValue(const CString& name, unsigned long& color) const;
  void GetValue(const CString& name, CPoint& value) const;
  void GetValue(const CString& name, CRect& value) const;
  void GetValue(const CString& name, CTime& value) const;
  void GetValue(const CString& name, long double& value) const;
  void GetValue(const CString& name, CArray<int, int>& value) const;

  // Both search for the first key of that name below this one, at any depth. Null if there is none. The tree keeps
  // ownership.
  QFSettingsKey* GetKey(const CString& name) const;
  QFSettingsKey* GetSettingsKey(const CString& name) const { return GetKey(name); }

  // The name of this key; the name of a value or key, empty for null and for objects of other classes.
  const CString& GetName() const { return m_Name; }
  CString GetName(QFBaseObject* item) const;

  const CString& GetPath() const { return m_Path; }
  // The items, head first, owned by the tree. Only the operations of this class may change the list: they keep the
  // index of names valid.
  const CObList& GetList() const { return m_List; }

  // ---- registry

  // Sets the hive of this key, not of its sub-keys. Returns the former hive.
  HKEY SetKey(HKEY hive);
  // Opens the registry key of this key, with KEY_READ if readOnly is not 0, else with KEY_ALL_ACCESS. With create not 0
  // a missing registry key is created. Null on failure. The caller closes the handle.
  HKEY GetHandleToKey(int create, int readOnly) const;
  // 1 if this process may write in HKEY_LOCAL_MACHINE. The call creates the key "Software" there if it is missing.
  static int GetHasPermissionsToWriteToHKLM();

  // Write or read every value of the tree, each key at its own path and hive. 1 if every value succeeded; a failure
  // doesn't stop the walk. Saving creates missing registry keys; restoring creates none, and a value that can't be read
  // stays unchanged. If the process is killed during a save, each value in the registry is the old or the new one. A
  // save of three or more changed values is one transaction: the registry then has all changes or none. A value or key
  // of a module's class ends the current transaction; the rest is saved in another.
  virtual int SaveValuesToRegistry();
  virtual int RestoreValuesFromRegistry();

  // ---- archive

  // The record of QFBaseObject, then the list. Name, path and hive of the key are not stored. Loading merges the list
  // with the current items, the defaults, by name (MergeContents). Throws the archive's exceptions, and
  // CArchiveException badIndex for an item that the archive holds twice. The key then has the items read so far; its
  // former items are in no list any more but live as long as the key.
  void Serialize(CArchive& ar) override;

  // Deletes all items of the list and empties it.
  void ResetContent(CObList& list);
  // Merges a loaded list with the defaults: deletes loaded items whose name no default has, and moves defaults whose
  // name no loaded item has to the head of the loaded list. An integer "MillFeatureCreationStyle" that moves is set to
  // 0, the style of documents older than this value.
  void MergeContents(CObList& loaded, CObList& defaults);

  void DumpData(FILE* file) override;

 protected:
  // The first value or key of that name in search order, or null. The key itself is not compared.
  QFSettingsValue* FindSettingsValue(const CString& name) const;
  QFSettingsKey* FindSettingsKey(const CString& name) const;

  // SaveValuesToRegistry for a key whose registry key holds only the values of its list: deletes all other values, in
  // the transaction that writes the values before the first sub-key.
  int SaveReplacingAll() { return SaveItems(/*clears=*/true); }
  // Call it in the constructor of a library class that saves with library code only. A tree may then put the values of
  // objects of exactly this class into a common transaction. type must outlive the key.
  void SetLibraryClass(const std::type_info& type) { m_pLibraryClass = &type; }
  void DestroyList();
  // Takes all items out of the list without deleting them. Searches don't find them any more. The key deletes them in
  // its destructor, so a caller with a pointer to one may go on reading it.
  void TakeOutAll();
  // See CObList_Sort.
  void SortList(CObListCompare compare);
  // Increases whenever the list or a name in it may have changed.
  ULONGLONG GetListVersion() const { return m_nListVersion; }

  CString m_Name;
  CString m_Path;
  HKEY m_Key;

 private:
  friend class QFSettingsValue;
  friend class RegistryBatch;
  class NameIndex;
  class InBatch;

  void AddItem(std::unique_ptr<QFSettingsValue> value);
  bool IsLibraryKeyClass() const;
  int SaveWithin(RegistrySave& save);
  int SaveItems(bool clears);
  void AdoptAll();
  void DropIndexes();
  const NameIndex* GetIndex() const;

  CObList m_List;
  CObList m_TakenOut;  // deleted by the destructor
  QFSettingsKey* m_pOwner = nullptr;
  const std::type_info* m_pLibraryClass = nullptr;
  RegistrySave* m_pSave = nullptr;    // the save of the key above that this key's next save joins
  RegistryBatch* m_pBatch = nullptr;  // set while one of its values is saved or restored
  ULONGLONG m_nListVersion = 0;
  mutable std::atomic<const NameIndex*> m_pIndex = nullptr;
  mutable std::atomic<int> m_nSearches = 0;  // since the last change
};
