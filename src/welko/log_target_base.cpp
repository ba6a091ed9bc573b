#include "welko/log_target_base.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "platform/console_user.h"
#include "platform/file_descriptor.h"
#include "platform/file_type.h"
#include "welko/library_logs.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"
#include "welko/path.h"

namespace welko {
namespace {

using platform::FileDescriptor;

FileDescriptor OpenFolder(int parent, const char* path, int link_flag) {
  return FileDescriptor(openat(parent, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | link_flag));
}

// A link in the folder's place stays as it is, and so does what it points to.
void ShareWithConsoleUser(int parent, const char* path, const platform::ConsoleUser& user) {
  const FileDescriptor folder = OpenFolder(parent, path, O_NOFOLLOW);
  if (!folder) return;
  [[maybe_unused]] const int ignored = fchown(folder.number(), user.uid, user.gid);
  fchmod(folder.number(), 0777);
}

std::optional<std::string> FindSuiteLogsFolder() {
  const std::optional<std::string> logs = GetConsoleUserLogsFolder();
  if (!logs) return std::nullopt;
  const std::string suite_path = *logs + "/Lumora";
  const std::string desk_path = suite_path + "/Lumdesk";
  if (platform::TypeOf(desk_path) == platform::FileType::kFolder) return desk_path;
  mkdir(suite_path.c_str(), 0777);
  // A user's own link is followed; others may have laid one for root.
  const int link_flag = geteuid() == 0 ? O_NOFOLLOW : 0;
  const FileDescriptor suite = OpenFolder(AT_FDCWD, suite_path.c_str(), link_flag);
  if (!suite) return desk_path;
  mkdirat(suite.number(), "Lumdesk", 0777);
  if (const std::optional<platform::ConsoleUser> user = platform::FindConsoleUser()) {
    ShareWithConsoleUser(AT_FDCWD, suite_path.c_str(), *user);
    ShareWithConsoleUser(suite.number(), "Lumdesk", *user);
  }
  return desk_path;
}

}  // namespace

std::optional<std::string> DefaultLogPath(const std::string& name) {
  std::optional<std::string> path = GetConsoleUserLogsFolder();
  if (path) AppendPathComponent(*path, name);
  return path;
}

LogTargetBase::LogTargetBase() { SetLogLevel(kLogInfo); }

LogTargetBase::~LogTargetBase() = default;

void LogTargetBase::SetLogLevel(int level) { level_ = ApplyLogSwitches(file_name_, level); }

bool LogTargetBase::SetLogFile(const char* fileName, const char* folder) {
  std::string name = fileName != nullptr ? fileName : "";
  const bool has_folder = folder != nullptr && *folder != '\0';
  enabled_ = false;
  std::optional<std::string> path =
      has_folder ? std::optional<std::string>(folder) : FindSuiteLogsFolder();
  if (!path || LastPathComponent(name) != name) return false;
  AppendPathComponent(*path, name.empty() ? file_name_ : name);
  file_path_ = *path;
  file_name_ = LastPathComponent(*path);

  std::fstream test;
  enabled_ = OpenStream(opened_ ? stream_ : test);
  return enabled_;
}

void LogTargetBase::AddRef() {
  const std::lock_guard<std::mutex> guard(use_count_mutex_);
  ++use_count_;
}

}  // namespace welko
