// A lock between the threads of this process: recursive when it has a name, plain without one.
#ifndef LAUNCHER_PLATFORM_MUTEX_H_
#define LAUNCHER_PLATFORM_MUTEX_H_

#include <memory>
#include <mutex>
#include <string>

#include "platform/named_recursive_lock.h"

namespace wakerly {

/// Meets the standard library's BasicLockable.
class PlatformMutex {
 public:
  /// A free lock. One with an empty `name` must not be locked again by the thread that holds it.
  explicit PlatformMutex(const std::string& name)
      : named_(name.empty() ? nullptr : std::make_unique<platform::NamedRecursiveLock>(name)) {}

  /// Waits while another thread holds the lock.
  void lock() { named_ ? named_->lock() : plain_.lock(); }
  /// Undoes one lock() of the calling thread, which must hold the lock.
  void unlock() { named_ ? named_->unlock() : plain_.unlock(); }

 private:
  const std::unique_ptr<platform::NamedRecursiveLock> named_;
  std::mutex plain_;
};

}  // namespace wakerly

#endif  // LAUNCHER_PLATFORM_MUTEX_H_
