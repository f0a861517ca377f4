// The vocabulary between a node and the jobs that run its commands.
#pragma once

// Why QFObject::HandleCommand is called.
enum QFeCommandType : int {
  eCommandRun = 0,         // do the work, on the job's thread or on the caller's
  eCommandTerminated = 1,  // the job is being terminated; called on the thread that terminates it
  eCommandChildDone = 2,   // a child job has finished; called on the child's thread
};

// What has become of a job. A command's result becomes its job's status.
enum QFeThreadStatus : int {
  eThreadNotStarted = 0,
  eThreadDone = 1,
  eThreadRunning = 2,
  eThreadSuspended = 3,
  eThreadTerminated = 4,
  eThreadNotHandled = 5,       // no useful result; the default of HandleCommand
  eThreadDoneKeepData = 6,     // finished, and its record is to stay in the list
  eThreadWaitingToRun = 7,     // queued
  eThreadWaitingForChild = 8,  // finished its part; its record is held until its child job ends
};

// The numbers that are not named here belong to the modules and are carried for them.
enum QFeThreadType : int {
  eThreadTypeChild = 4,  // reports to the job ahead of it in the list when it ends
};
enum QFeThreadEndType : int {
  eThreadEndWaitForChild = 2,  // keeps its record open for a child
};
