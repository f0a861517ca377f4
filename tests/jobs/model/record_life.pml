/* The life of two job records, a parent (0) and its child (1), with their threads and a user's thread that terminates,
 * suspends, resumes and deletes them in any order. The steps are those of share/jobs/job_record.cpp and
 * job_manager.cpp; each section under the short lock there is one atomic step here.
 *
 * Checked in every interleaving: no freed record is used, each record is freed exactly once, a job that was terminated
 * or deleted before it began does not run its command, each job ends once, a waiting parent is ended by its child, the
 * running count is correct, and no thread waits for ever (no invalid end state).
 */
#define PARENT 0
#define CHILD 1

#define RUNNING 2
#define DONE 1
#define TERMINATED 4
#define WAITS 8

byte status[2];
bool handle[2], gone[2], ended[2], inList[2], counted[2], freed[2], left[2];
bool mayRun[2] = true;      /* false if it was terminated or deleted before it began */
bool begun[2], over[2];     /* the job has begun; the thread has ended */
bool suspended[2];
byte holds[2];
byte ends[2];               /* how often the job was ended: by itself or by a child */
int count, reports;         /* running jobs; parents ended by a child */
bool section;
bool reported;              /* the child has looked for its parent */
bool childDeleted;          /* before that */

#define TOUCH(r) assert(!freed[r])
#define LOCK atomic { !section -> section = true }
#define UNLOCK section = false
#define RELEASE(r) atomic { TOUCH(r); assert(holds[r] > 0); holds[r]--; freed[r] = (holds[r] == 0) }
#define LET_GO(r) handle[r] = false; suspended[r] = false

/* A record that is removed before its end was counted: the later one of its thread and its owner counts. */
#define COUNT_REMOVED(r) if :: over[r] && gone[r] && counted[r] -> counted[r] = false; count-- :: else fi

/* By the record's owner: removes it from the list, releases the thread, then releases the owner's reference. */
inline Destroy(r) {
  LOCK;
  TOUCH(r);
  if
  :: atomic { gone[r] -> skip }
  :: atomic { !gone[r] -> gone[r] = true; inList[r] = false; if :: !begun[r] -> mayRun[r] = false :: else fi;
              if :: r == CHILD && !reported -> childDeleted = true :: else fi;
              COUNT_REMOVED(r) };
     TOUCH(r);  /* the hook */
     atomic { TOUCH(r); assert(!left[r]); left[r] = true; LET_GO(r) };
     RELEASE(r)
  fi;
  UNLOCK
}

/* On a job's own thread, which has a reference. The hook counts and deletes. */
inline End(r) {
  TOUCH(r);
  if
  :: atomic { inList[r] && !gone[r] -> counted[r] = false }; Destroy(r); count--
  :: atomic { !(inList[r] && !gone[r]) -> skip }
  fi
}

proctype Job(byte r) {
  bool runs, waits, reportsTo, isOver;
  atomic { !suspended[r] -> TOUCH(r) };
  if
  :: atomic { gone[r] || ended[r] -> goto out }
  :: atomic { !(gone[r] || ended[r]) -> skip }
  fi;
  TOUCH(r);  /* the hook */
  atomic {
    TOUCH(r);
    begun[r] = true;
    isOver = gone[r] || ended[r];
    runs = handle[r];
    if :: !isOver && !runs -> ended[r] = true; ends[r]++; status[r] = TERMINATED :: else fi
  };
  if :: isOver -> goto out :: else fi;
  if
  :: !runs
  :: runs ->
     assert(mayRun[r]);
     skip;  /* the command */
     atomic { !suspended[r] -> TOUCH(r) };
     atomic {
       if
       :: gone[r] || ended[r] -> isOver = true
       :: else ->
          waits = (r == PARENT && status[r] != TERMINATED);
          if :: status[r] != TERMINATED -> status[r] = (waits -> WAITS : DONE) :: else fi;
          if :: !waits -> ended[r] = true; ends[r]++ :: else fi
       fi
     };
     if :: isOver -> goto out :: else fi
  fi;
  if
  :: r == CHILD ->
     LOCK;
     atomic { reported = true;
              reportsTo = (inList[CHILD] && inList[PARENT] && handle[PARENT]);
              if :: reportsTo -> TOUCH(PARENT); holds[PARENT]++ :: else fi };
     UNLOCK;
     if
     :: reportsTo ->
        atomic { TOUCH(PARENT); reportsTo = !ended[PARENT];
                 if :: reportsTo -> ended[PARENT] = true; ends[PARENT]++ :: else fi };
        if
        :: reportsTo ->
           TOUCH(PARENT);  /* HandleCommand(2) */
           atomic { TOUCH(PARENT); status[PARENT] = status[CHILD]; LET_GO(PARENT); count--; reports++ };
           End(PARENT)
        :: else
        fi;
        RELEASE(PARENT)
     :: else
     fi
  :: else
  fi;
  if :: waits -> goto out :: else fi;
  atomic { TOUCH(r); LET_GO(r) };
  End(r);
out:
  skip;
  atomic { TOUCH(r); over[r] = true; COUNT_REMOVED(r) };
  RELEASE(r)
}

