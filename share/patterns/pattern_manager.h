// QFObjectPatternMgr, the node that stands for a pattern. It connects a base object, which owns it, to the description
// of the pattern (share/patterns/pattern_info.h), which it owns. In the tree it behaves as the base object: state,
// suppression, locks, drag and paste are the base object's.
//
// QFObject::CreatePattern creates the manager of a node, SetPatternInfo gives it a description. After a load a manager
// may have no base object or no description; the status word reports that (share/objects/storage_status.h). Without a
// base object the operations that ask it answer as QFObject's.
//
// Null arguments are allowed. One thread at a time uses a manager.
#pragma once

#include <memory>

#include "share/objects/object.h"
#include "share/patterns/pattern_info.h"

class ActiveInstances;

class KVSHARE_API QFObjectPatternMgr : public QFObject {
  DECLARE_SERIAL(QFObjectPatternMgr)

 public:
  // Enters itself in the base object's list of users. The caller owns the manager.
  explicit QFObjectPatternMgr(QFObject* base = nullptr);
  // Removes itself from the base object's users and deletes the description.
  ~QFObjectPatternMgr() override;

  // ---- overrides of QFObject

  CString GetClassNameW() override { return _T("QFObjectPatternMgr"); }
  void DumpData(FILE* file) override;
  // pattern_manager.cpp describes the record.
  void Serialize(CArchive& ar) override;
  QFObjState GetState() override;
  // Sets the own state, then the base object's.
  void SetState(QFObjState state) override;
  int CanSuppress() const override;
  int IsLocked() const override;
  int CanHideDisplay() override { return 1; }
  // 0 for the base object itself; else the base object's result.
  int IsDragOverValid(QFObject* object, unsigned long flags) override;
  int DoPaste(QFObject* object, QFObject* target, unsigned long flags) override;
  int RemoveFromUserObjectsList(QFObject* object) override;
  // 0: a pattern has no pattern.
  int GetIsPatternSupported() override { return 0; }
  int GetRefPointForPattern(FRPosition& position) override;
  int GetIsPatternObject() override { return 1; }
  QFCallbackHelper* GetCallbackHelper() override { return sCallbackHelper(); }
  void SetNodeDesc(CString text) override { m_PatternNodeDesc = text; }
  CString GetNodeDesc() const override { return m_PatternNodeDesc; }

  // The helper with the function that builds the companions of all managers.
  static QFCallbackHelper* sCallbackHelper() { return &m_sCbkHelper; }

  // ---- the pattern

  // Gives the description the base object's reference point and computes its instances; the result is that of
  // QFPatternInfo::Rebuild. 0 without a description or base object.
  int Rebuild();
  using QFObject::CopyParameters;
  // Replaces the description by a clone of the source's and copies whether the pattern is active: 1. 0, and no change,
  // for a source without a description. The orders are not copied: see QFPatternInfo::SetPatternOptimMgr.
  int CopyParameters(QFObjectPatternMgr* source);
  QFObject* GetBaseObjectToPattern() const { return m_pBaseObject; }
  // The first base object that is not a pattern itself. Null if there is none, as in a cycle of managers, which only a
  // damaged file can have.
  QFObject* GetInnermostBaseObjectToPattern() const;
  QFeObjectPatternType GetPatternType() const;
  // Owned by this object; null without a description.
  QFPatternInfo* GetPatternInfo() const { return m_pPattInfo; }
  // Takes ownership of a description, which may be null, and gives it the base object's reference point. Nonzero
  // deleteOld deletes the former description; otherwise it belongs to the caller. Does nothing for the present one.
  void SetPatternInfo(QFPatternInfo* info, int deleteOld);
  int GetPatternActive() const { return m_bPatternActive; }
  void SetPatternActive(int active) { m_bPatternActive = active; }

  // 0 without a description.
  int GetNumActiveInstances() const;
  // Sets index to the instance number of active instance n, counted from 0, and transform to its transform: 1. If there
  // are fewer active instances, index is the number of all instances, and the description is asked for that one. 0, and
  // no change, for a negative n and without a description.
  //
  // A call asks the status of every instance up to the one found. For a description that notes changes
  // (QFPatternInfo::NoteInstancesChanged) it remembers the answers: calls for all instances, in any order, then take
  // time in proportion to their number.
  int GetTransfForActiveInstance(int n, FRTransf& transform, int& index);
  // 1 without a description.
  int IsOptimListsEmpty() const;

 protected:
  static QFCallbackHelper m_sCbkHelper;

 private:
  friend class PatternManagers;

  void LoadRecord(CArchive& ar, unsigned version);
  void NoteLoadedFor(QFObject* node);
  void TakeReferencePoint();

  CString m_PatternNodeDesc;
  QFObject* m_pBaseObject;
  QFPatternInfo* m_pPattInfo = nullptr;  // owned
  QFObject* m_pLoadedFor = nullptr;      // the node that has this manager from an archive; not used after the load
  int m_bPatternActive = 1;
  std::unique_ptr<ActiveInstances> m_ActiveInstances;  // null before its first use
};
