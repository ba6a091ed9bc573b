#include "welko/library_logs.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/console_user.h"
#include "platform/folders.h"
#include "welko/effective_user.h"
#include "welko/folder_path.h"

namespace welko {
namespace {

bool MakePrivateFolder(const std::string& path) {
  return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

bool FindConsoleUserHome(std::string& out) {
  const std::optional<platform::ConsoleUser> console = platform::FindConsoleUser();
  std::optional<EffectiveUser> user;
  if (console && console->uid != geteuid()) {
    user.emplace(console->uid);
    if (!user->switched()) return false;
  }
  return FindSystemFolder(platform::FolderDomain::kUser, platform::kRootFolderType, out);
}

}  // namespace

bool MakeLibraryLogs(const std::string& home, std::string& out) {
  const std::string library = home + "/Library";
  const std::string logs = library + "/Logs";
  if (home.empty() || !MakePrivateFolder(library) || !MakePrivateFolder(logs)) return false;
  out = logs;
  return true;
}

bool GetConsoleUserLogsFolder(std::string& out) {
  std::string home;
  return FindConsoleUserHome(home) && MakeLibraryLogs(home, out);
}

}  // namespace welko