/* Both jobs exist. Performs OPERATIONS operations, then the steps at the end of a document. */
inline Terminate(r) {
  atomic { if :: inList[r] -> TOUCH(r); holds[r]++; held = true :: else -> held = false fi };
  if
  :: held ->
     atomic { if :: handle[r] -> status[r] = TERMINATED; LET_GO(r); if :: !begun[r] -> mayRun[r] = false :: else fi
                 :: else fi };
     TOUCH(r);  /* HandleCommand(1) */
     atomic { status[r] = TERMINATED };
     RELEASE(r)
  :: else
  fi
}

inline NodeGoes(r) {
  atomic { if :: !left[r] -> TOUCH(r); holds[r]++; held = true :: else -> held = false fi };
  if :: held -> Destroy(r); RELEASE(r) :: else fi
}

inline DeleteAllDone() {
  LOCK;
  atomic { taken[0] = false; taken[1] = false;
    if :: inList[0] && status[0] != RUNNING && status[0] != WAITS -> taken[0] = true; gone[0] = true; inList[0] = false
       :: else fi;
    if :: inList[1] && status[1] != RUNNING && status[1] != WAITS -> taken[1] = true; gone[1] = true; inList[1] = false;
          if :: !reported -> childDeleted = true :: else fi
       :: else fi;
    if :: taken[0] -> COUNT_REMOVED(0) :: else fi;
    if :: taken[1] -> COUNT_REMOVED(1) :: else fi;
    if :: taken[0] && !begun[0] -> mayRun[0] = false :: else fi;
    if :: taken[1] && !begun[1] -> mayRun[1] = false :: else fi };
  if :: taken[0] -> atomic { TOUCH(0); left[0] = true; LET_GO(0) }; RELEASE(0) :: else fi;
  if :: taken[1] -> atomic { TOUCH(1); left[1] = true; LET_GO(1) }; RELEASE(1) :: else fi;
  UNLOCK
}

proctype User() {
  byte left_ = OPERATIONS, r;
  bool held, taken[2];
  do
  :: left_ > 0 ->
     left_--;
     if :: r = PARENT :: r = CHILD fi;
     if
     :: true -> Terminate(r)
     :: true -> NodeGoes(r)
     :: true -> DeleteAllDone()
     :: true -> atomic { if :: inList[r] && handle[r] -> suspended[r] = true :: else fi }
     fi
  :: break
  od;
  atomic { suspended[0] = false; suspended[1] = false };
  over[0] && over[1];
  assert(childDeleted || gone[PARENT] || status[PARENT] != WAITS);
  assert(ends[0] <= 1 && ends[1] <= 1);
  /* Only a parent that still waits, or was terminated while it waited, is counted. */
  assert(!counted[CHILD] && !(counted[PARENT] && gone[PARENT]) && count + reports == counted[PARENT]);
  NodeGoes(PARENT);
  NodeGoes(CHILD);
  atomic { (freed[0] && freed[1]) -> skip };
  assert(gone[0] && gone[1] && holds[0] == 0 && holds[1] == 0 && count + reports == 0);
}

init {
  atomic {
    byte r;
    for (r : 0 .. 1) {
      status[r] = RUNNING;
      handle[r] = true;
      inList[r] = true;
      counted[r] = true;
      holds[r] = 2;  /* of the list and of the thread */
      count++
    }
    run Job(PARENT);
    run Job(CHILD);
    run User()
  }
}
