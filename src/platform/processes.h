// The processes that run on this machine.
#ifndef PLATFORM_PROCESSES_H_
#define PLATFORM_PROCESSES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// One process, as the system tells of it.
struct Process {
  std::int64_t id = 0;
  std::uint32_t uid = 0;   ///< of the user it acts as
  std::string executable;  ///< its path; the bare name where the system keeps the path to itself
};

/// The processes whose executable is called `name`, but not this one; empty where the system does
/// not tell.
std::vector<Process> FindProcesses(const std::string& name);

}  // namespace platform

#endif  // PLATFORM_PROCESSES_H_
