// QFObject, the node: the base class of every feature, operation and tool of the modules. A node has a label, an audit
// trail, an id within its document, one of four states, an owner, a list of the objects that use it, and on demand a
// pattern and a user-interface companion.
//
// Almost every virtual operation has a default that means "not applicable"; modules override what they support. Results
// are values: 1 for yes or done, 0 for no, null for no object. Only Serialize raises exceptions. Null arguments are
// allowed.
//
// Ownership: a node owns its companion and its pattern manager. Pointers between nodes own nothing. The destructor
// calls RemoveFromUserObjectsList(this) on every node in its two lists of users. It does not remove the node from its
// owner or from its original owner's list: remove it there before you delete it.
//
// Threads: one thread at a time uses a node; nodes have no lock. A job calls only HandleCommand, SetTimeTakenForGTP and
// Name of its node, and removes its own record from the list of held users.
//
// Serialize of a derived class stores its own class record first, then the base's record, then its fields:
//
//   void Hole::Serialize(CArchive& ar) {
//     ar.SerializeClass(RUNTIME_CLASS(Hole));
//     const UINT schema = ar.GetObjectSchema();  // once, before the base: the base's record replaces it
//     QFObject::Serialize(ar);
//     if (ar.IsStoring()) ar << m_depth; else if (schema > 1) ar >> m_depth;
//   }
//
// A failed load: if the outermost CArchive::ReadObject raises, the archive deletes every object that this call created,
// in order of creation, and the caller gets no object. So a destructor can run although Serialize stopped halfway or
// never ran, and after objects that it points to were deleted. Until the archive is done, a deleted node answers as a
// new QFObject: a destructor may call every operation of QFObject on it, virtual or not, and delete it again. Before it
// uses members of a derived class it calls IsKindOf or DYNAMIC_DOWNCAST. A class with another polymorphic base names
// QFObject first.
//
// Objects of earlier calls still belong to the caller. When the archive is done, no node that an archive of this thread
// knows has a pointer to a deleted one: neither as owner, original owner or match, nor in a list of users. A derived
// class clears its own pointers in RemoveFromUserObjectsList, which a deleted node calls on its users.
#pragma once

#include "share/core/base_object.h"
#include "share/core/core_messages.h"
#include "share/objects/audit_trail.h"
#include "share/objects/callback_helper.h"
#include "share/objects/flagged_error.h"
#include "share/objects/job_enums.h"
#include "share/objects/object_enums.h"
#include "share/objects/pattern_enums.h"
#include "share/objects/ui_object.h"
#include "share/objects/user_objects.h"

class CObList;
class FRPosition;
class GoneObjects;
class NeutralNodes;
class QFDirectionRestriction;  // defined by modules
class QFObjectPatternMgr;
class QFParamHelper;

class KVSHARE_API QFObject : public QFBaseObject {
  DECLARE_SERIAL(QFObject)

 public:
  // A new node has no id, no stamps and no entry in an indexer: see onCreate and GetUiObject.
  QFObject();
  // Deletes the companion, then the pattern manager, then calls DetachFromAllUserObjects.
  ~QFObject() override;

  CString GetClassNameW() override;
  void DumpData(FILE* file) override;
  // Stores or loads the record; share/objects/object_record.cpp describes the layout. Passes the archive's exceptions
  // on. A user that cannot be stored raises; an owner, original owner or pattern manager that cannot be stored becomes
  // null. So does the rest of a chain of owners that is nested too deep for the stack (CArchive::WriteObject). Only the
  // status word reports that (share/objects/storage_status.h): look at it after saving, too.
  void Serialize(CArchive& ar) override;
  void OnPostLoadFromStorageNotify() override;
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override;

  // ---- the slots of every node, in this order

