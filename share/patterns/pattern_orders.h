// The orders in which objects machine the instances of a pattern. QFPattOptimizedList is the order for one object, such
// as an operation: a row of instance numbers. QFPattOptimizMgr has all orders of one pattern; a QFPatternInfo owns it
// and offers its operations. Modules compute the orders; this library only stores them.
//
// An object with an order has the manager in its list of users, so the order goes with the object. Copies made by Clone
// are there in the list of held users, which is not stored.
//
// Null arguments are allowed. One thread at a time uses a manager.
#pragma once

#include <utility>
#include <vector>

#include "framework/array.h"
#include "framework/ob_list.h"
#include "share/objects/object.h"

class KVSHARE_API QFPattOptimizedList : public QFBaseObject {
  DECLARE_SERIAL(QFPattOptimizedList)

 public:
  // The object that the order is for is not owned and may be null.
  explicit QFPattOptimizedList(QFObject* identifier = nullptr) : m_pObjIdentifier(identifier) {}
  ~QFPattOptimizedList() override;

  // pattern_orders.cpp describes the record.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

  void SetIndices(const CArray<int, int&>& order) { m_OptIndices.Copy(order); }
  const CArray<int, int&>& GetIndices() const { return m_OptIndices; }
  int GetCount() const { return int(m_OptIndices.GetCount()); }
  // The instance at a position; -1 at or after the end. Raises std::out_of_range for a negative position.
  int GetIndex(int position) const;
  QFObject* GetObjectIdentifier() const { return m_pObjIdentifier; }

  // The caller owns the copy.
  QFPattOptimizedList* Clone() const;
  // Copies object and numbers: 1. 0 for null.
  int CopyParameters(const QFPattOptimizedList* source);

 private:
  CArray<int, int&> m_OptIndices;
  QFObject* m_pObjIdentifier;
};

class KVSHARE_API QFPattOptimizMgr : public QFObject {
  DECLARE_SERIAL(QFPattOptimizMgr)

 public:
  QFPattOptimizMgr() = default;
  // As ClearOptimList.
  ~QFPattOptimizMgr() override;

  // pattern_orders.cpp describes the record, which has no field of QFObject.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  // Deletes the object's order, without a call of the object: 1. 0 if it had none.
  int RemoveFromUserObjectsList(QFObject* object) override;
  // A copy with the orders of the objects that are active, which the caller owns.
  QFPattOptimizMgr* Clone() override;

  using QFObject::CopyParameters;
  // Replaces all orders by copies of the source's whose objects are active: 1. 0 for null.
  int CopyParameters(QFPattOptimizMgr* source);

  // Stores the order in place of the object's present one, or after all others. Always 1.
  int SetOptimizedList(QFObject* object, const CArray<int, int&>& order);
  // The length of the object's order; 0 without one.
  int GetCount(QFObject* object) const;
  // The instance at a position of the object's order; -1 without an order, and at or after its end.
  int GetIndex(QFObject* object, int position) const;
  // The first order of the object; null without one. The manager owns it.
  QFPattOptimizedList* FindOptimizedList(QFObject* object) const;
  // Removes this manager from the object's users and deletes the order: 1. 0 if it had none.
  int RemoveOptimizedList(QFObject* object);
  // Deletes the orders of all objects that the list does not have. Orders without an object stay.
  void CorrectOptimList(const CObList& valid);
  // Removes this manager from the users of all objects and deletes the orders.
  void ClearOptimList();
  int IsOptimListsEmpty() const { return m_OptimLists.IsEmpty(); }
  // The objects that have an order, in the order of the list.
  std::vector<QFObject*> GetAllIdentifiers() const;
  // Appends the orders to the list. They still belong to this manager.
  void GetAllOptimLists(CObList& list) const { list.AddTail(&m_OptimLists); }

 private:
  friend class QFPatternInfo;

  // False if a pattern has this manager from an archive already.
  bool TakeFromArchive() { return !std::exchange(m_bTakenFromArchive, true); }
  void LeaveAndDelete(CObject* entry);

  CObList m_OptimLists{10};  // of QFPattOptimizedList, owned
  bool m_bTakenFromArchive = false;
};
