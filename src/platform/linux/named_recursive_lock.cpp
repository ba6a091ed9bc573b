#include "platform/named_recursive_lock.h"

#include <mutex>

namespace platform {

struct NamedRecursiveLock::Native {
  std::string name;
  std::recursive_mutex mutex;
};

NamedRecursiveLock::NamedRecursiveLock(const std::string& name) : native_(new Native{name, {}}) {}
NamedRecursiveLock::~NamedRecursiveLock() = default;
void NamedRecursiveLock::lock() { native_->mutex.lock(); }
void NamedRecursiveLock::unlock() { native_->mutex.unlock(); }

}  // namespace platform
