#include "platform/thread_id.h"

#include <unistd.h>

namespace platform {

std::uint64_t CurrentThreadId() { return static_cast<std::uint64_t>(gettid()); }

}  // namespace platform
