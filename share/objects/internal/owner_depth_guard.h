// How far a question goes up from owner to owner. Damaged bytes can close a ring of owners, or make a chain that no
// stack holds: then the question has to end. Not public.
#pragma once

class OwnerDepthGuard {
 public:
  static constexpr int kMostLevels = 4096;

  OwnerDepthGuard() { ++t_levels; }
  ~OwnerDepthGuard() { --t_levels; }
  OwnerDepthGuard(const OwnerDepthGuard&) = delete;
  OwnerDepthGuard& operator=(const OwnerDepthGuard&) = delete;

  // False if the next object must not be asked.
  explicit operator bool() const { return t_levels <= kMostLevels; }

 private:
  inline static thread_local constinit int t_levels = 0;
};
