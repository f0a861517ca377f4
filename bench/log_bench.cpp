// The developer logs compared with the same lines by the C library, and the cost of a usage event.
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "bench/ratio.h"
#include "companions/analytics/analytics.h"
#include "platform/process.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/time_log.h"

namespace {

namespace fs = std::filesystem;

constexpr int kScopes = 1000;

void Switch(int on) {
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kProductDebugKey, kTimeLogSwitch, on);
  KVTimeLog::CheckRegistry();
}

__attribute__((noinline)) void Work(int number) { kvbench::Keep(number); }

void Scopes() {
  for (int i = 0; i < kScopes; ++i) {
    const KVTimeLog log(_T("Rebuild"), KV_LOG_PLAIN, 0);
    Work(i);
  }
}

void EmptyScopes() {
  for (int i = 0; i < kScopes; ++i) Work(i);
}

void PrintedScopes(const std::string& path) {
  for (int i = 0; i < kScopes; ++i) {
    FILE* const file = std::fopen(path.c_str(), "a");
    if (!file) std::abort();
    std::fprintf(file, "%s : %s_Start\n", "Unknown Part", "Rebuild");
    std::fflush(file);
    timespec start = {}, end = {};
    const std::time_t started = std::time(nullptr);
    clock_gettime(CLOCK_BOOTTIME, &start);
    Work(i);
    const std::time_t ended = std::time(nullptr);
    clock_gettime(CLOCK_BOOTTIME, &end);
    std::fprintf(file, "%s_End : %ld mins, %ld secs ; Total in MilliSecs: %ld\n", "Rebuild", (ended - started) / 60,
                 (ended - started) % 60,
                 (end.tv_sec - start.tv_sec) * 1000 + (end.tv_nsec - start.tv_nsec) / 1'000'000);
    std::fclose(file);
  }
}

void BenchOff(kvbench::Table& table) {
  const kvbench::Case row = {.name = "scope, log off", .size = 1, .peer = "empty scope", .operations = kScopes};
  const kvbench::Ratio ratio = table.Pair(row, Scopes, EmptyScopes, 15);
  const double beyond_ns = (ratio.seconds - ratio.peer_seconds) / kScopes * 1e9;
  char text[32];
  std::snprintf(text, sizeof text, "%.2f ns", beyond_ns);
  kvbench::Table::Row({.name = "  beyond the empty scope", .size = 1, .peer = "1 ns", .goal = 1}, text, "1 ns",
                      beyond_ns);
}

void BenchEvents(kvbench::Table& table, const fs::path& folder) {
  IQFAnalytics& analytics = *QFAnalyticsManager::GetInstance().GetMWAnalytics();
  if (!analytics.Initialize(0)) std::abort();
  const std::string line(130, 'x'), path = (folder / "events").string();
  table.Pair(
      {.name = "usage event", .size = 1, .peer = "fopen, fprintf, fclose"},
      [&] {
        if (!analytics.AddTextEvent(_T("Usage"), _T("Prime Turn"), _T("Prime Turn"))) std::abort();
      },
      [&] {
        FILE* const file = std::fopen(path.c_str(), "a");
        if (!file) std::abort();
        std::fprintf(file, "%s\n", line.c_str());
        std::fclose(file);
      });
}

}  // namespace

int main() {
  const fs::path folder = fs::temp_directory_path() / "kv-log-bench";
  fs::remove_all(folder);
  fs::create_directories(folder / "KestrovaData/LOG");
  SetEnvironmentVariableW(_T("KV_DRIVE_C"), folder.u16string().c_str());
  SetEnvironmentVariableW(_T("KV_STATE"), (folder / "state").u16string().c_str());
  SetEnvironmentVariableW(_T("DO_NOT_TRACK"), nullptr);
  kvbench::Table table("Logs and usage events");
  Switch(0);
  BenchOff(table);
  Switch(1);
  const std::string path = (folder / "KestrovaData/LOG/printed.txt").string();
  table.Pair(
      {.name = "scope, log on", .size = 1, .peer = "fprintf and flush", .goal = 1.2, .operations = kScopes}, Scopes,
      [&] { PrintedScopes(path); }, 15);
  Switch(0);
  BenchEvents(table, folder);
  fs::remove_all(folder);
}
