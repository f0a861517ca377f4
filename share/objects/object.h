// QFObject, the node: what every feature, operation and tool of the modules derives from. It has a label, an audit
// trail, an identity within its document, one of four states, an owner, the objects that use it, and on demand a
// pattern and a user-interface companion.
//
// Almost every virtual operation has a default that means "not applicable here"; the library works through these
// defaults and what the modules override. Results are values: 1 yes or done, 0 no, a null pointer for none; nothing
// but Serialize raises, and null arguments are answered, not followed.
//
// Ownership: a node owns its companion and its pattern manager. Pointers from node to node are plain. A node that goes
// tells those that use it (RemoveFromUserObjectsList); it does not tell its owner, nor its original owner: who owns the
// node ends those links first. Nodes have no lock and are used by one thread at a time; a job touches its node only
// through HandleCommand, SetTimeTakenForGTP and Name, and takes its record out of the held list by itself.
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
class QFDirectionRestriction;  // the modules'
class QFObjectPatternMgr;
class QFParamHelper;

class KVSHARE_API QFObject : public QFBaseObject {
  DECLARE_SERIAL(QFObject)

 public:
  // No id, no stamp, no entry in an indexer yet: see onCreate and GetUiObject.
  QFObject();
  // Deletes the companion, then the pattern, then leaves everything that uses this node.
  ~QFObject() override;

  CString GetClassNameW() override;
  void DumpData(FILE* file) override;
  // The record; its layout stands in share/objects/object_record.cpp. Raises what the archive raises.
  void Serialize(CArchive& ar) override;
  void OnPostLoadFromStorageNotify() override;
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override;

  // ---- the slots of every node, in this order

