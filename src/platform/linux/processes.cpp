#include "platform/processes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/file_descriptor.h"

namespace platform {
namespace {

constexpr std::size_t kLongestEntry = 4096;

// The name by which the kernel knows the program: its first 15 bytes (proc(5)).
std::string CommandName(const std::string& folder) {
  std::string name = ReadRegularFile(folder + "/comm", kLongestEntry).value_or("");
  if (name.ends_with('\n')) name.pop_back();
  return name;
}

std::string Executable(const std::string& folder) {
  constexpr std::string_view kRemoved = " (deleted)";
  std::error_code error;
  std::string path = std::filesystem::read_symlink(folder + "/exe", error).string();
  // One that has ended, and waits for its parent to look, has none any more.
  if (error) return error == std::errc::permission_denied ? CommandName(folder) : "";
  if (path.ends_with(kRemoved)) path.resize(path.size() - kRemoved.size());
  return path;
}

std::optional<std::int64_t> ReadId(const std::string& name) {
  std::int64_t id = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
  const bool is_number = error == std::errc() && end == name.data() + name.size();
  return is_number ? std::optional(id) : std::nullopt;
}

}  // namespace

std::vector<Process> FindProcesses(const std::string& name) {
  std::vector<Process> processes;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
    const std::optional<std::int64_t> id = ReadId(entry.path().filename().string());
    struct stat status {};
    if (!id || *id == getpid() || stat(entry.path().c_str(), &status) != 0) continue;
    std::string executable = Executable(entry.path().string());
    if (executable.substr(executable.rfind('/') + 1) != name) continue;
    processes.push_back({*id, status.st_uid, std::move(executable)});
  }
  return processes;
}

}  // namespace platform
