// CObList: a doubly linked list of object pointers, which may be null. The list owns its nodes and none of the objects.
//
// A POSITION names one element until that element is removed; other changes keep it valid. Null means "no element". A
// position must come from this list: null and removed positions are not checked and crash, except where a call says
// what null does. GetHead, GetTail, RemoveHead and RemoveTail return null for an empty list. Indices start at 0. One
// thread at a time may use a list.
#pragma once

#include "framework/object.h"

struct PositionOfList__;
using POSITION = PositionOfList__*;

class KVSHARE_API CObList : public CObject {
  DECLARE_SERIAL(CObList)

 public:
  // blockSize is ignored (each node is one block of framework/block_pool.h) and kept for existing callers.
  explicit CObList(LONGLONG blockSize = 10) noexcept { static_cast<void>(blockSize); }
  ~CObList() override;

  LONGLONG GetCount() const noexcept { return m_nCount; }
  LONGLONG GetSize() const noexcept { return m_nCount; }
  bool IsEmpty() const noexcept { return m_nCount == 0; }

  CObject*& GetHead() { return m_pHead ? m_pHead->object : Missing(); }
  CObject* GetHead() const { return m_pHead ? m_pHead->object : nullptr; }
  CObject*& GetTail() { return m_pTail ? m_pTail->object : Missing(); }
  CObject* GetTail() const { return m_pTail ? m_pTail->object : nullptr; }

  // Remove the first or last element and return its object, which is not deleted.
  CObject* RemoveHead();
  CObject* RemoveTail();
  // Return the new element's position. The forms with a list insert copies of its pointers, in their order, before the
  // head or after the tail; a list may be added to itself.
  POSITION AddHead(CObject* object) { return PositionOf(Insert(object, nullptr, m_pHead)); }
  POSITION AddTail(CObject* object) { return PositionOf(Insert(object, m_pTail, nullptr)); }
  void AddHead(const CObList* list);
  void AddTail(const CObList* list);
  // Moves all elements of another list to the end of this one, without allocating. The list is then empty.
  void MoveTail(CObList& list) noexcept;
  void RemoveAll() noexcept;

  // Walking: GetNext and GetPrev return the element at the position, which is not null, and move the position on. It
  // becomes null after the last element.
  POSITION GetHeadPosition() const noexcept { return PositionOf(m_pHead); }
  POSITION GetTailPosition() const noexcept { return PositionOf(m_pTail); }
  CObject*& GetNext(POSITION& position) { return Step(position, &Node::next); }
  CObject* GetNext(POSITION& position) const { return Step(position, &Node::next); }
  CObject*& GetPrev(POSITION& position) { return Step(position, &Node::previous); }
  CObject* GetPrev(POSITION& position) const { return Step(position, &Node::previous); }

  CObject*& GetAt(POSITION position) { return NodeAt(position)->object; }
  CObject* GetAt(POSITION position) const { return NodeAt(position)->object; }
  void SetAt(POSITION position, CObject* object) { NodeAt(position)->object = object; }
  void RemoveAt(POSITION position);
  // Return the new element's position. A null position means before the head and after the tail.
  POSITION InsertBefore(POSITION position, CObject* object);
  POSITION InsertAfter(POSITION position, CObject* object);

  // Returns the first element with this pointer after startAfter, or from the head for null; null if there is none.
  POSITION Find(const CObject* object, POSITION startAfter = nullptr) const noexcept;
  // The element at an index from 0 to GetCount() - 1; null for any other index. Walks the list.
  POSITION FindIndex(LONGLONG index) const noexcept;

  // The count, then a reference for each element in list order. Loading appends; if it raises, the list has the
  // elements read so far.
  void Serialize(CArchive& ar) override;
  // The same bytes, for a list whose owner deletes the elements. Loading raises badIndex for an object that the archive
  // returned before, so that damaged bytes cannot make an owner delete an object twice, and badClass for an object that
  // is not of the class `wanted` (null accepts any class).
  void SerializeOwned(CArchive& ar, const CRuntimeClass* wanted = nullptr);

  void AssertValid() const override;

 private:
  struct Node {
    Node* next;
    Node* previous;
    CObject* object;
  };

  static Node* NodeAt(POSITION position) noexcept { return reinterpret_cast<Node*>(position); }
  static POSITION PositionOf(Node* node) noexcept { return reinterpret_cast<POSITION>(node); }
  static CObject*& Step(POSITION& position, Node* Node::*direction) noexcept {
    Node* node = NodeAt(position);
    position = PositionOf(node->*direction);
    return node->object;
  }
  Node* Insert(CObject* object, Node* previous, Node* next);
  CObject* Remove(Node* node) noexcept;
  static CObject*& Missing() noexcept;
  void Load(CArchive& ar, const CRuntimeClass* wanted, bool owned);

  Node* m_pHead = nullptr;
  Node* m_pTail = nullptr;
  LONGLONG m_nCount = 0;
};
