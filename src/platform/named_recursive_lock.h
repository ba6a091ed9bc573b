// A recursive lock between the threads of one process that carries a name for debuggers.
#ifndef PLATFORM_NAMED_RECURSIVE_LOCK_H_
#define PLATFORM_NAMED_RECURSIVE_LOCK_H_

#include <memory>
#include <string>

namespace platform {

/// Meets the standard library's BasicLockable. The thread that holds it may lock it again and must
/// unlock it as often.
class NamedRecursiveLock {
 public:
  /// A free lock called `name`. Debuggers show the name on macOS; it identifies nothing.
  explicit NamedRecursiveLock(const std::string& name);
  ~NamedRecursiveLock();
  NamedRecursiveLock(const NamedRecursiveLock&) = delete;
  NamedRecursiveLock& operator=(const NamedRecursiveLock&) = delete;

  /// Waits while another thread holds the lock.
  void lock();
  /// Undoes one lock() of the calling thread, which must hold the lock.
  void unlock();

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace platform

#endif  // PLATFORM_NAMED_RECURSIVE_LOCK_H_
