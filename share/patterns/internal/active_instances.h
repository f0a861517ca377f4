// ActiveInstances finds the active instances of a pattern by their number. It remembers how many active instances are
// before each block of instances, so that it asks only the instances of one block again, and in a walk each instance
// once. It serves one description. Not public.
#pragma once

#include <vector>

#include "platform/types.h"

class QFPatternInfo;

class ActiveInstances {
 public:
  // The instance number of active instance n, from 0; total if there are fewer. total is the description's number of
  // instances.
  LONGLONG Find(QFPatternInfo& info, LONGLONG total, LONGLONG n);

 private:
  static constexpr LONGLONG kBlock = 64;

  void Restart(ULONGLONG changes, LONGLONG total);

  std::vector<LONGLONG> m_before;  // the number of active instances before each block that was reached
  // The active instance that was found last: its number among the active ones and among all.
  LONGLONG m_lastActive = 0;
  LONGLONG m_lastInstance = 0;
  // The description's changes and the total for which the others are valid.
  ULONGLONG m_changes = 0;
  LONGLONG m_total = 0;
};
