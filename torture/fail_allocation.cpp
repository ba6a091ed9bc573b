// Lets allocations fail, in the program that it is preloaded into.
//
//   TORTURE_FAIL_AT    the number of the allocation that fails, counted from 1 at the entry of
//   main;
//                      0 for none
//   TORTURE_FAIL_LATER "1" when all later ones fail as well
//   TORTURE_REPORT     a file that gets the number of allocations when the program ends
//
// Those inside sem_open get blocks that the program keeps for them, and do not count; used_up tries
// what comes of that.
#include <dlfcn.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// The names are glibc's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using Main = int (*)(int, char**, char**);
using StartMain = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
using SemOpen = sem_t* (*)(const char*, int, ...);

std::atomic<bool> g_counts = false;
std::atomic<long> g_allocations = 0;
long g_fail_at = 0;
bool g_fail_later = false;
int g_report = -1;
thread_local bool t_in_sem_open = false;
Main g_main = nullptr;

bool Fails() {
  if (!g_counts || t_in_sem_open) return false;
  const long number = ++g_allocations;
  const bool fails = number == g_fail_at || (g_fail_later && number > g_fail_at);
  if (!fails) return false;
  errno = ENOMEM;
  return true;
}

long Setting(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? std::atol(value) : 0;
}

int CountedMain(int count, char** arguments, char** environment) {
  g_fail_at = Setting("TORTURE_FAIL_AT");
  g_fail_later = Setting("TORTURE_FAIL_LATER") != 0;
  const char* const report = std::getenv("TORTURE_REPORT");
  if (report != nullptr) g_report = open(report, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  g_counts = true;
  return g_main(count, arguments, environment);
}

[[gnu::destructor]] void TellCount() {
  g_counts = false;
  char line[32];
  std::snprintf(line, sizeof line, "%ld\n", g_allocations.load());
  if (write(g_report, line, std::strlen(line)) < 0) return;
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(bugprone-reserved-identifier)
int __libc_start_main(Main main, int count, char** arguments, void (*start)(), void (*end)(),
                      void (*loader_end)(), void* stack_end) {
  g_main = main;
  const auto next = reinterpret_cast<StartMain>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return next(CountedMain, count, arguments, start, end, loader_end, stack_end);
}

sem_t* sem_open(const char* name, int flags, ...) {
  static const auto next = reinterpret_cast<SemOpen>(dlsym(RTLD_NEXT, "sem_open"));
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  const unsigned value = va_arg(rest, unsigned);
  va_end(rest);
  t_in_sem_open = true;
  sem_t* const semaphore = next(name, flags, mode, value);
  t_in_sem_open = false;
  return semaphore;
}

void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}

void* memalign(std::size_t alignment, std::size_t size) { return aligned_alloc(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const found = aligned_alloc(alignment, size);
  if (found == nullptr) return ENOMEM;
  *block = found;
  return 0;
}

}  // extern "C"
