// kestrova job: computes the operations of a document as background jobs.
#include <CLI/CLI.hpp>

#include <chrono>
#include <deque>
#include <nlohmann/json.hpp>
#include <optional>

#include "host/commands/commands.h"
#include "host/document/active_document.h"
#include "host/document/document_loader.h"
#include "host/document/operation_node.h"
#include "host/jobs/job_queue.h"
#include "host/jobs/job_screen.h"
#include "host/jobs/toolpath_command.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/console.h"
#include "platform/threads.h"
#include "share/core/document_callbacks.h"

namespace kestrova {
namespace {

constexpr char kRunHelp[] = R"(
Computes a toolpath for each operation of the document that is neither suppressed nor recycled, as background jobs. At
most N jobs run at a time; the default is the application's setting ThreadNum. Shows a line per running job, and a table
at the end. Ctrl-C cancels: running jobs stop at their next step, waiting jobs do not start; a second Ctrl-C ends the
process. The document stays as it is. The exit code is 1 unless all jobs are done, and 3 if the document cannot be read.

If the setting ThreadMulti is 0, the jobs run one after another on the main thread, and --parents is refused.

  kestrova job run part.kvdoc
  kestrova job run part.kvdoc --jobs 4 --parents
  kestrova job run part.kvdoc --command crash --json
  kestrova job run part.kvdoc --cancel-after 60000
)";

constexpr DWORD kPollInterval_ms = 40;

struct Options {
  std::string file;
  std::string command = "generate";
  int jobs = 0;  // 0: the setting ThreadNum
  bool parents = false;
  std::optional<int> cancel_after_ms;
  bool json = false;

  std::optional<std::chrono::milliseconds> CancelAfter() const {
    return cancel_after_ms ? std::optional(std::chrono::milliseconds(*cancel_after_ms)) : std::nullopt;
  }
};

BOOL OnControl(DWORD event) { return event == CTRL_C_EVENT && !CancelUserJob(); }

// Ctrl-C cancels the user's jobs while this object lives.
class ControlScope {
 public:
  ControlScope() { SetConsoleCtrlHandler(OnControl, TRUE); }
  ~ControlScope() { SetConsoleCtrlHandler(OnControl, FALSE); }
  ControlScope(const ControlScope&) = delete;
  ControlScope& operator=(const ControlScope&) = delete;
};

void RequestJobs(const HostDocument& document, JobQueue& queue, const Options& options,
                 std::deque<ToolpathCommand>& commands) {
  const auto parentEnd = options.parents ? eThreadEndWaitForChild : QFeThreadEndType(0);
  document.Walk([&](HostNode& node, int) {
    auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node);
    if (!operation || operation->IsSuppressed() || operation->IsRecycled()) return;
    const unsigned context = ToolpathCommand::ContextOf(options.command);
    queue.Request(*operation, context, commands.emplace_back(queue, *operation), QFeThreadType(0), parentEnd);
    if (options.parents)
      queue.Request(*operation, ToolpathCommand::kLink, commands.emplace_back(queue, *operation), eThreadTypeChild,
                    QFeThreadEndType(0));
  });
}

void RunJobs(const Options& options) {
  StartMainModule();
  DocumentLoader loader(options.file, DocumentLoader::Mode::kStrict);
  const auto document = loader.Load();
  const ActiveDocument active(document.get());
  const UserJobScope user(options.CancelAfter());
  const ControlScope control;
  std::deque<ToolpathCommand> commands;
  JobQueue queue(options.jobs);
  if (options.parents && !queue.RunsThreads())  // nothing would end a parent that waits for its child
    throw Failure("--parents needs jobs on threads of their own; set it: kestrova settings set ThreadMulti 1");
  JobScreen screen;
  RequestJobs(*document, queue, options, commands);
  bool cancelled = false;
  while (!queue.IsIdle()) {
    screen.Show(queue.Jobs());
    Sleep(kPollInterval_ms);
    if (!cancelled && IsUserJobCancelled()) {
      cancelled = true;
      queue.TerminateAllThreadsInThisDoc(document.get());
    }
    queue.StartNext();
  }
  queue.AwaitThreads();
  const std::vector<JobView> jobs = queue.Jobs();
  screen.Finish(jobs);
  if (options.json) {
    PrintJson({{"file", options.file}, {"command", options.command}, {"jobs", JobsJson(jobs)}});
  } else {
    PrintLines(JobsTable(jobs));
  }
  if (!AreAllDone(jobs)) throw FoundErrors();
}

}  // namespace

void AddJobCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  CLI::App* run = group.add_subcommand("run", "Run a command on the operations of a document");
  run->footer(kRunHelp);
  run->add_option("FILE", options.file, "The document's file")->required();
  run->add_option("--command", options.command, "The command to run; default generate")
      ->check(CLI::IsMember({"generate", "recalculate", "fail", "crash"}));
  run->add_option("--jobs", options.jobs, "The largest number of jobs at a time")->check(CLI::Range(1, 1000));
  run->add_flag("--parents", options.parents, "Let each job wait for a child that links its moves");
  run->add_option("--cancel-after", options.cancel_after_ms, "Cancel the jobs after this time in milliseconds")
      ->check(CLI::Range(0, 3'600'000));
  run->add_flag("--json", options.json, "The table as JSON");
  run->callback([] { RunJobs(options); });
}

}  // namespace kestrova
