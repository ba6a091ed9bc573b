/* The log file's lock, src/welko/log_file_lock.cpp: a System V semaphore set of two under one key.
 *
 * Two processes are wakerly's: they attach, write lines, detach, and start again; after one that is
 * killed comes a new one, without end. The third is a foreign program: it makes the set in two calls,
 * never detaches, and starts once. An atomic block is one system call, with what its process does by
 * itself until the next one; before each of them SIGKILL may come.
 *
 * The key has one set at a time, and the system gives no id twice. So what a process knows of its set
 * comes down to whether that is still the one of the key.
 *
 * Taken for granted: a living foreign program makes its second call within the ten milliseconds that
 * wakerly waits for it. It finds no set, and makes one, at once (FOREIGN_LOOKS_FIRST: it does not). When
 * it comes between the calls with which wakerly makes a set, wakerly is not killed there as well
 * (MAKER_KILLED: it is).
 *
 * Linux counts to kFull and says ERANGE. macOS counts on, and begins again (COUNTS_ON); there a
 * process must look before it counts (COUNTED_WITHOUT_LOOKING: it does not).
 *
 * Must hold: never do two write at once; nobody waits unless a living process holds the lock.
 */
#define kFull 4 /* for SEMVMX, 32,767: only killed processes, never three living ones, come so far */
#ifdef COUNTS_ON /* macOS: semop knows no SEMVMX, and makes 65,536 a 0 */
#define may_count true
#define kEnd 8 /* for 65,536 */
#else /* Linux: ERANGE */
#define may_count (attached < kFull)
#define kEnd 255
#endif
#define next_count ((attached + 1) % kEnd)
#define kForeign 2

#define kNone 0    /* no set */
#define kCurrent 1 /* the set of the key */
#define kRemoved 2 /* semop says EIDRM or EINVAL */

/* The set of the key. */
bool exists;
byte attached; /* semaphore 0 */
byte unlocked; /* semaphore 1 */
bool raw;      /* wakerly made it, and semaphore 1 was never used: GETPID gives 0 */
bool orphan;   /* its maker was killed before its second call */

/* Each process. */
byte set[3];
short undo[3];  /* semadj: what the system adds to semaphore 1 when the process ends */
bool writes[3]; /* it writes, believing that it holds the lock */
bool waits[3];  /* its next call is the semop that waits for semaphore 1 */
bool makes[3];  /* it has made the set of the key, and has not come to its second call */
bool killed[3];

inline MakeSet() {
  exists = true;
  raw = (_pid != kForeign);
  orphan = false;
  set[_pid] = kCurrent;
  makes[_pid] = true
}

inline LoseSet(id) {
  if
  :: set[id] == kCurrent -> set[id] = kRemoved; undo[id] = 0; makes[id] = false
  :: else
  fi
}

/* semctl IPC_RMID: the system wakes who waits, and forgets what was to be undone. */
inline RemoveSet() {
  exists = false;
  attached = 0;
  unlocked = 0;
  raw = false;
  orphan = false;
  LoseSet(0);
  LoseSet(1);
  LoseSet(2)
}

/* semctl SETVAL: the system forgets what was to be undone. */
inline SetUnlocked() {
  unlocked = 1;
  raw = false;
  undo[0] = 0;
  undo[1] = 0;
  undo[2] = 0
}

/* semop: -1 to semaphore 1, SEM_UNDO */
inline Take() {
  unlocked--;
  undo[_pid] = undo[_pid] + 1;
  raw = false
}

/* semop: +1 to semaphore 1, SEM_UNDO */
inline Give() {
  unlocked++;
  undo[_pid] = undo[_pid] - 1
}

/* SIGKILL, and what the system does when a process ends. */
inline Kill(id) {
  atomic {
    !killed[id];
    if
    :: set[id] == kCurrent && undo[id] > 0 -> unlocked++
    :: set[id] == kCurrent && undo[id] < 0 && unlocked > 0 -> unlocked--
    :: else
    fi;
    set[id] = kNone;
    undo[id] = 0;
    writes[id] = false;
    waits[id] = false;
    orphan = orphan || makes[id];
    makes[id] = false;
    killed[id] = true
  }
}

