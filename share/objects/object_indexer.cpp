// The object indexer: one entry per class, and the helper that owns the entries.
#include "share/objects/object_indexer.h"

#include <algorithm>
#include <array>
#include <limits>

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/objects/internal/id_positions.h"
#include "share/objects/internal/indexer_names.h"
#include "share/objects/object.h"
#include "share/utilities/object_lists.h"

IMPLEMENT_SERIAL(QFObjectIndexer, QFBaseObject, VERSIONABLE_SCHEMA | 2)
IMPLEMENT_SERIAL(QFObjectIndexerHelper, QFBaseObject, VERSIONABLE_SCHEMA | QFObjectIndexerHelper::kSchema)

// ---- entry

QFObjectIndexer::QFObjectIndexer() = default;

QFObjectIndexer::QFObjectIndexer(const CString& className) : m_className(className) {}

QFObjectIndexer::~QFObjectIndexer() = default;

IdPositions& QFObjectIndexer::Positions() {
  if (!m_positions) m_positions = std::make_unique<IdPositions>();
  m_positions->AddNewIds(m_ObjectIds);
  return *m_positions;
}

int QFObjectIndexer::FindId(DWORD id) {
  const DWORD position = Positions().Find(id);
  return position == IdPositions::kNone ? -1 : int(position);
}

bool QFObjectIndexer::ReplaceId(DWORD oldId, DWORD newId) {
  IdPositions& positions = Positions();
  const DWORD position = positions.Find(oldId);
  if (position == IdPositions::kNone) return false;
  m_ObjectIds[position] = newId;
  positions.Replace(oldId, newId, position);
  return true;
}

// A document can hold any count, so both operations stop at the limits of int.
void QFObjectIndexer::AddReference() {
  if (m_nIndexReferences < std::numeric_limits<int>::max()) ++m_nIndexReferences;
}

void QFObjectIndexer::ReleaseReference() {
  if (m_nIndexReferences != 0 && m_nIndexReferences > std::numeric_limits<int>::min()) --m_nIndexReferences;
}

void QFObjectIndexer::RemoveIds() {
  m_ObjectIds = {};
  m_positions.reset();
  m_nIndexReferences = 0;
}

void QFObjectIndexer::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFObjectIndexer));
  const UINT schema = ar.GetObjectSchema();
  QFBaseObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_className << DWORD(m_ObjectIds.size());
    ar.Write(m_ObjectIds.data(), m_ObjectIds.size() * sizeof(DWORD));
    ar << m_nIndexReferences;
    return;
  }
  DWORD count = 0;
  ar >> m_className >> count;
  ar.EnsureLeft(count, sizeof(DWORD));
  const std::size_t before = m_ObjectIds.size();
  m_ObjectIds.resize(before + count);
  ar.EnsureRead(m_ObjectIds.data() + before, count * sizeof(DWORD));
  if (schema > 1) {
    ar >> m_nIndexReferences;
  } else {
    m_nIndexReferences = int(count);
  }
}

void QFObjectIndexer::DumpData(FILE* file) {
  DumpBanner(file, _T("QFObjectIndexer"), _T("Start"));
  DumpPrint(file, _T("\n m_className: %s"), m_className);
  DumpPrint(file, _T("\n m_nIndexReferences: %d"), m_nIndexReferences);
  DumpBanner(file, _T("QFObjectIndexer"), _T("End"));
}

// ---- helper

QFObjectIndexerHelper::QFObjectIndexerHelper() = default;

QFObjectIndexerHelper::~QFObjectIndexerHelper() { RemoveAll(); }

IndexerNames& QFObjectIndexerHelper::Names() {
  if (m_names) return *m_names;
  auto names = std::make_unique<IndexerNames>();
  for (POSITION at = m_ObjIndexerList.GetHeadPosition(); at;)
    if (auto* entry = static_cast<QFObjectIndexer*>(m_ObjIndexerList.GetNext(at)))
      names->Append(entry, /*record=*/nullptr);
  m_names = std::move(names);
  return *m_names;
}

const std::vector<QFObjectIndexer*>& QFObjectIndexerHelper::EntriesOf(QFObject& node) {
  static const IndexerNames::Entries kNone;
  const CString own = node.GetRegisterNodeName();
  const CRuntimeClass* record = own.IsEmpty() ? node.GetRuntimeClassForAutoIndexing() : nullptr;
  if (own.IsEmpty() && (!record || *record->m_lpszClassName == 0)) return kNone;
  const IndexerNames::Entries* entries = record ? Names().Find(record) : Names().Find(own.View());
  return entries ? *entries : kNone;
}

QFObjectIndexer* QFObjectIndexerHelper::AddEntryFor(QFObject& node) {
  CString name = node.GetRegisterNodeName();
  const CRuntimeClass* record = name.IsEmpty() ? node.GetRuntimeClassForAutoIndexing() : nullptr;
  if (record) name = record->m_lpszClassName;
  if (name.IsEmpty()) return nullptr;
  auto* entry = new QFObjectIndexer(name);
  m_ObjIndexerList.AddTail(entry);
  Names().Append(entry, record);
  return entry;
}

