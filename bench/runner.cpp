// Times whole programs in turns, so that a machine whose speed drifts affects all of them equally.
//
//   runner ROUNDS -- NAME PROGRAM [ARGUMENT...] [-- NAME PROGRAM [ARGUMENT...]]...
//
// Prints a line for each start: the name, the wall time from start to end in nanoseconds, and the
// peak of resident memory in KiB, with tabs between. Statically linked: a child's peak counts from
// what its parent holds when it is started (the hiwater_rss of execve, getrusage(2)).
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

[[noreturn]] void Fail(const char* program, const char* what) {
  std::fprintf(stderr, "runner: %s %s\n", program, what);
  std::exit(1);
}

long long NowNanoseconds() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

// `command` is a name, a program and its arguments, with a null pointer at the end.
void TimeOneRun(char** command) {
  char** const arguments = command + 1;
  pid_t child = 0;
  int status = 0;
  rusage usage{};
  const long long start = NowNanoseconds();
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments, environ) != 0) {
    Fail(arguments[0], "cannot be started");
  }
  wait4(child, &status, 0, &usage);
  const long long end = NowNanoseconds();
  if (status != 0) Fail(arguments[0], "does not end well");
  // What the program left running must not take time from the next one.
  while (wait(nullptr) > 0) {
  }
  std::printf("%s\t%lld\t%ld\n", command[0], end - start, usage.ru_maxrss);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char**> commands;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--") != 0) continue;
    if (i + 2 >= argc) Fail(argv[0], "got a command without a program");
    argv[i] = nullptr;
    commands.push_back(argv + i + 1);
  }
  if (commands.empty()) Fail(argv[0], "got no command");
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const long rounds = std::strtol(argv[1], nullptr, 10);
  for (long round = 0; round < rounds; ++round) {
    for (char** command : commands) TimeOneRun(command);
  }
}
