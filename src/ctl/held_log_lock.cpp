#include "ctl/held_log_lock.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "welko/log_file_lock.h"

namespace ctl {
namespace {

bool Lives(pid_t process) { return process > 0 && (kill(process, 0) == 0 || errno == EPERM); }

}  // namespace

std::optional<HeldLogLock> FindHeldLogLock(const std::string& path) {
  constexpr int kLooks = 100;
  constexpr useconds_t kPause = 10'000;
  std::optional<welko::LogFileLock::Look> look;
  for (int turn = 0; turn < kLooks; ++turn) {
    if (turn != 0) usleep(kPause);
    look = welko::LogFileLock::LookAt(path);
    // A set that nobody has used is made ready by the next run.
    if (!look || look->is_free || look->attached == 0) return std::nullopt;
  }
  return HeldLogLock{look->last, !Lives(look->last)};
}

}  // namespace ctl
