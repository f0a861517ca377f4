// ToolpathCommand, the work of the jobs of `kestrova job run` on an operation.
#pragma once

#include <atomic>
#include <string>

#include "host/document/operation_command.h"
#include "host/jobs/toolpath.h"

namespace kestrova {

class JobQueue;

class ToolpathCommand : public OperationCommand {
 public:
  // Contexts. Also the ids of the action's name in the language library.
  static constexpr unsigned kGenerate = 31101;
  static constexpr unsigned kRecalculate = 31102;
  static constexpr unsigned kFail = 31103;
  static constexpr unsigned kCrash = 31104;
  static constexpr unsigned kLink = 31105;
  // The context of a name on the command line; 0 for an unknown name.
  static unsigned ContextOf(const std::string& name);

  // The operation is the target: a new command on it ends a running one.
  ToolpathCommand(JobQueue& queue, HostOperation& operation) : queue_(queue) { SetIdentifierA(&operation); }

  // eCommandRun: generate and recalculate return status 1; fail returns 0 halfway, which the record changes to 5; crash
  // throws halfway. A cancelled command returns status 4 at its next step.
  QFeThreadStatus Handle(QFeCommandType type, unsigned context, HostOperation& operation) override;

 private:
  QFeThreadStatus Compute(unsigned context, const HostOperation& operation);

  JobQueue& queue_;
  std::atomic<bool> stop_ = false;
};

}  // namespace kestrova
