// What a node needs of its pattern manager, which is a node of a room above this one. That room implements the class
// and sets it once; until then no node has a pattern.
#pragma once

#include "framework/object.h"

class QFObject;
class QFObjectPatternMgr;

// The operations of QFObjectPatternMgr that QFObject calls. Managers and nodes passed in are never null.
class ObjectPatterns {
 public:
  // The manager's class: what a reference to a manager in an archive has to be.
  virtual const CRuntimeClass* RuntimeClass() const = 0;
  // Casts between a manager and the node that it is. ManagerOf: only for a node of RuntimeClass().
  virtual QFObject* NodeOf(QFObjectPatternMgr* manager) const = 0;
  virtual QFObjectPatternMgr* ManagerOf(QFObject* node) const = 0;
  // A new manager for the base object, owned by the caller; null if it can't be created.
  virtual QFObjectPatternMgr* Create(QFObject* base) const = 0;
  virtual int Rebuild(QFObjectPatternMgr* manager) const = 0;
  virtual int CopyParameters(QFObjectPatternMgr* manager, QFObjectPatternMgr* source) const = 0;
  virtual QFObject* GetBaseObjectToPattern(QFObjectPatternMgr* manager) const = 0;
  virtual int GetPatternActive(QFObjectPatternMgr* manager) const = 0;
  virtual int GetNumActiveInstances(QFObjectPatternMgr* manager) const = 0;

 protected:
  ~ObjectPatterns() = default;
};

// Set before the first pattern is created or loaded. The object stays the caller's and outlives every node. Null, while
// no node has a pattern, removes it.
KVSHARE_API void SetObjectPatterns(const ObjectPatterns* patterns);
// Null if none is set.
const ObjectPatterns* GetObjectPatterns();
