// The settings tree: shape, searches, registry, archive.
#include "share/settings/settings_key.h"

#include <memory>
#include <optional>
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/settings/internal/name_index.h"
#include "share/settings/internal/registry_batch.h"
#include "share/settings/settings_transaction.h"

IMPLEMENT_SERIAL(QFSettingsKey, QFBaseObject, VERSIONABLE_SCHEMA | 1)

namespace {

constexpr int kBlockSize = 10;
constexpr LPCTSTR kMillFeatureCreationStyle = _T("MillFeatureCreationStyle");

QFSettingsValue* AsValue(CObject* item) { return DYNAMIC_DOWNCAST(QFSettingsValue, item); }
QFSettingsKey* AsKey(CObject* item) { return DYNAMIC_DOWNCAST(QFSettingsKey, item); }

// Calls visit(item) for each non-null item, head first, until the result is not null. Returns the last result.
template <class Visit>
auto FirstOf(const CObList& list, Visit visit) -> decltype(visit(nullptr)) {
  for (POSITION at = list.GetHeadPosition(); at;) {
    CObject* item = list.GetNext(at);
    if (!item) continue;
    if (auto found = visit(item)) return found;
  }
  return nullptr;
}

// Whether saving and restoring the value runs library code only. Each of these classes has one type_info, in this
// library.
bool IsLibraryValueClass(const QFSettingsValue& value) {
  const std::type_info* const type = &typeid(value);
  for (const std::type_info* own : {&typeid(QFIntValue), &typeid(QFColorValue), &typeid(QFStringValue),
                                    &typeid(QFDoubleValue), &typeid(QFPointValue), &typeid(QFRectValue),
                                    &typeid(QFTimeValue), &typeid(QFLongDoubleStrValue), &typeid(QFIntArrayValue)}) {
    if (type == own) return true;
  }
  return false;
}

template <class Visit>
void ForEach(const CObList& list, Visit visit) {
  for (POSITION at = list.GetHeadPosition(); at;) {
    if (CObject* item = list.GetNext(at)) visit(item);
  }
}

}  // namespace

// ---- construction and shape

QFSettingsKey::QFSettingsKey() : QFSettingsKey(CString(), CString()) {}

QFSettingsKey::QFSettingsKey(const CString& name, const CString& path)
    : m_Name(name), m_Path(path), m_Key(HKEY_CURRENT_USER), m_List(kBlockSize), m_TakenOut(kBlockSize) {}

QFSettingsKey::~QFSettingsKey() {
  DestroyList();
  ResetContent(m_TakenOut);
  m_Key = nullptr;
}

void QFSettingsKey::AddItem(std::unique_ptr<QFSettingsValue> value) {
  m_List.AddHead(value.get());
  value.release()->m_pOwner = this;
  DropIndexes();
}

