#include "welko/log_file_lock.h"

#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

namespace welko {
namespace {

constexpr int kProjectId = 11;
constexpr int kNoSet = -1;
constexpr int kAttempts = 100;  // against others that remove the set meanwhile
constexpr unsigned short kAttached = 0;
constexpr unsigned short kFree = 1;
constexpr int kMostCounted = 32767;  // SEMVMX, to which Linux holds and macOS does not

// Whether the last operation failed because the set is gone: semop(2) gives the one error to a
// waiting caller, the other to one that comes later.
bool WasRemoved() { return errno == EIDRM || errno == EINVAL; }

// A program that makes a set in one call and gives it its value in the next one must not find the
// value given already. It is taken for dead when it needs longer than this.
void WaitForMaker(int set) {
  constexpr int kMilliseconds = 10;
  for (int turn = 0; turn < kMilliseconds; ++turn) {
    if (semctl(set, kAttached, GETVAL) != 0 || semctl(set, kFree, GETVAL) != 0) return;
    usleep(1000);
  }
}

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
  if (semop(set_, take_over, std::size(take_over)) != 0) return;
  if (semctl(set_, 0, IPC_RMID) == 0) return;
  // Another user's set cannot be removed: it stays, for others to take.
  Operate(kFree, 1, SEM_UNDO);
  Operate(kAttached, -1, IPC_NOWAIT);
}

key_t LogFileLock::KeyOf(const std::string& path) { return ftok(path.c_str(), kProjectId); }

std::optional<LogFileLock::Look> LogFileLock::LookAt(const std::string& path) {
  const key_t key = KeyOf(path);
  // With the rights that using it takes.
  const int set = key == -1 ? kNoSet : semget(key, 2, 0666);
  if (set == kNoSet) return std::nullopt;
  const int attached = semctl(set, kAttached, GETVAL);
  const int is_free = semctl(set, kFree, GETVAL);
  const int last = semctl(set, kFree, GETPID);
  if (attached == -1 || is_free == -1 || last == -1) return std::nullopt;
  return Look{attached, is_free != 0, last};
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

bool LogFileLock::Attach() {
  const key_t key = KeyOf(path_);
  counted_ = false;
  for (int attempt = 0; attempt < kAttempts && key != -1; ++attempt) {
    set_ = semget(key, 2, IPC_CREAT | IPC_EXCL | 0666);
    const bool is_own = set_ != kNoSet;
    if (!is_own && errno == EEXIST) set_ = semget(key, 2, 0666);
    if (set_ == kNoSet && errno == ENOENT) continue;  // removed between the two calls
    if (set_ == kNoSet) return false;
    if (!is_own) WaitForMaker(set_);
    if (Prepare() || (errno == EAGAIN && ((is_own && Insist()) || Count()))) return true;
    if (!WasRemoved()) break;
  }
  set_ = kNoSet;
  return false;
}

// One step prepares a new set, and only one that nobody has used: it frees the file and counts this
// process at once, or fails, with EAGAIN where others are attached. So no process of ours ever sees
// a set half made, however many start together and wherever one is killed.
bool LogFileLock::Prepare() {
  sembuf prepare[] = {{kAttached, 0, IPC_NOWAIT},
                      {kFree, 0, IPC_NOWAIT},
                      {kFree, 1, IPC_NOWAIT},
                      {kAttached, 1, IPC_NOWAIT}};
  counted_ = semop(set_, prepare, std::size(prepare)) == 0;
  return counted_;
}

// A program that found this process's new set before it was prepared has counted itself, and waits
// for a lock that nobody has ever freed. Only the maker may free it then: two others could do so in
// turn.
bool LogFileLock::Insist() {
  if (semctl(set_, kFree, GETPID) != 0) return false;
  sembuf prepare[] = {{kFree, 0, IPC_NOWAIT}, {kFree, 1, IPC_NOWAIT}, {kAttached, 1, IPC_NOWAIT}};
  counted_ = semop(set_, prepare, std::size(prepare)) == 0;
  return counted_;
}

// The count runs full after 32,767 processes that ended without detaching. Whoever comes then uses
// the lock uncounted. Linux says so by ERANGE, which is left for those who looked when there was
// room for one. The semop(2) of macOS goes on, and from 65,535 to 0: that would make a set in use
// look like a new one, and only processes that do not look first could come so far.
bool LogFileLock::Count() {
  const bool is_full = semctl(set_, kAttached, GETVAL) >= kMostCounted;
  counted_ = !is_full && Operate(kAttached, 1, IPC_NOWAIT);
  return counted_ || is_full || errno == ERANGE;
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
