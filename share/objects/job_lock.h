// What nodes and jobs share between threads: one short lock over the manager's list, the records' fields that belong
// together, and the lists in which nodes hold their records. For the library's own folders, not for modules.
//
// A job's thread takes its record out of its node's list when it ends, at a time that nobody can foresee. A node is
// used by one thread at a time, so it is these removals alone that its lists have to be guarded from, and only while
// there are records: UsersLock costs one load otherwise.
//
// Who holds the lock calls nothing of a module, and waits for nothing.
#pragma once

#include <mutex>

#include "platform/types.h"

class QFObject;

// The lock itself; never destroyed.
std::mutex& TheJobLock();

// How many records there are. Counted by the records, while a node holds them.
void CountJobRecord(int change);
bool AreThereJobRecords();

class JobLock {
 public:
  JobLock() : guard_(TheJobLock()) {}

 private:
  std::lock_guard<std::mutex> guard_;
};

// The lock over a node's lists of users, taken only if there are records.
class UsersLock {
 public:
  UsersLock() {
    if (AreThereJobRecords()) guard_ = std::unique_lock(TheJobLock());
  }

 private:
  std::unique_lock<std::mutex> guard_;
};

// Keeps a job's record alive after it was taken out of its node's list under the lock. Records are of a room above this
// one, which sets the object when it builds its first record.
class JobRecordHolder {
 public:
  virtual bool IsRecord(const QFObject* user) const = 0;
  virtual void Hold(QFObject* record) const = 0;     // under the lock
  virtual void Release(QFObject* record) const = 0;  // not under the lock

 protected:
  ~JobRecordHolder() = default;
};
// The object lives to the end of the process. Any thread may call.
void SetJobRecordHolder(const JobRecordHolder* holder);
// Not null while there are records.
const JobRecordHolder* GetJobRecordHolder();
