// What a job does with an operation: the parameter of its request, which the operation hands its calls on to.
#pragma once

#include "share/jobs/job_link.h"
#include "share/objects/job_enums.h"

namespace kestrova {

class HostOperation;

class OperationCommand : public QFThreadDataLink {
 public:
  // As QFObject::HandleCommand. Run and ended on different threads.
  virtual QFeThreadStatus Handle(QFeCommandType type, unsigned context, HostOperation& operation) = 0;
};

}  // namespace kestrova