void QFObjectIndexerHelper::AddObj(QFObject* object) {
  if (!object) return;
  const auto& entries = EntriesOf(*object);
  QFObjectIndexer* entry = entries.empty() ? AddEntryFor(*object) : entries.front();
  if (!entry) return;
  entry->AddReference();
  entry->AddId(object->GetObjectId());
  object->SetRegNameForAutoIndexing(entry->GetIndexedClassName());
}

void QFObjectIndexerHelper::ReplaceObj(QFObject* oldObject, QFObject* newObject) {
  if (!oldObject || !newObject) return;
  const DWORD oldId = oldObject->GetObjectId();
  for (QFObjectIndexer* entry : EntriesOf(*oldObject)) {
    if (entry->FindId(oldId) < 0) continue;  // don't give the new node an id unless it gets a place
    entry->ReplaceId(oldId, newObject->GetObjectId());
    newObject->SetRegNameForAutoIndexing(entry->GetIndexedClassName());
  }
}

int QFObjectIndexerHelper::FindIndex(QFObject* object) {
  if (!object) return -1;
  for (QFObjectIndexer* entry : EntriesOf(*object)) {
    if (!entry->HasIds()) continue;  // don't give the node an id for an empty class
    const int position = entry->FindId(object->GetObjectId());
    if (position >= 0) return position;
  }
  return -1;
}

void QFObjectIndexerHelper::ReleaseIndexer(QFObject* object) {
  if (!object) return;
  const IndexerNames::Entries* entries = Names().Find(object->GetRegNameForAutoIndexing().View());
  if (!entries) return;
  for (QFObjectIndexer* entry : *entries) entry->ReleaseReference();
}

void QFObjectIndexerHelper::ClearUnusedIndexers() {
  for (POSITION at = m_ObjIndexerList.GetHeadPosition(); at;) {
    auto* entry = static_cast<QFObjectIndexer*>(m_ObjIndexerList.GetNext(at));
    if (entry && entry->HasIds() && entry->GetReferences() <= 0) entry->RemoveIds();
  }
}

void QFObjectIndexerHelper::RemoveAll() {
  m_names.reset();
  DeleteAllElements_CObList(m_ObjIndexerList);
}

void QFObjectIndexerHelper::CorrectIndexersReferences(std::map<CString, int>& counts) {
  if (counts.empty()) return;
  for (POSITION at = m_ObjIndexerList.GetHeadPosition(); at;) {
    auto* entry = static_cast<QFObjectIndexer*>(m_ObjIndexerList.GetNext(at));
    if (!entry || entry->GetIndexedClassName().IsEmpty()) continue;
    if (!IsNonNodeIndexerClass(entry->GetIndexedClassName()))
      entry->SetReferences(counts[entry->GetIndexedClassName()]);
  }
}

void QFObjectIndexerHelper::GetAllIndexers(CObList& list) const {
  for (POSITION at = m_ObjIndexerList.GetHeadPosition(); at;)
    if (CObject* entry = m_ObjIndexerList.GetNext(at)) list.AddTail(entry);
}

bool QFObjectIndexerHelper::IsNonNodeIndexerClass(const CString& className) const {
  static constexpr std::array<LPCTSTR, 2> kNames = {_T("QFActiveToolSet"), _T("QFToolStation")};
  return std::any_of(kNames.begin(), kNames.end(), [&](LPCTSTR name) { return className == name; });
}

void QFObjectIndexerHelper::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFObjectIndexerHelper));
  const UINT schema = ar.GetObjectSchema();
  if (ar.IsLoading()) m_nObjectSchemaNumber = schema;
  QFBaseObject::Serialize(ar);
  if (ar.IsLoading()) m_names.reset();
  m_ObjIndexerList.SerializeOwned(ar, RUNTIME_CLASS(QFObjectIndexer));
}

void QFObjectIndexerHelper::DumpData(FILE* file) {
  DumpBanner(file, _T("QFObjectIndexerHelper"), _T("Start"));
  DumpText(file, _T("\nDumping for m_ObjIndexerList Start\n"));
  DumpPrint(file, _T("\n m_ObjIndexerList Total Items : %d\n"), m_ObjIndexerList.GetCount());
  int count = 0;
  for (POSITION at = m_ObjIndexerList.GetHeadPosition(); at; ++count) {
    auto* entry = static_cast<QFObjectIndexer*>(m_ObjIndexerList.GetNext(at));
    DumpPrint(file, _T("\n m_ObjIndexerList count: %d\n"), count);
    if (entry) entry->DumpData(file);
  }
  DumpText(file, _T("\nDumping for m_ObjIndexerList End\n"));
  DumpPrint(file, _T("\n m_nObjectSchemaNumber: %d"), m_nObjectSchemaNumber);
  DumpBanner(file, _T("QFObjectIndexerHelper"), _T("End"));
}
