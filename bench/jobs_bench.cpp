// Jobs: the time from the request to the command's first line compared with other thread libraries, the cost of a
// thousand live jobs, and the overhead of a direct run. A clock that does not wait removes the fixed wait before a job.
#include <oneapi/tbb/task_arena.h>
#include <oneapi/tbb/task_group.h>

#include <atomic>
#include <cstdio>
#include <future>
#include <list>
#include <memory>
#include <semaphore>
#include <thread>

#include "bench/ratio.h"
#include "platform/clock.h"
#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/jobs/job_manager.h"
#include "share/settings/settings_key.h"

namespace {

class BenchManager : public QFThreadBaseMgr {
 public:
  BenchManager() { m_pInstance = this; }
  using QFThreadBaseMgr::FindThreadData;
  using QFThreadBaseMgr::TerminateSimiliarDuplicateThreads;
};

// Releases the semaphore when the command begins.
class Node : public QFObject {
 public:
  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned, void*&) override {
    if (type != eCommandRun) return eThreadDone;
    ++count;
    if (begun) begun->release();
    return eThreadDone;
  }
  ULONGLONG count = 0;
  std::counting_semaphore<>* begun = nullptr;
};

QFSettingsKey* g_settings = nullptr;

std::string Text(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f us", seconds * 1e6);
  return text;
}

// Prints a row for a time that may be at most most_us microseconds.
void Later(const char* what, double seconds, double most_us) {
  kvbench::Table::Row({what, 1, "what is allowed", /*goal=*/1}, Text(seconds), Text(most_us * 1e-6),
                      seconds * 1e6 / most_us);
}

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// Median seconds from start() until its work releases the semaphore. finish() cleans up outside the measured time.
template <class Start, class Finish>
double Latency(std::counting_semaphore<>& begun, Start start, Finish finish) {
  std::vector<double> seconds;
  for (int i = 0; i < 501; ++i) {
    const double from = Now();
    start();
    begun.acquire();
    seconds.push_back(Now() - from);
    finish();
  }
  std::nth_element(seconds.begin(), seconds.begin() + 250, seconds.end());
  return seconds[250];
}

void RequestToBegin(BenchManager& manager) {
  kvbench::Table table("Jobs: from the request to the command's first line");
  std::counting_semaphore<> begun(0);
  Node node;
  node.begun = &begun;
  unsigned context = 0;
  std::thread thread;
  const double plain = Latency(
      begun, [&] { thread = std::thread([&] { begun.release(); }); }, [&] { thread.join(); });
  const double ours = Latency(
      begun, [&] { node.RunCommand(++context, nullptr, QFeThreadType(0), QFeThreadEndType(0)); },
      [&] {
        while (!manager.AllThreadsDone()) Sleep(0);
      });
  std::future<void> future;
  const double async = Latency(
      begun, [&] { future = std::async(std::launch::async, [&] { begun.release(); }); }, [&] { future.get(); });
  tbb::task_arena arena(2);
  tbb::task_group group;
  const double task = Latency(
      begun, [&] { arena.execute([&] { group.run([&] { begun.release(); }); }); },
      [&] { arena.execute([&] { group.wait(); }); });
  const auto row = [&](const char* peer, double seconds) {
    kvbench::Table::Row({"request to begin", 1, peer, 0, 1}, Text(ours), Text(seconds), ours / seconds);
  };
  row("std::thread", plain);
  row("std::async", async);
  row("TBB task", task);
  Later("begins later than a std::thread by", ours - plain, 100);
}

// Replaces the wait before a job: none, or until g_held becomes false.
std::atomic<bool> g_held = false;

void SleepBeforeJob(DWORD milliseconds) {
  if (milliseconds != 100) return Sleep(milliseconds);
  g_held.wait(true);
}

// The resident memory of the process in kilobytes.
long ResidentKilobytes() {
  long pages = 0, resident = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(file);
  }
  return resident * 4;
}

