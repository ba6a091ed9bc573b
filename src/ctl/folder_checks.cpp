#include "ctl/folder_checks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ctl/remedy.h"
#include "ctl/user_name.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/path.h"
#include "platform/file_type.h"
#include "platform/folders.h"

namespace ctl {
namespace {

using platform::FileType;

// The user that `path` belongs to, where that is another one; else nothing.
std::optional<uid_t> FindOtherOwner(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || status.st_uid == geteuid()) return std::nullopt;
  return status.st_uid;
}

std::string BelongsTo(const std::string& path, uid_t owner) {
  return path + " belongs to " + UserName(owner) + ", not to " + UserName(geteuid()) + ".";
}

Check LookAtHome(const std::string& home) {
  if (home.empty()) return {Grade::kBad, Id::kHomeUnknown, "No home folder is known."};
  const FileType type = platform::TypeOf(home);
  if (!platform::IsFound(type)) {
    return {Grade::kBad, Id::kHomeMissing, "The home folder " + home + " is missing."};
  }
  if (type != FileType::kFolder) {
    return {Grade::kBad, Id::kHomeNotAFolder, "The home folder " + home + " is no folder."};
  }
  if (const std::optional<uid_t> owner = FindOtherOwner(home)) {
    return {Grade::kNote, Id::kHomeNotOwned, "The home folder " + BelongsTo(home, *owner)};
  }
  return {Grade::kOk, Id::kHomeOk, "The home folder is " + home + "."};
}

// What makes the folder of the preferences one that can be made below `home`: on the way to it
// something is no folder, or one that this user may not use. Nothing where a look tells neither.
std::optional<std::string> ClearTheWay(const std::string& home) {
  std::string folder = home;
  for (const char* name : {"Library", "Application Support", "Vantre", "OrlanUpdater", "1.0"}) {
    const std::string next = esd::JoinPath(folder, name);
    const FileType type = platform::TypeOf(next);
    if (platform::IsFound(type) && type != FileType::kFolder) return SetAside(next);
    if (type != FileType::kFolder) break;
    folder = next;
  }
  return GiveToUser(folder, "rwx");
}

Check LookAtPrefsFolder(const std::string& home) {
  std::string folder;
  if (!esd::GetUpdaterPrefsFolder(folder)) {
    return {Grade::kBad, Id::kFolderNone,
            "Neither below " + home +
                " nor in the temporary folder can the folder of the "
                "preferences be made.",
            ClearTheWay(home)};
  }
  if (!folder.starts_with(home + "/")) {
    return {Grade::kBad, Id::kFolderTemporary,
            "Below " + home + " the folder of the preferences cannot be made. They are in " +
                folder + ", until that is cleared.",
            ClearTheWay(home)};
  }
  const FileType type = platform::TypeOf(folder);
  if (platform::IsFound(type) && type != FileType::kFolder) {
    return {Grade::kBad, Id::kFolderUnwritable, folder + " is no folder.", SetAside(folder)};
  }
  if (!platform::IsFound(type)) {
    return {Grade::kOk, Id::kFolderOk, folder + " is missing, and the next run makes it."};
  }
  if (faccessat(AT_FDCWD, folder.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
    const std::string why = std::strerror(errno);
    return {Grade::kBad, Id::kFolderUnwritable, folder + " cannot be written: " + why + ".",
            GiveToUser(folder, "rwx")};
  }
  if (const std::optional<uid_t> owner = FindOtherOwner(folder)) {
    return {Grade::kNote, Id::kFolderNotOwned, BelongsTo(folder, *owner),
            GiveToUser(folder, "rwx")};
  }
  return {Grade::kOk, Id::kFolderOk, folder + " can be written."};
}

}  // namespace

void CheckFolders(Checks& checks) {
  const std::string home = platform::HomeFolder();
  checks.push_back(LookAtHome(home));
  checks.push_back(LookAtPrefsFolder(home));
}

}  // namespace ctl
