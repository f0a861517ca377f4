// Enumerations of a node: its state, the result of a comparison, and what its children have in common.
#pragma once

// Stored as 32 bits.
enum QFObjState : int {
  ACTIVE = 0,
  SUPPRESSED = 1,  // the user excluded it from the job
  DELETED = 2,     // recycled: still below its owner, can be restored
  LOCKED = 3,
};

// How far two nodes match; each class defines its own criteria.
enum COMPARE_RESULT : int {
  NO_MATCH = 0,
  COMPLETE_MATCH = 1,
  PROFILE_NODEPTH_MATCH = 2,
  PARTIAL_PROFILE_MATCH = 3,
  PARTIAL_MATCH_SUBSET = 4,
};

// What the children of a node have in common, for a check box with three states.
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
