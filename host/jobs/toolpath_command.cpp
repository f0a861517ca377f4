#include "host/jobs/toolpath_command.h"

#include <stdexcept>

#include "host/document/operation_node.h"
#include "host/jobs/job_queue.h"
#include "share/core/document_callbacks.h"

namespace kestrova {
namespace {

constexpr struct {
  const char* name;
  unsigned context;
} kNames[] = {
    {"generate", ToolpathCommand::kGenerate},
    {"recalculate", ToolpathCommand::kRecalculate},
    {"fail", ToolpathCommand::kFail},
    {"crash", ToolpathCommand::kCrash},
};

constexpr double kFineTolerance = 2e-7;  // of a recalculation, in metres

}  // namespace

unsigned ToolpathCommand::ContextOf(const std::string& name) {
  for (const auto& known : kNames)
    if (name == known.name) return known.context;
  return 0;
}

QFeThreadStatus ToolpathCommand::Handle(QFeCommandType type, unsigned context, HostOperation& operation) {
  switch (type) {
    case eCommandRun: return Compute(context, operation);
    case eCommandTerminated: stop_ = true; return eThreadTerminated;
    case eCommandChildDone: return eThreadDone;
  }
  return eThreadNotHandled;
}

QFeThreadStatus ToolpathCommand::Compute(unsigned context, const HostOperation& operation) {
  ToolpathTask task = ToolpathTaskOf(operation);
  if (context == kRecalculate) task.tolerance = kFineTolerance;
  if (context == kLink) task.depth = 0;  // one level
  const bool half = context == kFail || context == kCrash;
  bool cancelled = false;
  ComputeToolpath(task, [&](int percent, const char* step) {
    queue_.SetProgress(percent, context == kLink ? "linking" : step);
    cancelled = stop_ || IsUserJobCancelled();
    return !cancelled && !(half && percent >= 50);
  });
  if (cancelled) return eThreadTerminated;  // the queue may not have terminated it yet
  if (context == kCrash) throw std::runtime_error("the command crashed halfway");
  return context == kFail ? eThreadNotStarted : eThreadDone;
}

}  // namespace kestrova
