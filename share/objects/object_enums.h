// The states and results of a node: whether it is in force, how a comparison ended, what its children have in common.
#pragma once

// Stored as 32 bits.
enum QFObjState : int {
  ACTIVE = 0,
  SUPPRESSED = 1,  // left out by the user
  DELETED = 2,     // recycled: kept below its owner, to be restored
  LOCKED = 3,
};

// How far two nodes agree. What counts as agreement is the matter of the class that compares.
enum COMPARE_RESULT : int {
  NO_MATCH = 0,
  COMPLETE_MATCH = 1,
  PROFILE_NODEPTH_MATCH = 2,
  PARTIAL_PROFILE_MATCH = 3,
  PARTIAL_MATCH_SUBSET = 4,
};

// What the children of a node have in common, as a check box with three states shows it.
enum e_QFSelSetDisplayState : int {
  e_QFSelSetDisplay_Mixed = 0,
  e_QFSelSetDisplay_All = 1,
  e_QFSelSetDisplay_None = 2,
  e_QFSelSetDisplay_NoChildren = 3,
};
enum e_QFSelSetSuppressState : int {
  e_QFSelSetSuppress_Mixed = 0,
  e_QFSelSetSuppress_All = 1,
  e_QFSelSetSuppress_None = 2,
  e_QFSelSetSuppress_NoChildren = 3,
};
enum e_QFSelSetLockState : int {
  e_QFSelSetLock_Mixed = 0,
  e_QFSelSetLock_All = 1,
  e_QFSelSetLock_None = 2,
  e_QFSelSetLock_NoChildren = 3,
};
