#include "welko/library_logs.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/console_user.h"
#include "platform/file_type.h"
#include "platform/folder_making.h"
#include "platform/folders.h"
#include "welko/effective_user.h"
#include "welko/folder_path.h"

namespace welko {
namespace {

bool MakePrivateFolder(const std::string& path) {
  if (!platform::MakesFolders()) {
    return platform::IsFound(platform::TypeOfLink(path)) || platform::CouldMakeFolder(path);
  }
  return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

std::optional<std::string> FindConsoleUserHome() {
  const std::optional<platform::ConsoleUser> console = platform::FindConsoleUser();
  std::optional<EffectiveUser> user;
  if (console && console->uid != geteuid()) {
    user.emplace(console->uid);
    if (!user->switched()) return std::nullopt;
  }
  std::string home;
  if (!FindSystemFolder(platform::FolderDomain::kUser, platform::kRootFolderType, home)) {
    return std::nullopt;
  }
  return home;
}

}  // namespace

std::optional<std::string> MakeLibraryLogs(const std::string& home) {
  const std::string library = home + "/Library";
  const std::string logs = library + "/Logs";
  if (home.empty() || !MakePrivateFolder(library) || !MakePrivateFolder(logs)) return std::nullopt;
  return logs;
}

std::optional<std::string> GetConsoleUserLogsFolder() {
  const std::optional<std::string> home = FindConsoleUserHome();
  return home ? MakeLibraryLogs(*home) : std::nullopt;
}

}  // namespace welko
