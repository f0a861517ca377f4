// CList: a doubly linked list of values; the list owns its elements.
//
// A POSITION names one element until that element is removed; other changes keep it valid. Null means "no element". A
// position must come from this list: null and removed positions are not checked and crash, except where a call says
// what null does. GetHead, GetTail, RemoveHead and RemoveTail raise std::out_of_range on an empty list. Indices start
// at 0. One thread at a time may use a list. ARG is the parameter type for elements.
//
//   for (POSITION at = list.GetHeadPosition(); at;) Use(list.GetNext(at));
#pragma once

#include <stdexcept>
#include <utility>

#include "framework/elements.h"
#include "framework/ob_list.h"

template <class T, class ARG = const T&>
class CList : public CObject {
 public:
  // blockSize is ignored and kept for existing callers.
  explicit CList(LONGLONG blockSize = 10) { static_cast<void>(blockSize); }
  ~CList() override { RemoveAll(); }

  LONGLONG GetCount() const noexcept { return m_nCount; }
  LONGLONG GetSize() const noexcept { return m_nCount; }
  bool IsEmpty() const noexcept { return m_nCount == 0; }

  T& GetHead() { return Existing(m_pHead)->value; }
  const T& GetHead() const { return Existing(m_pHead)->value; }
  T& GetTail() { return Existing(m_pTail)->value; }
  const T& GetTail() const { return Existing(m_pTail)->value; }

  T RemoveHead() { return Remove(Existing(m_pHead)); }
  T RemoveTail() { return Remove(Existing(m_pTail)); }
  POSITION AddHead(ARG value) { return Insert(value, nullptr, m_pHead); }
  POSITION AddTail(ARG value) { return Insert(value, m_pTail, nullptr); }
  // Insert copies of another list's elements, in their order, before the head or after the tail. A list may be added to
  // itself; null is not allowed.
  void AddHead(const CList* list) {
    const Node* at = list->m_pTail;
    for (LONGLONG left = list->m_nCount; left > 0; --left, at = at->previous) AddHead(at->value);
  }
  void AddTail(const CList* list) {
    const Node* at = list->m_pHead;
    for (LONGLONG left = list->m_nCount; left > 0; --left, at = at->next) AddTail(at->value);
  }
  void RemoveAll() noexcept {
    while (m_pHead) Drop(m_pHead);
  }

  POSITION GetHeadPosition() const noexcept { return PositionOf(m_pHead); }
  POSITION GetTailPosition() const noexcept { return PositionOf(m_pTail); }
  T& GetNext(POSITION& position) { return Step(position, &Node::next); }
  const T& GetNext(POSITION& position) const { return Step(position, &Node::next); }
  T& GetPrev(POSITION& position) { return Step(position, &Node::previous); }
  const T& GetPrev(POSITION& position) const { return Step(position, &Node::previous); }

  T& GetAt(POSITION position) { return NodeAt(position)->value; }
  const T& GetAt(POSITION position) const { return NodeAt(position)->value; }
  void SetAt(POSITION position, ARG value) { NodeAt(position)->value = value; }
  void RemoveAt(POSITION position) { Drop(NodeAt(position)); }
  // Return the new element's position. A null position means before the head and after the tail.
  POSITION InsertBefore(POSITION position, ARG value) {
    Node* next = NodeAt(position);
    return next ? Insert(value, next->previous, next) : AddHead(value);
  }
  POSITION InsertAfter(POSITION position, ARG value) {
    Node* previous = NodeAt(position);
    return previous ? Insert(value, previous, previous->next) : AddTail(value);
  }

  // Returns the first equal element after startAfter, or from the head for null; null if there is none.
  POSITION Find(ARG value, POSITION startAfter = nullptr) const {
    Node* node = startAfter ? NodeAt(startAfter)->next : m_pHead;
    while (node && !(node->value == value)) node = node->next;
    return PositionOf(node);
  }
  // The element at an index from 0 to GetCount() - 1; null for any other index. Walks the list.
  POSITION FindIndex(LONGLONG index) const noexcept {
    if (index < 0 || index >= m_nCount) return nullptr;
    Node* node = m_pHead;
    while (index-- > 0) node = node->next;
    return PositionOf(node);
  }

  // The count, then the elements (framework/elements.h). Loading appends; if it raises, the list has the elements read
  // so far.
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar.WriteCount(ULONGLONG(m_nCount));
      for (const Node* node = m_pHead; node; node = node->next) StoreElement(ar, node->value);
      return;
    }
    for (ULONGLONG left = ar.ReadCount(kElementBytes<T>); left > 0; --left) {
      T value = {};
      LoadElement(ar, value);
      AddTail(value);
    }
  }

 private:
  struct Node {
    Node* next;
    Node* previous;
    T value;
  };

  static Node* NodeAt(POSITION position) noexcept { return reinterpret_cast<Node*>(position); }
  static POSITION PositionOf(const Node* node) noexcept { return reinterpret_cast<POSITION>(const_cast<Node*>(node)); }
  static Node* Existing(Node* node) {
    if (!node) throw std::out_of_range("CList: empty list");
    return node;
  }
  static T& Step(POSITION& position, Node* Node::*direction) noexcept {
    Node* node = NodeAt(position);
    position = PositionOf(node->*direction);
    return node->value;
  }
  POSITION Insert(ARG value, Node* previous, Node* next) {
    Node* node = new Node{next, previous, value};
    (previous ? previous->next : m_pHead) = node;
    (next ? next->previous : m_pTail) = node;
    ++m_nCount;
    return PositionOf(node);
  }
  T Remove(Node* node) {
    T value = std::move(node->value);
    Drop(node);
    return value;
  }
  void Drop(Node* node) noexcept {
    (node->previous ? node->previous->next : m_pHead) = node->next;
    (node->next ? node->next->previous : m_pTail) = node->previous;
    --m_nCount;
    delete node;
  }

  Node* m_pHead = nullptr;
  Node* m_pTail = nullptr;
  LONGLONG m_nCount = 0;
};
