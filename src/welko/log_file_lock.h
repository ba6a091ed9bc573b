// The lock that the processes which write one log file share: a System V semaphore set.
//
// Semaphore 0 counts the attached processes, semaphore 1 is 1 while the file is free. The system
// gives the lock back when its holder dies.
#ifndef WELKO_LOG_FILE_LOCK_H_
#define WELKO_LOG_FILE_LOCK_H_

#include <sys/ipc.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace welko {

/// One thread uses an object.
class LogFileLock {
 public:
  /// Holds the lock from construction to destruction, if it could be taken.
  class Hold {
   public:
    /// Waits for `lock`, which must outlive this object; without one (null) nothing is held.
    explicit Hold(LogFileLock* lock) : lock_(lock != nullptr && lock->Acquire() ? lock : nullptr) {}
    ~Hold() {
      if (lock_ != nullptr) lock_->Release();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// Whether the lock is held.
    explicit operator bool() const { return lock_ != nullptr; }

   private:
    LogFileLock* const lock_;
  };

  /// Attaches to the set of the existing file `path`, which is made when there is none. A set that
  /// another process made and did not prepare is waited for, 10 milliseconds at most. A failure
  /// leaves a lock that cannot be taken, and the set as it was.
  explicit LogFileLock(const std::string& path);
  /// Detaches; the last process to do so removes the set if it may. Without it the set stays in the
  /// system.
  ~LogFileLock();
  LogFileLock(const LogFileLock&) = delete;
  LogFileLock& operator=(const LogFileLock&) = delete;

  /// The key of the set of the existing file `path`, as ipcs(1) shows it; -1 when there is no file.
  static key_t KeyOf(const std::string& path);

  /// A set as it is at this moment.
  struct Look {
    int attached = 0;      ///< how many processes it counts
    bool is_free = false;  ///< whether nobody holds the lock
    pid_t last = 0;        ///< the process that took or gave back the lock last; 0 for none
  };
  /// The set of the file `path`, which stays as it is. Nothing, with errno telling why, where there
  /// is none (ENOENT) or this process may not use it (EACCES).
  static std::optional<Look> LookAt(const std::string& path);

  /// Takes the lock, waiting while another process holds it. False when the set cannot be used.
  bool Acquire();
  /// Gives the lock back.
  void Release();

 private:
  bool Attach();
  bool Prepare();
  bool Insist();
  bool Count();
  bool Operate(unsigned short semaphore, short change, short flags);

  const std::string path_;
  int set_;       ///< the set's id, or -1 when it cannot be used
  bool counted_;  ///< whether semaphore 0 counts this process
};

}  // namespace welko

#endif  // WELKO_LOG_FILE_LOCK_H_