active [2] proctype Wakerly() {
  bool counted;
start:
  {
    goto attach;
attach: /* LogFileLock::Attach */
    skip;
    atomic { /* semget(IPC_CREAT | IPC_EXCL) */
      if
      :: !exists -> MakeSet(); goto prepare
      :: else
      fi
    };
    atomic { /* semget: ENOENT when it was removed meanwhile */
      if
      :: exists -> set[_pid] = kCurrent
      :: else -> goto attach
      fi
    };
#ifndef PREPARED_WITHOUT_WAITING
    /* WaitForMaker: semctl GETVAL, usleep */
    set[_pid] == kRemoved || attached > 0 || unlocked > 0 || !makes[kForeign];
#endif
prepare:
    skip;
#ifdef PREPARED_IN_TWO_STEPS
    atomic { /* semctl SETVAL, as the foreign program does it */
      if
      :: makes[_pid] -> SetUnlocked(); makes[_pid] = false
      :: else
      fi
    };
#else
    atomic { /* LogFileLock::Prepare: semop */
      if
      :: set[_pid] == kCurrent && attached == 0 && unlocked == 0 ->
         unlocked = 1; attached = 1; counted = true; raw = false; makes[_pid] = false;
         goto attached_
      :: set[_pid] == kRemoved -> set[_pid] = kNone; goto attach
      :: else /* EAGAIN */
      fi;
#ifdef MAKER_GIVES_WAY
      makes[_pid] = false;
#endif
      if
      :: makes[_pid]
      :: else -> goto count
      fi
    };
    atomic { /* LogFileLock::Insist: semctl GETPID */
      if
      :: set[_pid] == kCurrent && raw
      :: else -> makes[_pid] = false; goto count
      fi
    };
    atomic { /* semop: as in Prepare, whatever the count; nobody sees 32,767 processes come meanwhile */
      makes[_pid] = false;
      if
      :: set[_pid] == kCurrent && unlocked == 0 ->
         unlocked = 1; raw = false;
         if
         :: may_count -> attached = next_count; counted = true
         :: else
         fi;
         goto attached_
      :: else
      fi
    };
#endif
count:
    skip;
#ifndef COUNTED_WITHOUT_LOOKING
    atomic { /* LogFileLock::Count: semctl GETVAL */
      if
      :: set[_pid] == kCurrent && attached >= kFull -> goto attached_
      :: else
      fi
    };
#endif
    atomic { /* Operate(kAttached, 1, IPC_NOWAIT): semop */
      if
      :: set[_pid] == kRemoved -> set[_pid] = kNone; goto attach
      :: set[_pid] == kCurrent && may_count -> attached = next_count; counted = true
      :: else /* ERANGE: the lock works all the same */
      fi;
attached_:
      if
      :: waits[_pid] = true
      :: goto detach /* without having written */
      fi
    };
acquire: /* LogFileLock::Acquire */
    skip;
    atomic { /* Operate(kFree, -1, SEM_UNDO): semop */
      (set[_pid] == kRemoved || unlocked > 0);
      waits[_pid] = false;
      if
      :: set[_pid] == kRemoved -> set[_pid] = kNone; counted = false; goto attach
      :: else -> Take(); writes[_pid] = true
      fi
    };
progress_line: /* LogFileLock::Release */
    atomic { /* Operate(kFree, 1, SEM_UNDO): semop; a removed set need not be freed */
      writes[_pid] = false;
      if
      :: set[_pid] == kCurrent -> Give()
      :: else
      fi;
      if
      :: waits[_pid] = true; goto acquire
      :: skip
      fi
    };
detach: /* LogFileLock::~LogFileLock */
    skip;
    atomic { /* Operate(kAttached, -1, IPC_NOWAIT): semop */
      if
      :: !counted -> goto end_of_process
      :: else -> counted = false
      fi;
      if
      :: set[_pid] == kCurrent && attached > 0 -> attached--
      :: else
      fi
    };
    atomic {
#ifdef REMOVED_WITHOUT_TAKING_OVER
      if /* semctl GETVAL */
      :: set[_pid] == kCurrent && attached == 0
      :: else -> goto end_of_process
      fi
#else
      if /* semop: `take_over` */
      :: set[_pid] == kCurrent && attached == 0 && unlocked > 0 -> attached = 1; Take()
      :: else -> goto end_of_process
      fi
#endif
    };
    atomic { /* semctl IPC_RMID; EPERM when another user made the set */
      if
      :: set[_pid] == kCurrent -> RemoveSet(); goto end_of_process
#ifndef REMOVED_WITHOUT_TAKING_OVER
      :: set[_pid] == kCurrent
#endif
      :: else -> goto end_of_process
      fi
    };
    atomic { /* Operate(kFree, 1, SEM_UNDO): semop */
      Give()
    };
    atomic { /* Operate(kAttached, -1, IPC_NOWAIT): semop */
      attached--;
end_of_process:
      set[_pid] = kNone;
      undo[_pid] = 0
    };
progress_end:
    goto attach
  } unless {
    atomic { killed[_pid] -> counted = false }
  };
progress_killed:
  atomic { killed[_pid] = false; goto start }
}