void QFSettingsKey::AddValue(const CString& name, int value) { AddItem(std::make_unique<QFIntValue>(name, value)); }
void QFSettingsKey::AddValue(const CString& name, double value) {
  AddItem(std::make_unique<QFDoubleValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, const CString& value) {
  AddItem(std::make_unique<QFStringValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, unsigned long color) {
  AddItem(std::make_unique<QFColorValue>(name, color));
}
void QFSettingsKey::AddValue(const CString& name, const CPoint& value) {
  AddItem(std::make_unique<QFPointValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, const CRect& value) {
  AddItem(std::make_unique<QFRectValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, const CTime& value) {
  AddItem(std::make_unique<QFTimeValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, long double value) {
  AddItem(std::make_unique<QFLongDoubleStrValue>(name, value));
}
void QFSettingsKey::AddValue(const CString& name, const CArray<int, int>& value) {
  AddItem(std::make_unique<QFIntArrayValue>(name, value));
}

void QFSettingsKey::AddKey(QFSettingsKey* key) {
  if (!key || key->m_pOwner) return;
  for (const QFSettingsKey* above = this; above; above = above->m_pOwner) {
    if (above == key) return;
  }
  m_List.AddHead(key);
  key->m_pOwner = this;
  DropIndexes();
}

void QFSettingsKey::AdoptAll() {
  ForEach(m_List, [this](CObject* item) {
    if (QFSettingsValue* value = AsValue(item)) value->m_pOwner = this;
    if (QFSettingsKey* key = AsKey(item)) key->m_pOwner = this;
  });
}

void QFSettingsKey::DestroyList() {
  DropIndexes();
  ResetContent(m_List);
}

void QFSettingsKey::TakeOutAll() {
  DropIndexes();
  m_TakenOut.MoveTail(m_List);
}

void QFSettingsKey::SortList(CObListCompare compare) {
  DropIndexes();  // the first item of a duplicate name may change
  CObList_Sort(&m_List, compare);
}

void QFSettingsKey::ResetContent(CObList& list) {
  ForEach(list, [](CObject* item) { delete item; });
  list.RemoveAll();
}

// ---- searches

class QFSettingsKey::NameIndex {
 public:
  explicit NameIndex(const QFSettingsKey& root) {
    std::vector<QFSettingsValue*> values;
    std::vector<QFSettingsKey*> keys;
    Collect(root, values, keys);
    m_Values.Reserve(values.size());
    for (QFSettingsValue* value : values) m_Values.Enter(value->m_Name.View(), value);
    m_Keys.Reserve(keys.size());
    for (QFSettingsKey* key : keys) m_Keys.Enter(key->m_Name.View(), key);
  }

  QFSettingsValue* Value(const CString& name) const { return m_Values.Find(name.View()); }
  QFSettingsKey* Key(const CString& name) const { return m_Keys.Find(name.View()); }

 private:
  // In search order: the first item of a name is entered first.
  static void Collect(const QFSettingsKey& root, std::vector<QFSettingsValue*>& values,
                      std::vector<QFSettingsKey*>& keys) {
    ForEach(root.m_List, [&](CObject* item) {
      if (QFSettingsValue* value = AsValue(item)) values.push_back(value);
      if (QFSettingsKey* key = AsKey(item)) {
        keys.push_back(key);
        Collect(*key, values, keys);
      }
    });
  }

  NameTable<QFSettingsValue> m_Values;
  NameTable<QFSettingsKey> m_Keys;
};

// Null at the first search after a change, so that a key built to read one value needs no index. Several reading
// threads may each build one; the first one finished is kept.
const QFSettingsKey::NameIndex* QFSettingsKey::GetIndex() const {
  if (const NameIndex* index = m_pIndex.load(std::memory_order_acquire)) return index;
  if (m_nSearches.fetch_add(1, std::memory_order_relaxed) == 0) return nullptr;
  const auto* index = new NameIndex(*this);
  const NameIndex* present = nullptr;
  if (m_pIndex.compare_exchange_strong(present, index, std::memory_order_acq_rel)) return index;
  delete index;
  return present;
}

// Drops the indexes of this key and of all keys above: they contain its names.
void QFSettingsKey::DropIndexes() {
  for (QFSettingsKey* key = this; key; key = key->m_pOwner) {
    delete key->m_pIndex.exchange(nullptr, std::memory_order_acq_rel);
    key->m_nSearches.store(0, std::memory_order_relaxed);
    ++key->m_nListVersion;
  }
}

QFSettingsValue* QFSettingsKey::FindSettingsValue(const CString& name) const {
  if (const NameIndex* index = GetIndex()) return index->Value(name);
  const auto search = [&](const auto& self, const QFSettingsKey& key) -> QFSettingsValue* {
    return FirstOf(key.m_List, [&](CObject* item) -> QFSettingsValue* {
      if (QFSettingsValue* value = AsValue(item)) return value->m_Name == name ? value : nullptr;
      const QFSettingsKey* below = AsKey(item);
      return below ? self(self, *below) : nullptr;
    });
  };
  return search(search, *this);
}

QFSettingsKey* QFSettingsKey::FindSettingsKey(const CString& name) const {
  if (const NameIndex* index = GetIndex()) return index->Key(name);
  const auto search = [&](const auto& self, const QFSettingsKey& key) -> QFSettingsKey* {
    return FirstOf(key.m_List, [&](CObject* item) -> QFSettingsKey* {
      QFSettingsKey* below = AsKey(item);
      return !below || below->m_Name == name ? below : self(self, *below);
    });
  };
  return search(search, *this);
}

QFSettingsKey* QFSettingsKey::GetKey(const CString& name) const { return FindSettingsKey(name); }

CString QFSettingsKey::GetName(QFBaseObject* item) const {
  if (const QFSettingsValue* value = AsValue(item)) return value->m_Name;
  if (const QFSettingsKey* key = AsKey(item)) return key->m_Name;
  return CString();
}

// ---- access

#define KV_VALUE_OF(class_name, name) DYNAMIC_DOWNCAST(class_name, FindSettingsValue(name))

void QFSettingsKey::SetValue(const CString& name, int value) {
  if (auto* found = KV_VALUE_OF(QFIntValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, double value) {
  if (auto* found = KV_VALUE_OF(QFDoubleValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, const CString& value) {
  if (auto* found = KV_VALUE_OF(QFStringValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, unsigned long color) {
  if (auto* found = KV_VALUE_OF(QFColorValue, name)) found->SetValue(color);
}
void QFSettingsKey::SetValue(const CString& name, const CPoint& value) {
  if (auto* found = KV_VALUE_OF(QFPointValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, const CRect& value) {
  if (auto* found = KV_VALUE_OF(QFRectValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, const CTime& value) {
  if (auto* found = KV_VALUE_OF(QFTimeValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, long double value) {
  if (auto* found = KV_VALUE_OF(QFLongDoubleStrValue, name)) found->SetValue(value);
}
void QFSettingsKey::SetValue(const CString& name, const CArray<int, int>& value) {
  if (auto* found = KV_VALUE_OF(QFIntArrayValue, name)) found->SetValue(value);
}

void QFSettingsKey::GetValue(const CString& name, int& value) const {
  if (const auto* found = KV_VALUE_OF(QFIntValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, double& value) const {
  if (const auto* found = KV_VALUE_OF(QFDoubleValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, CString& value) const {
  if (const auto* found = KV_VALUE_OF(QFStringValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, unsigned long& color) const {
  if (const auto* found = KV_VALUE_OF(QFColorValue, name)) color = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, CPoint& value) const {
  if (const auto* found = KV_VALUE_OF(QFPointValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, CRect& value) const {
  if (const auto* found = KV_VALUE_OF(QFRectValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, CTime& value) const {
  if (const auto* found = KV_VALUE_OF(QFTimeValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, long double& value) const {
  if (const auto* found = KV_VALUE_OF(QFLongDoubleStrValue, name)) value = found->GetValue();
}
void QFSettingsKey::GetValue(const CString& name, CArray<int, int>& value) const {
  if (const auto* found = KV_VALUE_OF(QFIntArrayValue, name)) value.Copy(found->GetValue());
}

// ---- registry

HKEY QFSettingsKey::SetKey(HKEY hive) { return std::exchange(m_Key, hive); }

HKEY QFSettingsKey::GetHandleToKey(int create, int readOnly) const {
  const bool reads = SettingsTransaction::IsReading();
  const REGSAM access = readOnly || reads ? KEY_READ : KEY_ALL_ACCESS;
  const HANDLE transaction = SettingsTransaction::Current();
  HKEY handle = nullptr;
  if (create && !reads) {
    CreateKeyIn(transaction, m_Key, m_Path, access, &handle);
  } else {
    OpenKeyIn(transaction, m_Key, m_Path, access, &handle);
  }
  return handle;
}

int QFSettingsKey::GetHasPermissionsToWriteToHKLM() {
  TCHAR noClass[] = _T("");
  HKEY handle = nullptr;
  DWORD disposition = 0;
  const LSTATUS status =
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, _T("Software"), 0, noClass, 0, KEY_WRITE, nullptr, &handle, &disposition);
  if (handle) RegCloseKey(handle);
  return status == ERROR_SUCCESS;
}

// Makes the key's values use the batch while it exists.
class QFSettingsKey::InBatch {
 public:
  InBatch(QFSettingsKey& key, RegistryBatch& batch) : key_(key) { key_.m_pBatch = &batch; }
  ~InBatch() { key_.m_pBatch = nullptr; }
  InBatch(const InBatch&) = delete;
  InBatch& operator=(const InBatch&) = delete;

 private:
  QFSettingsKey& key_;
};

int QFSettingsKey::SaveValuesToRegistry() { return SaveItems(/*clears=*/false); }

// Whether saving the key runs library code only. False for classes that a module derived.
bool QFSettingsKey::IsLibraryKeyClass() const {
  const std::type_info& type = typeid(*this);
  return type == typeid(QFSettingsKey) || (m_pLibraryClass && type == *m_pLibraryClass);
}

// Adds this key's values to the save of the key above.
int QFSettingsKey::SaveWithin(RegistrySave& save) {
  m_pSave = &save;
  return SaveValuesToRegistry();
}

// Items of a module's class may use the registry themselves: everything before such an item is saved first.
int QFSettingsKey::SaveItems(bool clears) {
  RegistrySave own;
  RegistrySave* const above = std::exchange(m_pSave, nullptr);
  RegistrySave& save = above ? *above : own;
  RegistryBatch* batch = &save.AddBatch(*this, clears);
  bool all = true;
  ForEach(m_List, [&](CObject* item) {
    QFSettingsValue* value = AsValue(item);
    if (value && IsLibraryValueClass(*value)) {
      const InBatch inBatch(*this, *batch);
      all = value->SaveValueToRegistry(this) && all;
      return;
    }
    QFSettingsKey* key = AsKey(item);
    if (key && key->IsLibraryKeyClass()) {
      all = key->SaveWithin(save) && all;
    } else {
      all = save.Finish() && all;
      if (value) all = value->SaveValueToRegistry(this) && all;
      if (key) all = key->SaveValuesToRegistry() && all;
    }
    batch = &save.AddBatch(*this, /*clears=*/false);
  });
  return (above || save.Finish()) && all;
}

int QFSettingsKey::RestoreValuesFromRegistry() {
  RegistryBatch batch(*this);
  bool all = true;
  ForEach(m_List, [&](CObject* item) {
    if (QFSettingsValue* value = AsValue(item)) {
      std::optional<InBatch> inBatch;
      if (IsLibraryValueClass(*value)) inBatch.emplace(*this, batch);
      all = value->RestoreValueFromRegistry(this) && all;
    }
    if (QFSettingsKey* key = AsKey(item)) all = key->RestoreValuesFromRegistry() && all;
  });
  return all;
}

// ---- archive

void QFSettingsKey::Serialize(CArchive& ar) {
  QFBaseObject::Serialize(ar);
  if (ar.IsStoring()) {
    m_List.Serialize(ar);
    return;
  }
  DropIndexes();
  CObList defaults(kBlockSize);
  defaults.MoveTail(m_List);
  try {
    m_List.SerializeOwned(ar);
    MergeContents(m_List, defaults);
  } catch (...) {
    m_TakenOut.MoveTail(defaults);  // a caller may still hold a pointer to one
    AdoptAll();
    throw;
  }
  AdoptAll();
  ResetContent(defaults);
}

void QFSettingsKey::MergeContents(CObList& loaded, CObList& defaults) {
  DropIndexes();
  const auto nameOf = [this](CObject* item) { return GetName(DYNAMIC_DOWNCAST(QFBaseObject, item)); };
  const auto namesOf = [&](const CObList& list) {
    std::unordered_set<Text> names;
    ForEach(list, [&](CObject* item) { names.emplace(nameOf(item).View()); });
    return names;
  };

  const auto wanted = namesOf(defaults);
  for (POSITION at = loaded.GetHeadPosition(); at;) {
    const POSITION here = at;
    CObject* item = loaded.GetNext(at);
    if (wanted.contains(Text(nameOf(item).View())) && item) continue;
    loaded.RemoveAt(here);
    delete item;
  }

  auto present = namesOf(loaded);
  for (POSITION at = defaults.GetHeadPosition(); at;) {
    const POSITION here = at;
    CObject* item = defaults.GetNext(at);
    if (!item || !present.emplace(nameOf(item).View()).second) continue;
    loaded.AddHead(item);
    defaults.RemoveAt(here);
    QFIntValue* value = DYNAMIC_DOWNCAST(QFIntValue, item);
    if (value && value->GetName() == kMillFeatureCreationStyle) value->SetValue(0);
  }
}

// ---- dump

void QFSettingsKey::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFSettingsKey"), _T("Start"));
  DumpPrint(file, _T("\n m_Name: %s"), m_Name);
  DumpPrint(file, _T("\n m_Path: %s"), m_Path);
  DumpText(file, _T("\nDumping for m_List Start\n"));
  DumpPrint(file, _T("\n m_List Total Items : %d\n"), int(m_List.GetCount()));
  int number = 0;
  for (POSITION at = m_List.GetHeadPosition(); at; ++number) {
    CObject* item = m_List.GetNext(at);
    DumpPrint(file, _T("\n m_List count: %d\n"), number);
    if (auto* object = DYNAMIC_DOWNCAST(QFBaseObject, item)) object->DumpData(file);
  }
  DumpText(file, _T("\nDumping for m_List End\n"));
  DumpBanner(file, _T("QFSettingsKey"), _T("End"));
}
