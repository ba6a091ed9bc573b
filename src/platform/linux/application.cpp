#include "platform/application.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace platform {
namespace {

// Runs in the process between the caller and the application. posix_spawn(3) reports a failed exec.
bool SpawnDetached(const char* path) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&files);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
  sigset_t no_signals;
  sigemptyset(&no_signals);
  posix_spawnattr_setsigmask(&attributes, &no_signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  char* const arguments[] = {const_cast<char*>(path), nullptr};
  const bool started = posix_spawn(nullptr, path, &files, &attributes, arguments, environ) == 0;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return started;
}

}  // namespace

bool LaunchApplication(const std::string& path) {
  if (access(path.c_str(), F_OK) != 0) return false;
  // The process in between ends at once, so that the application belongs to the init process and
  // nobody has to wait for it.
  const pid_t between = fork();
  if (between < 0) return false;
  if (between == 0) _exit(SpawnDetached(path.c_str()) ? 0 : 1);
  int status = 0;
  while (waitpid(between, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace platform
