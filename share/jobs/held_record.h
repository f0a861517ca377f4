// HeldRecord, a reference to a job's record. The record's memory remains valid while it exists, even if another thread
// deletes the record.
#pragma once

#include <memory>

class QFThreadData;

struct ReleaseRecord {
  void operator()(QFThreadData* record) const;
};

// Do not destroy it under the lock of share/objects/job_lock.h: that may delete the record, which takes the lock.
using HeldRecord = std::unique_ptr<QFThreadData, ReleaseRecord>;

// Call it under that lock, or for a record to which the caller has a reference.
HeldRecord Held(QFThreadData* record);