active proctype Foreign() {
  {
#ifdef FOREIGN_LOOKS_FIRST
    atomic { /* semget(key, 0, 0) */
      if
      :: exists -> set[_pid] = kCurrent; goto count
      :: else
      fi
    };
    atomic { /* semget(IPC_CREAT) */
      if
      :: exists -> set[_pid] = kCurrent; makes[_pid] = true
      :: else -> MakeSet()
      fi
    };
#else
    atomic { /* semget(key, 0, 0), semget(IPC_CREAT) */
      if
      :: exists -> set[_pid] = kCurrent; goto count
      :: else -> MakeSet()
      fi
    };
#endif
    atomic { /* semctl SETVAL */
      makes[_pid] = false;
      if
      :: set[_pid] == kCurrent -> SetUnlocked()
      :: else -> goto unusable
      fi
    };
count:
    skip;
    atomic { /* semop: +1 to semaphore 0 */
      if
      :: set[_pid] == kCurrent && may_count -> attached = next_count; waits[_pid] = true
      :: else -> goto unusable
      fi
    };
acquire:
    skip;
    atomic { /* semop: -1 to semaphore 1, SEM_UNDO */
      (set[_pid] == kRemoved || unlocked > 0);
      waits[_pid] = false;
      if
      :: set[_pid] == kCurrent -> Take(); writes[_pid] = true
      :: else -> goto unusable
      fi
    };
progress_line:
    atomic { /* semop: +1 to semaphore 1, SEM_UNDO */
      writes[_pid] = false;
      if
      :: set[_pid] == kCurrent -> Give(); waits[_pid] = true; goto acquire
      :: else
      fi
    };
unusable:
    false
  } unless {
    killed[_pid]
  }
}

active proctype Killer() {
  do
  :: Kill(0)
  :: Kill(1)
  :: Kill(2)
  od
}

#define waits_in_vain(id) (waits[id] && set[id] == kCurrent && unlocked == 0)
#define holds(id) (set[id] == kCurrent && undo[id] > 0)
#define nobody_acts \
  (!holds(0) && !holds(1) && !holds(2) && !makes[0] && !makes[1] && !makes[2])

#ifdef MAKER_KILLED
#define excused false
#else
#define excused (raw && orphan)
#endif

active proctype Monitor() {
end:
  atomic {
    if
    :: writes[0] + writes[1] + writes[2] > 1 -> assert(false /* two write at once */)
    :: (waits_in_vain(0) || waits_in_vain(1) || waits_in_vain(2)) && nobody_acts && !excused -> assert(false /* somebody waits, and nobody holds the lock */)
    fi
  }
}
