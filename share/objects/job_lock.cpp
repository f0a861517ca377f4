// The lock's own data.
#include "share/objects/job_lock.h"

#include <atomic>

namespace {

constinit std::atomic<const JobRecordHolder*> g_holder = nullptr;
constinit std::atomic<int> g_recordCount = 0;

}  // namespace

std::mutex& TheJobLock() {
  static auto* lock = new std::mutex;
  return *lock;
}

// A thread that reads 0 sees all that was done to nodes for the records that there were.
void CountJobRecord(int change) { g_recordCount.fetch_add(change, std::memory_order_acq_rel); }
bool AreThereJobRecords() { return g_recordCount.load(std::memory_order_acquire) > 0; }

void SetJobRecordHolder(const JobRecordHolder* holder) { g_holder.store(holder, std::memory_order_release); }
const JobRecordHolder* GetJobRecordHolder() { return g_holder.load(std::memory_order_acquire); }
