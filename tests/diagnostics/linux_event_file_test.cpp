// The file of events with many writers, killed writers, a full disk, and the rights of its files.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "companions/analytics/event_file.h"
#include "tests/child_process.h"
#include "tests/registry_calls.h"

namespace {

constexpr int kProcesses = 8, kThreads = 32, kEvents = 20;

class EventFiles : public testing::Test {
 protected:
  std::set<std::string> Lines() const {
    std::string text;
    EXPECT_EQ(file_.Read(text), ERROR_SUCCESS);
    EXPECT_TRUE(text.empty() || text.back() == '\n');
    std::set<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      EXPECT_TRUE(lines.insert(line).second) << line;
      EXPECT_EQ(line.back(), '.') << line;
    }
    return lines;
  }
  static std::string Line(int process, int thread, int event) {
    return std::to_string((process * kThreads + thread) * kEvents + event) + std::string(100, 'x') + '.';
  }

  const kvtest::ScratchFolder folder_;
  const SharedLines file_{folder_.Path().u16string() + u"/", u"events", 8 << 20};
};

// Writers note each acknowledged line. All processes but two are killed at some moment.
TEST_F(EventFiles, KeepEveryLineOfManyWritersThatWasAcknowledged) {
  const std::string acknowledged = (folder_.Path() / "acknowledged").string();
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(kvtest::InChild([&] {
      const int out = open((acknowledged + std::to_string(process)).c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
      std::vector<std::thread> threads;
      for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
          for (int event = 0; event < kEvents; ++event) {
            const std::string line = Line(process, thread, event);
            if (file_.Append(line) != ERROR_SUCCESS) continue;
            const std::string mark = line + '\n';
            if (write(out, mark.data(), mark.size()) < 0) return;
          }
        });
      for (std::thread& thread : threads) thread.join();
      return true;
    }));
  }
  std::mt19937 random(kvtest::PrintedSeed());
  for (int process = 2; process < kProcesses; ++process) {
    usleep(random() % 5000);
    kill(children[std::size_t(process)], SIGKILL);
  }
  for (const pid_t child : children) kvtest::ExitCode(child);
  const std::set<std::string> lines = Lines();
  std::size_t count = 0;
  for (int process = 0; process < kProcesses; ++process) {
    const std::string marked = acknowledged + std::to_string(process);
    std::istringstream in(std::filesystem::exists(marked) ? kvtest::ReadFile(marked) : "");
    for (std::string line; std::getline(in, line) && !in.eof(); ++count) EXPECT_TRUE(lines.contains(line)) << line;
  }
  EXPECT_GE(count, std::size_t(kThreads));
}

TEST_F(EventFiles, FullDiskRefusesTheLineAndKeepsTheOthers) {
  EXPECT_EQ(file_.Append(Line(0, 0, 0)), ERROR_SUCCESS);
  EXPECT_TRUE(kvtest::IsTrueInChild([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit most = {150, 150};
    return setrlimit(RLIMIT_FSIZE, &most) == 0 && file_.Append(Line(0, 0, 1)) != ERROR_SUCCESS;
  }));
  EXPECT_EQ(file_.Append(Line(0, 0, 2)), ERROR_SUCCESS);
  EXPECT_EQ(Lines(), (std::set{Line(0, 0, 0), Line(0, 0, 2)}));
}

TEST_F(EventFiles, OnlyTheUserCanReadThemAndNoLinkIsFollowed) {
  const auto at = [&](const char* name) { return (folder_.Path() / name).string(); };
  EXPECT_EQ(file_.Append("x."), ERROR_SUCCESS);
  struct stat facts = {};
  for (const char* name : {"events.jsonl", "events.lock"}) {
    ASSERT_EQ(stat(at(name).c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600U) << name;
  }
  std::filesystem::rename(at("events.jsonl"), at("other"));
  std::filesystem::create_symlink("other", at("events.jsonl"));
  EXPECT_NE(file_.Append("y."), ERROR_SUCCESS);
  EXPECT_EQ(kvtest::ReadFile(at("other")), "x.\n");
}

}  // namespace
