// kestrova job run as somebody sees it who sits in front of it: the lines on a terminal, and Ctrl-C.
#include <gmock/gmock.h>
#include <pty.h>

#include <array>
#include <csignal>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/child_process.h"
#include "tests/host/run_command.h"

namespace {

using testing::ElementsAre;

// What a terminal shows after the bytes: lines, a cursor, and the few escapes that a list of lines needs.
class Screen {
 public:
  void Take(const std::string& bytes) {
    for (const char c : bytes) Take(c);
  }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  void Take(char c) {
    if (!escape_.empty()) {
      escape_ += c;
      if (escape_.size() > 2 && std::isalpha(static_cast<unsigned char>(c))) Obey(std::exchange(escape_, {}));
    } else if (c == '\x1b') {
      escape_ = c;
    } else if (c == '\r') {
      column_ = 0;
    } else if (c == '\n') {
      if (++row_ >= lines_.size()) lines_.emplace_back();
    } else {
      std::string& line = lines_[row_];
      line.resize(std::max(line.size(), column_ + 1), ' ');
      line[column_++] = c;
    }
  }
  void Obey(const std::string& escape) {
    if (escape == "\x1b[K") {
      lines_[row_].resize(column_);
    } else if (escape == "\x1b[J") {
      lines_.resize(row_ + 1);
      lines_[row_].resize(column_);
    } else if (escape.back() == 'A') {
      row_ -= std::stoul(escape.substr(2));
    } else {
      EXPECT_TRUE(escape == "\x1b[?7l" || escape == "\x1b[?7h") << "unknown: " << escape.substr(1);
    }
  }

  std::vector<std::string> lines_ = {""};
  std::size_t row_ = 0, column_ = 0;
  std::string escape_;
};

// What a child process does: it becomes the command, with the streams that it has.
[[noreturn]] void Become(std::vector<std::string> words) {
  words.insert(words.begin(), KV_BIN_DIR "/kestrova");
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

class JobTerminal : public testing::Test {
 protected:
  // A document with so many nodes.
  std::string Document(const char* nodes) {
    const std::string file = (folder_.Path() / "a.kvdoc").string();
    EXPECT_EQ(kvtest::RunCommand({"document", "new", file, "--nodes", nodes}).exit_code, 0);
    return file;
  }
  const kvtest::ScratchFolder folder_;
};

TEST_F(JobTerminal, ShowsALineAJobAndThenTheTable) {
  const std::string file = Document("8");
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) Become({"job", "run", file, "--jobs", "2"});
  Screen screen;
  std::string bytes;
  std::array<char, 4096> block;
  for (ssize_t got; (got = read(terminal, block.data(), block.size())) > 0;)
    bytes.append(block.data(), std::size_t(got));
  close(terminal);
  EXPECT_EQ(kvtest::ExitCode(child), 0) << bytes;
  // Each drawing ends with the escape that lets long lines wrap again.
  const std::regex line(R"( *\d+% (Rough|Contour) Mill [12]  (offsetting|fitting arcs|done|)  \d+\.\d s)");
  const std::string end = "\x1b[?7h";
  std::size_t most = 0;
  for (std::size_t at; (at = bytes.find(end)) != std::string::npos; bytes.erase(0, at + end.size())) {
    screen.Take(bytes.substr(0, at));
    const auto& lines = screen.Lines();
    EXPECT_EQ(lines.back(), "");
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_TRUE(std::regex_match(lines[i], line)) << lines[i];
    most = std::max(most, lines.size() - 1);
  }
  EXPECT_EQ(most, 2u) << "two jobs at a time";
  screen.Take(bytes);
  EXPECT_THAT(screen.Lines(), ElementsAre(testing::StartsWith("Name "), testing::HasSubstr(" 1 done "),
                                          testing::HasSubstr(" 1 done "), ""));
}

TEST_F(JobTerminal, CtrlCEndsTheJobsAndTheTableSaysSo) {
  const std::string file = Document("400");
  const std::string out = (folder_.Path() / "out").string();
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
  std::array<char, 4096> block;
  for (ssize_t got; (got = read(errors[0], block.data(), block.size())) > 0;) {
    const bool before = said.find('\n') == std::string::npos;
    said.append(block.data(), std::size_t(got));
    if (before && said.find('\n') != std::string::npos) kill(child, SIGINT);  // a job runs
  }
  close(errors[0]);
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
