#include "welko/log_target_base.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "platform/console_user.h"
#include "platform/file_type.h"
#include "welko/library_logs.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"
#include "welko/path.h"

namespace welko {
namespace {

// A link in the folder's place stays as it is, and so does what it points to.
void ShareWithConsoleUser(const std::string& folder, const platform::ConsoleUser& user) {
  if (platform::TypeOfLink(folder) != platform::FileType::kFolder) return;
  [[maybe_unused]] const int ignored = chown(folder.c_str(), user.uid, user.gid);
  chmod(folder.c_str(), 0777);
}

std::optional<std::string> FindSuiteLogsFolder() {
  const std::optional<std::string> logs = GetConsoleUserLogsFolder();
  if (!logs) return std::nullopt;
  const std::string suite = *logs + "/Lumora";
  const std::string desk = suite + "/Lumdesk";
  if (platform::TypeOf(desk) == platform::FileType::kFolder) return desk;
  mkdir(suite.c_str(), 0777);
  mkdir(desk.c_str(), 0777);
  if (const std::optional<platform::ConsoleUser> user = platform::FindConsoleUser()) {
    ShareWithConsoleUser(suite, *user);
    ShareWithConsoleUser(desk, *user);
  }
  return desk;
}

}  // namespace

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
