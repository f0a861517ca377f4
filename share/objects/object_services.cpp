// Where the folders above leave their tables. Constants before any initialiser runs, so that the order of initialisers
// doesn't matter.
#include "share/objects/object_services.h"

#include <atomic>

#include "share/objects/job_lock.h"

namespace {

constinit const ObjectPatternService* g_patterns = nullptr;
constinit RunCommandService g_runCommand = nullptr;
constinit const JobRecordService* g_jobRecords = nullptr;
constinit std::atomic<int> g_jobRecordCount = 0;

}  // namespace

void SetObjectPatternService(const ObjectPatternService* service) { g_patterns = service; }
void SetRunCommandService(RunCommandService service) { g_runCommand = service; }
const ObjectPatternService* GetObjectPatternService() { return g_patterns; }
RunCommandService GetRunCommandService() { return g_runCommand; }

// ---- job records

std::mutex& TheJobLock() {
  static auto* lock = new std::mutex;
  return *lock;
}

// A thread that sees none has seen all that was done to nodes for those that there were.
void CountJobRecord(int change) { g_jobRecordCount.fetch_add(change, std::memory_order_acq_rel); }
bool AreThereJobRecords() { return g_jobRecordCount.load(std::memory_order_acquire) > 0; }
void SetJobRecordService(const JobRecordService* service) { g_jobRecords = service; }
const JobRecordService* GetJobRecordService() { return g_jobRecords; }
