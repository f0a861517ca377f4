// The handles of ended jobs.
#pragma once

// While one exists, the handles of jobs stay open after the jobs' ends, so that the system gives no other object their
// numbers. A thread makes one before it collects handles to wait for.
class KeptHandles {
 public:
  KeptHandles();
  ~KeptHandles();
  KeptHandles(const KeptHandles&) = delete;
  KeptHandles& operator=(const KeptHandles&) = delete;
};
