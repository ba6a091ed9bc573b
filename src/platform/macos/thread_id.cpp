#include "platform/thread_id.h"

#include <pthread.h>

namespace platform {

// pthread_threadid_np(3): the number that the thread_selfid system call gives.
std::uint64_t CurrentThreadId() {
  std::uint64_t id = 0;
  pthread_threadid_np(nullptr, &id);
  return id;
}

}  // namespace platform
