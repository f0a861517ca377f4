// Commands that are killed while they save, and commands of many processes that write to the registry at once.
#include <random>
#include <thread>

#include "platform/process.h"
#include "platform/threads.h"
#include "tests/host/run_command.h"

namespace {

using namespace kvtest;

class Processes : public CommandTest {
 protected:
  Processes() : CommandTest("document") {}

  // Starts a save of another document into the file, and kills it after that time. Returns whether it had not ended.
  bool KillSave(const std::string& file, int seed, DWORD milliseconds) const {
    const std::filesystem::path program = BuiltFile("bin/kestrova.exe").make_preferred();
    Text line = L'"' + program.wstring() + L"\" document new --force --nodes 3000 --seed " + std::to_wstring(seed) +
                L" \"" + std::filesystem::path(file).wstring() + L'"';
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process))
        << GetLastError();
    const bool running = WaitForSingleObject(process.hProcess, milliseconds) == WAIT_TIMEOUT;
    TerminateProcess(process.hProcess, 9);
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return running;
  }
};

TEST_F(Processes, KilledSaveLeavesTheOldFileOrTheNewOne) {
  std::mt19937 random(PrintedSeed());
  const std::string file = NewDocument("a.kvdoc", {"--nodes", "3000", "--seed", "0"});
  const auto start = GetTickCount64();
  ASSERT_EQ(Run({"new", file, "--force", "--nodes", "3000", "--seed", "1"}).exit_code, 0);
  const auto whole_ms = DWORD(GetTickCount64() - start);
  int killed = 0;
  for (int i = 2; i < 32; ++i) {
    killed += KillSave(file, i, whole_ms / 2 + random() % (whole_ms / 2 + 1));
    const RunResult verified = Run({"verify", file});
    ASSERT_EQ(verified.exit_code, 0) << verified << "after kill " << i;
  }
  EXPECT_GT(killed, 3);
  // The system may have given the number of a killed process to another one that still runs; its file waits then.
  const auto files = [&] { return std::distance(std::filesystem::directory_iterator(folder_.Path()), {}); };
  for (int tries = 0; tries == 0 || (tries < 50 && files() > 1); ++tries) {
    ASSERT_EQ(Run({"new", file, "--force", "--nodes", "3"}).exit_code, 0) << "a leftover prevents the next save";
    if (files() > 1) ::Sleep(200);
  }
  EXPECT_EQ(files(), 1) << "a file of a killed save stays";
}

TEST_F(Processes, EightWriteToOneKeyAtOnce) {
  std::vector<std::thread> threads;
  for (int p = 0; p < 8; ++p) {
    threads.emplace_back([p] {
      for (int i = 0; i < 8; ++i)
        RunCommand({"reg", "add", "HKCU\\Software\\KvRace\\Sub" + std::to_string(i), "/v", "P" + std::to_string(p),
                    "/d", std::to_string(p * 100 + i), "/f"});
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int p = 0; p < 8; ++p) {
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(RunCommand({"reg", "query", "HKCU\\Software\\KvRace\\Sub" + std::to_string(i), "/v",
                            "P" + std::to_string(p), "--value"}),
                Prints(std::to_string(p * 100 + i) + "\n"));
    }
  }
}

}  // namespace
