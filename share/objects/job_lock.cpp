// The mutex, the number of job records, and the record holder.
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

// A thread that reads 0 sees all earlier changes of nodes' lists by job records.
void CountJobRecord(int change) { g_recordCount.fetch_add(change, std::memory_order_acq_rel); }
bool AreThereJobRecords() { return g_recordCount.load(std::memory_order_acquire) > 0; }

void SetJobRecordHolder(const JobRecordHolder* holder) { g_holder.store(holder, std::memory_order_release); }
const JobRecordHolder* GetJobRecordHolder() { return g_holder.load(std::memory_order_acquire); }
