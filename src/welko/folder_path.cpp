#include "welko/folder_path.h"

#include <optional>

#include "platform/bundle.h"
#include "platform/console_user.h"
#include "welko/effective_user.h"
#include "welko/library_logs.h"
#include "welko/path.h"

namespace welko {
namespace {

using platform::FolderDomain;

constexpr FolderDomain kLocal = FolderDomain::kLocal;
constexpr FolderDomain kConsoleUser = FolderDomain::kUser;  // looked up as the console user
constexpr platform::FolderType kApps = platform::kApplicationsFolderType;
constexpr platform::FolderType kAppSupport = platform::kApplicationSupportFolderType;
constexpr platform::FolderType kDocuments = platform::kDocumentsFolderType;
constexpr platform::FolderType kPreferences = platform::kPreferencesFolderType;
constexpr platform::FolderType kSharedData = platform::kSharedUserDataFolderType;
constexpr platform::FolderType kUtilities = platform::kUtilitiesFolderType;

// What GetFolderPath returns for an id: whether the system's folder was found, or always true.
enum class Result { kOfLookup, kAlwaysTrue };

// A folder that is one of the system's or lies below one.
struct SystemFolder {
  unsigned id;
  FolderDomain domain;
  platform::FolderType type;
  const char* suffix;
  Result result;
};

constexpr SystemFolder kSystemFolders[] = {
    {kFolderApplications, kLocal, kApps, "", Result::kOfLookup},
    {kFolderLocalAppSupport, kLocal, kAppSupport, "", Result::kOfLookup},
    {kFolderLocalAppSupportAlias, kLocal, kAppSupport, "", Result::kOfLookup},
    {kFolderConsoleUserDocuments, kConsoleUser, kDocuments, "", Result::kAlwaysTrue},
    {kFolderConsoleUserAppSupport, kConsoleUser, kAppSupport, "", Result::kAlwaysTrue},
    {kFolderSharedUserData, kLocal, kSharedData, "", Result::kAlwaysTrue},
    {kFolderVantreAppSupport, kLocal, kAppSupport, "/Vantre", Result::kAlwaysTrue},
    {kFolderVantreUserAppSupport, kConsoleUser, kAppSupport, "/Vantre", Result::kAlwaysTrue},
    {kFolderVantreSharedData, kLocal, kSharedData, "/Vantre", Result::kAlwaysTrue},
    {kFolderWelkoAppSupport, kLocal, kAppSupport, "/Vantre/Welko", Result::kAlwaysTrue},
    {kFolderWelkoUserAppSupport, kConsoleUser, kAppSupport, "/Vantre/Welko", Result::kAlwaysTrue},
    {kFolderWelkoSharedData, kLocal, kSharedData, "/Vantre/Welko", Result::kAlwaysTrue},
    {kFolderOrlanUtilities, kLocal, kUtilities, "/Vantre Application Manager/",
     Result::kAlwaysTrue},
    {kFolderTarnikAppSupport, kLocal, kAppSupport, "/Vantre/Welko/Tarnik", Result::kAlwaysTrue},
    {kFolderTarnikUserAppSupport, kConsoleUser, kAppSupport, "/Vantre/Welko/Tarnik",
     Result::kAlwaysTrue},
    {kFolderOrlanRefs, kLocal, kAppSupport, "/Vantre/VantreApplicationManager/OrlanRefs",
     Result::kAlwaysTrue},
    {kFolderPeltRefs, kLocal, kAppSupport, "/Vantre/PeltRefs", Result::kAlwaysTrue},
    {kFolderDesktopCommon, kLocal, kAppSupport, "/Vantre/Vantre Desktop Common",
     Result::kAlwaysTrue},
    {kFolderLumoraUtilities, kLocal, kUtilities, "/Vantre Lumora/", Result::kAlwaysTrue},
    {kFolderLocalPreferences, kLocal, kPreferences, "", Result::kOfLookup},
};

// Where the system does not allow the switch, the look-up answers for the current user.
void ActAsConsoleUser(std::optional<EffectiveUser>& user) {
  if (const std::optional<platform::ConsoleUser> console = platform::FindConsoleUser()) {
    user.emplace(console->uid);
  }
}

bool FindProductFolder(const SystemFolder& folder, std::string& out) {
  bool found = false;
  {
    std::optional<EffectiveUser> user;
    if (folder.domain == kConsoleUser) ActAsConsoleUser(user);
    found = FindSystemFolder(folder.domain, folder.type, out);
  }
  out += folder.suffix;
  return found || folder.result == Result::kAlwaysTrue;
}

std::string OwnBundle() {
  std::string executable = platform::MainExecutablePath();
  std::string bundle = platform::StandardizePath(platform::MainBundlePath());
  const bool bare = platform::StandardizePath(WithoutLastPathComponent(executable)) == bundle;
  return bare ? executable : bundle;
}

std::optional<std::string> FindConsoleUserLogs() {
  std::optional<EffectiveUser> user;
  ActAsConsoleUser(user);
  return MakeLibraryLogs(platform::HomeFolder());
}

// Leaves `out` untouched where nothing was found.
bool Give(std::optional<std::string> found, std::string& out) {
  if (!found) return false;
  out = *std::move(found);
  return true;
}

}  // namespace

bool GetFolderPath(unsigned folderId, std::string& out) {
  switch (folderId) {
    case kFolderHome:
      out = platform::HomeFolder();
      return true;
    case kFolderTemp:
      out = "/tmp";
      return true;
    case kFolderOwnBundle:
      out = OwnBundle();
      return true;
    case kFolderOwnBundleParent:
      out = WithoutLastPathComponent(OwnBundle());
      return true;
    case kFolderConsoleUserLogs:
      return Give(FindConsoleUserLogs(), out);
    default:
      break;
  }
  for (const SystemFolder& folder : kSystemFolders) {
    if (folder.id == folderId) return FindProductFolder(folder, out);
  }
  return false;
}

std::string DesktopSuitePath() {
  std::string path;
  GetFolderPath(kFolderLumoraUtilities, path);
  AppendPathComponent(path, "Lumdesk/Lumora.app");
  return path;
}

bool FindSystemFolder(platform::FolderDomain domain, platform::FolderType folderType,
                      std::string& out) {
  constexpr std::size_t kPathSize = 1024;
  return Give(platform::FindFolder(domain, folderType, true, kPathSize), out);
}

bool GetBundleShortVersion(const std::string& bundlePath, std::string& out) {
  std::string list = bundlePath;
  AppendPathComponent(list, "/Contents/Info.plist");
  return PathExists(list) &&
         Give(platform::ReadPropertyListString(list, "CFBundleShortVersionString"), out);
}

}  // namespace welko
