// CObList: nodes, searching and the archive.
#include "framework/ob_list.h"

#include <cassert>
#include <utility>

#include "framework/archive.h"
#include "framework/block_pool.h"

namespace {

constexpr ULONGLONG kShortestReference = 2;  // bytes

}  // namespace

IMPLEMENT_SERIAL(CObList, CObject, 0)

CObList::~CObList() { RemoveAll(); }

CObList::Node* CObList::Insert(CObject* object, Node* previous, Node* next) {
  Node* node = new (BlockPool::Allocate(sizeof(Node))) Node{next, previous, object};
  (previous ? previous->next : m_pHead) = node;
  (next ? next->previous : m_pTail) = node;
  ++m_nCount;
  return node;
}

CObject* CObList::Remove(Node* node) noexcept {
  CObject* object = node->object;
  (node->previous ? node->previous->next : m_pHead) = node->next;
  (node->next ? node->next->previous : m_pTail) = node->previous;
  BlockPool::Free(node, sizeof(Node));
  --m_nCount;
  return object;
}

void CObList::RemoveAll() noexcept {
  for (Node* node = m_pHead; node;) BlockPool::Free(std::exchange(node, node->next), sizeof(Node));
  m_pHead = m_pTail = nullptr;
  m_nCount = 0;
}

// The element that GetHead and GetTail refer to for an empty list.
CObject*& CObList::Missing() noexcept {
  thread_local CObject* none;
  return none = nullptr;
}

CObject* CObList::RemoveHead() { return m_pHead ? Remove(m_pHead) : nullptr; }

CObject* CObList::RemoveTail() { return m_pTail ? Remove(m_pTail) : nullptr; }

void CObList::RemoveAt(POSITION position) { Remove(NodeAt(position)); }

void CObList::AddHead(const CObList* list) {
  const Node* at = list->m_pTail;
  for (LONGLONG left = list->m_nCount; left > 0; --left, at = at->previous) AddHead(at->object);
}

void CObList::AddTail(const CObList* list) {
  const Node* at = list->m_pHead;
  for (LONGLONG left = list->m_nCount; left > 0; --left, at = at->next) AddTail(at->object);
}

void CObList::MoveTail(CObList& list) noexcept {
  if (!list.m_pHead || &list == this) return;
  list.m_pHead->previous = m_pTail;
  (m_pTail ? m_pTail->next : m_pHead) = list.m_pHead;
  m_pTail = std::exchange(list.m_pTail, nullptr);
  list.m_pHead = nullptr;
  m_nCount += std::exchange(list.m_nCount, 0);
}

POSITION CObList::InsertBefore(POSITION position, CObject* object) {
  Node* next = NodeAt(position);
  return next ? PositionOf(Insert(object, next->previous, next)) : AddHead(object);
}

POSITION CObList::InsertAfter(POSITION position, CObject* object) {
  Node* previous = NodeAt(position);
  return previous ? PositionOf(Insert(object, previous, previous->next)) : AddTail(object);
}

POSITION CObList::Find(const CObject* object, POSITION startAfter) const noexcept {
  Node* node = startAfter ? NodeAt(startAfter)->next : m_pHead;
  while (node && node->object != object) node = node->next;
  return PositionOf(node);
}

POSITION CObList::FindIndex(LONGLONG index) const noexcept {
  if (index < 0 || index >= m_nCount) return nullptr;
  Node* node = m_pHead;
  while (index-- > 0) node = node->next;
  return PositionOf(node);
}

void CObList::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  if (ar.IsLoading()) return Load(ar, nullptr, /*owned=*/false);
  ar.WriteCount(ULONGLONG(m_nCount));
  for (const Node* node = m_pHead; node; node = node->next) ar.WriteObject(node->object);
}

void CObList::SerializeOwned(CArchive& ar, const CRuntimeClass* wanted) {
  if (ar.IsLoading()) return Load(ar, wanted, /*owned=*/true);
  CObList::Serialize(ar);
}

void CObList::Load(CArchive& ar, const CRuntimeClass* wanted, bool owned) {
  const ULONGLONG count = ar.ReadCount(kShortestReference);
  for (ULONGLONG left = count; left > 0; --left) AddTail(owned ? ar.ReadOwnedObject(wanted) : ar.ReadObject(wanted));
}

void CObList::AssertValid() const {
  CObject::AssertValid();
  assert((m_nCount == 0) == (m_pHead == nullptr) && (m_pHead == nullptr) == (m_pTail == nullptr));
}
