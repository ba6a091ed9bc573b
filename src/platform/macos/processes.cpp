#include "platform/processes.h"

#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

#include <array>

namespace platform {
namespace {

std::string Executable(pid_t id, const proc_bsdshortinfo& info) {
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
  return proc_pidpath(id, path.data(), path.size()) > 0 ? path.data() : info.pbsi_comm;
}

std::vector<pid_t> AllProcesses() {
  constexpr std::size_t kMade = 64;  // while they are being listed
  const int count = proc_listallpids(nullptr, 0);
  if (count <= 0) return {};
  std::vector<pid_t> ids(static_cast<std::size_t>(count) + kMade);
  const int listed = proc_listallpids(ids.data(), static_cast<int>(ids.size() * sizeof(pid_t)));
  ids.resize(listed > 0 ? static_cast<std::size_t>(listed) : 0);
  return ids;
}

}  // namespace

std::vector<Process> FindProcesses(const std::string& name) {
  std::vector<Process> processes;
  for (const pid_t id : AllProcesses()) {
    // The longer form tells only of this user's own processes (sys/proc_info.h has both).
    proc_bsdshortinfo info{};
    constexpr int kSize = sizeof info;
    if (id == getpid() || proc_pidinfo(id, PROC_PIDT_SHORTBSDINFO, 0, &info, kSize) != kSize) {
      continue;
    }
    std::string executable = Executable(id, info);
    if (executable.substr(executable.rfind('/') + 1) != name) continue;
    processes.push_back({id, info.pbsi_uid, std::move(executable)});
  }
  return processes;
}

}  // namespace platform
