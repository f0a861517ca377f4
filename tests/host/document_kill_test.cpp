// Saving that is killed: whenever the process ends, the file of the document is the old one or the new one, whole, and
// what was left over is in nobody's way.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <thread>

#include "tests/host/run_command.h"
#include "tests/scratch.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kKills = 100;  // of processes that were still at it
constexpr const char* kNodes = "2000";

// `kestrova document new FILE` over a file that exists, in a process of its own that says nothing.
pid_t StartSaving(const std::string& file, const std::string& seed) {
  const char* const words[] = {"kestrova", "document", "new",    file.c_str(), "--force",
                               "--nodes",  kNodes,     "--seed", seed.c_str(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int output : {1, 2}) posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int failed =
      posix_spawn(&process, KV_BIN_DIR "/kestrova", &actions, nullptr, const_cast<char**>(words), environ);
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(failed, 0);
  return process;
}

// The nodes as JSON. They depend on the seed alone; the time of a save, which differs, does not show in them.
std::string Shown(const std::string& file) {
  const kvtest::RunResult shown = kvtest::RunCommand({"document", "show", file, "--json"});
  EXPECT_EQ(shown.exit_code, 0) << shown.err;
  EXPECT_EQ(shown.err, "");
  return shown.out;
}

}  // namespace

TEST(KilledSaves, LeaveTheOldFileOrTheNewOne) {
  const unsigned seed = std::random_device()();
  std::printf("seed %u\n", seed);
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const kvtest::ScratchFolder folder;
  const std::string file = (folder.Path() / "part.kvdoc").string();
  const auto save = [&](const std::string& number) {
    int status = 0;
    ASSERT_GT(waitpid(StartSaving(file, number), &status, 0), 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
  };
  std::string shown[2];
  save("1");
  shown[1] = Shown(file);
  const auto start = Clock::now();
  save("0");
  double whole = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
  shown[0] = Shown(file);
  ASSERT_NE(shown[0], shown[1]);
  std::string bytes = kvtest::ReadFile(file);

  int killed = 0, replaced = 0, old = 0;
  for (int i = 0; killed < kKills && i < 10 * kKills && !testing::Test::HasFailure(); ++i) {
    const double moment = std::uniform_real_distribution(0.0, 1.1)(random) * whole;
    const pid_t process = StartSaving(file, i % 2 == 0 ? "1" : "0");
    std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(moment));
    kill(process, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    killed += WIFSIGNALED(status);
    SCOPED_TRACE(testing::Message() << "save " << i << ", killed after " << moment << " us of " << whole);
    const std::string after = kvtest::ReadFile(file);
    // How long a save takes depends on what else the machine does: the moments stay around its end.
    whole *= after == bytes ? 1.05 : 0.95;
    if (after == bytes) {
      ++old;
      EXPECT_TRUE(WIFSIGNALED(status)) << "the save ended well, and nothing was saved";
    } else {
      ++replaced;
      EXPECT_EQ(Shown(file), shown[i % 2 == 0 ? 1 : 0]);
    }
    bytes = after;
  }
  const auto entries = std::distance(std::filesystem::directory_iterator(folder.Path()), {});
  std::printf("%d killed; %d kept the old file, %d had the new one; %td left-over files; a save takes %.1f ms\n",
              killed, old, replaced, entries - 1, whole / 1000);
  EXPECT_EQ(killed, kKills);
  EXPECT_GT(old, 0);
  EXPECT_GT(replaced, 0);
  save("0");
  EXPECT_EQ(Shown(file), shown[0]) << "left-over files disturb";
}
