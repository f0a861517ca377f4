// Crashes: the cost of guards, of the first one with its helper, and the time from a fault to the end of the process
// with report and dump. The peer of a guard is the registry's read of its four settings; a crash has none.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "bench/ratio.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/exception_handler.h"
#include "share/settings/settings_key.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

void ReadSettings() {
  QFSettingsKey key(_T("Debug"), kProductDebugKey);
  for (LPCTSTR name : {_T("ExcpRpt"), _T("ExcpDmp"), _T("ExcpMiniDumpType")}) key.AddValue(name, 0);
  key.AddValue(_T("ExcpPath"), CString());
  key.RestoreValuesFromRegistry();
}

// Milliseconds from the fault to the end, with this much memory in use.
double TimeOfCrash(const fs::path& folder, int report, int dump, std::size_t megabytes) {
  int ready[2];
  if (pipe(ready) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGSEGV, SIG_DFL);
    QFExceptionHandler guard(report, dump);
    guard.SetFilePath(ProductPathFromSystem(folder.string()).c_str());
    std::vector<char> memory(megabytes << 20, 'x');
    kvbench::Keep(memory);
    usleep(50'000);  // the helper is ready
    const Clock::time_point now = Clock::now();
    if (write(ready[1], &now, sizeof now) != sizeof now) _exit(1);
    raise(SIGSEGV);
  }
  Clock::time_point start;
  if (read(ready[0], &start, sizeof start) != sizeof start) return 0;
  waitpid(child, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
  return Milliseconds(start);
}

void PrintMedian(const char* what, const fs::path& folder, int report, int dump, std::size_t megabytes) {
  std::vector<double> times;
  for (int i = 0; i < 5; ++i) times.push_back(TimeOfCrash(folder, report, dump, megabytes));
  std::sort(times.begin(), times.end());
  std::printf("%s: %.1f ms (%.1f to %.1f)\n", what, times[2], times.front(), times.back());
}

}  // namespace

int main() {
  char name[] = "/tmp/kvcrash-XXXXXX";
  const char* const folder = mkdtemp(name);
  if (!folder) return 1;
  setenv("KV_REGISTRY", folder, 1);
  setenv("TEMP", folder, 1);
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      [] { return 1; }, nullptr, nullptr, nullptr, nullptr, nullptr);
  ReadSettings();  // opens the registry
  {
    kvbench::Table table("Crashes");
    table.Pair(
        {.name = "guard that writes nothing", .size = 1, .peer = "reading its settings", .goal = 2.0},
        [] { const QFExceptionHandler guard(0, 0); }, ReadSettings);
    const Clock::time_point start = Clock::now();
    const QFExceptionHandler first(1, 1);
    std::printf("first guard that may write, with the start of the helper: %.2f ms\n", Milliseconds(start));
    table.Pair(
        {.name = "next guard that may write", .size = 1, .peer = "reading its settings", .goal = 3.0},
        [] { const QFExceptionHandler guard(1, 1); }, ReadSettings);
  }
  PrintMedian("no file", folder, 0, 0, 0);
  PrintMedian("report", folder, 1, 0, 0);
  PrintMedian("dump", folder, 0, 1, 0);
  PrintMedian("report and dump", folder, 1, 1, 0);
  PrintMedian("report and dump, 2 GiB of heap", folder, 1, 1, 2048);
  fs::remove_all(folder);
}
