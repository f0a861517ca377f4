// A job's record that stays in memory while this pointer has it, whoever deletes it meanwhile. For the library's own
// use.
#pragma once

#include <memory>

class QFThreadData;

struct ReleaseRecord {
  void operator()(QFThreadData* record) const;
};

// Not to be let go under the lock of share/objects/job_lock.h: the record may be deleted then and there.
using HeldRecord = std::unique_ptr<QFThreadData, ReleaseRecord>;

// Under that lock, or of a record that the caller holds already.
HeldRecord Held(QFThreadData* record);
