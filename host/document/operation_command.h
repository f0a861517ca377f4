// OperationCommand, the parameter of a job on an operation: HostOperation::HandleCommand calls it.
#pragma once

#include "share/jobs/job_link.h"
#include "share/objects/job_enums.h"

namespace kestrova {

class HostOperation;

class OperationCommand : public QFThreadDataLink {
 public:
  // As QFObject::HandleCommand. eCommandRun and the other types may come on different threads.
  virtual QFeThreadStatus Handle(QFeCommandType type, unsigned context, HostOperation& operation) = 0;
};

}  // namespace kestrova
