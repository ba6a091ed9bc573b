/* The preference file's lock, src/esd/prefs/resource_locker.cpp and prefs_lock.cpp: while a named
 * semaphore exists, somebody holds the lock. Its value is never used.
 *
 * Three processes take the lock, work and let go, again and again; after one that is killed comes a new
 * one, without end. An atomic block is one system call; before each of them SIGKILL may come.
 *
 * Must hold: never do two work at once; nobody finds the semaphore there unless a living process holds
 * it or one was killed that did, which is this protocol's own weakness; every wait ends.
 */
#ifndef kAttempts
#define kAttempts 4 /* for 100: one more changes nothing but the number of states */
#endif

bool exists;   /* the named semaphore */
bool left;     /* a killed process left it in place */
bool holds[3]; /* semaphore_ != SEM_FAILED */
bool works[3]; /* it reads or writes the file */
bool killed[3];

inline Remove() { /* sem_unlink */
  exists = false;
  left = false;
  holds[_pid] = false
}

/* SIGKILL: a named semaphore outlives its process. */
inline Kill(id) {
  atomic {
    !killed[id];
    left = left || (holds[id] && exists);
    holds[id] = false;
    works[id] = false;
    killed[id] = true
  }
}

active [3] proctype Wakerly() {
  byte attempt;
start:
  {
    goto lock;
lock: /* PrefsLock::PrefsLock, ResourceLockerPlat::Lock */
    skip;
    atomic { /* sem_open(O_CREAT | O_EXCL) */
      if
      :: !exists -> exists = true; holds[_pid] = true; attempt = 0; goto locked
      :: else
      fi
    };
    atomic { /* usleep */
      attempt++;
#ifdef WAITS_WITHOUT_END
      attempt = 0;
#endif
      if
      :: attempt < kAttempts -> goto lock
      :: else -> attempt = 0
      fi
    };
#ifdef FORCED
    atomic { /* ResourceLockerPlat::Unlock(true): sem_unlink */
      exists = false;
      left = false
    };
#endif
    goto ended; /* Lock gives false, and the caller does without */
locked:
#ifdef UNLINKED_EARLY
    atomic { works[_pid] = true };
    atomic { Remove() };
    atomic { works[_pid] = false };
#else
    atomic { works[_pid] = true };
    if
    :: /* A PrefsLock inside another one: took_ is false, so its end lets nothing go. */
#ifdef INNER_LETS_GO
       atomic { Remove() };
       atomic { works[_pid] = false };
       goto ended
#endif
       skip
    :: skip
    fi;
    atomic { works[_pid] = false };
    /* PrefsLock::Release, ResourceLockerPlat::Remove; or ~ResourceLockerPlat */
    atomic { Remove() };
#endif
ended:
progress_ended:
    skip;
    goto lock
  } unless {
    atomic { killed[_pid] -> attempt = 0 }
  };
progress_killed:
  atomic { killed[_pid] = false; goto start }
}

active proctype Killer() {
  do
  :: Kill(0)
  :: Kill(1)
  :: Kill(2)
  od
}

active proctype Monitor() {
end:
  atomic {
    if
    :: works[0] + works[1] + works[2] > 1 -> assert(false /* two work at once */)
    :: exists && !left && !holds[0] && !holds[1] && !holds[2] -> assert(false /* nobody holds it */)
    fi
  }
}
