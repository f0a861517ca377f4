// CObList, a doubly linked list of object pointers, null ones too. The list owns its nodes and none of the objects.
//
// A POSITION names an element until it is removed; null is "none" and stands behind the last. Positions handed in
// belong to this list and are not null unless a call says otherwise. GetHead, GetTail, RemoveHead and RemoveTail want a
// list that is not empty: on an empty one they give null. One list is used by one thread at a time.
#pragma once

#include "framework/object.h"

struct PositionOfList__;
using POSITION = PositionOfList__*;

class KVSHARE_API CObList : public CObject {
  DECLARE_SERIAL(CObList)

 public:
  // Each node is a block of its own (framework/block_pool.h): blockSize is accepted for older callers and not used.
  explicit CObList(LONGLONG blockSize = 10) noexcept { static_cast<void>(blockSize); }
  ~CObList() override;

  LONGLONG GetCount() const noexcept { return m_nCount; }
  LONGLONG GetSize() const noexcept { return m_nCount; }
  bool IsEmpty() const noexcept { return m_nCount == 0; }

  CObject*& GetHead() { return m_pHead ? m_pHead->object : None(); }
  CObject* GetHead() const { return m_pHead ? m_pHead->object : nullptr; }
  CObject*& GetTail() { return m_pTail ? m_pTail->object : None(); }
  CObject* GetTail() const { return m_pTail ? m_pTail->object : nullptr; }

  // Remove an end and give its object.
  CObject* RemoveHead();
  CObject* RemoveTail();
  // Give the position of the new element. The forms with a list add its elements in their order, ahead of the head or
  // behind the tail; a list may be added to itself.
  POSITION AddHead(CObject* object) { return PositionOf(Insert(object, nullptr, m_pHead)); }
  POSITION AddTail(CObject* object) { return PositionOf(Insert(object, m_pTail, nullptr)); }
  void AddHead(const CObList* list);
  void AddTail(const CObList* list);
  void RemoveAll() noexcept;

  // Walking: GetNext and GetPrev give the element at the position and move it on; it is null after the last.
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
  // With a null position: ahead of the head, behind the tail.
  POSITION InsertBefore(POSITION position, CObject* object);
  POSITION InsertAfter(POSITION position, CObject* object);

  // The first element with that pointer behind startAfter (from the head for null); null if there is none.
  POSITION Find(const CObject* object, POSITION startAfter = nullptr) const noexcept;
  // Null for an index below 0 or above the last.
  POSITION FindIndex(LONGLONG index) const noexcept;

  // The count, then a reference for each element in list order. Loading appends to what is there; when it raises, the
  // list holds what was read so far.
  void Serialize(CArchive& ar) override;
  // The same bytes, for a list that owns its elements: loading raises badIndex for an object that the archive gave out
  // before, so that damaged bytes can't make an owner delete one twice, and badClass for one that is not of the class
  // wanted (null wants any).
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
  static CObject*& None() noexcept;
  void Load(CArchive& ar, const CRuntimeClass* wanted, bool owned);

  Node* m_pHead = nullptr;
  Node* m_pTail = nullptr;
  LONGLONG m_nCount = 0;
};
