// Depth guard for calls that walk up the owners: a damaged file can have a cycle of owners, or a chain that overflows
// the stack. Not public.
#pragma once

class OwnerDepthGuard {
 public:
  static constexpr int kMostLevels = 4096;

  OwnerDepthGuard() { ++t_levels; }
  ~OwnerDepthGuard() { --t_levels; }
  OwnerDepthGuard(const OwnerDepthGuard&) = delete;
  OwnerDepthGuard& operator=(const OwnerDepthGuard&) = delete;

  // False at the limit: do not call the next object.
  explicit operator bool() const { return t_levels <= kMostLevels; }

 private:
  inline static thread_local constinit int t_levels = 0;
};