  // The node's error flag, owned by the node; null for a class without one.
  virtual CFlaggedError* GetFlag();
  // Handles a core message, mostly sent to a document. argument is the address of the value that belongs to the message
  // (share/core/core_messages.h). 0 for an unknown message.
  virtual int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra);
  // Call it after you create a node: it enters the node in the active document's indexer
  // (share/objects/object_indexer.h), which gives it an id. Does nothing without an indexer.
  virtual void onCreate();

  // The label.
  virtual CString Name();
  virtual void ChangeName(const CString& name);

  virtual QFObjState GetState();
  // A value outside QFObjState is ignored.
  virtual void SetState(QFObjState state);
  // 1 by default.
  virtual int IsEditable() const;
  // 1 if the node is suppressed or not editable, or if an owner is, up to 4096 levels above. A cycle of owners, which
  // only a damaged file can have, counts as not suppressed.
  virtual int IsSuppressed1() const;
  // 0 below a suppressed owner, where suppressing the node changes nothing; else 1.
  virtual int CanSuppress() const;
  // 1 if the node is editable and not locked.
  virtual int CanEditLabel() const;
  // 1 by default.
  virtual int CanHide() const;
  // The status word ANDed with bits. The value 2 is the display flag; modules use the other bits.
  virtual int GetNodeStatus(unsigned short bits) const;
  // Nonzero on: sets the bits. Zero on: nonzero bits clear the whole word, and bits 0 keeps only its lowest bit. Kept
  // for existing modules.
  virtual void SetNodeStatus(unsigned short bits, int on);
  // What the nodes of a list have in common. "No children" for a null or empty list. Compares each child with the
  // first one, up to the first element that is null or no node; a difference gives "mixed".
  virtual e_QFSelSetDisplayState GetChildrenDisplayState(CObList* children);
  virtual e_QFSelSetSuppressState GetChildrenSuppressedState(CObList* children);
  virtual int IsLocked() const;
  // 0 if the owner is locked; else 1. Asks only the owner, not the owners above it.
  virtual int CanLock() const;
  virtual e_QFSelSetLockState GetChildrenLockedState(CObList* children);
  // 0 by default.
  virtual int CanHideDisplay();

  // Copies state and label to the target; nothing for null.
  virtual void AssociateParameters(QFObject* target);
  // NO_MATCH by default.
  virtual COMPARE_RESULT Compare(QFObject* other);
  // IsDragOverValid returns 1 if the object may be dropped on this node; DoPaste drops it. For a pattern manager, both
  // call themselves with its base object. The defaults refuse every other object, and a manager of this node.
  virtual int IsDragOverValid(QFObject* object, unsigned long flags);
  virtual int DoPaste(QFObject* object, QFObject* target, unsigned long flags);
  // The node's parameters that shared code may read; owned by the node, null for a class without them.
  virtual const QFParamHelper* GetParamHelper() const;

  // Removes every occurrence of the object from both lists of users. If it is the original owner, that becomes null.
  // Call it when the object no longer uses this node. 1 if a list held the object.
  virtual int RemoveFromUserObjectsList(QFObject* object);
  // 1 for the original owner and for an object in either list; 0 for null.
  virtual int GetIsUsingThisObject(QFObject* object);

  // 0 by default.
  virtual int GetIsPatternSupported();
  // Sets position to the point of the node that a pattern repeats: 1. Without such a point: 0, position unchanged.
  virtual int GetRefPointForPattern(FRPosition& position);
  // The pattern manager's result; 1 without a pattern.
  virtual int RebuildPattern();
  // Nonzero activeOnly: the number of active instances of the node's pattern, 1 without an active pattern. Zero: the
  // instances of the pattern manager itself as a node, so normally 1. Kept for existing modules.
  virtual int GetNumPattInstances(int activeOnly);
  // 1 for a pattern manager.
  virtual int GetIsPatternObject();
  // The pattern manager, owned by the node; null without a pattern.
  virtual QFObjectPatternMgr* GetPatternMgr();
  // The restriction of a pattern's directions: the owner's, up to 4096 levels above; null for no restriction.
  virtual QFDirectionRestriction* GetPatternDirectionRestriction();
  virtual QFDirectionRestriction* GetLinearPatternDirectionRestriction();
  // Sets type to the pattern type to which restriction number index limits the node: 1. Otherwise 0 and type none.
  virtual int GetPatternRestriction(int index, QFeObjectPatternType& type);

  // Copies state, status word, display colour, compare result, registered name and pattern of the source: 1. 0 for
  // null.
  virtual int CopyParameters(QFObject* source);
  // A new node like this one, owned by the caller; null for a class that cannot be cloned.
  virtual QFObject* Clone();

  // Runs the command with number context, or handles the end of a job (share/objects/job_enums.h). The result becomes
  // the job's status. It may replace param, which is then the job's parameter. Called on the job's thread, or on the
  // thread that QFeCommandType names.
  virtual QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*& param);
  // As IsLocked without side effects, for classes whose IsLocked has some.
  virtual int IsLockedCheckOnly() const;

 protected:
  // Does nothing by default; the library does not call it.
  virtual void iCreate();

 public:
  // The helper of the node's family with the function that builds companions; null for no companions.
  virtual QFCallbackHelper* GetCallbackHelper();

  // Clears id and label: 1. An override may refuse: 0.
  virtual int Invalidate();
  // With another node: merges that node into this one by other->Merge(null). With null: invalidates this node; IsMerged
  // then returns 1 if Invalidate did. Returns 1 if the merged node was invalidated.
  virtual int Merge(QFObject* other);
  virtual int IsMerged();
  virtual void SetMergeInProgress(int flag);
  virtual int IsMergeInProgress();

  // Recycle sets state DELETED and makes the owner the original owner, so that the node is in the owner's list of
  // users. Restore sets state ACTIVE, whatever it was, and clears the original owner. Always 1.
  virtual int Recycle();
  virtual int Restore();
  virtual int IsRecycled();
  // Set state LOCKED, and ACTIVE whatever it was before. Always 1.
  virtual int LockThis();
  virtual int UnLockThis();

  // 0x00BBGGRR; 0xFFFFFFFF for no colour. Only the low 32 bits are used. Always 1.
  virtual int SetDisplayColor(unsigned long color);
  virtual unsigned long GetDisplayColor() const;

  // The default ignores the text. A class with a description overrides both.
  virtual void SetNodeDesc(CString text);
  virtual CString GetNodeDesc() const;
  // The name under which the indexer lists the node; empty for the name of its run-time class.
  virtual CString GetRegisterNodeName();

  // Print for support staff; nothing for a null file. The default of the first prints nothing.
  virtual void DumpKestrovaObjects(FILE* file);
  virtual void DumpUserObjs(FILE* file);

  // The duration of the last measured job, as text.
  virtual void SetTimeTakenForGTP(CString text);
  virtual CString GetTimeTakenForGTP();

  // Both 0 by default.
  virtual int IsRebuildReqOnStockChange();
  virtual int IsDirtyOnStockChange();
  // Clears the error flag and calls ResetFlagForStockChange of the companion, which is built if necessary.
  virtual void ResetFlagForStockChange();

  // ---- identity and stamps

  // The id within the document. A node without one gets the next from the main module (GetNextObjectIdCB) and keeps it.
  // 0 if the main module gives none; the next call tries again.
  unsigned GetObjectId();
  // "CLASS-ID", with the class name of GetClassNameW.
  CString GetObjNamePlusObjID();
  // Sets the two stamps of the last change to the present time and user (share/objects/audit_trail.h). The environment
  // must exist.
  void UpdateLastModified();
  CString GetCreatedBy() const { return m_Trail.Get().createdBy; }
  CString GetDateCreated() const { return m_Trail.Get().dateCreated; }
  CString GetLastModified() const { return m_Trail.Get().lastModified; }
  CString GetLastModifiedBy() const { return m_Trail.Get().lastModifiedBy; }
  // The class name under which the indexer lists the id; empty if it does not.
  const CString& GetRegNameForAutoIndexing() const { return m_RegName; }
  void SetRegNameForAutoIndexing(const CString& name) { m_RegName = name; }

  // The companion, owned by the node; null if no module builds one. While there is none, each call tries to build it
  // and sets the stamps of the last change, and the stamps of the creation where they are empty.
  ui_QFObject* GetUiObject();

  // ---- links to other nodes

  QFObject* GetOwner() const { return m_pOwner; }
  void SetOwner(QFObject* owner) { m_pOwner = owner; }
  // The owner at the time of recycling. Setting it removes the node from the previous one's lists of users and appends
  // it to the new one's. Null only removes.
  QFObject* GetOriginalOwner() const { return m_pOriginalOwner; }
  void SetOriginalOwner(QFObject* owner);
  // The matching node of a comparison, its id when it was set, and the result. The pointer is not updated when that
  // node is deleted.
  QFObject* GetMatch() const { return m_pMatch; }
  void SetMatch(QFObject* match);
  unsigned GetMatchId() const { return m_MatchId; }
  COMPARE_RESULT GetCompareResult() const { return m_CompareRes; }
  void SetCompareResult(COMPARE_RESULT result) { m_CompareRes = result; }

  // Appends the object to the list of users, or with nonzero held to the list of held users, which is never stored. The
  // object is then in that list once and not in the other. 1; 0 for null or without memory.
  int AddToUserObjectsList(QFObject* object, int held);
  // These use only the stored list. GetAllUserObjects appends to the given list; nothing for null.
  int GetCountOfUserObjects() const { return m_UserObjects.GetCount(); }
  void GetAllUserObjects(CObList* objects) const;
  // The same elements without a copy, valid until the list changes. Empty after a removal from the middle of the list:
  // use GetAllUserObjects then.
  std::span<CObject* const> UserObjectsAsTheyLie() const { return m_UserObjects.Elements(); }
  // Empties both lists and calls RemoveFromUserObjectsList(this) on each node in them, which deletes a job record.
  void DetachFromAllUserObjects();
  // Keeps the first occurrence of each object in the stored list.
  void RemoveDuplicatesFromUserObjects();

  // ---- pattern

  // Creates the pattern manager if there is none: 1. 0 for a class without patterns.
  int CreatePattern();
  // Deletes the pattern manager, if there is one. Always 1.
  int DestroyPattern();
  int GetIsPatterned() const { return m_pPatternMngr != nullptr; }
  // Copies the other manager's pattern: 1. Null deletes the node's own pattern manager: 1. 0 if the node cannot have a
  // pattern.
  int SetPatternMgr(QFObjectPatternMgr* source);

  int IsSuppressed() const { return IsSuppressed1(); }

  // Requests a job that runs command number context of this node. param is null or a QFThreadDataLink of the caller
  // (share/jobs/job_link.h). Returns the id of the job's thread, 1 if the command ran during this call, or 0 without a
  // job manager or if it refuses the job.
  int RunCommand(unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);

  // Does nothing; kept for existing modules that call it.
  static void FindDangling(int);

 protected:
  // Empties both lists of users without a call.
  void ForgetUsers() noexcept;
  // Sets all four stamps, for a class that imports a node.
  void SetStamps(const AuditTrail::Texts& stamps) { m_Trail.Change() = stamps; }

  CString m_Label;
  CString m_NodeDesc;

 private:
  void StoreRecord(CArchive& ar);
  void LoadRecord(CArchive& ar, unsigned version);
  void LoadOriginalOwner(CArchive& ar);
  void LoadPattern(CArchive& ar);

  static QFObject* RemoveFirstUser(UserObjects& list, bool& held);
  // For the clean-up of a failed load (neutral_nodes.cpp).
  friend class NeutralNodes;
  void LeaveOriginalOwner() noexcept;
  void Forget(const GoneObjects& gone) noexcept;

  // Removes a job's record from the lists; any thread, under the lock of share/objects/job_lock.h.
  friend class QFThreadData;
  void ForgetJobRecord(const QFObject* record);

  // Ordered for size, not as in the record.
  AuditTrail m_Trail;
  CString m_RegName;
  CString m_TimeTakenForGTP;
  UserObjects m_UserObjects;
  UserObjects m_HeldUserObjects;
  ui_QFObject* m_pUiObject = nullptr;  // owned
  QFObject* m_pOwner = nullptr;
  QFObject* m_pOriginalOwner = nullptr;
  QFObject* m_pMatch = nullptr;
  QFObjectPatternMgr* m_pPatternMngr = nullptr;  // owned
  DWORD m_ObjectId = 0;
  DWORD m_MatchId = 0;
  DWORD m_DisplayColor = 0xFFFFFFFF;
  QFObjState m_iState = ACTIVE;
  COMPARE_RESULT m_CompareRes = NO_MATCH;
  WORD m_NodeStatus = 0;
  bool m_bMerged : 1 = false;
  bool m_bMergeInProgress : 1 = false;
  bool m_bIsPatternOfLoaded : 1 = false;  // this pattern manager belongs to a loaded node
};
