// ObjectPatterns, the interface through which a node uses its pattern manager. A higher room implements it and sets it
// once; before that no node has a pattern.
#pragma once

#include "framework/object.h"

class QFObject;
class QFObjectPatternMgr;

// The operations of QFObjectPatternMgr that QFObject calls. The managers and nodes in the arguments are never null.
class ObjectPatterns {
 public:
  // The run-time class of managers, which a reference to a manager in an archive must have.
  virtual const CRuntimeClass* RuntimeClass() const = 0;
  // Casts between a manager and its node base class. ManagerOf needs a node of RuntimeClass().
  virtual QFObject* NodeOf(QFObjectPatternMgr* manager) const = 0;
  virtual QFObjectPatternMgr* ManagerOf(QFObject* node) const = 0;
  // Creates a manager for the base object; the caller owns it. Null on failure.
  virtual QFObjectPatternMgr* Create(QFObject* base) const = 0;
  // A node has its manager from an archive. The manager drops and logs a base object that is not this node, now or when
  // it reads it.
  virtual void NoteLoadedFor(QFObjectPatternMgr* manager, QFObject* node) const = 0;
  virtual int Rebuild(QFObjectPatternMgr* manager) const = 0;
  virtual int CopyParameters(QFObjectPatternMgr* manager, QFObjectPatternMgr* source) const = 0;
  virtual QFObject* GetBaseObjectToPattern(QFObjectPatternMgr* manager) const = 0;
  virtual int GetPatternActive(QFObjectPatternMgr* manager) const = 0;
  virtual int GetNumActiveInstances(QFObjectPatternMgr* manager) const = 0;

 protected:
  ~ObjectPatterns() = default;
};

// Call it before a pattern is created or loaded. The caller owns the object, which must outlive all nodes. Null removes
// it, while no node has a pattern.
KVSHARE_API void SetObjectPatterns(const ObjectPatterns* patterns);
// Null if it was not set.
const ObjectPatterns* GetObjectPatterns();