  // The node's error flag, owned by the node; null if its class has none.
  virtual CFlaggedError* GetFlag();
  // Asks the node, a document, something or tells it. The argument is the address of the value that the message's
  // number stands for (share/core/core_messages.h). 0 if the node doesn't know the message.
  virtual int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra);
  // To be called by whoever has made a new node: enters it in the active document's indexer (share/objects/
  // object_indexer.h), which draws its id. Does nothing without an indexer.
  virtual void onCreate();

  virtual CString Name();
  virtual void ChangeName(const CString& name);

  virtual QFObjState GetState();
  // A value outside QFObjState is ignored.
  virtual void SetState(QFObjState state);
  virtual int IsEditable() const;
  // 1 if the node is suppressed, or not editable, or below a suppressed owner. Owners are asked up to 4096 levels
  // above: a ring, which only damaged bytes can make, counts as not suppressed.
  virtual int IsSuppressed1() const;
  // Whether it makes sense to suppress the node: not below a suppressed owner.
  virtual int CanSuppress() const;
  virtual int CanEditLabel() const;
  virtual int CanHide() const;
  // The given bits of the status word. Bit 2 is the display flag, the others belong to the modules.
  virtual int GetNodeStatus(unsigned short bits) const;
  // With on nonzero sets the bits. Otherwise the word is ANDed with the logical negation of bits, not their complement:
  // any bits clear the whole word, and no bits leave its lowest. That is required.
  virtual void SetNodeStatus(unsigned short bits, int on);
  // What the nodes of a list have in common; a null or empty list has no children. The list is read up to its first
  // null. "All" and "none" go by the first child; one that differs gives "mixed".
  virtual e_QFSelSetDisplayState GetChildrenDisplayState(CObList* children);
  virtual e_QFSelSetSuppressState GetChildrenSuppressedState(CObList* children);
  virtual int IsLocked() const;
  virtual int CanLock() const;
  virtual e_QFSelSetLockState GetChildrenLockedState(CObList* children);
  virtual int CanHideDisplay();

  // Copies state and label to the target. Does nothing for null.
  virtual void AssociateParameters(QFObject* target);
  virtual COMPARE_RESULT Compare(QFObject* other);
  // Whether the object may be dropped here, and the drop itself. A pattern manager stands for its base object; a node
  // refuses everything else, and itself.
  virtual int IsDragOverValid(QFObject* object, unsigned long flags);
  virtual int DoPaste(QFObject* object, QFObject* target, unsigned long flags);
  // What shared code may know of the node's parameters; owned by the node, null if its class has none.
  virtual const QFParamHelper* GetParamHelper() const;

  // The object is going, or doesn't use this node any longer: takes it out of both lists, wherever it stands there, and
  // ends its being the original owner. 1 if it stood in a list.
  virtual int RemoveFromUserObjectsList(QFObject* object);
  // 1 for the original owner and for the objects of both lists; 0 for null.
  virtual int GetIsUsingThisObject(QFObject* object);

  virtual int GetIsPatternSupported();
  // The point of the node that a pattern repeats. 0, with the position left alone, if it has none.
  virtual int GetRefPointForPattern(FRPosition& position);
  // 1 if there is no pattern to rebuild.
  virtual int RebuildPattern();
  // How many times the node stands there because of its pattern: 1 without one. With activeOnly 0 it is 1, too, as it
  // is the pattern manager's own number: that is required.
  virtual int GetNumPattInstances(int activeOnly);
  // 1 for a pattern manager.
  virtual int GetIsPatternObject();
  // Owned by the node; null without a pattern.
  virtual QFObjectPatternMgr* GetPatternMgr();
  // What the directions of a pattern may be; the owner's answer, null if nobody restricts them.
  virtual QFDirectionRestriction* GetPatternDirectionRestriction();
  virtual QFDirectionRestriction* GetLinearPatternDirectionRestriction();
  // Which type of pattern number index is restricted to; 0 and type none if it isn't.
  virtual int GetPatternRestriction(int index, QFeObjectPatternType& type);

  // Takes over state, node status, display colour, result of comparison, registered name and pattern. 0 for null.
  virtual int CopyParameters(QFObject* source);
  // A new node like this one, owned by the caller; null if its class can't be cloned.
  virtual QFObject* Clone();

  // Carries out a command, which the context's number names, or hears of a job's end. Its result becomes the job's
  // status; param may be replaced. Called on the job's thread.
  virtual QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*& param);
  // As IsLocked, for classes that do more than check there.
  virtual int IsLockedCheckOnly() const;

 protected:
  virtual void iCreate();

 public:
  // Where the node's family keeps the function that builds companions; null for none.
  virtual QFCallbackHelper* GetCallbackHelper();

  // Makes the node nobody: no id, no label. 1 if done.
  virtual int Invalidate();
  // With an object: that object is merged away, into this one, by other->Merge(null). With null: this node invalidates
  // itself. The result is Invalidate's, and stays readable.
  virtual int Merge(QFObject* other);
  virtual int IsMerged();
  virtual void SetMergeInProgress(int flag);
  virtual int IsMergeInProgress();

  // Into the bin and back, always 1. In the bin the node keeps its owner, has the owner as original owner too, and
  // stands in its list of users. Restore gives state ACTIVE whatever it was.
  virtual int Recycle();
  virtual int Restore();
  virtual int IsRecycled();
  // Always 1. A node has one state: an unlocked one is active, whatever it was before.
  virtual int LockThis();
  virtual int UnLockThis();

  // 0x00BBGGRR; all ones means none. Bits above the low 32 are dropped. Always 1.
  virtual int SetDisplayColor(unsigned long color);
  virtual unsigned long GetDisplayColor() const;

  // Drops the text: that is required. A class that keeps one overrides both.
  virtual void SetNodeDesc(CString text);
  virtual CString GetNodeDesc() const;
  // The name under which the node is indexed if it isn't its run-time class's; else empty.
  virtual CString GetRegisterNodeName();

  // Print for support staff; a null file is left alone. The first prints nothing here.
  virtual void DumpKestrovaObjects(FILE* file);
  virtual void DumpUserObjs(FILE* file);

  // The time that the last measured job took, as text.
  virtual void SetTimeTakenForGTP(CString text);
  virtual CString GetTimeTakenForGTP();

  virtual int IsRebuildReqOnStockChange();
  virtual int IsDirtyOnStockChange();
  // Takes the error flag down and tells the companion, which is built if need be.
  virtual void ResetFlagForStockChange();

  // ---- identity and stamps

  // The id within the document. A node without one asks the main module for the next (GetNextObjectIdCB) and keeps it;
  // 0, to be asked again, if there is none to be had.
  unsigned GetObjectId();
  // "CLASS-ID".
  CString GetObjNamePlusObjID();
  // Stamps the node with "date::time of day" and the user's name, both the environment's.
  void UpdateLastModified();
  CString GetCreatedBy() const { return m_Trail.Get().createdBy; }
  CString GetDateCreated() const { return m_Trail.Get().dateCreated; }
  CString GetLastModified() const { return m_Trail.Get().lastModified; }
  CString GetLastModifiedBy() const { return m_Trail.Get().lastModifiedBy; }
  // The class name under which the indexer holds the id; empty if it doesn't.
  const CString& GetRegNameForAutoIndexing() const { return m_RegName; }
  void SetRegNameForAutoIndexing(const CString& name) { m_RegName = name; }

  // The companion, owned by the node; null if no module makes one. While there is none, each call tries to build it and
  // stamps the node; the first one also fills the stamps of its creation.
  ui_QFObject* GetUiObject();

  // ---- links to other nodes

  QFObject* GetOwner() const { return m_pOwner; }
  void SetOwner(QFObject* owner) { m_pOwner = owner; }
  // The owner at the time of recycling. Setting it takes the node out of the former one's lists of users and puts it
  // at the end of the new one's.
  QFObject* GetOriginalOwner() const { return m_pOriginalOwner; }
  void SetOriginalOwner(QFObject* owner);
  // The counterpart in a comparison, its id at that moment, and the result.
  QFObject* GetMatch() const { return m_pMatch; }
  void SetMatch(QFObject* match);
  unsigned GetMatchId() const { return m_MatchId; }
  COMPARE_RESULT GetCompareResult() const { return m_CompareRes; }
  void SetCompareResult(COMPARE_RESULT result) { m_CompareRes = result; }

  // Puts the object at the end of the list of those that use this node, or with held nonzero of those that do so only
  // for the time being, which is never stored. It then stands in that list once and not in the other. 0 for null or for
  // want of memory, else 1.
  int AddToUserObjectsList(QFObject* object, int held);
  // These see only the list that is stored. GetAllUserObjects appends to the list given.
  int GetCountOfUserObjects() const { return m_UserObjects.GetCount(); }
  void GetAllUserObjects(CObList* objects) const;
  // The same without a copy, until the list changes: nothing if objects have been taken out between others, or there
  // are none.
  std::span<CObject* const> UserObjectsAsTheyLie() const { return m_UserObjects.Elements(); }
  // Empties both lists and tells each object that this node is gone. Job records among them are destroyed by that.
  void DetachFromAllUserObjects();
  // Keeps the first occurrence of each.
  void RemoveDuplicatesFromUserObjects();

  // ---- pattern

  // 1 if there is a pattern manager now; 0 if the class supports none.
  int CreatePattern();
  // Always 1.
  int DestroyPattern();
  int GetIsPatterned() const { return m_pPatternMngr != nullptr; }
  // Copies the other manager's pattern; null destroys the node's own. 0 if the node can't have one.
  int SetPatternMgr(QFObjectPatternMgr* source);

  int IsSuppressed() const { return IsSuppressed1(); }

  // Lets the job manager run command number context of this node. 0 if there is no manager or it refuses; else the
  // job's thread, or 1 if the command has run already.
  int RunCommand(unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);

  // Does nothing; kept for modules that call it.
  static void FindDangling(int);

 protected:
  // All four stamps, for a class that takes a node over from elsewhere.
  void SetStamps(const AuditTrail::Texts& stamps) { m_Trail.Change() = stamps; }

  CString m_Label;
  CString m_NodeDesc;

 private:
  void StoreRecord(CArchive& ar);
  void LoadRecord(CArchive& ar, unsigned version);
  void LoadOriginalOwner(CArchive& ar);
  void LoadPattern(CArchive& ar);

  static QFObject* TakeFirstUser(UserObjects& list, bool& held);
  // Takes a job's record out of the lists, on any thread, under the lock of share/objects/job_lock.h.
  friend class QFThreadData;
  void ForgetJobRecord(const QFObject* record);

  // Not in the order of the record: packed.
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
  bool m_bIsPatternOfLoaded : 1 = false;  // a node that was read owns this one, a pattern manager
};
