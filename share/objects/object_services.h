// What a node needs from folders that stand above this one: its pattern manager and the running of its commands. Each
// of those folders leaves a table here when the library is loaded; until then a node has no pattern and runs no
// command. For the library's own folders, not for modules.
#pragma once

#include "framework/object.h"
#include "share/objects/job_enums.h"

class QFObject;
class QFObjectPatternMgr;

// The operations of QFObjectPatternMgr that QFObject calls. No manager handed in is null.
struct ObjectPatternService {
  // What a reference to a manager has to be in an archive.
  const CRuntimeClass* runtimeClass;
  // The two casts between a manager and the node that it is. To the manager: only for a node of the class above.
  QFObject* (*toNode)(QFObjectPatternMgr* manager);
  QFObjectPatternMgr* (*fromNode)(QFObject* node);
  // A new manager for the base object, owned by the caller.
  QFObjectPatternMgr* (*create)(QFObject* base);
  int (*rebuild)(QFObjectPatternMgr* manager);
  int (*copyParameters)(QFObjectPatternMgr* manager, QFObjectPatternMgr* source);
  QFObject* (*getBaseObjectToPattern)(QFObjectPatternMgr* manager);
  int (*getPatternActive)(QFObjectPatternMgr* manager);
  int (*getNumActiveInstances)(QFObjectPatternMgr* manager);
};

// The signature and the results of the job manager's RunCommand.
using RunCommandService = int (*)(QFObject* object, unsigned context, void* param, QFeThreadType type,
                                  QFeThreadEndType endType);

// To be called by a static initialiser, in any order with others; the table stays the caller's and has to outlive every
// node. Null takes the service away again, when no node has a pattern.
KVSHARE_API void SetObjectPatternService(const ObjectPatternService* service);
KVSHARE_API void SetRunCommandService(RunCommandService service);

// Null if there is none.
const ObjectPatternService* GetObjectPatternService();
RunCommandService GetRunCommandService();
