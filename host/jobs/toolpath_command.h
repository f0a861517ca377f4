// What the jobs of `kestrova job run` do with an operation.
#pragma once

#include <atomic>
#include <string>

#include "host/document/operation_command.h"
#include "host/jobs/toolpath.h"

namespace kestrova {

class JobQueue;

class ToolpathCommand : public OperationCommand {
 public:
  // Contexts: also the numbers of the texts in the language library that name the action.
  static constexpr unsigned kGenerate = 31101;
  static constexpr unsigned kRecalculate = 31102;
  static constexpr unsigned kFail = 31103;
  static constexpr unsigned kCrash = 31104;
  static constexpr unsigned kLink = 31105;
  // By the name on the command line; 0 for an unknown one.
  static unsigned ContextOf(const std::string& name);

  // The operation is the target: a new command on it ends one that runs.
  ToolpathCommand(JobQueue& queue, HostOperation& operation) : queue_(queue) { SetIdentifierA(&operation); }

  // Run: generate and recalculate give status 1; fail goes half the way and gives none, which counts as 5; crash goes
  // half the way and throws. Whichever is cancelled stops at its next step, with status 4.
  QFeThreadStatus Handle(QFeCommandType type, unsigned context, HostOperation& operation) override;

 private:
  QFeThreadStatus Compute(unsigned context, const HostOperation& operation);

  JobQueue& queue_;
  std::atomic<bool> stop_ = false;
};

}  // namespace kestrova
