// The orders of a pattern's instances, and their records in an archive.
//
// QFPattOptimizedList, schema 1: its class record, the record of QFBaseObject, the numbers (count, 32 bits each), a
// reference to the object, or null.
//
// QFPattOptimizMgr, schema 1: its class record, the record of QFBaseObject, the orders (count, references to
// QFPattOptimizedList). The record of QFObject, its base class, is missing. Files depend on that: a loaded manager has
// the label, id and state of a new one.
#include "share/patterns/pattern_orders.h"

#include <memory>

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/objects/storage_status.h"
#include "share/utilities/pointer_set.h"

IMPLEMENT_SERIAL(QFPattOptimizedList, QFBaseObject, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFPattOptimizMgr, QFObject, VERSIONABLE_SCHEMA | 1)

// ---- one order

QFPattOptimizedList::~QFPattOptimizedList() = default;

void QFPattOptimizedList::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFPattOptimizedList));
  ar.GetObjectSchema();  // not used; reading it ends the record
  QFBaseObject::Serialize(ar);
  m_OptIndices.Serialize(ar);
  if (ar.IsStoring()) {
    StoreReferenceOrNull(ar, m_pObjIdentifier);
  } else {
    ar >> m_pObjIdentifier;
  }
}

int QFPattOptimizedList::GetIndex(int position) const {
  return position >= m_OptIndices.GetCount() ? -1 : m_OptIndices.GetAt(position);
}

QFPattOptimizedList* QFPattOptimizedList::Clone() const {
  auto copy = std::make_unique<QFPattOptimizedList>();
  copy->CopyParameters(this);
  return copy.release();
}

int QFPattOptimizedList::CopyParameters(const QFPattOptimizedList* source) {
  if (!source) return 0;
  m_OptIndices.Copy(source->m_OptIndices);
  m_pObjIdentifier = source->m_pObjIdentifier;
  return 1;
}

void QFPattOptimizedList::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFPattOptimizedList"), _T("Start"));
  DumpPrint(file, _T("\nDumping for m_OptIndices Start\n"));
  DumpPrint(file, _T("\n m_OptIndices Total Items : %d\n"), GetCount());
  for (int position = 0; position < GetCount(); ++position)
    DumpPrint(file, _T("\n m_OptIndices Item: %d : %d\n"), position, GetIndex(position));
  DumpPrint(file, _T("\nDumping for m_OptIndices End\n"));
  DumpPrint(file, _T("\nDumping for m_pObjIdentifier Start\n"));
  DumpPrint(file, _T("\nDumping for m_pObjIdentifier End\n"));
  DumpBanner(file, _T("QFPattOptimizedList"), _T("End"));
}

// ---- all orders of a pattern

QFPattOptimizMgr::~QFPattOptimizMgr() { ClearOptimList(); }

void QFPattOptimizMgr::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(QFPattOptimizMgr));
  ar.GetObjectSchema();  // not used; reading it ends the record
  // NOLINTNEXTLINE(bugprone-parent-virtual-call): not QFObject's, see the layout
  QFBaseObject::Serialize(ar);
  m_OptimLists.SerializeOwned(ar, RUNTIME_CLASS(QFPattOptimizedList));
}

QFPattOptimizedList* QFPattOptimizMgr::FindOptimizedList(QFObject* object) const {
  for (POSITION at = m_OptimLists.GetHeadPosition(); at;) {
    auto* order = static_cast<QFPattOptimizedList*>(m_OptimLists.GetNext(at));
    if (order && order->GetObjectIdentifier() == object) return order;
  }
  return nullptr;
}

std::vector<QFObject*> QFPattOptimizMgr::GetAllIdentifiers() const {
  std::vector<QFObject*> objects;
  for (POSITION at = m_OptimLists.GetHeadPosition(); at;) {
    const auto* order = static_cast<const QFPattOptimizedList*>(m_OptimLists.GetNext(at));
    if (order && order->GetObjectIdentifier()) objects.push_back(order->GetObjectIdentifier());
  }
  return objects;
}

int QFPattOptimizMgr::SetOptimizedList(QFObject* object, const CArray<int, int&>& order) {
  QFPattOptimizedList* present = FindOptimizedList(object);
  if (!present) {
    auto fresh = std::make_unique<QFPattOptimizedList>(object);
    m_OptimLists.AddTail(fresh.get());
    present = fresh.release();
    if (object) object->AddToUserObjectsList(this, /*held=*/0);
  }
  present->SetIndices(order);
  return 1;
}

