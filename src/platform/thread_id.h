// The calling thread's number in the whole system.
#ifndef PLATFORM_THREAD_ID_H_
#define PLATFORM_THREAD_ID_H_

#include <cstdint>

namespace platform {

/// The system-wide id of the calling thread, as the system's own tools show it.
std::uint64_t CurrentThreadId();

}  // namespace platform

#endif  // PLATFORM_THREAD_ID_H_
