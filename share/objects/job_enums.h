// The enumerations that a node and the jobs of its commands share.
#pragma once

// Why QFObject::HandleCommand is called.
enum QFeCommandType : int {
  eCommandRun = 0,         // run the command; on the job's thread, or on the requesting thread
  eCommandTerminated = 1,  // the job was terminated; on the thread that terminates it
  eCommandChildDone = 2,   // a child job ended; on the child's thread
};

// The status of a job. The result of HandleCommand becomes the status.
enum QFeThreadStatus : int {
  eThreadNotStarted = 0,
  eThreadDone = 1,
  eThreadRunning = 2,
  eThreadSuspended = 3,
  eThreadTerminated = 4,
  eThreadNotHandled = 5,       // the command did nothing; default result of HandleCommand
  eThreadDoneKeepData = 6,     // finished; the record stays in the manager's list
  eThreadWaitingToRun = 7,     // queued
  eThreadWaitingForChild = 8,  // finished its own part; ends when a child job reports
};

// Modules define further numbers of these two; the library keeps them without using them.
enum QFeThreadType : int {
  // When it ends, it reports to the job directly before it in the manager's list, if that job still has a thread. That
  // job is the parent only if no other job was added in between.
  eThreadTypeChild = 4,
};
enum QFeThreadEndType : int {
  eThreadEndWaitForChild = 2,  // stays in eThreadWaitingForChild until a child reports
};
