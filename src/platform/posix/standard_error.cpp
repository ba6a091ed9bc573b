#include "platform/standard_error.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace platform {
namespace {

bool IsPending(int signal) {
  sigset_t pending;
  sigemptyset(&pending);
  return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

void WriteAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void WriteToStandardError(std::string_view text) {
  sigset_t pipe;
  sigset_t former;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  const bool was_pending = IsPending(SIGPIPE);
  if (pthread_sigmask(SIG_BLOCK, &pipe, &former) != 0) return;
  WriteAll(text);
  int taken = 0;
  if (!was_pending && IsPending(SIGPIPE)) sigwait(&pipe, &taken);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

}  // namespace platform
