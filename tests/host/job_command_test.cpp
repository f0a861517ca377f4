// kestrova job: the queue, the toolpaths, and the command as a user runs it, also on a terminal and with Ctrl-C.
#include <gmock/gmock.h>
#include <pty.h>

#include <array>
#include <cmath>
#include <csignal>
#include <limits>
#include <regex>

#include "host/document/operation_node.h"
#include "host/jobs/job_queue.h"
#include "host/jobs/job_screen.h"
#include "host/jobs/toolpath.h"
#include "host/jobs/toolpath_command.h"
#include "tests/child_process.h"
#include "tests/folders.h"
#include "tests/host/document_fixture.h"
#include "tests/host/run_command.h"
#include "tests/no_threads.h"
#include "tests/semaphore.h"

namespace {

using namespace kestrova;

// A command that releases `running` and waits for `go`.
class Waiting : public OperationCommand {
 public:
  Waiting() { SetIdentifierA(this); }
  QFeThreadStatus Handle(QFeCommandType type, unsigned, HostOperation&) override {
    if (type == eCommandChildDone) child_done = true;
    if (type != eCommandRun) return eThreadDone;
    running.release();
    go.acquire();
    return eThreadDone;
  }
  kvtest::Semaphore running{0}, go{0};
  std::atomic<bool> child_done = false;
};

class JobQueueTest : public kvtest::DocumentTest {
 protected:
  std::vector<int> Statuses() {
    std::vector<int> statuses;
    for (const JobView& job : queue_.Jobs()) statuses.push_back(job.status);
    return statuses;
  }
  bool Request(HostOperation& node, Waiting& command, QFeThreadType type = QFeThreadType(0),
               QFeThreadEndType end = QFeThreadEndType(0), unsigned context = 1) {
    return queue_.Request(node, context, command, type, end);
  }
  // Waits until the job has the status.
  void Await(int place, QFeThreadStatus status) {
    while (queue_.Jobs()[std::size_t(place)].status != status) Sleep(1);
  }

  HostOperation& first_ = Add<HostOperation>(nullptr, _T("first"));
  HostOperation& second_ = Add<HostOperation>(nullptr, _T("second"));
  HostOperation& third_ = Add<HostOperation>(nullptr, _T("third"));
  Waiting one_, two_, three_;
  JobQueue queue_{2};
};

TEST_F(JobQueueTest, RunsUpToItsLimitAndTheNextWhenOneEnds) {
  EXPECT_TRUE(Request(first_, one_) && Request(second_, two_) && Request(third_, three_));
  EXPECT_FALSE(Request(third_, three_)) << "a repeat of one that waits";
  EXPECT_THAT(Statuses(), testing::ElementsAre(2, 2, 7));
  one_.running.acquire();
  two_.running.acquire();
  EXPECT_FALSE(three_.running.try_acquire());
  two_.go.release();
  three_.running.acquire();
  EXPECT_THAT(Statuses(), testing::ElementsAre(2, 1, 2));
  one_.go.release();
  three_.go.release();
  queue_.AwaitThreads();
  EXPECT_TRUE(queue_.IsIdle());
}

TEST_F(JobQueueTest, ChildWaitsForItsParentsPart) {
  Request(first_, one_, QFeThreadType(0), eThreadEndWaitForChild);
  Request(first_, two_, eThreadTypeChild, QFeThreadEndType(0), 2);
  EXPECT_THAT(Statuses(), testing::ElementsAre(2, 7));
  one_.go.release();
  Await(0, eThreadWaitingForChild);
  EXPECT_FALSE(one_.child_done);
  queue_.StartNext();
  two_.go.release();
  queue_.AwaitThreads();
  EXPECT_THAT(Statuses(), testing::ElementsAre(1, 1));
  EXPECT_TRUE(one_.child_done);
}

TEST_F(JobQueueTest, EndOfTheDocumentTerminatesWaitingJobs) {
  Request(first_, one_);
  Request(second_, two_);
  Request(third_, three_);
  queue_.TerminateAllThreadsInThisDoc(&document_);
  EXPECT_TRUE(queue_.IsIdle());
  EXPECT_THAT(Statuses(), testing::Each(4));
  for (Waiting* command : {&one_, &two_, &three_}) command->go.release();
  queue_.AwaitThreads();
  queue_.StartNext();
  EXPECT_THAT(Statuses(), testing::Each(4));
  EXPECT_EQ(queue_.Jobs()[2].start, "");
}

TEST_F(JobQueueTest, JobsFailIfNoThreadCanBeCreated) {
  {
    const kvtest::NoThreads none;
    Request(first_, one_, QFeThreadType(0), eThreadEndWaitForChild);
    Request(first_, two_, eThreadTypeChild, QFeThreadEndType(0), 2);
  }
  EXPECT_THAT(Statuses(), testing::ElementsAre(5, 5));
  EXPECT_TRUE(queue_.IsIdle());
}

TEST_F(JobQueueTest, NothingStartsAfterTheUserCancelled) {
  const UserJobScope user;
  CancelUserJob();
  ToolpathCommand command(queue_, first_);
  EXPECT_EQ(command.Handle(eCommandRun, ToolpathCommand::kGenerate, first_), eThreadTerminated);
  Request(first_, one_);
  queue_.SetCanRunSeparateProcess(0);  // jobs run on the asking thread
  Request(second_, two_);
  EXPECT_THAT(Statuses(), testing::ElementsAre(7, 4));
}

bool GoOn(int, const char*) { return true; }

TEST(Toolpath, EndsForAnyNumbers) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN(), kEndless = std::numeric_limits<double>::infinity();
  const HostFeature::Point odd[] = {{0, 0}, {kNone, 1e300}, {-kEndless, 5}, {1, kNone}};
  for (const double number : {kNone, kEndless, -kEndless, 1e300, -1e300}) {
    const Toolpath path = ComputeToolpath({odd, number, number, number, 1e-6}, GoOn);
    EXPECT_EQ(path.contours, 8 * path.levels);
    EXPECT_TRUE(std::isfinite(path.length));
  }
}

