// QFPatternInfo, the description of a pattern: how many instances a base object has, and the transform of each. Modules
// derive a class for each kind of pattern, such as linear or circular, and override the operations on instances. This
// class has what all kinds share: the reference position, the instances that the user skips, the orders of the
// instances for machining, and the markers on the screen.
//
// Instances are numbered from 0 to GetNumPatternInstances() - 1. An instance's location is the reference position times
// its transform. Positions are in the document's frame.
//
// QFPattInstToSkip, one skipped instance: modules derive the class that identifies it.
//
// Null arguments are allowed. One thread at a time uses a pattern.
#pragma once

#include "companions/geometry/transforms.h"
#include "framework/array.h"
#include "framework/ob_list.h"
#include "share/core/base_object.h"
#include "share/objects/pattern_enums.h"

class QFDirectionRestriction;  // defined by modules
class QFDisplayInfo;
class QFObject;
class QFPattOptimizMgr;

class KVSHARE_API QFPattInstToSkip : public QFBaseObject {
  DECLARE_SERIAL(QFPattInstToSkip)

 public:
  QFPattInstToSkip() = default;
  // pattern_info.cpp describes the record.
  void Serialize(CArchive& ar) override;

  // A name for the user; empty by default.
  virtual CString GetName();
  // A new object, which the caller owns; null by default.
  virtual QFPattInstToSkip* Clone();
  // 0 by default.
  virtual int CopyParameters(QFPattInstToSkip* source);
};

class KVSHARE_API QFPatternInfo : public QFBaseObject {
  DECLARE_SERIAL(QFPatternInfo)

 public:
  QFPatternInfo();
  // Deletes the orders. It does not delete the skipped instances: a derived class that owns them calls
  // DeleteAllInstancesToSkip in its destructor.
  ~QFPatternInfo() override;

  // pattern_info.cpp describes the record.
  void Serialize(CArchive& ar) override;

  // ---- the kind of pattern; a derived class supplies Rebuild, Clone and the four operations on instances

  // Computes the instances from the parameters: 1, or 0 on failure. 0 by default.
  virtual int Rebuild();
  // A new description without the orders, which the caller owns; null by default.
  virtual QFPatternInfo* Clone();
  // Copies the reference position, and a clone of each skipped instance: 1. 0 for null.
  virtual int CopyParameters(QFPatternInfo* source);
  // 1 by default.
  virtual LONGLONG GetNumPatternInstances();
  // Sets the transform of an instance and returns the instance's status. By default 0, and the transform is unchanged.
  virtual QFeObjectPatternInstanceStatus GetTransfForInst(LONGLONG instance, FRTransf& transform);
  // "Active" by default.
  virtual QFeObjectPatternInstanceStatus GetInstanceStatus(LONGLONG instance);
  // 1 if the status was set. 0 by default.
  virtual int SetInstanceStatus(int instance, QFeObjectPatternInstanceStatus status);
  // 1 while parameters are missing. 0 by default.
  virtual unsigned GetIsPatterNotFullyDefined();
  // "None" by default.
  virtual QFeObjectPatternType GetPatternType();
  // Does nothing by default.
  virtual void SetPatternDirRestriction(QFDirectionRestriction* restriction);
  // 0 by default.
  virtual int CompareParametersPatternInfo(QFPatternInfo* other);

  // ---- reference position and skipped instances

  void SetRefPosOfObject(const FRPosition& position) { m_RefPosOfObject = position; }
  const FRPosition& GetRefPosOfObject() const { return m_RefPosOfObject; }

  LONGLONG GetNumInstancesToSkip() const { return m_InstToSkipList.GetCount(); }
  // The number of instances without those in the list to skip, whatever GetInstanceStatus returns.
  LONGLONG GetNumActivePatternInstances() { return GetNumPatternInstances() - GetNumInstancesToSkip(); }
  // Appends the skipped instances to the list. They still belong to this object.
  void GetAllInstancesToSkip(CObList& list) const { list.AddTail(&m_InstToSkipList); }
  void DeleteAllInstancesToSkip();
  // Removes and deletes the entry if the list has it.
  void DeleteInstanceToSkip(QFPattInstToSkip* entry);

  // The number of changes of the instances' count and status that were noted; 0 for a class that notes none.
  ULONGLONG GetInstanceChanges() const { return m_nInstanceChanges; }

  // ---- markers on the screen

  static constexpr DWORD kActiveColor = 0xFF0000;  // 0x00BBGGRR: blue
  static constexpr DWORD kOtherColor = 0x0000FF;   // red

  // Draws an ellipse with radii of 6 at the location of each instance: active ones blue, others red. Sets the colour
  // only where the status differs from that of the instance before. 1; 0 for null.
  int Display(QFDisplayInfo* info);
  // The same for one instance in the present colour: 1. 0 for instance -1 and for null.
  int HighLight(int instance, QFDisplayInfo* info);
  // Sets index to the first instance less than 3 from the position on the screen and returns its status. Without one,
  // index is -1 and the result "active". view transforms the document's frame to the screen's, in the same unit.
  QFeObjectPatternInstanceStatus CheckInstanceAvailableAtScreenPos(const FRTransf& view, FRPosition screenPos,
                                                                   int& index);
  // Makes the instance at the position active if it is not, and the other way round: 1. 0 if no instance is there.
  int ToggleSelectInstanceAtScreenPos(const FRTransf& view, FRPosition screenPos);

  // ---- orders: the instances as an object, such as an operation, machines them (share/patterns/pattern_orders.h)

  // Stores the order of an object in place of its present one. The numbers are not checked. Always 1.
  int SetOptimizedList(QFObject* object, CArray<int, int&>& order);
  // As GetTransfForInst for a position in the object's order, from the identity. Without an order, or after its end,
  // the position is the instance.
  QFeObjectPatternInstanceStatus GetTransfForInstOptimised(int position, FRTransf& transform, QFObject* object);
  // The instance at a position in the object's order; -1 without an order and after its end. Without an object or any
  // order, the position itself. (The operation before falls back to the instance instead; both kept for existing
  // modules.)
  int GetIndexForInstOptimised(int position, QFObject* object);
  // 1 without an order.
  int IsOptimListsEmpty() const;
  void ClearOptimList();
  // Deletes the orders of all objects that the list does not have.
  void CorrectOptimList(CObList& valid);
  // Replaces all orders by copies of the other description's, as QFPattOptimizMgr::Clone makes them. Null deletes them.
  void SetPatternOptimMgr(const QFPatternInfo* other);
  // Deletes the object's order: 1. 0 if it had none.
  int RemoveFromUserObjectsList(QFObject* object);
  // The orders, owned by this object; null before the first one.
  QFPattOptimizMgr* GetPatternOptimMgr() const { return m_pOptimMgr; }

 protected:
  // Optional: notes a change of the instances' count or of the status of any. A class that calls it in its constructor
  // and with every change lets QFObjectPatternMgr::GetTransfForActiveInstance remember where active instances are. For
  // other classes that operation asks each instance again in each call.
  void NoteInstancesChanged() { ++m_nInstanceChanges; }

  FRPosition m_RefPosOfObject;
  CObList m_InstToSkipList{10};             // of QFPattInstToSkip, owned
  QFPattOptimizMgr* m_pOptimMgr = nullptr;  // owned

 private:
  friend class QFObjectPatternMgr;

  // For changes by this class.
  void NoteIfCounted() {
    if (m_nInstanceChanges != 0) NoteInstancesChanged();
  }

  ULONGLONG m_nInstanceChanges = 0;
  bool m_bLoadedByManager = false;  // a manager has it from an archive
};
