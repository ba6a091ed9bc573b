// Takes a lock and gives it back when the memory is used up but for some small blocks.
//
//   used_up FILE ROOM SIZE...
//
// ROOM is how many bytes more the process may map, and each SIZE a block that is free. The exit
// status is 0 when the lock was had, 1 when not, and 2 when there was no memory to try.
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "esd/prefs/resource_locker.h"

namespace {

// What the process has mapped, in bytes.
rlim_t Mapped() {
  long pages = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld", &pages) != 1) std::abort();
  std::fclose(file);
  return static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Takes all blocks that there are. They stay known to one another, so that none counts as unused.
void UseUp() {
  static void* chain = nullptr;
  for (std::size_t size = 65536; size >= 16; size = size > 256 ? size / 2 : size - 8) {
    while (void** const block = static_cast<void**>(std::malloc(size))) {
      *block = chain;
      chain = block;
    }
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 3;
  esd::ResourceLocker locker(arguments[1], 0);
  std::vector<void*> blocks;
  for (int number = 3; number < count; ++number) {
    blocks.push_back(std::malloc(static_cast<std::size_t>(std::atol(arguments[number]))));
  }
  const rlim_t limit = Mapped() + static_cast<rlim_t>(std::atol(arguments[2]));
  const rlimit both = {limit, limit};
  setrlimit(RLIMIT_AS, &both);
  UseUp();
  for (void* const block : blocks) std::free(block);
  try {
    if (!locker.Lock()) return 1;
    return locker.Unlock(false) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    return 2;
  }
}
