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

// What the result of an id tells: whether the system's folder was found, or nothing.
enum class Tells { kLookup, kNothing };

// A folder that is one of the system's or lies below one.
struct SystemFolder {
  unsigned id;
  FolderDomain domain;
  platform::FolderType type;
  const char* suffix;
  Tells tells;
};

constexpr SystemFolder kSystemFolders[] = {
    {kFolderApplications, kLocal, kApps, "", Tells::kLookup},
    {kFolderLocalAppSupport, kLocal, kAppSupport, "", Tells::kLookup},
    {kFolderLocalAppSupportAlias, kLocal, kAppSupport, "", Tells::kLookup},
    {kFolderConsoleUserDocuments, kConsoleUser, kDocuments, "", Tells::kNothing},
    {kFolderConsoleUserAppSupport, kConsoleUser, kAppSupport, "", Tells::kNothing},
    {kFolderSharedUserData, kLocal, kSharedData, "", Tells::kNothing},
    {kFolderVantreAppSupport, kLocal, kAppSupport, "/Vantre", Tells::kNothing},
    {kFolderVantreUserAppSupport, kConsoleUser, kAppSupport, "/Vantre", Tells::kNothing},
    {kFolderVantreSharedData, kLocal, kSharedData, "/Vantre", Tells::kNothing},
    {kFolderWelkoAppSupport, kLocal, kAppSupport, "/Vantre/Welko", Tells::kNothing},
    {kFolderWelkoUserAppSupport, kConsoleUser, kAppSupport, "/Vantre/Welko", Tells::kNothing},
    {kFolderWelkoSharedData, kLocal, kSharedData, "/Vantre/Welko", Tells::kNothing},
    {kFolderOrlanUtilities, kLocal, kUtilities, "/Vantre Application Manager/", Tells::kNothing},
    {kFolderTarnikAppSupport, kLocal, kAppSupport, "/Vantre/Welko/Tarnik", Tells::kNothing},
    {kFolderTarnikUserAppSupport, kConsoleUser, kAppSupport, "/Vantre/Welko/Tarnik",
     Tells::kNothing},
    {kFolderOrlanRefs, kLocal, kAppSupport, "/Vantre/VantreApplicationManager/OrlanRefs",
     Tells::kNothing},
    {kFolderPeltRefs, kLocal, kAppSupport, "/Vantre/PeltRefs", Tells::kNothing},
    {kFolderDesktopCommon, kLocal, kAppSupport, "/Vantre/Vantre Desktop Common", Tells::kNothing},
    {kFolderLumoraUtilities, kLocal, kUtilities, "/Vantre Lumora/", Tells::kNothing},
    {kFolderLocalPreferences, kLocal, kPreferences, "", Tells::kLookup},
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
  return found || folder.tells == Tells::kNothing;
}

std::string OwnBundle() {
  std::string executable = platform::MainExecutablePath();
  std::string bundle = platform::StandardizePath(platform::MainBundlePath());
  const bool bare = platform::StandardizePath(WithoutLastPathComponent(executable)) == bundle;
  return bare ? executable : bundle;
}

bool FindConsoleUserLogs(std::string& out) {
  std::optional<EffectiveUser> user;
  ActAsConsoleUser(user);
  return MakeLibraryLogs(platform::HomeFolder(), out);
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
      return FindConsoleUserLogs(out);
    default:
      break;
  }
  for (const SystemFolder& folder : kSystemFolders) {
    if (folder.id == folderId) return FindProductFolder(folder, out);
  }
  return false;
}

bool FindSystemFolder(platform::FolderDomain domain, platform::FolderType folderType,
                      std::string& out) {
  constexpr std::size_t kPathSize = 1024;
  std::optional<std::string> path = platform::FindFolder(domain, folderType, true, kPathSize);
  if (!path) return false;
  out = *std::move(path);
  return true;
}

bool GetBundleShortVersion(const std::string& bundlePath, std::string& out) {
  std::string list = bundlePath;
  AppendPathComponent(list, "/Contents/Info.plist");
  if (!PathExists(list)) return false;
  std::optional<std::string> version =
      platform::ReadPropertyListString(list, "CFBundleShortVersionString");
  if (!version) return false;
  out = *std::move(version);
  return true;
}

}  // namespace welko
