#include "welko/log_file_lock.h"

#include <sys/ipc.h>
#include <sys/sem.h>

#include <cerrno>
#include <iterator>

namespace welko {
namespace {

constexpr int kProjectId = 11;
constexpr int kNoSet = -1;
constexpr int kAttempts = 100;  // against others that remove the set meanwhile
constexpr unsigned short kAttached = 0;
constexpr unsigned short kFree = 1;

// Whether the last operation failed because the set is gone: semop(2) gives the one error to a
// waiting caller, the other to one that comes later.
bool WasRemoved() { return errno == EIDRM || errno == EINVAL; }

}  // namespace

LogFileLock::LogFileLock(const std::string& path) : path_(path), set_(kNoSet), counted_(false) {
  Attach();
}

LogFileLock::~LogFileLock() {
  if (!counted_) return;
  Operate(kAttached, -1, IPC_NOWAIT);
  // The last one removes the set, but only while it holds the lock itself: a process that attaches
  // meanwhile must not hold a lock that is about to be removed.
  sembuf take_over[] = {
      {kAttached, 0, IPC_NOWAIT}, {kAttached, 1, IPC_NOWAIT}, {kFree, -1, IPC_NOWAIT | SEM_UNDO}};
  if (semop(set_, take_over, std::size(take_over)) == 0) semctl(set_, 0, IPC_RMID);
}

bool LogFileLock::Acquire() {
  for (int attempt = 0; attempt < kAttempts && set_ != kNoSet; ++attempt) {
    if (Operate(kFree, -1, SEM_UNDO)) return true;
    if (!WasRemoved() || !Attach()) break;
  }
  set_ = kNoSet;
  return false;
}

void LogFileLock::Release() {
  // A set that was removed meanwhile does not have to be freed; the next Acquire finds the new one.
  if (!Operate(kFree, 1, SEM_UNDO) && !WasRemoved()) set_ = kNoSet;
}

// One step prepares a new set, and only one that nobody has used: it frees the file and counts this
// process at once, or fails. So no process ever sees a set half made, however many start together
// and wherever one is killed.
bool LogFileLock::Attach() {
  const key_t key = ftok(path_.c_str(), kProjectId);
  set_ = kNoSet;
  counted_ = false;
  for (int attempt = 0; attempt < kAttempts && key != -1; ++attempt) {
    set_ = semget(key, 2, IPC_CREAT | 0666);
    if (set_ == kNoSet) return false;
    sembuf prepare[] = {{kAttached, 0, IPC_NOWAIT},
                        {kFree, 0, IPC_NOWAIT},
                        {kFree, 1, IPC_NOWAIT},
                        {kAttached, 1, IPC_NOWAIT}};
    counted_ = semop(set_, prepare, std::size(prepare)) == 0 || Operate(kAttached, 1, IPC_NOWAIT);
    // The count runs full after 32,767 processes that ended without detaching: the lock works all
    // the same.
    if (counted_ || errno == ERANGE) return true;
    set_ = kNoSet;
    if (!WasRemoved()) break;
  }
  return false;
}

bool LogFileLock::Operate(unsigned short semaphore, short change, short flags) {
  sembuf operation{semaphore, change, flags};
  int result = -1;
  do {
    result = semop(set_, &operation, 1);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace welko
