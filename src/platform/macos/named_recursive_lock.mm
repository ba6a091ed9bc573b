#include "platform/named_recursive_lock.h"

#include "platform/macos/text.h"

namespace platform {

struct NamedRecursiveLock::Native {
  NSRecursiveLock* lock;
};

NamedRecursiveLock::NamedRecursiveLock(const std::string& name) {
  @autoreleasepool {
    native_.reset(new Native{[[NSRecursiveLock alloc] init]});
    [native_->lock setName:ToNSString(name)];
  }
}

NamedRecursiveLock::~NamedRecursiveLock() { [native_->lock release]; }
void NamedRecursiveLock::lock() { [native_->lock lock]; }
void NamedRecursiveLock::unlock() { [native_->lock unlock]; }

}  // namespace platform
