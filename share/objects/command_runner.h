// CommandRunner, the interface through which QFObject::RunCommand calls the job manager of share/jobs. The manager's
// constructor sets it; before that, QFObject::RunCommand returns 0.
#pragma once

#include "share/objects/job_enums.h"

class QFObject;

class CommandRunner {
 public:
  // The same arguments and result as QFThreadBaseMgr::RunCommand.
  virtual int RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type,
                         QFeThreadEndType endType) = 0;

 protected:
  ~CommandRunner() = default;
};

// The caller owns the object, which must exist until the process ends. Any thread may call.
void SetCommandRunner(CommandRunner* runner);