void LiveJobs(BenchManager& manager, std::size_t size) {
  std::vector<std::unique_ptr<Node>> nodes;
  std::vector<std::unique_ptr<QFThreadDataLink>> links;
  for (std::size_t i = 0; i < size; ++i) {
    nodes.push_back(std::make_unique<Node>());
    links.push_back(std::make_unique<QFThreadDataLink>());
    links.back()->SetIdentifierA(links.back().get());
  }
  g_held = true;
  const long before = ResidentKilobytes();
  const double from = Now();
  for (std::size_t i = 0; i < size; ++i) nodes[i]->RunCommand(7, links[i].get(), QFeThreadType(0), QFeThreadEndType(0));
  const double asked = Now() - from;
  const long kilobytes = ResidentKilobytes() - before;

  std::list<Node*> plain;
  for (const auto& node : nodes) plain.push_back(node.get());
  const auto walk = [&](const Node* wanted) {
    for (const Node* node : plain)
      if (node == wanted) return true;
    return false;
  };
  Node absent;
  QFThreadDataLink elsewhere;
  elsewhere.SetIdentifierA(&elsewhere);
  {
    kvbench::Table table("Jobs: live ones");
    table.Pair(
        {.name = "list walk (GetNumThreadsNotDone)", .size = size, .peer = "std::list of as many"},
        [&] { kvbench::Keep(manager.GetNumThreadsNotDone()); }, [&] { kvbench::Keep(walk(&absent)); });
    table.Pair(
        {.name = "FindThreadData, none found", .size = size, .peer = "std::list of as many"},
        [&] { kvbench::Keep(manager.FindThreadData(&absent, 7, &elsewhere)); }, [&] { kvbench::Keep(walk(&absent)); });
    table.Pair(
        {.name = "check for similar jobs", .size = size, .peer = "std::list of as many"},
        [&] { manager.TerminateSimiliarDuplicateThreads(&absent, 7, &elsewhere); },
        [&] { kvbench::Keep(walk(&absent)); });
  }
  std::printf("\nA live job: %ld bytes of record, %.1f KB in memory with its thread, %.1f us to ask for\n",
              long(sizeof(QFThreadData)), double(kilobytes) / double(size), asked / double(size) * 1e6);
  g_held = false;
  g_held.notify_all();
  manager.WaitForAllThreadsToBeDone();
  while (!manager.DeleteAllDoneThreads() && manager.AnyThreadsRunning()) Sleep(0);
  while (manager.FindThreadData(nodes.back().get(), 7, nullptr)) Sleep(1);
  Sleep(100);  // nodes and links must outlive the threads
}

void DirectRun(BenchManager& manager) {
  manager.SetCanRunSeparateProcess(0);
  Node node;
  void* none = nullptr;
  QFObject* object = &node;
  kvbench::Table table("Jobs: direct run");
  const auto ratio = table.Pair(
      {.name = "RunCommand with ThreadMulti 0", .size = 1, .peer = "the virtual call alone"},
      [&] { node.RunCommand(7, nullptr, QFeThreadType(0), QFeThreadEndType(0)); },
      [&] { object->HandleCommand(eCommandRun, 7, none); });
  Later("takes longer than the virtual call by", ratio.seconds - ratio.peer_seconds, 2);
  manager.SetCanRunSeparateProcess(1);
}

}  // namespace

int main() {
  static constexpr Clock kNoWait = {SleepBeforeJob, GetSystemTime, [] { return _time64(nullptr); }};
  SetCurrentClock(&kNoWait);
  QFSettingsKey settings(_T("Settings"), _T("Software\\Zemlor\\Kestrova\\Bench"));
  for (LPCTSTR name : {_T("ThreadMulti"), _T("ThreadDel")}) settings.AddValue(name, 1);
  g_settings = &settings;
  QFShareRegisterDocCBK(
      nullptr, nullptr, []() -> QFObject* { return nullptr; }, nullptr, nullptr, nullptr, nullptr,
      [] { return g_settings; }, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr);
  BenchManager manager;
  RequestToBegin(manager);
  LiveJobs(manager, 1'000);
  DirectRun(manager);
  Sleep(100);
  QFThreadBaseMgr::m_pInstance = nullptr;
}