TEST(Toolpath, GoesAroundAtEachStepAndLevel) {
  const HostFeature::Point square[] = {{0, 0}, {0.02, 0}, {0.02, 0.01}, {0, 0.01}};
  const Toolpath path = ComputeToolpath({square, 0.012, 0.008, 0.002, 1e-6}, GoOn);
  EXPECT_EQ(std::pair(path.levels, path.contours), std::pair(3, 24));
  // Eight contours per level: the sides, and a circle for the corners.
  double length = 0;
  for (int i = 0; i < 8; ++i) length += 0.06 + 2 * 3.14159265358979 * (0.004 + 0.002 * i);
  EXPECT_NEAR(path.length, 3 * length, 1e-3 * length);
  EXPECT_EQ(path, ComputeToolpath({square, 0.012, 0.008, 0.002, 1e-6}, GoOn));
  int calls = 0;
  EXPECT_EQ(
      ComputeToolpath({square, 0.012, 0.008, 0.002, 1e-6}, [&](int, const char*) { return ++calls < 4; }).contours, 1);
}

TEST(JobTable, HasColumnsAsWideAsTheirTexts) {
  const std::vector<JobView> jobs = {
      {"Bohren \u00D8 5", "Generate", eThreadDone, "done", "01:05:09", "01:05:11", "00:00:02", 100},
      {"Face", "Generate", eThreadNotHandled, "", "01:05:09", "", "", 50, true, 0, "", "no tool"}};
  EXPECT_EQ(JobsTable(jobs),
            "Name        Action    Status    Start     End       Time taken  Reason\n"
            "Bohren \u00D8 5  Generate  1 done    01:05:09  01:05:11  00:00:02\n"
            "Face        Generate  5 failed  01:05:09                        no tool\n");
  EXPECT_EQ(JobScreen::Line({"Face\x1b", "", eThreadRunning, "fitting arcs", "", "", "", 45},
                            std::chrono::milliseconds(1250)),
            " 45% Face   fitting arcs  1.2 s");
}

struct JobCommand : kvtest::CommandTest {
  JobCommand() : CommandTest("job") {}
};

