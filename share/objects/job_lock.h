// The job lock: one mutex for the job manager's list, the fields of job records that change together, and the lists in
// which nodes hold their job records. Not public.
//
// A job's thread removes its record from its node's list when the job ends, at any time. All other changes of a node's
// lists come from the one thread that uses the node. So the lists need the lock only while job records exist: without
// records a UsersLock costs one atomic load.
//
// Code that holds the lock must not call a module and must not wait.
#pragma once

#include <mutex>

#include "platform/types.h"

class QFObject;

// The mutex; it is never destroyed.
std::mutex& TheJobLock();

// The number of job records that nodes hold. Each record adds 1 and later -1.
void CountJobRecord(int change);
bool AreThereJobRecords();

class JobLock {
 public:
  JobLock() : guard_(TheJobLock()) {}

 private:
  std::lock_guard<std::mutex> guard_;
};

// Locks a node's lists of users; takes the mutex only if job records exist.
class UsersLock {
 public:
  UsersLock() {
    if (AreThereJobRecords()) guard_ = std::unique_lock(TheJobLock());
  }

 private:
  std::unique_lock<std::mutex> guard_;
};

// Keeps a job record alive after a node removed it from its list under the lock. share/jobs implements this interface
// and sets the object with its first record.
class JobRecordHolder {
 public:
  virtual bool IsRecord(const QFObject* user) const = 0;
  virtual void Hold(QFObject* record) const = 0;     // call it under the lock
  virtual void Release(QFObject* record) const = 0;  // call it without the lock

 protected:
  ~JobRecordHolder() = default;
};
// The holder must exist until the process ends. Any thread may call.
void SetJobRecordHolder(const JobRecordHolder* holder);
// Null before the first job record.
const JobRecordHolder* GetJobRecordHolder();
