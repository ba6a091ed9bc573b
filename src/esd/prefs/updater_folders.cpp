#include "esd/prefs/updater_folders.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "esd/util/file_info.h"
#include "esd/util/folder_tree.h"
#include "esd/util/path.h"
#include "esd/util/special_folder.h"
#include "platform/folder_making.h"

namespace esd {
namespace {

constexpr mode_t kSharedMode = 0775;

std::string g_prefs_folder_override;

// Makes `path` when it is missing, with the permission bits of `above`.
bool EnsureFolder(const std::string& path, const std::string& above, bool shared) {
  std::uint16_t bits = 0774;
  GetPermissionMode(above, bits);
  if (ObjectExistsAtPath(path)) return true;
  if (!platform::MakesFolders()) return platform::CouldMakeFolder(path);
  // What keeps the folder from being made counts as one that was there before: a link to nothing.
  return CreateFolderTree(path, shared ? kSharedMode : mode_t{bits}) && ObjectExistsAtPath(path);
}

// Whether a folder, and no link to one, stands at `path` which nobody but this process's user can
// write to.
bool IsOwnFolder(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// The updater's folder below the machine's temporary one, made when it is missing. Everybody can
// make folders there, and whoever made this one would tell the run which files to write to.
std::optional<std::string> FindOwnTemporaryFolder() {
  std::string path;
  if (!GetSpecialFolder(kLocalTemporary, path, true)) return std::nullopt;
  for (const char* name : {"Vantre", "OrlanUpdater", "1.0"}) {
    path = JoinPath(path, name);
    if (platform::MakesFolders()) {
      MakePrivateFolder(path);
    } else if (!ObjectExistsAtPath(path) && platform::CouldMakeFolder(path)) {
      continue;
    }
    if (!IsOwnFolder(path)) return std::nullopt;
  }
  return path;
}

std::string JoinParts(std::string path, std::initializer_list<const char*> parts) {
  for (const char* part : parts) path = JoinPath(path, part);
  return path;
}

std::optional<std::string> InInventory(const char* name) {
  std::string folder;
  if (!GetInventoryFolder(folder)) return std::nullopt;
  return JoinPath(folder, name);
}

}  // namespace

bool EnsureUpdaterFolder(std::string& path, bool shared) {
  const std::string maker = JoinPath(path, "Vantre");
  const std::string updater = JoinParts(maker, {"OrlanUpdater", "1.0"});
  if (!EnsureFolder(maker, path, shared) || !EnsureFolder(updater, maker, shared)) return false;
  path = updater;
  return true;
}

bool GetUpdaterFolder(unsigned kind, std::string& out, bool shared) {
  std::string path;
  if (!GetSpecialFolder(kind, path, true) || !EnsureUpdaterFolder(path, shared)) return false;
  out = path;
  return true;
}

bool GetUpdaterPrefsFolder(std::string& out) {
  if (!g_prefs_folder_override.empty()) {
    out = g_prefs_folder_override;
    return true;
  }
  if (GetUpdaterFolder(kUserApplicationSupport, out, false)) return true;
  std::optional<std::string> folder = FindOwnTemporaryFolder();
  if (!folder) return false;
  out = *std::move(folder);
  return true;
}

void SetUpdaterPrefsFolderOverride(const std::string& path) { g_prefs_folder_override = path; }

std::optional<std::string> GetUpdaterPrefsFile(const char* name) {
  std::string folder;
  if (!GetUpdaterPrefsFolder(folder)) return std::nullopt;
  return JoinPath(folder, name);
}

std::optional<std::string> GetUserCacheFolder() {
  std::string folder;
  if (!GetSpecialFolder(kUserApplicationSupport, folder, true) &&
      !GetSpecialFolder(kLocalTemporary, folder, true)) {
    return std::nullopt;
  }
  return JoinPath(folder, "Vantre");
}

bool GetInventoryFolder(std::string& out) {
  std::string folder;
  if (!GetSpecialFolder(kLocalApplicationSupport, folder, false)) return false;
  out = JoinParts(folder, {"Vantre", "OrlanUpdaterInventory", "1.0"});
  return true;
}

std::optional<std::string> GetUninstallStampPath() { return InInventory("uninstallts"); }

std::optional<std::string> GetAdminPrefsFile() {
  return InInventory("VantreUpdaterAdminPrefs.dat");
}

bool GetNotifierExecutablePath(std::string& out) {
  out.clear();
  if (!GetSpecialFolder(kLocalApplicationSupport, out, false)) return false;
  out = JoinParts(out, {"Vantre", "Welko", "Tarnik", "Brevo",
                        "Orlan Updates Notifier.app/Contents/MacOS/Orlan Updates Notifier"});
  return true;
}

}  // namespace esd