TEST_F(JobCommand, ReportsWhatBecameOfEachJob) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "16"});
  // Options, the setting ThreadMulti, exit code, status of each job.
  const std::tuple<std::string, const char*, int, int> rows[] = {
      {"--jobs 2", "1", 0, 1},        {"--jobs 2", "0", 0, 1},        {"--command recalculate --parents", "1", 0, 1},
      {"--command fail", "1", 1, 5},  {"--command crash", "1", 1, 5}, {"--cancel-after 0", "1", 1, 4},
      {"--cancel-after 0", "0", 1, 4}};
  for (const auto& [options, threads, exit_code, status] : rows) {
    std::vector<std::string> words = kvtest::WordsOf("run --json " + options);
    words.push_back(file);
    kvtest::RunCommand({"settings", "set", "ThreadMulti", threads});
    const auto result = Run(words);
    EXPECT_EQ(result.exit_code, exit_code) << result;
    const auto jobs = nlohmann::json::parse(result.out)["jobs"];
    ASSERT_GE(jobs.size(), 2u);
    for (const auto& job : jobs) {
      EXPECT_EQ(job["status"], status) << options << job;
      EXPECT_EQ(job["timeTaken"].get<std::string>().empty(), exit_code != 0);
    }
  }
  EXPECT_EQ(Run({"run", "none.kvdoc"}).exit_code, 3);
  EXPECT_THAT(Run({"run", file, "--parents"}).err, testing::HasSubstr("kestrova settings set ThreadMulti 1"));
}

// Replaces a child process by the command, with the same streams.
[[noreturn]] void Become(std::vector<std::string> words) {
  words.insert(words.begin(), kvtest::BuiltFile("bin/kestrova").string());
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

// Appends the output of a child until its end, and calls `more` after each block.
void ReadAll(
    int from, std::string& bytes, const std::function<void()>& more = [] {}) {
  std::array<char, 4096> block;
  for (ssize_t got; (got = read(from, block.data(), block.size())) > 0; more())
    bytes.append(block.data(), std::size_t(got));
  close(from);
}

TEST_F(JobCommand, ShowsALineAJobAndThenTheTableOnATerminal) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "8"});
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) Become({"job", "run", file, "--jobs", "2"});
  std::string bytes;
  ReadAll(terminal, bytes);
  EXPECT_EQ(kvtest::ExitCode(child), 0) << bytes;
  // A drawing moves up to its first line, writes a line per job over the old ones, and clears the lines below.
  const std::regex drawing("^(?:\x1b\\[(\\d+)A)?\x1b\\[\\?7l((?:\r\x1b\\[K[^\r]*\r\n)*)\x1b\\[J\x1b\\[\\?7h");
  const std::regex line(
      "\r\x1b\\[K *\\d+% (Rough|Contour) Mill [12]  (offsetting|fitting arcs|done|)  \\d+\\.\\d s\r\n");
  std::ptrdiff_t before = 0, most = 0;
  for (std::smatch match; std::regex_search(bytes, match, drawing); bytes = match.suffix()) {
    EXPECT_EQ(match[1], before > 0 ? std::to_string(before) : "");
    const std::string lines = match[2];
    before = std::distance(std::sregex_iterator(lines.begin(), lines.end(), line), {});
    EXPECT_EQ(before, std::count(lines.begin(), lines.end(), '\n')) << lines;
    most = std::max(most, before);
  }
  EXPECT_EQ(before, 0) << "the lines are wiped before the table";
  EXPECT_EQ(most, 2) << "two jobs at a time";
  EXPECT_THAT(bytes, testing::MatchesRegex("Name [^\n]*\n[^\n]* 1 done [^\n]*\n[^\n]* 1 done [^\n]*\n"));
}

TEST_F(JobCommand, CtrlCTerminatesTheJobs) {
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "400"});
  const std::string out = File("out");
  std::array<int, 2> errors;
  ASSERT_EQ(pipe(errors.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(errors[1], STDERR_FILENO);
    close(errors[0]);
    if (!std::freopen(out.c_str(), "w", stdout)) _exit(127);
    Become({"job", "run", file, "--jobs", "2", "--json"});
  }
  close(errors[1]);
  std::string said;
  bool killed = false;
  ReadAll(errors[0], said, [&] {
    if (!killed && said.find('\n') != std::string::npos) killed = kill(child, SIGINT) == 0;  // a job runs
  });
  EXPECT_EQ(kvtest::ExitCode(child), 1) << said;
  EXPECT_THAT(said, testing::ContainsRegex("^[^\n]+, Generate toolpath: running\n"));
  const auto jobs = nlohmann::json::parse(kvtest::ReadFile(out))["jobs"];
  ASSERT_GT(jobs.size(), 100u);
  EXPECT_TRUE(std::all_of(jobs.begin(), jobs.end(), [](const auto& job) { return job["status"] == 4; }));
  EXPECT_EQ(std::count_if(jobs.begin(), jobs.end(), [](const auto& job) { return job["start"] != ""; }), 2)
      << "the others never begin";
}

}  // namespace
