// QFSettingsKey, a named key of settings: a tree of keys whose leaves are typed values
// (share/settings/settings_value.h).
//
// The tree lives in memory, in the registry (one registry key for each key, under the key's own absolute path and hive)
// and in a document's archive. It is also the way to read a single registry value:
//
//   QFSettingsKey key(_T("Path"), _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64"));
//   key.AddValue(_T("KVDataPath"), CString());            // the name and the default
//   key.RestoreValuesFromRegistry();                      // 0 if it isn't there: the default stands
//   CString path;
//   key.GetValue(_T("KVDataPath"), path);
//
// Names compare exactly. Searches walk depth first, each list from its head, and a list runs in the reverse of the
// order of declaration: of several values with one name the one declared last is found, and a sub-key declared after a
// value is searched ahead of it. Values are found through an index of names, made at the second search after a change
// of shape, so that repeated access costs the same at any size of the tree.
//
// A key owns everything below it. A tree has no lock: it is changed by one thread at a time, and read by many only
// while nobody changes it.
#pragma once

#include <atomic>
#include <typeinfo>

#include "framework/ob_list.h"
#include "platform/registry.h"
#include "share/settings/settings_value.h"
#include "share/utilities/object_lists.h"

class RegistrySave;

class KVSHARE_API QFSettingsKey : public QFBaseObject {
  DECLARE_SERIAL(QFSettingsKey)

 public:
  // An empty name and path, which stands for the hive itself. Every key begins in HKEY_CURRENT_USER.
  QFSettingsKey();
  QFSettingsKey(const CString& name, const CString& path);
  ~QFSettingsKey() override;

  // ---- shape

  // Each puts a new value ahead of what the key holds. Duplicate names are not prevented.
  void AddValue(const CString& name, int value);
  void AddValue(const CString& name, double value);
  void AddValue(const CString& name, const CString& value);
  void AddValue(const CString& name, unsigned long color);
  void AddValue(const CString& name, const CPoint& value);
  void AddValue(const CString& name, const CRect& value);
  void AddValue(const CString& name, const CTime& value);
  void AddValue(const CString& name, long double value);
  void AddValue(const CString& name, const CArray<int, int>& value);
  // Puts the key, from the heap, ahead of what this one holds, and owns it from then on. Null, a key that stands in a
  // tree already, and this key or one above it are left alone.
  void AddKey(QFSettingsKey* key);

  // ---- access

  // Find the value of that name at any depth. SetValue then changes it, GetValue copies it to the variable. Without
  // such a value, or with one of another type, nothing happens: give the variable your fallback first.
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

  // Two names for one operation: the first key of that name below this one, at any depth, or null. It stays the tree's.
  QFSettingsKey* GetKey(const CString& name) const;
  QFSettingsKey* GetSettingsKey(const CString& name) const { return GetKey(name); }

  // The key's own name, and that of a value or key; empty for null and for any other object.
  const CString& GetName() const { return m_Name; }
  CString GetName(QFBaseObject* item) const;

  const CString& GetPath() const { return m_Path; }
  // The items, head first; they stay the tree's. The list changes through the operations of this class alone, which
  // keep the index of names right.
  const CObList& GetList() const { return m_List; }

  // ---- registry

  // Sets the hive of this key, not of those below it; gives the former one.
  HKEY SetKey(HKEY hive);
  // Opens the key's path, creating it if create is not 0, with KEY_READ or KEY_ALL_ACCESS. Null if that fails. The
  // caller closes the handle.
  HKEY GetHandleToKey(int create, int readOnly) const;
  // 1 if this process may write in HKEY_LOCAL_MACHINE. Trying it creates the key "Software" there if it is missing.
  static int GetHasPermissionsToWriteToHKLM();

  // Write or read every value of the tree, each key under its own path and hive. 1 if every item succeeded; a failure
  // doesn't stop the walk. Saving creates registry keys, restoring never does; what can't be read keeps what it had.
  // Whatever ends the process meanwhile, a value is the old one or the new one; where more than two have changed, all
  // of them are new or none. A value or a key of a module's own class in the tree parts what stands ahead of it from
  // what follows.
  virtual int SaveValuesToRegistry();
  virtual int RestoreValuesFromRegistry();

  // ---- archive

  // The record of QFBaseObject, then the list. The key's name, path and hive are not stored. Loading keeps the values
  // of the class by name: see MergeContents. Raises what the archive raises, and badIndex for an item that the archive
  // holds elsewhere too; the key then holds what was read so far, and its former content is out of reach but lives as
  // long as the key does.
  void Serialize(CArchive& ar) override;

  // Deletes every item of the list and empties it.
  void ResetContent(CObList& list);
  // Brings a loaded list in line with the defaults: items whose name no default has are deleted, and defaults whose
  // name no loaded item has move to the head of the loaded list. An integer named "MillFeatureCreationStyle" that moves
  // this way is set to 0: documents older than it have that style.
  void MergeContents(CObList& loaded, CObList& defaults);

  void DumpData(FILE* file) override;

 protected:
  // The first value or key of that name in the walk described above, or null. The key itself is never compared.
  QFSettingsValue* FindSettingsValue(const CString& name) const;
  QFSettingsKey* FindSettingsKey(const CString& name) const;

  // SaveValuesToRegistry of a key whose registry key holds the values of its list and nothing else: what stood there
  // before is deleted, at once with the writing of the values that stand ahead of any key.
  int SaveInPlaceOfAll() { return SaveItems(/*clears=*/true); }
  // For a class of the library, by whose code alone objects of exactly that class are saved: the tree's writing of
  // their values may be put off. Lives as long as the key.
  void SetOwnClass(const std::type_info& type) { m_pOwnClass = &type; }
  void DestroyList();
  // Takes every item out of the list without deleting it. No search finds it there any more, but it lives, and stays
  // this key's, until the key itself is deleted: whoever holds one may go on reading it, and nobody else deletes it.
  void TakeOutAll();
  // See CObList_Sort.
  void SortList(CObListCompare compare);
  // Another number whenever the list, or a name in it, may have changed.
  ULONGLONG GetListVersion() const { return m_nListVersion; }

  CString m_Name;
  CString m_Path;
  HKEY m_Key;

 private:
  friend class QFSettingsValue;
  friend class RegistryRun;
  class NameIndex;
  class InRun;

  void AddItem(QFSettingsValue* value);
  bool IsOwnKeyClass() const;
  int SaveWithin(RegistrySave& save);
  int SaveItems(bool clears);
  void AdoptAll();
  void ForgetNames();
  const NameIndex* GetIndex() const;

  CObList m_List;
  CObList m_Former;  // taken out of the list
  QFSettingsKey* m_pOwner = nullptr;
  const std::type_info* m_pOwnClass = nullptr;
  RegistrySave* m_pSave = nullptr;  // of the key above, for the next save
  RegistryRun* m_pRun = nullptr;    // while one of its values is being saved or restored
  ULONGLONG m_nListVersion = 0;
  mutable std::atomic<const NameIndex*> m_pIndex = nullptr;
  mutable std::atomic<int> m_nSearches = 0;  // since the last change of shape
};