int QFPattOptimizMgr::GetCount(QFObject* object) const {
  const QFPattOptimizedList* order = FindOptimizedList(object);
  return order ? order->GetCount() : 0;
}

int QFPattOptimizMgr::GetIndex(QFObject* object, int position) const {
  const QFPattOptimizedList* order = FindOptimizedList(object);
  return order ? order->GetIndex(position) : -1;
}

// A damaged file can have several orders of one object: they all go.
int QFPattOptimizMgr::RemoveFromUserObjectsList(QFObject* object) {
  int removed = 0;
  for (POSITION at = m_OptimLists.GetHeadPosition(); at;) {
    const POSITION place = at;
    auto* order = DYNAMIC_DOWNCAST(QFPattOptimizedList, m_OptimLists.GetNext(at));
    if (!order || order->GetObjectIdentifier() != object) continue;
    m_OptimLists.RemoveAt(place);
    delete order;
    removed = 1;
  }
  QFObject::RemoveFromUserObjectsList(object);
  return removed;
}

int QFPattOptimizMgr::RemoveOptimizedList(QFObject* object) {
  if (!FindOptimizedList(object)) return 0;
  if (object) object->RemoveFromUserObjectsList(this);
  return RemoveFromUserObjectsList(object);
}

// After a failed load, the order or its object may be gone already: the run-time class of what is in their place shows
// that.
void QFPattOptimizMgr::LeaveAndDelete(CObject* entry) {
  if (const auto* order = DYNAMIC_DOWNCAST(QFPattOptimizedList, entry)) {
    CObject* const object = order->GetObjectIdentifier();
    if (auto* node = DYNAMIC_DOWNCAST(QFObject, object)) node->RemoveFromUserObjectsList(this);
  }
  delete entry;
}

void QFPattOptimizMgr::CorrectOptimList(const CObList& valid) {
  PointerSet objects(valid.GetCount());
  InsertAll(valid, objects);
  CObList marked;
  for (POSITION at = m_OptimLists.GetHeadPosition(); at;) {
    auto* order = static_cast<QFPattOptimizedList*>(m_OptimLists.GetNext(at));
    if (order && order->GetObjectIdentifier() && !objects.Contains(order->GetObjectIdentifier())) marked.AddTail(order);
  }
  while (!marked.IsEmpty()) {
    CObject* const order = marked.RemoveHead();
    const POSITION at = m_OptimLists.Find(order);
    if (!at) continue;  // removed by an object's answer to the call for an earlier one
    m_OptimLists.RemoveAt(at);
    LeaveAndDelete(order);
  }
}

void QFPattOptimizMgr::ClearOptimList() {
  while (!m_OptimLists.IsEmpty()) LeaveAndDelete(m_OptimLists.RemoveHead());
}

QFPattOptimizMgr* QFPattOptimizMgr::Clone() {
  auto copy = std::make_unique<QFPattOptimizMgr>();
  copy->CopyParameters(this);
  return copy.release();
}

int QFPattOptimizMgr::CopyParameters(QFPattOptimizMgr* source) {
  if (!source) return 0;
  if (source == this) return 1;
  ClearOptimList();
  for (POSITION at = source->m_OptimLists.GetHeadPosition(); at;) {
    const auto* order = static_cast<const QFPattOptimizedList*>(source->m_OptimLists.GetNext(at));
    QFObject* object = order ? order->GetObjectIdentifier() : nullptr;
    if (!object || object->GetState() != ACTIVE) continue;
    std::unique_ptr<QFPattOptimizedList> copy(order->Clone());
    m_OptimLists.AddTail(copy.get());
    static_cast<void>(copy.release());
    // Not in the stored list of users, as the owner of the copy is not known; the copy must still learn that the object
    // goes.
    object->AddToUserObjectsList(this, /*held=*/1);
  }
  return 1;
}

void QFPattOptimizMgr::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFPattOptimizMgr"), _T("Start"));
  DumpPrint(file, _T("\nDumping for m_OptimLists Start\n"));
  DumpPrint(file, _T("\n m_OptimLists Total Items : %d\n"), m_OptimLists.GetCount());
  int number = 0;
  for (POSITION at = m_OptimLists.GetHeadPosition(); at; ++number) {
    DumpPrint(file, _T("\n m_OptimLists count: %d\n"), number);
    if (auto* order = static_cast<QFPattOptimizedList*>(m_OptimLists.GetNext(at))) order->DumpData(file);
  }
  DumpPrint(file, _T("\nDumping for m_OptimLists End\n"));
  DumpBanner(file, _T("QFPattOptimizMgr"), _T("End"));
}
