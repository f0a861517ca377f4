// How QFObject::RunCommand reaches the job manager, which is in a room above this one. The manager sets itself when it
// is built; until then a node runs no command.
#pragma once

#include "share/objects/job_enums.h"

class QFObject;

class CommandRunner {
 public:
  // Arguments and result of QFThreadBaseMgr::RunCommand.
  virtual int RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type,
                         QFeThreadEndType endType) = 0;

 protected:
  ~CommandRunner() = default;
};

// The object stays the caller's and lives to the end of the process. Any thread may call.
void SetCommandRunner(CommandRunner* runner);
