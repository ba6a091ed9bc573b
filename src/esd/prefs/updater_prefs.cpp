#include "esd/prefs/updater_prefs.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <stdexcept>

#include "esd/log/updater_log.h"
#include "esd/prefs/launch_agent.h"
#include "esd/prefs/load_store.h"
#include "esd/util/delete_path.h"
#include "esd/util/file_stream.h"
#include "esd/util/path.h"

namespace esd {
namespace {

constexpr std::size_t kStampLimit = 4096;
constexpr char kBlanks[] = " \t\n\v\f\r";

std::string PrefsFolderOrEmpty() {
  std::string folder;
  GetUpdaterPrefsFolder(folder);
  return folder;
}

std::string PrefsFilePath(bool variant) {
  const auto path = GetUpdaterPrefsFile(variant ? kVariantPrefsFileName : kPrefsFileName);
  if (!path) throw std::runtime_error("Unable to create file!");
  return *path;
}

// The first word of the file `path`; nothing when there is no such file, or no word that ends
// within kStampLimit bytes: half a word would be no stamp, and must not cost the preferences.
std::optional<std::string> ReadFirstWord(const std::string& path) {
  ESDifstream file(path, "rb");
  std::istream& stream = *file.stream();
  if (!file.stream()->is_open() || !stream.seekg(0)) return std::nullopt;
  std::string start(kStampLimit + 1, '\0');
  stream.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(stream.gcount()));
  const std::size_t begin = start.find_first_not_of(kBlanks);
  const std::size_t end = std::min(start.find_first_of(kBlanks, begin), start.size());
  if (begin == std::string::npos || end > kStampLimit) return std::nullopt;
  return start.substr(begin, end - begin);
}

}  // namespace

VantreUpdaterPrefs& VantreUpdaterPrefs::GetInstance(bool variant) {
  static VantreUpdaterPrefs instance(variant);
  return instance;
}

VantreUpdaterPrefs::VantreUpdaterPrefs(bool variant)
    : PrefsWriter("", "Preferences"), defaults_folder_(PrefsFolderOrEmpty()) {
#define VANTRE_SET_STORE(Type, key, ...) key##_.SetStore(this);
  VANTRE_UPDATER_PREFS(VANTRE_SET_STORE)
#undef VANTRE_SET_STORE
  LoadFile(variant);
  ReconcileUninstallStamp(variant);
  ReconcileScheduledTask();
}

VantreUpdaterPrefs::~VantreUpdaterPrefs() = default;

void VantreUpdaterPrefs::LoadFile(bool variant) {
  LoadStore(*this, PrefsFilePath(variant), ReloadAfter::kAnyException, locker_);
}

// Preferences that were written before an uninstallation do not count for what was installed since.
void VantreUpdaterPrefs::ReconcileUninstallStamp(bool variant) {
  const std::optional<std::string> stamp_path = GetUninstallStampPath();
  if (!stamp_path) {
    UpdaterLog(kMessageLevel, "Could not get Updater Inventory path on machine ");
    return;
  }
  const std::optional<std::string> stamp = ReadFirstWord(*stamp_path);
  std::string known_stamp;
  if (!stamp || !uninstallts_.Get(known_stamp) || *stamp == known_stamp) return;
  DeleteFile(PrefsFilePath(variant));
  LoadFile(variant);
  uninstallts_.Set(*stamp);
}

// A task that is missing and not needed must not look like one that will check.
void VantreUpdaterPrefs::ReconcileScheduledTask() {
  std::uint32_t error_code = 0;
  if (IsScheduledTaskPresent(error_code, L"VantreOrlanUpdater-1.0")) return;
  bool needed = true;
  bool added = false;
  if (!IsScheduledTaskNeeded_.Get(needed) || !IsScheduledTaskAdded_.Get(added)) return;
  if (!added || needed) return;
  IsScheduledTaskAdded_.Set(false);
  UpdaterPrefSchedCheckFreq_.Set(kCheckNever);
}

std::string VantreUpdaterPrefs::InFolder(const char* name) const {
  return defaults_folder_.empty() ? "" : JoinPath(defaults_folder_, name);
}

std::string VantreUpdaterPrefs::FolderAbove() const { return GetParentFolder(defaults_folder_); }

std::string VantreUpdaterPrefs::UserCacheFolder() { return GetUserCacheFolder().value_or(""); }

}  // namespace esd
