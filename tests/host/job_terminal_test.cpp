// kestrova job run on a terminal: the lines of running jobs, and Ctrl-C.
#include <gmock/gmock.h>
#include <pty.h>

#include <array>
#include <csignal>
#include <regex>

#include "tests/child_process.h"
#include "tests/host/run_command.h"

namespace {

// Replaces a child process by the command, with the same streams.
[[noreturn]] void Become(std::vector<std::string> words) {
  words.insert(words.begin(), KV_BIN_DIR "/kestrova");
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

struct JobTerminal : kvtest::CommandTest {
  JobTerminal() : CommandTest("job") {}
};

TEST_F(JobTerminal, ShowsALineAJobAndThenTheTable) {
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

TEST_F(JobTerminal, CtrlCTerminatesTheJobs) {
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
  const auto jobs = nlohmann::json::parse(kvtest::ReadFile(out));
  ASSERT_GT(jobs.size(), 100u);
  std::size_t terminated = 0, begun = 0;
  for (const auto& job : jobs) {
    terminated += job["status"] == 4;
    begun += job["start"] != "";
  }
  EXPECT_EQ(terminated, jobs.size());
  EXPECT_EQ(begun, 2u) << "the others never begin";
}

}  // namespace
